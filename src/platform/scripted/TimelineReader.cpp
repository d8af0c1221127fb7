#include "platform/scripted/TimelineReader.h"

#include "platform/scripted/ScenarioReader.h"
#include "platform/scripted/ScenarioValueDecoder.h"

#include <limits>
#include <sstream>

namespace vardel::scripted {

namespace {

std::string formatSeconds(double seconds)
{
    std::ostringstream text;
    text << seconds;
    return text.str();
}

} // namespace

std::vector<TimelineStep> TimelineReader::read(const JsonCursor& timeline)
{
    std::vector<TimelineStep> steps;
    timeline.forEachItem(
        [&](const JsonCursor& step) { steps.push_back(readStep(step, steps.empty() ? 0 : steps.back().at)); });
    return steps;
}

TimelineStep TimelineReader::readStep(const JsonCursor& cursor, double earliest)
{
    cursor.allowOnlyKeys(
        { "at", "frontmost", "launch", "terminate", "set", "replaceUI", "windowList", "powerAssertions", "screens",
            "plists", "defaults", "preferences", "respond", "menu", "script", "fileEvent", "keys", "runningTask" });
    TimelineStep step;
    auto at = cursor.requiredMember("at");
    step.at = at.nonNegativeNumber();
    if (step.at < earliest)
        at.fail("steps must be in ascending order of \"at\"; the step before is at " + formatSeconds(earliest));
    if (cursor.json().size() < 2)
        cursor.fail("a step needs something to happen besides \"at\"");
    readApplicationChanges(cursor, step);
    readWorldChanges(cursor, step);
    readInteractions(cursor, step);
    return step;
}

// In the order in which a step applies them: what a later change names must exist by then.
void TimelineReader::readApplicationChanges(const JsonCursor& cursor, TimelineStep& step)
{
    LiveElementLedger& ledger = scenario_.ledger();
    if (auto terminate = cursor.nonNullMember("terminate")) {
        terminate->forOneOrMany([&](const JsonCursor& pid) {
            step.terminate.push_back(pid.processIdentifier());
            ledger.terminate(step.terminate.back(), pid.path());
        });
    }
    if (auto launch = cursor.nonNullMember("launch")) {
        launch->forOneOrMany([&](const JsonCursor& application) {
            step.launch.push_back(scenario_.readApplication(application));
            if (!step.launch.back().running)
                application.path().member("running").fail("a launched application is running");
            ledger.launch(step.launch.back(), application.path().member("pid"));
        });
    }
    if (auto replace = cursor.nonNullMember("replaceUI")) {
        replace->allowOnlyKeys({ "pid", "ui" });
        auto pid = replace->requiredMember("pid");
        auto ui = replace->nonNullMember("ui");
        step.replaceUI = InterfaceReplacement { pid.processIdentifier(),
            ui ? ScenarioReader::readInterface(*ui) : ApplicationInterface {} };
        ledger.replaceInterface(*step.replaceUI, pid.path());
    }
    for (const auto& application : step.launch) {
        if (application.ui.tree)
            ledger.requireReferences(application.ui.tree->references);
    }
    if (step.replaceUI && step.replaceUI->ui.tree)
        ledger.requireReferences(step.replaceUI->ui.tree->references);
    if (auto set = cursor.nonNullMember("set"))
        readAttributeChanges(*set, step);
}

void TimelineReader::readAttributeChanges(const JsonCursor& set, TimelineStep& step)
{
    set.forEachItem([&](const JsonCursor& cursor) {
        cursor.allowOnlyKeys({ "element", "attribute", "value" });
        AttributeChange change;
        auto element = cursor.requiredMember("element");
        change.elementId = element.text();
        scenario_.ledger().requireElement(change.elementId, element.path());
        auto attribute = cursor.requiredMember("attribute");
        change.attribute = attribute.text();
        if (!change.attribute.starts_with("AX"))
            attribute.fail("attribute names begin with \"AX\"");
        auto value = cursor.member("value");
        if (!value)
            cursor.path().member("value").fail("required (null removes the attribute)");
        if (!value->isNull())
            change.value = ScenarioValueDecoder::attribute(*value, change.references);
        scenario_.ledger().requireReferences(change.references);
        step.set.push_back(std::move(change));
    });
}

void TimelineReader::readWorldChanges(const JsonCursor& cursor, TimelineStep& step)
{
    if (auto frontmost = cursor.member("frontmost"))
        step.frontmost = frontmost->isNull() ? std::nullopt : std::optional(frontmost->processIdentifier());
    if (auto windowList = cursor.nonNullMember("windowList"))
        step.windowList = ScenarioReader::readWindowList(*windowList);
    if (auto screens = cursor.nonNullMember("screens"))
        step.screens = ScenarioReader::readScreens(*screens);
    if (auto assertions = cursor.nonNullMember("powerAssertions"))
        step.powerAssertions = ScenarioReader::readPowerAssertions(*assertions);
    if (auto plists = cursor.nonNullMember("plists"))
        step.plists = ScenarioReader::readKeyChanges(*plists, true);
    if (auto defaults = cursor.nonNullMember("defaults"))
        step.defaults = ScenarioReader::readKeyChanges(*defaults, false);
    if (auto preferences = cursor.nonNullMember("preferences"))
        step.preferences = ScenarioReader::readKeyChanges(*preferences, false);
    if (auto task = cursor.member("runningTask"))
        step.runningTask = ScenarioReader::readRunningTask(*task);
}

void TimelineReader::readInteractions(const JsonCursor& cursor, TimelineStep& step)
{
    if (auto respond = cursor.nonNullMember("respond"))
        step.respond = readResponse(*respond);
    if (auto menu = cursor.nonNullMember("menu"))
        step.menu = readMenu(*menu);
    if (auto script = cursor.nonNullMember("script"))
        step.script = readScript(*script);
    if (auto events = cursor.nonNullMember("fileEvent")) {
        events->forOneOrMany([&](const JsonCursor& event) {
            event.allowOnlyKeys({ "path", "flags" });
            auto flags = event.nonNullMember("flags");
            step.fileEvents.push_back({ event.requiredMember("path").text(),
                flags ? static_cast<uint32_t>(flags->integerBetween(0, std::numeric_limits<uint32_t>::max())) : 0 });
        });
    }
    if (auto keys = cursor.nonNullMember("keys"))
        step.keys = readKeys(*keys);
}

NotificationResponse TimelineReader::readResponse(const JsonCursor& cursor)
{
    cursor.allowOnlyKeys({ "notification", "action" });
    NotificationResponse response;
    auto notification = cursor.requiredMember("notification");
    if (!notification.json().is_string() || notification.text() != "last")
        response.notificationIndex = notification.integerBetween(0, std::numeric_limits<int32_t>::max());
    auto action = cursor.requiredMember("action");
    response.action = action.text();
    if (response.action.empty())
        action.fail("expected \"clicked\", \"dismissed\" or an action identifier");
    return response;
}

MenuInteraction TimelineReader::readMenu(const JsonCursor& cursor)
{
    if (cursor.json().is_string()) {
        if (cursor.text() != "open")
            cursor.fail("expected \"open\" or {\"choose\": \"ACTION:\"}");
        return {};
    }
    cursor.allowOnlyKeys({ "choose", "tag" });
    auto tag = cursor.nonNullMember("tag");
    return { cursor.requiredMember("choose").text(), tag ? std::optional(tag->integer()) : std::nullopt };
}

ScriptCommand TimelineReader::readScript(const JsonCursor& cursor)
{
    cursor.allowOnlyKeys({ "command", "fors" });
    auto command = cursor.requiredMember("command");
    std::string name = command.text();
    if (name != "pause" && name != "resume")
        command.fail("expected \"pause\" or \"resume\"");
    auto seconds = cursor.nonNullMember("fors");
    if (seconds && name == "resume")
        seconds->fail("only a pause lasts for a time");
    return { name == "pause" ? ScriptCommand::Command::Pause : ScriptCommand::Command::Resume,
        seconds ? std::optional(seconds->nonNegativeNumber()) : std::nullopt };
}

ModifierKeys TimelineReader::readKeys(const JsonCursor& cursor)
{
    cursor.allowOnlyKeys({ "command", "option", "control", "shift" });
    auto held = [&](std::string_view key) {
        auto member = cursor.nonNullMember(key);
        return member && member->boolean();
    };
    return { held("command"), held("option"), held("control"), held("shift") };
}

} // namespace vardel::scripted
