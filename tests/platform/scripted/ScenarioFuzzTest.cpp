#include "platform/scripted/ScriptedDesktop.h"
#include "platform/scripted/ScriptedTesting.h"

#include <gtest/gtest.h>

#include <random>

namespace vardel::scripted::testing {
namespace {

using Pointer = Json::json_pointer;

const char* const validScenario = R"({
  "start": "2026-01-05T09:00:00Z", "end": 5, "screens": [[0, 0, 1920, 1080]],
  "defaults": {"a": 1}, "preferences": {"b": [true]}, "domains": {"com.x": {"c": "d"}},
  "self": {"bundlePath": "/Applications/V.app", "info": {"CFBundleVersion": "2"}},
  "applications": [
    {"pid": 1, "bundleIdentifier": "one", "info": {"k": 1}, "ui": {"id": "app", "AXRole": "AXApplication",
      "AXMainWindow": {"ref": "win"}, "children": [{"id": "win", "AXRole": "AXWindow",
        "AXPosition": {"point": [0, 0]}, "AXSize": {"size": [10, 10]}, "AXURL": {"url": "https://x/"},
        "AXDate": {"date": "2026-01-05T09:00:00Z"}, "AXRange": {"range": [1, 2]}, "AXBad": {"error": -25204},
        "actions": {"AXRaise": "raise"}, "settable": ["AXPosition"], "children": [{"id": "leaf"}]}]}},
    {"pid": 2, "responds": false, "ui": false}, {"pid": 3, "running": false}],
  "processes": [{"pid": 4, "path": "/bin/x", "name": "x"}], "frontmost": 1,
  "windowList": [{"kCGWindowOwnerPID": 1, "kCGWindowName": "w", "kCGWindowLayer": 0,
                  "kCGWindowBounds": {"X": 0, "Y": 0, "Width": 1, "Height": 1}}],
  "powerAssertions": {"1": [{"AssertType": "PreventUserIdleDisplaySleep"}]}, "powerAssertionsStatus": 0,
  "plists": {"/p.plist": {"k": "v"}}, "runningTask": {"title": "t", "since": -5}, "database": true,
  "alertAnswers": [{"message": "m", "button": 2}], "editorAnswers": [{"action": "save", "title": "t"}],
  "timeline": [
    {"at": 1, "frontmost": null, "set": [{"element": "win", "attribute": "AXTitle", "value": {"ref": "leaf"}}]},
    {"at": 2, "launch": {"pid": 3, "ui": {"id": "three"}}, "terminate": 1, "windowList": []},
    {"at": 3, "replaceUI": {"pid": 3, "ui": {"id": "again"}}, "plists": {"/p.plist": null},
     "respond": {"notification": "last", "action": "clicked"}, "menu": {"choose": "pauseTrackingFor:", "tag": 300},
     "script": {"command": "pause", "fors": 600}, "fileEvent": [{"path": "/a", "flags": 1}], "keys": {"option": true},
     "runningTask": null, "defaults": {"a": null}, "preferences": {"b": 2}, "screens": []}]
})";

std::vector<Pointer> everyNode(const Json& json)
{
    std::vector<Pointer> nodes;
    std::vector<Pointer> pending { Pointer() };
    while (!pending.empty()) {
        Pointer pointer = pending.back();
        pending.pop_back();
        nodes.push_back(pointer);
        const Json& node = json.at(pointer);
        if (node.is_object()) {
            for (const auto& [key, value] : node.items())
                pending.push_back(pointer / key);
        } else if (node.is_array()) {
            for (size_t index = 0; index < node.size(); ++index)
                pending.push_back(pointer / index);
        }
    }
    return nodes;
}

Json randomValue(std::mt19937& random, int depth = 0)
{
    const char* const texts[] = { "", "AXWindow", "win", "leaf", "2026-01-05T09:00:00Z", "/abs", "open", "last" };
    const char* const keys[] = { "ref", "point", "error", "url", "date", "id", "children", "AXTitle", "pid", "at" };
    switch (random() % (depth < 2 ? 9 : 6)) {
    case 0:
        return nullptr;
    case 1:
        return random() % 2 == 0;
    case 2:
        return static_cast<int64_t>(random() % 7) - 3;
    case 3:
        return std::numeric_limits<uint64_t>::max() - random() % 2;
    case 4:
        return 1e300 * static_cast<double>(random() % 3) - 0.5;
    case 5:
        return texts[random() % std::size(texts)];
    case 6:
    case 7: {
        Json array = Json::array();
        for (unsigned count = random() % 4; count > 0; --count)
            array.push_back(randomValue(random, depth + 1));
        return array;
    }
    default: {
        Json object = Json::object();
        for (unsigned count = random() % 3; count > 0; --count)
            object[keys[random() % std::size(keys)]] = randomValue(random, depth + 1);
        return object;
    }
    }
}

// Exercises a desktop that loaded, so that odd but valid content is also run through.
void exercise(ScriptedDesktop& desktop)
{
    for (ProcessIdentifier pid = 1; pid <= 4; ++pid) {
        if (auto application = desktop.accessibility().createApplication(pid)) {
            desktop.accessibility().copyAttributeNames(*application);
            desktop.accessibility().copyElementAtPosition(*application, 5, 5);
        }
    }
    desktop.windowServer().onScreenWindowList();
    desktop.runLoop().run();
}

TEST(ScenarioFuzz, MutatedScenariosLoadOrFailCleanly)
{
    const Json valid = Json::parse(validScenario);
    ASSERT_NO_THROW(exercise(*ScriptedDesktop::fromJson(valid.dump())));

    std::mt19937 random(20260105);
    int loaded = 0;
    for (int round = 0; round < 1500; ++round) {
        Json scenario = valid;
        for (unsigned mutations = 1 + random() % 3; mutations > 0; --mutations) {
            auto nodes = everyNode(scenario);
            scenario[nodes[random() % nodes.size()]] = randomValue(random);
        }
        SCOPED_TRACE(scenario.dump());
        try {
            exercise(*ScriptedDesktop::fromJson(scenario.dump()));
            ++loaded;
        } catch (const ScenarioError& error) {
            EXPECT_EQ(std::string(error.what()).rfind("scenario.json: $", 0), 0u) << error.what();
        }
    }
    // Both outcomes occur, or the mutations are not reaching what matters.
    EXPECT_GT(loaded, 50);
    EXPECT_LT(loaded, 1450);
}

} // namespace
} // namespace vardel::scripted::testing
