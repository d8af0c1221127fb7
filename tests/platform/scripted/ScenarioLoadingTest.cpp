#include "platform/scripted/ScenarioReader.h"
#include "platform/scripted/ScriptedDesktop.h"
#include "platform/scripted/ScriptedTesting.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace vardel::scripted::testing {
namespace {

struct Malformed {
    const char* scenario;
    const char* error;
};

TEST(ScenarioLoading, NamesTheFirstProblemByItsPath)
{
    const Malformed cases[] = {
        { R"({"applications": [{"pid": 1}, {"pid": 2}, {"pid": "3"}]})",
            "scenario.json: $.applications[2].pid: expected an integer" },
        { R"({"applications": [{"bundleIdentifier": "a"}]})", "scenario.json: $.applications[0].pid: required" },
        { R"({"applications": [{"pid": 0}]})",
            "scenario.json: $.applications[0].pid: expected an integer from 1 to 2147483647" },
        { R"({"colour": "blue"})", "scenario.json: $.colour: unknown key" },
        { R"([1, 2])", "scenario.json: $: expected an object" },
        { "{\n  \"applications\": [}", "scenario.json: $: not valid JSON at line 2, column 20" },
        { R"({"end": -1e400})", "scenario.json: $: not valid JSON: a number is out of range" },
        { R"({"start": "yesterday"})",
            "scenario.json: $.start: expected an ISO 8601 UTC date such as 2026-01-05T09:00:00Z" },
        { R"({"screens": [[0, 0, 10]]})", "scenario.json: $.screens[0]: expected a frame [x, y, width, height]" },
        { R"({"applications": [{"pid": 1, "ui": {"AXRole": "AXApplication", "title": "x"}}]})",
            "scenario.json: $.applications[0].ui.title: unknown key (attributes begin with \"AX\"; other keys are "
            "id, children, actions, settable)" },
        { R"({"applications": [{"pid": 1, "ui": true}]})",
            "scenario.json: $.applications[0].ui: expected an element object, or false for an application without "
            "one" },
        { R"({"applications": [{"pid": 1, "ui": {"AXPosition": {"point": [1]}}}]})",
            "scenario.json: $.applications[0].ui.AXPosition.point: expected [x, y]" },
        { R"({"applications": [{"pid": 1, "ui": {"AXList": [{"error": -25204}]}}]})",
            "scenario.json: $.applications[0].ui.AXList[0].error: an error code must be the whole attribute value" },
        { R"({"applications": [{"pid": 1, "ui": {"AXValue": {"error": 3}}}]})",
            "scenario.json: $.applications[0].ui.AXValue.error: expected an integer from -2147483648 to -1" },
        { R"({"applications": [{"pid": 1, "ui": {"AXMainWindow": {"ref": "nowhere"}}}]})",
            "scenario.json: $.applications[0].ui.AXMainWindow: no element has the id \"nowhere\" at this point" },
        { R"({"applications": [{"pid": 1, "ui": {"children": [{"id": "w"}]}}, {"pid": 2, "ui": {"id": "w"}}]})",
            "scenario.json: $.applications[1].ui.id: the element id \"w\" is already in use" },
        { R"({"applications": [{"pid": 1}], "processes": [{"pid": 1}]})",
            "scenario.json: $.applications[0].pid: pid 1 is already in use" },
        { R"({"preferences": {"k": {"ref": "w"}}})",
            "scenario.json: $.preferences.k.ref: element references are only for attributes" },
        { R"({"domains": {"com.example.App": {"k": [1, null]}}})",
            "scenario.json: $.domains[\"com.example.App\"].k[1]: null is not allowed in an array" },
        { R"({"plists": {"Info.plist": {}}})",
            "scenario.json: $.plists[\"Info.plist\"]: expected an absolute file path as the key" },
        { R"({"windowList": [{"owner": 5}]})",
            "scenario.json: $.windowList[0].owner: unknown key (window-list keys begin with \"kCGWindow\")" },
        { R"({"powerAssertions": {"audio": []}})",
            "scenario.json: $.powerAssertions.audio: expected a pid in decimal as the key" },
        { R"({"editorAnswers": [{"action": "maybe"}]})",
            "scenario.json: $.editorAnswers[0].action: expected \"save\" or \"cancel\"" },
        { R"({"timeline": [{"at": 5, "frontmost": null}, {"at": 3, "frontmost": null}]})",
            "scenario.json: $.timeline[1].at: steps must be in ascending order of \"at\"; the step before is at 5" },
        { R"({"timeline": [{"at": 1}]})",
            "scenario.json: $.timeline[0]: a step needs something to happen besides \"at\"" },
        { R"({"timeline": [{"at": 1, "terminate": [9]}]})",
            "scenario.json: $.timeline[0].terminate[0]: no running application has pid 9" },
        { R"({"applications": [{"pid": 1}], "timeline": [{"at": 1, "launch": {"pid": 1}}]})",
            "scenario.json: $.timeline[0].launch.pid: pid 1 is already in use" },
        { R"({"applications": [{"pid": 1, "ui": {"id": "app"}}],
              "timeline": [{"at": 1, "terminate": 1}, {"at": 2, "set": [{"element": "app", "attribute": "AXTitle",
              "value": "x"}]}]})",
            "scenario.json: $.timeline[1].set[0].element: no element has the id \"app\" at this point" },
        { R"({"applications": [{"pid": 1, "ui": {"id": "app"}}],
              "timeline": [{"at": 1, "set": [{"element": "app", "attribute": "title", "value": 1}]}]})",
            "scenario.json: $.timeline[0].set[0].attribute: attribute names begin with \"AX\"" },
        { R"({"timeline": [{"at": 1, "menu": "close"}]})",
            "scenario.json: $.timeline[0].menu: expected \"open\" or {\"choose\": \"ACTION:\"}" },
        { R"({"timeline": [{"at": 1, "script": {"command": "resume", "fors": 5}}]})",
            "scenario.json: $.timeline[0].script.fors: only a pause lasts for a time" },
    };
    for (const auto& [scenario, error] : cases) {
        SCOPED_TRACE(scenario);
        EXPECT_EQ(loadError(scenario), error);
    }
}

