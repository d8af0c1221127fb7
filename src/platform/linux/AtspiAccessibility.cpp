#include "platform/linux/AtspiAccessibility.h"

#include "platform/linux/AtspiActions.h"
#include "platform/linux/AtspiAttributeReader.h"
#include "platform/linux/AtspiAttributeWriter.h"
#include "platform/linux/AtspiCalls.h"
#include "platform/linux/AtspiElement.h"
#include "platform/linux/AtspiHitTest.h"

#include <algorithm>
#include <atspi/atspi.h>
#include <cmath>

namespace vardel::linux_desktop {

namespace {

constexpr std::chrono::milliseconds defaultTimeout { 2000 };
// Longer than a sample takes, shorter than the time between two.
constexpr std::chrono::milliseconds sampleAnswersLifetime { 250 };

// The proxy behind one of our elements that stands for a remote object: the system-wide element
// stands for the whole desktop.
AtspiAccessible* remoteAccessibleOf(const AXUIElement& element)
{
    return AtspiElement::isSystemWide(element) ? nullptr : AtspiElement::accessibleOf(element);
}

} // namespace

std::unique_ptr<AtspiAccessibility> AtspiAccessibility::connect(X11WindowFacts* windowFacts)
{
    atspi_init();
    if (!atspi_get_a11y_bus())
        return nullptr;
    auto accessibility = std::unique_ptr<AtspiAccessibility>(new AtspiAccessibility(windowFacts));
    atspi_set_timeout(static_cast<int>(defaultTimeout.count()), static_cast<int>(defaultTimeout.count()));
    return accessibility;
}

AtspiAccessibility::AtspiAccessibility(X11WindowFacts* windowFacts)
    : windowFacts_(windowFacts)
    , guard_(defaultTimeout)
    , answers_(sampleAnswersLifetime)
{
}

std::optional<AXUIElement> AtspiAccessibility::createApplication(ProcessIdentifier pid)
{
    if (pid <= 0)
        return std::nullopt;
    answers_.forget();
    AtspiCalls calls(guard_, &answers_);
    // A remembered application still answers to its pid unless it has gone.
    if (auto known = applications_.find(pid); known != applications_.end()) {
        if (calls.processId(AtspiElement::accessibleOf(known->second)) == pid)
            return known->second;
        applications_.erase(known);
    }
    GObjectHandle<AtspiAccessible> desktop(atspi_get_desktop(0));
    for (const AXUIElement& application : calls.children(desktop.get())) {
        if (calls.processId(AtspiElement::accessibleOf(application)) == pid) {
            applications_.emplace(pid, application);
            return application;
        }
    }
    return std::nullopt;
}

std::optional<AXUIElement> AtspiAccessibility::createSystemWide()
{
    return AtspiElement::systemWide();
}

AXResult<Value> AtspiAccessibility::copyAttributeValue(const AXUIElement& element, std::string_view attribute)
{
    if (!AtspiElement::accessibleOf(element))
        return AXResult<Value>::failure(AXErrorCode::illegalArgument);
    AtspiAccessible* accessible = remoteAccessibleOf(element);
    if (!accessible)
        return AXResult<Value>::failure(AXErrorCode::noValue);
    AtspiCalls calls(guard_, &answers_);
    auto value = AtspiAttributeReader(calls, windowFacts_).read(accessible, attribute);
    if (!value)
        return AXResult<Value>::failure(calls.error());
    return AXResult<Value>::success(std::move(*value));
}

AXResult<std::vector<std::string>> AtspiAccessibility::copyAttributeNames(const AXUIElement& element)
{
    AtspiAccessible* accessible = remoteAccessibleOf(element);
    if (!accessible)
        return AXResult<std::vector<std::string>>::failure(AXErrorCode::illegalArgument);
    AtspiCalls calls(guard_, &answers_);
    auto names = AtspiAttributeReader(calls, windowFacts_).names(accessible);
    if (names.empty())
        return AXResult<std::vector<std::string>>::failure(calls.error());
    return AXResult<std::vector<std::string>>::success(std::move(names));
}

AXResult<std::vector<std::string>> AtspiAccessibility::copyActionNames(const AXUIElement& element)
{
    AtspiAccessible* accessible = remoteAccessibleOf(element);
    if (!accessible)
        return AXResult<std::vector<std::string>>::failure(AXErrorCode::illegalArgument);
    AtspiCalls calls(guard_, &answers_);
    auto names = AtspiActions(calls).names(accessible);
    if (calls.error() == AXErrorCode::cannotComplete)
        return AXResult<std::vector<std::string>>::failure(calls.error());
    return AXResult<std::vector<std::string>>::success(std::move(names));
}

AXResult<std::string> AtspiAccessibility::copyActionDescription(const AXUIElement& element, std::string_view action)
{
    AtspiAccessible* accessible = remoteAccessibleOf(element);
    if (!accessible)
        return AXResult<std::string>::failure(AXErrorCode::illegalArgument);
    AtspiCalls calls(guard_, &answers_);
    auto index = AtspiActions(calls).indexOf(accessible, action);
    if (!index)
        return AXResult<std::string>::failure(AXErrorCode::actionUnsupported);
    auto description = calls.actionDescription(accessible, *index);
    if (!description)
        return AXResult<std::string>::failure(calls.error());
    return AXResult<std::string>::success(std::move(*description));
}

AXError AtspiAccessibility::performAction(const AXUIElement& element, std::string_view action)
{
    AtspiAccessible* accessible = remoteAccessibleOf(element);
    if (!accessible)
        return AXErrorCode::illegalArgument;
    // What the action changes is read afresh.
    answers_.forget();
    AtspiCalls calls(guard_);
    auto index = AtspiActions(calls).indexOf(accessible, action);
    if (!index)
        return calls.error() == AXErrorCode::cannotComplete ? calls.error() : AXErrorCode::actionUnsupported;
    return calls.doAction(accessible, *index) ? AXErrorCode::success : calls.error();
}

AXError AtspiAccessibility::setAttributeValue(
    const AXUIElement& element, std::string_view attribute, const Value& value)
{
    AtspiAccessible* accessible = remoteAccessibleOf(element);
    if (!accessible)
        return AXErrorCode::illegalArgument;
    // What the write changes is read afresh.
    answers_.forget();
    AtspiCalls calls(guard_);
    return AtspiAttributeWriter(calls).write(accessible, attribute, value);
}

AXResult<bool> AtspiAccessibility::isAttributeSettable(const AXUIElement& element, std::string_view attribute)
{
    AtspiAccessible* accessible = remoteAccessibleOf(element);
    if (!accessible)
        return AXResult<bool>::failure(AXErrorCode::illegalArgument);
    AtspiCalls calls(guard_, &answers_);
    bool settable = AtspiAttributeWriter(calls).isSettable(accessible, attribute);
    if (calls.error() == AXErrorCode::cannotComplete)
        return AXResult<bool>::failure(calls.error());
    return AXResult<bool>::success(settable);
}

AXResult<int64_t> AtspiAccessibility::attributeValueCount(const AXUIElement& element, std::string_view attribute)
{
    AtspiAccessible* accessible = remoteAccessibleOf(element);
    if (!accessible)
        return AXResult<int64_t>::failure(AXErrorCode::illegalArgument);
    AtspiCalls calls(guard_, &answers_);
    if (attribute == "AXChildren") {
        int count = calls.childCount(accessible);
        if (calls.error() != AXErrorCode::noValue)
            return AXResult<int64_t>::failure(calls.error());
        return AXResult<int64_t>::success(count);
    }
    auto value = AtspiAttributeReader(calls, windowFacts_).read(accessible, attribute);
    if (!value || !value->asList())
        return AXResult<int64_t>::failure(value ? AXErrorCode::illegalArgument : calls.error());
    return AXResult<int64_t>::success(static_cast<int64_t>(value->asList()->size()));
}

AXResult<ProcessIdentifier> AtspiAccessibility::pid(const AXUIElement& element)
{
    AtspiAccessible* accessible = remoteAccessibleOf(element);
    if (!accessible)
        return AXResult<ProcessIdentifier>::failure(AXErrorCode::illegalArgument);
    AtspiCalls calls(guard_, &answers_);
    auto pid = calls.processId(accessible);
    if (!pid)
        return AXResult<ProcessIdentifier>::failure(
            calls.error() == AXErrorCode::noValue ? AXErrorCode::invalidUIElement : calls.error());
    return AXResult<ProcessIdentifier>::success(*pid);
}

AXResult<AXUIElement> AtspiAccessibility::copyElementAtPosition(const AXUIElement& application, float x, float y)
{
    AtspiAccessible* accessible = remoteAccessibleOf(application);
    if (!accessible || !std::isfinite(x) || !std::isfinite(y))
        return AXResult<AXUIElement>::failure(AXErrorCode::illegalArgument);
    AtspiCalls calls(guard_, &answers_);
    auto hit = AtspiHitTest(calls).deepestElementAt(accessible, { x, y });
    if (!hit)
        return AXResult<AXUIElement>::failure(calls.error());
    return AXResult<AXUIElement>::success(*hit);
}

AXError AtspiAccessibility::setMessagingTimeout(const AXUIElement& element, float seconds)
{
    if (!AtspiElement::isSystemWide(element))
        return AXErrorCode::notImplemented;
    if (!std::isfinite(seconds) || seconds <= 0)
        return AXErrorCode::illegalArgument;
    constexpr double maxMilliseconds = 86'400'000;
    auto milliseconds = static_cast<int>(std::min(double(seconds) * 1000, maxMilliseconds));
    guard_.setTimeout(std::chrono::milliseconds(std::max(milliseconds, 1)));
    atspi_set_timeout(milliseconds, milliseconds);
    return AXErrorCode::success;
}

} // namespace vardel::linux_desktop
