#include "platform/scripted/ScriptedAccessibility.h"

#include "platform/ValueJson.h"
#include "platform/scripted/SystemWideElement.h"

#include <cmath>

namespace vardel::scripted {

ScriptedAccessibility::ScriptedAccessibility(
    DesktopWorld& world, Timeline& timeline, const VirtualClock& clock, TraceWriter& trace)
    : world_(world)
    , timeline_(timeline)
    , clock_(clock)
    , trace_(trace)
{
}

bool ScriptedAccessibility::isProcessTrusted()
{
    return world_.accessibilityTrusted;
}

std::optional<AXUIElement> ScriptedAccessibility::createApplication(ProcessIdentifier pid)
{
    const ScriptedApplication* application = world_.runningApplication(pid);
    if (!application || !application->tree)
        return std::nullopt;
    return application->tree->reference(application->tree->root());
}

std::optional<AXUIElement> ScriptedAccessibility::createSystemWide()
{
    return AXUIElement(std::make_shared<const SystemWideElement>());
}

AXResult<Value> ScriptedAccessibility::copyAttributeValue(const AXUIElement& element, std::string_view attribute)
{
    return readAttribute(element, attribute);
}

AXResult<std::vector<std::string>> ScriptedAccessibility::copyAttributeNames(const AXUIElement& element)
{
    auto reached = reach(element);
    if (!reached.ok())
        return AXResult<std::vector<std::string>>::failure(reached.error);
    return AXResult<std::vector<std::string>>::success(reached.value->element().attributeNames());
}

AXResult<std::vector<std::string>> ScriptedAccessibility::copyActionNames(const AXUIElement& element)
{
    auto reached = reach(element);
    if (!reached.ok())
        return AXResult<std::vector<std::string>>::failure(reached.error);
    std::vector<std::string> names;
    for (const auto& [name, description] : reached.value->element().actions())
        names.push_back(name);
    return AXResult<std::vector<std::string>>::success(std::move(names));
}

AXResult<std::string> ScriptedAccessibility::copyActionDescription(const AXUIElement& element, std::string_view action)
{
    auto reached = reach(element);
    if (!reached.ok())
        return AXResult<std::string>::failure(reached.error);
    const std::string* description = reached.value->element().actionDescription(action);
    if (!description)
        return AXResult<std::string>::failure(AXErrorCode::actionUnsupported);
    return AXResult<std::string>::success(*description);
}

AXError ScriptedAccessibility::performAction(const AXUIElement& element, std::string_view action)
{
    auto reached = reach(element);
    if (!reached.ok())
        return reached.error;
    if (!reached.value->element().actionDescription(action))
        return AXErrorCode::actionUnsupported;
    auto fields = elementFields(*reached.value);
    fields["action"] = action;
    trace_.write("ax.action", std::move(fields));
    return AXErrorCode::success;
}

AXError ScriptedAccessibility::setAttributeValue(
    const AXUIElement& element, std::string_view attribute, const Value& value)
{
    auto reached = reach(element);
    if (!reached.ok())
        return reached.error;
    reached.value->element().setAttribute(attribute, value);
    auto fields = elementFields(*reached.value);
    fields["attribute"] = attribute;
    fields["value"] = ValueJson::encode(value);
    trace_.write("ax.set", std::move(fields));
    return AXErrorCode::success;
}

AXResult<bool> ScriptedAccessibility::isAttributeSettable(const AXUIElement& element, std::string_view attribute)
{
    auto reached = reach(element);
    if (!reached.ok())
        return AXResult<bool>::failure(reached.error);
    return AXResult<bool>::success(reached.value->element().isSettable(attribute));
}

AXResult<int64_t> ScriptedAccessibility::attributeValueCount(const AXUIElement& element, std::string_view attribute)
{
    auto value = readAttribute(element, attribute);
    if (!value.ok())
        return AXResult<int64_t>::failure(value.error);
    const Value::List* list = value.value->asList();
    if (!list)
        return AXResult<int64_t>::failure(AXErrorCode::illegalArgument);
    return AXResult<int64_t>::success(static_cast<int64_t>(list->size()));
}

AXResult<ProcessIdentifier> ScriptedAccessibility::pid(const AXUIElement& element)
{
    auto* reference = dynamic_cast<const ScriptedElementReference*>(&element.impl());
    if (!reference)
        return AXResult<ProcessIdentifier>::failure(AXErrorCode::illegalArgument);
    return AXResult<ProcessIdentifier>::success(reference->pid());
}

AXResult<AXUIElement> ScriptedAccessibility::copyElementAtPosition(const AXUIElement& application, float x, float y)
{
    auto reached = reach(application);
    if (!reached.ok())
        return AXResult<AXUIElement>::failure(reached.error);
    ScriptedElement* hit = reached.value->tree->elementAt({ x, y });
    if (!hit)
        return AXResult<AXUIElement>::failure(AXErrorCode::noValue);
    return AXResult<AXUIElement>::success(reached.value->tree->reference(*hit));
}

AXError ScriptedAccessibility::setMessagingTimeout(const AXUIElement& element, float seconds)
{
    if (!(seconds >= 0))
        return AXErrorCode::illegalArgument;
    // Zero restores the default, as on the platform.
    std::optional<double> timeout = seconds > 0 ? std::optional<double>(seconds) : std::nullopt;
    if (dynamic_cast<const SystemWideElement*>(&element.impl())) {
        globalMessagingTimeout_ = timeout.value_or(defaultMessagingTimeout);
        trace_.write("ax.timeout", { { "seconds", TraceWriter::seconds(seconds) } });
        return AXErrorCode::success;
    }
    auto* reference = dynamic_cast<const ScriptedElementReference*>(&element.impl());
    if (!reference)
        return AXErrorCode::illegalArgument;
    reference->setMessagingTimeout(timeout);
    return AXErrorCode::success;
}

AXResult<ScriptedAccessibility::Reached> ScriptedAccessibility::reach(const AXUIElement& element)
{
    if (!world_.accessibilityTrusted)
        return AXResult<Reached>::failure(AXErrorCode::apiDisabled);
    auto* reference = dynamic_cast<const ScriptedElementReference*>(&element.impl());
    if (!reference)
        return AXResult<Reached>::failure(AXErrorCode::illegalArgument);
    auto tree = reference->tree();
    if (!tree)
        return AXResult<Reached>::failure(AXErrorCode::invalidUIElement);
    const ScriptedApplication* application = world_.runningApplication(reference->pid());
    if (application && !application->description.responds) {
        double timeout = reference->messagingTimeout().value_or(globalMessagingTimeout_);
        timeline_.advanceTo(clock_.elapsedSeconds() + timeout);
        return AXResult<Reached>::failure(AXErrorCode::cannotComplete);
    }
    return AXResult<Reached>::success({ std::move(tree), reference });
}

AXResult<Value> ScriptedAccessibility::readAttribute(const AXUIElement& element, std::string_view attribute)
{
    auto reached = reach(element);
    if (!reached.ok())
        return AXResult<Value>::failure(reached.error);
    const AttributeValue* value = reached.value->element().attribute(attribute);
    if (!value)
        return AXResult<Value>::failure(AXErrorCode::noValue);
    if (const auto* error = std::get_if<AttributeError>(value))
        return AXResult<Value>::failure(error->code);
    return AXResult<Value>::success(std::get<Value>(*value));
}

nlohmann::ordered_json ScriptedAccessibility::elementFields(const Reached& reached) const
{
    const auto& id = reached.element().id();
    return { { "pid", reached.reference->pid() }, { "element", id ? nlohmann::ordered_json(*id) : nullptr } };
}

} // namespace vardel::scripted