TEST(ScenarioLoading, LaterStepsSeeWhatEarlierStepsLaunchedAndReplaced)
{
    EXPECT_EQ(loadError(R"({
        "applications": [{"pid": 1, "running": false}],
        "timeline": [
          {"at": 1, "launch": {"pid": 1, "ui": {"id": "old"}}},
          {"at": 2, "replaceUI": {"pid": 1, "ui": {"id": "new", "AXSelf": {"ref": "new"}}}},
          {"at": 3, "set": [{"element": "new", "attribute": "AXTitle", "value": {"ref": "new"}}]}]})"),
        "loaded");
    EXPECT_EQ(loadError(R"({
        "applications": [{"pid": 1, "ui": {"id": "old"}}],
        "timeline": [
          {"at": 2, "replaceUI": {"pid": 1, "ui": {"id": "new"}}},
          {"at": 3, "set": [{"element": "old", "attribute": "AXTitle", "value": null}]}]})"),
        "scenario.json: $.timeline[1].set[0].element: no element has the id \"old\" at this point");
}

TEST(ScenarioLoading, OwnBundleInformationIsAFileUnlessThePropertyListsSayOtherwise)
{
    auto read = [](const char* text) { return ScenarioReader("scenario.json", {}).read(Json::parse(text)); };
    Scenario plain = read("{}");
    EXPECT_EQ(plain.self.executablePath, "/Applications/VardelHelper.app/Contents/MacOS/VardelHelper");
    EXPECT_EQ(plain.plists,
        (Value::Dictionary { { "/Applications/VardelHelper.app/Contents/Info.plist",
            Value::Dictionary { { "CFBundleVersion", "1" } } } }));

    Scenario moved = read(R"({"self": {"bundlePath": "/Other.app", "info": {"CFBundleVersion": "7"}},
        "plists": {"/extra.plist": [1]}})");
    EXPECT_EQ(moved.self.executablePath, "/Other.app/Contents/MacOS/VardelHelper");
    EXPECT_EQ(moved.plists.size(), 2u);
    EXPECT_EQ(
        moved.plists.at("/Other.app/Contents/Info.plist"), Value(Value::Dictionary { { "CFBundleVersion", "7" } }));

    EXPECT_TRUE(read(R"({"plists": {"/Applications/VardelHelper.app/Contents/Info.plist": null}})").plists.empty());
}

