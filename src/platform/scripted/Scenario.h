#pragma once

#include "platform/Accessibility.h"
#include "platform/Geometry.h"
#include "platform/JsonPath.h"
#include "platform/Value.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

// The scenario as read from its file: plain data, checked when read. The scripted desktop's state
// starts from it and the timeline changes it.
namespace vardel::scripted {

// An attribute written {"error": code}: reading it fails with that code.
struct AttributeError {
    AXError code = AXErrorCode::failure;
    bool operator==(const AttributeError&) const = default;
};

using AttributeValue = std::variant<Value, AttributeError>;

// A {"ref": id} in an attribute value, kept with its place so that a dangling one is reported there.
struct ElementReferenceUse {
    std::string id;
    JsonPath path;
};

struct ElementDescription {
    explicit ElementDescription(JsonPath where)
        : path(std::move(where))
    {
    }

    JsonPath path;
    std::optional<std::string> id;
    // The element's own attributes in file order.
    std::vector<std::pair<std::string, AttributeValue>> attributes;
    std::vector<std::pair<std::string, std::string>> actions;
    std::vector<std::string> settable;
    // "children" was given (even empty), so the element has an implied AXChildren.
    bool listsChildren = false;
    // Indices into the tree's elements.
    std::optional<size_t> parent;
    std::vector<size_t> children;
};

// An element tree, flattened in pre-order: the first element is the root.
struct ElementTreeDescription {
    std::vector<ElementDescription> elements;
    std::vector<ElementReferenceUse> references;
};

// An application's "ui": absent gives an element without attributes, false gives none at all.
struct ApplicationInterface {
    bool refused = false;
    std::optional<ElementTreeDescription> tree;
};

struct ApplicationDescription {
    ProcessIdentifier pid = 0;
    std::optional<std::string> bundleIdentifier;
    std::optional<std::string> localizedName;
    std::optional<std::string> executablePath;
    std::optional<std::string> bundlePath;
    std::optional<Value::Dictionary> info;
    bool running = true;
    bool responds = true;
    ApplicationInterface ui;
};

struct ProcessDescription {
    ProcessIdentifier pid = 0;
    std::optional<std::string> path;
    std::optional<std::string> name;
};

// The tracker's own process and bundle.
struct BundleDescription {
    ProcessIdentifier pid = 0;
    std::string bundlePath;
    std::string executablePath;
    std::string bundleIdentifier;
    Value::Dictionary info;
};

struct RunningTask {
    std::string title;
    double since = 0;
};

struct AlertAnswer {
    std::string message;
    int64_t button = 1;
    // Absent: the check box stays as the alert opened it.
    std::optional<bool> suppression;
};

struct EditorAnswer {
    enum class Action { Save, Cancel };
    Action action = Action::Cancel;
    std::optional<std::string> title;
    std::optional<std::string> project;
};

struct NotificationResponse {
    // Counts delivered notifications from 0; absent means the last one delivered.
    std::optional<int64_t> notificationIndex;
    std::string action;
};

struct MenuInteraction {
    // Absent: the menu only opens and closes.
    std::optional<std::string> chosenAction;
    std::optional<int64_t> tag;
};

struct ScriptCommand {
    enum class Command { Pause, Resume };
    Command command = Command::Resume;
    std::optional<double> seconds;
};

struct FileEvent {
    std::string path;
    uint32_t flags = 0;
};

struct ModifierKeys {
    bool command = false;
    bool option = false;
    bool control = false;
    bool shift = false;
};

struct AttributeChange {
    std::string elementId;
    std::string attribute;
    // Absent removes the attribute.
    std::optional<AttributeValue> value;
    std::vector<ElementReferenceUse> references;
};

struct InterfaceReplacement {
    ProcessIdentifier pid = 0;
    ApplicationInterface ui;
};

// Keys in file order with their new values; an absent value removes the key.
using KeyChanges = std::vector<std::pair<std::string, std::optional<Value>>>;

struct TimelineStep {
    double at = 0;

    // Changes of the world, in effect from `at` on. An outer optional that is set means "changed",
    // so frontmost and runningTask can change to none.
    std::vector<ProcessIdentifier> terminate;
    std::vector<ApplicationDescription> launch;
    std::optional<InterfaceReplacement> replaceUI;
    std::vector<AttributeChange> set;
    std::optional<std::optional<ProcessIdentifier>> frontmost;
    std::optional<Value::List> windowList;
    std::optional<std::vector<Rect>> screens;
    std::optional<Value::Dictionary> powerAssertions;
    KeyChanges plists;
    KeyChanges defaults;
    KeyChanges preferences;
    std::optional<std::optional<RunningTask>> runningTask;

    // What the user does; it needs the program's main thread.
    std::optional<NotificationResponse> respond;
    std::optional<MenuInteraction> menu;
    std::optional<ScriptCommand> script;
    std::vector<FileEvent> fileEvents;
    std::optional<ModifierKeys> keys;
};

struct Scenario {
    Date start;
    double endSeconds = 1;
    std::vector<Rect> screens;
    bool accessibilityTrusted = true;
    bool screenCaptureAccess = true;
    bool notificationsPermitted = true;
    bool databaseAvailable = true;
    Value::Dictionary defaults;
    Value::Dictionary preferences;
    std::vector<std::pair<std::string, Value::Dictionary>> domains;
    BundleDescription self;
    std::vector<ApplicationDescription> applications;
    std::vector<ProcessDescription> processes;
    std::optional<ProcessIdentifier> frontmost;
    Value::List windowList;
    Value::Dictionary powerAssertions;
    int64_t powerAssertionsStatus = 0;
    // Virtual property-list files by absolute path.
    Value::Dictionary plists;
    std::optional<RunningTask> runningTask;
    std::vector<AlertAnswer> alertAnswers;
    std::vector<EditorAnswer> editorAnswers;
    std::vector<TimelineStep> timeline;
};

} // namespace vardel::scripted
