#include "platform/scripted/DesktopWorld.h"

#include "platform/scripted/UnresolvedReference.h"

#include <algorithm>

namespace vardel::scripted {

DesktopWorld::DesktopWorld(const Scenario& scenario, TraceWriter& trace)
    : accessibilityTrusted(scenario.accessibilityTrusted)
    , screenCaptureAccess(scenario.screenCaptureAccess)
    , notificationsPermitted(scenario.notificationsPermitted)
    , databaseAvailable(scenario.databaseAvailable)
    , frontmost(scenario.frontmost)
    , processes(scenario.processes)
    , screens(scenario.screens)
    , windowList(scenario.windowList)
    , powerAssertions(std::make_shared<const Value::Dictionary>(scenario.powerAssertions))
    , powerAssertionsStatus(scenario.powerAssertionsStatus)
    , propertyLists(scenario.plists)
    , runningTask(scenario.runningTask)
    , self(scenario.self)
    , alertAnswers(scenario.alertAnswers)
    , editorAnswers(scenario.editorAnswers)
    , standardUserDefaults("defaults", scenario.defaults, trace)
    , productPreferences("preferences", scenario.preferences, trace)
    , defaultsDomains(scenario.domains, trace)
{
    std::vector<size_t> installed;
    for (const auto& application : scenario.applications)
        installed.push_back(install(application));
    buildTrees(installed);
}

const ScriptedApplication* DesktopWorld::runningApplication(ProcessIdentifier pid) const
{
    auto found = std::find_if(applications_.begin(), applications_.end(), [pid](const auto& application) {
        return application.description.pid == pid && application.description.running;
    });
    return found == applications_.end() ? nullptr : &*found;
}

std::optional<AXUIElement> DesktopWorld::element(std::string_view id) const
{
    for (const auto& application : applications_) {
        if (!application.tree)
            continue;
        if (ScriptedElement* element = application.tree->find(id))
            return application.tree->reference(*element);
    }
    return std::nullopt;
}

void DesktopWorld::terminate(ProcessIdentifier pid)
{
    for (auto& application : applications_) {
        if (application.description.pid == pid) {
            application.description.running = false;
            application.tree.reset();
        }
    }
}

void DesktopWorld::launch(const std::vector<ApplicationDescription>& launched)
{
    std::vector<size_t> installed;
    installed.reserve(launched.size());
    for (const auto& application : launched)
        installed.push_back(install(application));
    buildTrees(installed);
}

void DesktopWorld::replaceInterface(const InterfaceReplacement& replacement)
{
    for (size_t index = 0; index < applications_.size(); ++index) {
        auto& application = applications_[index];
        if (application.description.pid == replacement.pid && application.description.running) {
            application.tree.reset();
            application.description.ui = replacement.ui;
            buildTrees({ index });
        }
    }
}

void DesktopWorld::setAttribute(const AttributeChange& change)
{
    for (auto& application : applications_) {
        ScriptedElement* element = application.tree ? application.tree->find(change.elementId) : nullptr;
        if (!element)
            continue;
        if (!change.value)
            element->removeAttribute(change.attribute);
        else if (const Value* value = std::get_if<Value>(&*change.value))
            element->setAttribute(change.attribute, resolved(*value));
        else
            element->setAttribute(change.attribute, *change.value);
        return;
    }
}

size_t DesktopWorld::install(const ApplicationDescription& description)
{
    // An installed application that is not running starts in its own entry.
    auto installed = std::find_if(applications_.begin(), applications_.end(), [&](const auto& application) {
        return application.description.pid == description.pid && !application.description.running;
    });
    if (installed != applications_.end()) {
        *installed = { description, nullptr };
        return static_cast<size_t>(installed - applications_.begin());
    }
    applications_.push_back({ description, nullptr });
    return applications_.size() - 1;
}

void DesktopWorld::buildTrees(const std::vector<size_t>& installed)
{
    for (size_t index : installed) {
        auto& application = applications_[index];
        const auto& ui = application.description.ui;
        if (application.description.running && !ui.refused)
            application.tree = ElementTree::create(application.description.pid, ui.tree ? &*ui.tree : nullptr);
    }
    for (size_t index : installed) {
        auto& application = applications_[index];
        const auto& ui = application.description.ui;
        if (application.tree && ui.tree && !ui.tree->references.empty())
            application.tree->resolveReferences([this](const Value& value) { return resolved(value); });
    }
}

Value DesktopWorld::resolved(const Value& value) const
{
    switch (value.kind()) {
    case Value::Kind::Element: {
        auto* placeholder = dynamic_cast<const UnresolvedReference*>(&value.asElement()->impl());
        if (!placeholder)
            return value;
        // Reading the scenario made sure the element exists.
        return element(placeholder->id()).value_or(*value.asElement());
    }
    case Value::Kind::List: {
        Value::List list;
        for (const Value& member : *value.asList())
            list.push_back(resolved(member));
        return list;
    }
    case Value::Kind::Dictionary: {
        Value::Dictionary dictionary;
        for (const auto& [key, member] : *value.asDictionary())
            dictionary.emplace(key, resolved(member));
        return dictionary;
    }
    default:
        return value;
    }
}

} // namespace vardel::scripted