// A scenario whose one application's tree is a chain of elements "level1" to "levelN", written as
// text: the JSON library's printer recurses, and a sanitizer's stack frames do not fit it that deep.
std::string scenarioWithChainOfElements(size_t depth)
{
    std::string text = R"({"applications": [{"pid": 1, "ui": )";
    for (size_t level = 1; level < depth; ++level)
        text += R"({"id": "level)" + std::to_string(level) + R"(", "children": [)";
    text += R"({"id": "level)" + std::to_string(depth) + R"("})";
    for (size_t level = 1; level < depth; ++level)
        text += "]}";
    return text + "}]}";
}

TEST(ScenarioLoading, ElementTreesMayNestAThousandLevels)
{
    auto desktop = ScriptedDesktop::fromJson(scenarioWithChainOfElements(1000));
    auto deepest = element(*desktop, "level1000");
    auto parent = desktop->accessibility().copyAttributeValue(deepest, "AXParent");
    ASSERT_TRUE(parent.ok());
    EXPECT_EQ(*parent.value->asElement(), element(*desktop, "level999"));

    EXPECT_EQ(loadError(scenarioWithChainOfElements(1001)),
        "scenario.json: $.applications[0].ui: elements nested deeper than 1000 levels");
}

TEST(ScenarioLoading, HostileNestingIsAnErrorNotACrash)
{
    std::string deepValue = R"({"preferences": {"k": )" + std::string(100000, '[') + std::string(100000, ']') + "}}";
    EXPECT_EQ(loadError(deepValue), "scenario.json: $.preferences.k: value nested deeper than 1000 levels");

    std::string deepTree = R"({"applications": [{"pid": 1, "ui": )";
    for (int level = 0; level < 100000; ++level)
        deepTree += R"({"children": [)";
    deepTree += "{}";
    for (int level = 0; level < 100000; ++level)
        deepTree += "]}";
    deepTree += "}]}";
    EXPECT_EQ(loadError(deepTree), "scenario.json: $.applications[0].ui: elements nested deeper than 1000 levels");
}

class ScenarioFileTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        folder_ = std::filesystem::temp_directory_path()
            / ("vardel-scenario-" + std::string(::testing::UnitTest::GetInstance()->current_test_info()->name()));
        std::filesystem::create_directories(folder_);
    }
    void TearDown() override { std::filesystem::remove_all(folder_); }

    std::filesystem::path write(const std::string& text)
    {
        auto file = folder_ / "scenario.json";
        std::ofstream(file) << text;
        return file;
    }

    std::filesystem::path folder_;
};

TEST_F(ScenarioFileTest, RelativePathsAreTakenFromTheScenarioFolder)
{
    auto desktop = ScriptedDesktop::load(write(R"({"applications": [{"pid": 7, "bundlePath": "Bundles/Tool.app",
        "executablePath": "/usr/bin/tool"}]})"));
    auto running = desktop->workspace().runningApplications();
    ASSERT_EQ(running.size(), 1u);
    EXPECT_EQ(running[0].bundlePath, (folder_ / "Bundles/Tool.app").string());
    EXPECT_EQ(running[0].executablePath, "/usr/bin/tool");
}

TEST_F(ScenarioFileTest, ErrorsNameTheFileAsGiven)
{
    auto file = write(R"({"frontmost": "501"})");
    try {
        ScriptedDesktop::load(file);
        FAIL() << "loaded";
    } catch (const ScenarioError& error) {
        EXPECT_EQ(error.what(), file.string() + ": $.frontmost: expected an integer");
    }
    EXPECT_THROW(ScriptedDesktop::load(folder_ / "missing.json"), ScenarioError);
    EXPECT_THROW(ScriptedDesktop::load(folder_), ScenarioError);
}

} // namespace
} // namespace vardel::scripted::testing
