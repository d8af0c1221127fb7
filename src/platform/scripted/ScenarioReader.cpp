#include "platform/scripted/ScenarioReader.h"

#include "platform/JsonValueError.h"
#include "platform/ValueDecoder.h"
#include "platform/ValueJson.h"
#include "platform/WindowServer.h"
#include "platform/scripted/ElementTreeReader.h"
#include "platform/scripted/ScenarioError.h"
#include "platform/scripted/ScenarioValueDecoder.h"
#include "platform/scripted/TimelineReader.h"

#include <array>
#include <charconv>
#include <limits>

namespace vardel::scripted {

namespace {

constexpr const char* defaultStart = "2026-01-05T09:00:00Z";
constexpr const char* defaultSelfIdentifier = "info.quenby.VardelHelper";
constexpr ProcessIdentifier defaultSelfPid = 100;
constexpr const char* defaultSelfBundlePath = "/Applications/VardelHelper.app";
constexpr const char* selfExecutableInBundle = "/Contents/MacOS/VardelHelper";
constexpr const char* infoPropertyListInBundle = "/Contents/Info.plist";

std::optional<std::string> optionalText(const JsonCursor& object, std::string_view key)
{
    auto member = object.nonNullMember(key);
    return member ? std::optional(member->text()) : std::nullopt;
}

bool flag(const JsonCursor& object, std::string_view key, bool fallback)
{
    auto member = object.nonNullMember(key);
    return member ? member->boolean() : fallback;
}

Date readStart(const JsonCursor& root)
{
    auto member = root.nonNullMember("start");
    if (!member)
        return *ValueJson::parseIso8601(defaultStart);
    auto start = ValueJson::parseIso8601(member->text());
    if (!start)
        member->fail("expected an ISO 8601 UTC date such as 2026-01-05T09:00:00Z");
    return *start;
}

Value::Dictionary readBounds(const JsonCursor& bounds)
{
    bounds.allowOnlyKeys({ "X", "Y", "Width", "Height" });
    Value::Dictionary dictionary;
    for (const char* key : { "X", "Y", "Width", "Height" })
        dictionary.emplace(key, ValueDecoder::number(bounds.requiredMember(key)));
    return dictionary;
}

ProcessIdentifier pidFromKey(const std::string& key, const JsonPath& where)
{
    ProcessIdentifier pid = 0;
    auto [end, error] = std::from_chars(key.data(), key.data() + key.size(), pid);
    if (error != std::errc() || end != key.data() + key.size() || pid <= 0)
        where.fail("expected a pid in decimal as the key");
    return pid;
}

} // namespace

ScenarioReader::ScenarioReader(std::string sourceName, std::filesystem::path baseDirectory)
    : sourceName_(std::move(sourceName))
    , baseDirectory_(std::move(baseDirectory))
{
}

Scenario ScenarioReader::read(const nlohmann::ordered_json& json)
{
    try {
        return readRoot(JsonCursor(json, JsonPath(sourceName_)));
    } catch (const JsonValueError& error) {
        throw ScenarioError(error.what());
    }
}

Scenario ScenarioReader::readRoot(const JsonCursor& root)
{
    root.allowOnlyKeys({ "start", "end", "screens", "accessibilityTrusted", "screenCaptureAccess",
        "notificationsPermitted", "defaults", "preferences", "domains", "self", "applications", "processes",
        "frontmost", "windowList", "powerAssertions", "powerAssertionsStatus", "plists", "runningTask", "database",
        "alertAnswers", "editorAnswers", "timeline" });
    Scenario scenario;
    readSystem(root, scenario);
    readStores(root, scenario);
    readProcesses(root, scenario);
    readApplications(root, scenario);
    readScene(root, scenario);
    readProductState(root, scenario);
    if (auto timeline = root.nonNullMember("timeline"))
        scenario.timeline = TimelineReader(*this).read(*timeline);
    scenario.endSeconds = readEnd(root, scenario.timeline);
    return scenario;
}

void ScenarioReader::readSystem(const JsonCursor& root, Scenario& scenario)
{
    scenario.start = readStart(root);
    auto screens = root.nonNullMember("screens");
    scenario.screens = screens ? readScreens(*screens) : std::vector<Rect> { { { 0, 0 }, { 1920, 1080 } } };
    scenario.accessibilityTrusted = flag(root, "accessibilityTrusted", true);
    scenario.screenCaptureAccess = flag(root, "screenCaptureAccess", true);
    scenario.notificationsPermitted = flag(root, "notificationsPermitted", true);
}

void ScenarioReader::readStores(const JsonCursor& root, Scenario& scenario) const
{
    if (auto defaults = root.nonNullMember("defaults"))
        scenario.defaults = ScenarioValueDecoder::plainDictionary(*defaults);
    if (auto preferences = root.nonNullMember("preferences"))
        scenario.preferences = ScenarioValueDecoder::plainDictionary(*preferences);
    scenario.domains = readDomains(root);
    scenario.self = readSelf(root);
    scenario.plists = readPropertyLists(root, scenario.self);
}

void ScenarioReader::readScene(const JsonCursor& root, Scenario& scenario)
{
    if (auto frontmost = root.nonNullMember("frontmost"))
        scenario.frontmost = frontmost->processIdentifier();
    if (auto windowList = root.nonNullMember("windowList"))
        scenario.windowList = readWindowList(*windowList);
    if (auto assertions = root.nonNullMember("powerAssertions"))
        scenario.powerAssertions = readPowerAssertions(*assertions);
    if (auto status = root.nonNullMember("powerAssertionsStatus"))
        scenario.powerAssertionsStatus
            = status->integerBetween(std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max());
}

void ScenarioReader::readProductState(const JsonCursor& root, Scenario& scenario)
{
    scenario.databaseAvailable = flag(root, "database", true);
    if (auto task = root.member("runningTask"))
        scenario.runningTask = readRunningTask(*task);
    scenario.alertAnswers = readAlertAnswers(root);
    scenario.editorAnswers = readEditorAnswers(root);
}

ApplicationDescription ScenarioReader::readApplication(const JsonCursor& cursor) const
{
    cursor.allowOnlyKeys({ "pid", "bundleIdentifier", "localizedName", "executablePath", "bundlePath", "info",
        "running", "responds", "ui" });
    ApplicationDescription application;
    application.pid = cursor.requiredMember("pid").processIdentifier();
    application.bundleIdentifier = optionalText(cursor, "bundleIdentifier");
    application.localizedName = optionalText(cursor, "localizedName");
    application.executablePath = optionalPath(cursor, "executablePath");
    application.bundlePath = optionalPath(cursor, "bundlePath");
    if (auto info = cursor.nonNullMember("info"))
        application.info = ScenarioValueDecoder::plainDictionary(*info);
    application.running = flag(cursor, "running", true);
    application.responds = flag(cursor, "responds", true);
    if (auto ui = cursor.nonNullMember("ui"))
        application.ui = readInterface(*ui);
    return application;
}

ApplicationInterface ScenarioReader::readInterface(const JsonCursor& ui)
{
    if (ui.json().is_boolean() && !ui.boolean())
        return { .refused = true, .tree = std::nullopt };
    if (!ui.isObject())
        ui.fail("expected an element object, or false for an application without one");
    return { .refused = false, .tree = ElementTreeReader::read(ui) };
}

std::vector<Rect> ScenarioReader::readScreens(const JsonCursor& cursor)
{
    std::vector<Rect> screens;
    cursor.forEachItem([&](const JsonCursor& frame) {
        if (!frame.isArray() || frame.json().size() != 4)
            frame.fail("expected a frame [x, y, width, height]");
        std::array<double, 4> parts {};
        size_t index = 0;
        frame.forEachItem([&](const JsonCursor& part) { parts[index++] = part.number(); });
        if (parts[2] < 0 || parts[3] < 0)
            frame.fail("a screen's width and height cannot be negative");
        screens.push_back({ { parts[0], parts[1] }, { parts[2], parts[3] } });
    });
    return screens;
}

Value::List ScenarioReader::readWindowList(const JsonCursor& cursor)
{
    Value::List windows;
    cursor.forEachItem([&](const JsonCursor& window) { windows.push_back(readWindow(window)); });
    return windows;
}

Value ScenarioReader::readWindow(const JsonCursor& window)
{
    Value::Dictionary entry;
    window.forEachMember([&](const std::string& key, const JsonCursor& value) {
        if (value.isNull())
            return;
        if (key == WindowInfoKey::ownerPID || key == WindowInfoKey::layer || key == WindowInfoKey::sharingState)
            entry.emplace(key, value.integer());
        else if (key == WindowInfoKey::name)
            entry.emplace(key, value.text());
        else if (key == WindowInfoKey::bounds)
            entry.emplace(key, readBounds(value));
        else if (key.starts_with("kCGWindow"))
            entry.emplace(key, ScenarioValueDecoder::plain(value));
        else
            value.fail("unknown key (window-list keys begin with \"kCGWindow\")");
    });
    return entry;
}

Value::Dictionary ScenarioReader::readPowerAssertions(const JsonCursor& cursor)
{
    Value::Dictionary assertions;
    cursor.forEachMember([&](const std::string& key, const JsonCursor& records) {
        ProcessIdentifier pid = pidFromKey(key, records.path());
        Value::List list;
        records.forEachItem(
            [&](const JsonCursor& record) { list.push_back(ScenarioValueDecoder::plainDictionary(record)); });
        assertions.insert_or_assign(std::to_string(pid), std::move(list));
    });
    return assertions;
}

std::optional<RunningTask> ScenarioReader::readRunningTask(const JsonCursor& cursor)
{
    if (cursor.isNull())
        return std::nullopt;
    cursor.allowOnlyKeys({ "title", "since" });
    return RunningTask { cursor.requiredMember("title").text(), cursor.requiredMember("since").number() };
}

KeyChanges ScenarioReader::readKeyChanges(const JsonCursor& cursor, bool pathKeys)
{
    KeyChanges changes;
    cursor.forEachMember([&](const std::string& key, const JsonCursor& value) {
        if (pathKeys && !key.starts_with("/"))
            value.fail("expected an absolute file path as the key");
        changes.emplace_back(key, value.isNull() ? std::nullopt : std::optional(ScenarioValueDecoder::plain(value)));
    });
    return changes;
}

void ScenarioReader::readApplications(const JsonCursor& root, Scenario& scenario)
{
    auto applications = root.nonNullMember("applications");
    if (!applications)
        return;
    applications->forEachItem([&](const JsonCursor& cursor) {
        scenario.applications.push_back(readApplication(cursor));
        ledger_.addApplication(scenario.applications.back(), cursor.path().member("pid"));
    });
    // References may cross applications, so they are checked once every tree is known.
    for (const auto& application : scenario.applications) {
        if (application.running && application.ui.tree)
            ledger_.requireReferences(application.ui.tree->references);
    }
}

void ScenarioReader::readProcesses(const JsonCursor& root, Scenario& scenario)
{
    auto processes = root.nonNullMember("processes");
    if (!processes)
        return;
    processes->forEachItem([&](const JsonCursor& cursor) {
        cursor.allowOnlyKeys({ "pid", "path", "name" });
        auto pid = cursor.requiredMember("pid");
        scenario.processes.push_back(
            { pid.processIdentifier(), optionalPath(cursor, "path"), optionalText(cursor, "name") });
        ledger_.addProcess(scenario.processes.back().pid, pid.path());
    });
}

BundleDescription ScenarioReader::readSelf(const JsonCursor& root) const
{
    BundleDescription self { defaultSelfPid, defaultSelfBundlePath, "", defaultSelfIdentifier,
        { { "CFBundleVersion", "1" } } };
    if (auto cursor = root.nonNullMember("self")) {
        cursor->allowOnlyKeys({ "pid", "bundlePath", "executablePath", "bundleIdentifier", "info" });
        if (auto pid = cursor->nonNullMember("pid"))
            self.pid = pid->processIdentifier();
        self.bundlePath = optionalPath(*cursor, "bundlePath").value_or(self.bundlePath);
        self.executablePath = optionalPath(*cursor, "executablePath").value_or("");
        self.bundleIdentifier = optionalText(*cursor, "bundleIdentifier").value_or(self.bundleIdentifier);
        if (auto info = cursor->nonNullMember("info"))
            self.info = ScenarioValueDecoder::plainDictionary(*info);
    }
    if (self.executablePath.empty())
        self.executablePath = self.bundlePath + selfExecutableInBundle;
    return self;
}

Value::Dictionary ScenarioReader::readPropertyLists(const JsonCursor& root, const BundleDescription& self)
{
    // The bundle's information file exists unless the scenario gives that path (null removes it).
    KeyChanges listed;
    if (auto plists = root.nonNullMember("plists"))
        listed = readKeyChanges(*plists, true);
    Value::Dictionary files { { self.bundlePath + infoPropertyListInBundle, self.info } };
    for (auto& [path, value] : listed) {
        if (value)
            files.insert_or_assign(path, std::move(*value));
        else
            files.erase(path);
    }
    return files;
}

std::vector<std::pair<std::string, Value::Dictionary>> ScenarioReader::readDomains(const JsonCursor& root)
{
    std::vector<std::pair<std::string, Value::Dictionary>> domains;
    if (auto cursor = root.nonNullMember("domains")) {
        cursor->forEachMember([&](const std::string& name, const JsonCursor& values) {
            domains.emplace_back(name, ScenarioValueDecoder::plainDictionary(values));
        });
    }
    return domains;
}

std::vector<AlertAnswer> ScenarioReader::readAlertAnswers(const JsonCursor& root)
{
    std::vector<AlertAnswer> answers;
    if (auto cursor = root.nonNullMember("alertAnswers")) {
        cursor->forEachItem([&](const JsonCursor& answer) {
            answer.allowOnlyKeys({ "message", "button", "suppression" });
            auto button = answer.nonNullMember("button");
            auto suppression = answer.nonNullMember("suppression");
            answers.push_back({ answer.requiredMember("message").text(),
                button ? button->integerBetween(1, std::numeric_limits<int32_t>::max()) : 1,
                suppression ? std::optional(suppression->boolean()) : std::nullopt });
        });
    }
    return answers;
}

std::vector<EditorAnswer> ScenarioReader::readEditorAnswers(const JsonCursor& root)
{
    std::vector<EditorAnswer> answers;
    if (auto cursor = root.nonNullMember("editorAnswers")) {
        cursor->forEachItem([&](const JsonCursor& answer) {
            answer.allowOnlyKeys({ "action", "title", "project" });
            auto action = answer.requiredMember("action");
            std::string name = action.text();
            if (name != "save" && name != "cancel")
                action.fail("expected \"save\" or \"cancel\"");
            answers.push_back({ name == "save" ? EditorAnswer::Action::Save : EditorAnswer::Action::Cancel,
                optionalText(answer, "title"), optionalText(answer, "project") });
        });
    }
    return answers;
}

double ScenarioReader::readEnd(const JsonCursor& root, const std::vector<TimelineStep>& timeline)
{
    if (auto end = root.nonNullMember("end"))
        return end->nonNegativeNumber();
    // One second after the last step, so that the samples of that second see it.
    return (timeline.empty() ? 0 : timeline.back().at) + 1;
}

std::optional<std::string> ScenarioReader::optionalPath(const JsonCursor& object, std::string_view key) const
{
    auto path = optionalText(object, key);
    return path ? std::optional(resolvedPath(*path)) : std::nullopt;
}

std::string ScenarioReader::resolvedPath(const std::string& path) const
{
    if (baseDirectory_.empty() || path.empty() || std::filesystem::path(path).is_absolute())
        return path;
    return (baseDirectory_ / path).lexically_normal().string();
}

} // namespace vardel::scripted
