#pragma once

#include "platform/AXUIElement.h"
#include "platform/Accessibility.h"
#include "platform/scripted/ElementTree.h"
#include "platform/scripted/Scenario.h"
#include "platform/scripted/ScriptedDefaultsDomains.h"
#include "platform/scripted/ScriptedPreferenceStore.h"
#include "platform/scripted/TraceWriter.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

namespace vardel::scripted {

struct ScriptedApplication {
    ApplicationDescription description;
    // Null while the application is not running, or when it refuses accessibility ("ui": false).
    std::shared_ptr<ElementTree> tree;
};

// Everything the scripted desktop shows the program at the current virtual time: it starts as the
// scenario describes and the timeline changes it.
class DesktopWorld {
public:
    DesktopWorld(const Scenario&, TraceWriter&);

    const std::vector<ScriptedApplication>& applications() const { return applications_; }
    const ScriptedApplication* runningApplication(ProcessIdentifier) const;
    // A live element by its scenario id.
    std::optional<AXUIElement> element(std::string_view id) const;

    void terminate(ProcessIdentifier);
    void launch(const std::vector<ApplicationDescription>&);
    void replaceInterface(const InterfaceReplacement&);
    void setAttribute(const AttributeChange&);

    // The rest of the scene, as plain state that the timeline replaces.
    bool accessibilityTrusted;
    bool screenCaptureAccess;
    bool notificationsPermitted;
    bool databaseAvailable;
    std::optional<ProcessIdentifier> frontmost;
    std::vector<ProcessDescription> processes;
    std::vector<Rect> screens;
    Value::List windowList;
    std::shared_ptr<const Value::Dictionary> powerAssertions;
    int64_t powerAssertionsStatus;
    Value::Dictionary propertyLists;
    std::optional<RunningTask> runningTask;
    BundleDescription self;
    std::vector<AlertAnswer> alertAnswers;
    std::vector<EditorAnswer> editorAnswers;
    ScriptedPreferenceStore standardUserDefaults;
    ScriptedPreferenceStore productPreferences;
    ScriptedDefaultsDomains defaultsDomains;

private:
    // The index of the application's entry.
    size_t install(const ApplicationDescription&);
    // Builds the trees of freshly installed applications, then resolves their references, which
    // may name elements of each other.
    void buildTrees(const std::vector<size_t>& installed);
    Value resolved(const Value&) const;

    std::vector<ScriptedApplication> applications_;
};

} // namespace vardel::scripted
