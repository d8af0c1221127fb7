#include "platform/scripted/ScriptedDesktop.h"
#include "platform/scripted/ScriptedTesting.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vardel::scripted::testing {
namespace {

using ::testing::ElementsAre;

class ScriptedAccessibilityTest : public ::testing::Test {
protected:
    Accessibility& accessibility() { return desktop->accessibility(); }
    AXUIElement named(const std::string& id) { return element(*desktop, id); }
    AXError readError(const AXUIElement& element, const char* attribute)
    {
        return accessibility().copyAttributeValue(element, attribute).error;
    }
    std::vector<std::string> names(const AXUIElement& element)
    {
        return accessibility().copyAttributeNames(element).value.value_or(std::vector<std::string> { "(failed)" });
    }

    std::unique_ptr<ScriptedDesktop> desktop;
};

TEST_F(ScriptedAccessibilityTest, ImpliedAttributesFollowTheElementsOwn)
{
    desktop = desktopFrom(Json::parse(R"({"applications": [{"pid": 1, "ui": {
        "id": "app", "AXRole": "AXApplication", "children": [
          {"id": "menu", "AXRole": "AXMenuBar"},
          {"id": "main", "AXRole": "AXWindow", "AXTitle": "Main", "children": [], "AXDocument": "/tmp/a"},
          {"id": "given", "AXRole": "AXWindow", "AXChildren": [], "AXParent": null, "children": [{"id": "leaf"}]}]}}]})"));
    EXPECT_THAT(names(named("app")), ElementsAre("AXRole", "AXChildren", "AXWindows"));
    EXPECT_THAT(names(named("main")), ElementsAre("AXRole", "AXTitle", "AXDocument", "AXParent", "AXChildren"));
    EXPECT_THAT(names(named("given")), ElementsAre("AXRole", "AXChildren", "AXParent"));
    EXPECT_THAT(names(named("leaf")), ElementsAre("AXParent"));
    EXPECT_EQ(readError(named("leaf"), "AXChildren"), AXErrorCode::noValue);

    auto windows = accessibility().copyAttributeValue(named("app"), "AXWindows");
    ASSERT_TRUE(windows.ok());
    EXPECT_EQ(*windows.value, Value(Value::List { named("main"), named("given") }));
    EXPECT_EQ(accessibility().attributeValueCount(named("given"), "AXChildren").value, 0);
    EXPECT_EQ(accessibility().attributeValueCount(named("app"), "AXChildren").value, 3);
    EXPECT_EQ(accessibility().attributeValueCount(named("main"), "AXTitle").error, AXErrorCode::illegalArgument);
}

TEST_F(ScriptedAccessibilityTest, ValuesKeepTheirTypes)
{
    desktop = desktopFrom(Json::parse(R"({"applications": [{"pid": 1, "ui": {"id": "app",
        "AXPosition": {"point": [1.5, 2]}, "AXSize": {"size": [3, 4]}, "AXFrame": {"rect": [1, 2, 3, 4]},
        "AXSelectedTextRange": {"range": [5, 6]}, "AXURL": {"url": "https://a.example/"},
        "AXDate": {"date": "2026-01-05T09:00:00.5Z"}, "AXNumber": 7, "AXReal": 7.25, "AXFlag": true,
        "AXInfo": {"nested": [{"ref": "app"}], "gone": null}, "AXBroken": {"error": -25204}}}]})"));
    auto read
        = [&](const char* attribute) { return *accessibility().copyAttributeValue(named("app"), attribute).value; };
    EXPECT_EQ(read("AXPosition"), Value(Point { 1.5, 2 }));
    EXPECT_EQ(read("AXSize"), Value(Size { 3, 4 }));
    EXPECT_EQ(read("AXFrame"), Value(Rect { { 1, 2 }, { 3, 4 } }));
    EXPECT_EQ(read("AXSelectedTextRange"), Value(Range { 5, 6 }));
    EXPECT_EQ(read("AXURL"), Value(Url { "https://a.example/" }));
    EXPECT_EQ(read("AXDate").asDate()->secondsSince1970, 1767603600.5);
    EXPECT_EQ(read("AXNumber").kind(), Value::Kind::Integer);
    EXPECT_EQ(read("AXReal"), Value(7.25));
    EXPECT_EQ(read("AXFlag"), Value(true));
    EXPECT_EQ(read("AXInfo"), Value(Value::Dictionary { { "nested", Value::List { named("app") } } }));
    EXPECT_EQ(readError(named("app"), "AXBroken"), AXErrorCode::cannotComplete);
    EXPECT_EQ(readError(named("app"), "axposition"), AXErrorCode::noValue);
}

TEST_F(ScriptedAccessibilityTest, ApplicationElementsFollowTheirUserInterface)
{
    desktop = desktopFrom(Json::parse(R"({"applications": [
        {"pid": 1}, {"pid": 2, "ui": false}, {"pid": 3, "running": false, "ui": {"AXRole": "AXApplication"}},
        {"pid": 4, "ui": {"id": "four", "AXRole": "AXApplication"}}], "processes": [{"pid": 5}]})"));
    auto bare = accessibility().createApplication(1);
    ASSERT_TRUE(bare);
    EXPECT_TRUE(names(*bare).empty());
    EXPECT_EQ(readError(*bare, "AXRole"), AXErrorCode::noValue);
    EXPECT_FALSE(accessibility().createApplication(2));
    EXPECT_FALSE(accessibility().createApplication(3));
    EXPECT_FALSE(accessibility().createApplication(5));
    EXPECT_EQ(*accessibility().createApplication(4), named("four"));
    EXPECT_FALSE(*bare == named("four"));
    EXPECT_EQ(named("four").traceName(), "four");
    EXPECT_EQ(bare->traceName(), std::nullopt);
}

TEST_F(ScriptedAccessibilityTest, WithoutTrustEveryMessageFails)
{
    desktop = desktopFrom(Json::parse(R"({"accessibilityTrusted": false, "applications": [{"pid": 1, "ui": {
        "id": "app", "AXRole": "AXApplication", "AXPosition": {"point": [0, 0]}, "AXSize": {"size": [9, 9]}}}]})"));
    EXPECT_FALSE(accessibility().isProcessTrusted());
    auto application = accessibility().createApplication(1);
    ASSERT_TRUE(application);
    EXPECT_EQ(readError(*application, "AXRole"), AXErrorCode::apiDisabled);
    EXPECT_EQ(accessibility().copyAttributeNames(*application).error, AXErrorCode::apiDisabled);
    EXPECT_EQ(accessibility().copyElementAtPosition(*application, 1, 1).error, AXErrorCode::apiDisabled);
    EXPECT_EQ(accessibility().setAttributeValue(*application, "AXRole", Value("x")), AXErrorCode::apiDisabled);
    EXPECT_EQ(accessibility().pid(*application).value, 1);
}

TEST_F(ScriptedAccessibilityTest, SilentApplicationCostsTheMessagingTimeout)
{
    desktop = desktopFrom(Json::parse(R"({"applications": [
        {"pid": 1, "responds": false, "ui": {"id": "frozen", "AXRole": "AXApplication"}},
        {"pid": 2, "ui": {"id": "fine", "AXRole": "AXApplication"}}]})"));
    auto frozen = named("frozen");
    EXPECT_EQ(readError(frozen, "AXRole"), AXErrorCode::cannotComplete);
    EXPECT_EQ(desktop->elapsedSeconds(), 6);
    EXPECT_EQ(accessibility().copyElementAtPosition(frozen, 0, 0).error, AXErrorCode::cannotComplete);
    EXPECT_EQ(desktop->elapsedSeconds(), 12);
    EXPECT_EQ(readError(named("fine"), "AXRole"), AXErrorCode::success);
    EXPECT_EQ(desktop->elapsedSeconds(), 12);

    auto systemWide = *accessibility().createSystemWide();
    EXPECT_EQ(accessibility().setMessagingTimeout(systemWide, 2), AXErrorCode::success);
    EXPECT_EQ(accessibility().setAttributeValue(frozen, "AXTitle", Value("x")), AXErrorCode::cannotComplete);
    EXPECT_EQ(desktop->elapsedSeconds(), 14);

    // A time-out of its own applies to that reference only, not to an equal one.
    EXPECT_EQ(accessibility().setMessagingTimeout(frozen, 0.5f), AXErrorCode::success);
    readError(frozen, "AXRole");
    EXPECT_EQ(desktop->elapsedSeconds(), 14.5);
    readError(named("frozen"), "AXRole");
    EXPECT_EQ(desktop->elapsedSeconds(), 16.5);

    EXPECT_EQ(events(*desktop, "ax.timeout", true), (std::vector<Json> { { { "t", 12 }, { "seconds", 2 } } }));
    EXPECT_TRUE(events(*desktop, "ax.set").empty());
    EXPECT_EQ(accessibility().setMessagingTimeout(systemWide, -1), AXErrorCode::illegalArgument);
}

TEST_F(ScriptedAccessibilityTest, ElementsOfAGoneTreeAreInvalid)
{
    desktop = desktopFrom(Json::parse(R"({"applications": [
        {"pid": 1, "ui": {"id": "one", "children": [{"id": "window"}]}},
        {"pid": 2, "ui": {"id": "two", "children": [{"id": "dialog"}]}}],
        "timeline": [{"at": 1, "terminate": 1}, {"at": 2, "replaceUI": {"pid": 2, "ui": {"id": "dialog"}}}]})"));
    auto window = named("window");
    auto dialog = named("dialog");
    desktop->runUntil(1);
    EXPECT_EQ(readError(window, "AXParent"), AXErrorCode::invalidUIElement);
    EXPECT_FALSE(accessibility().createApplication(1));
    EXPECT_EQ(readError(dialog, "AXParent"), AXErrorCode::success);
    desktop->runUntil(2);
    EXPECT_EQ(readError(dialog, "AXParent"), AXErrorCode::invalidUIElement);
    EXPECT_FALSE(dialog == named("dialog"));
    EXPECT_EQ(dialog, dialog);
    EXPECT_EQ(dialog.traceName(), "dialog");
    EXPECT_EQ(*accessibility().createApplication(2), named("dialog"));
}

TEST_F(ScriptedAccessibilityTest, HitTestingFindsTheDeepestTopmostElement)
{
    auto framed = [](const char* id, int x, int y, int size, Json children = Json::array()) {
        return Json { { "id", id }, { "AXPosition", { { "point", { x, y } } } },
            { "AXSize", { { "size", { size, size } } } }, { "children", std::move(children) } };
    };
    // A lone Json in braces is copied rather than wrapped, so arrays are spelled out.
    Json unframedGroup = { { "id", "group" }, { "children", Json::array({ framed("outside", 200, 200, 10) }) } };
    Json window = framed("window", 0, 0, 100,
        Json::array({ framed("lower", 10, 10, 50),
            framed("upper", 30, 30, 50, Json::array({ framed("nested", 35, 35, 5) })), unframedGroup }));
    Json application = { { "pid", 1 }, { "ui", { { "id", "app" }, { "children", Json::array({ window }) } } } };
    desktop = desktopFrom({ { "applications", Json::array({ application }) } });

    auto hit = [&](float x, float y) {
        auto result = accessibility().copyElementAtPosition(named("app"), x, y);
        return result.ok() ? result.value->traceName().value_or("?") : std::to_string(result.error);
    };
    EXPECT_EQ(hit(15, 15), "lower");
    EXPECT_EQ(hit(40, 40), "upper");
    EXPECT_EQ(hit(36, 36), "nested");
    EXPECT_EQ(hit(90, 90), "window");
    EXPECT_EQ(hit(205, 205), "outside");
    EXPECT_EQ(hit(100, 50), "-25212");
}

TEST_F(ScriptedAccessibilityTest, WritesAndActionsAreTraced)
{
    desktop = desktopFrom(Json::parse(R"({"applications": [{"pid": 9, "ui": {"id": "app", "children": [
        {"AXRole": "AXButton", "AXTitle": "Old", "settable": ["AXValue"], "actions": {"AXPress": "press"}},
        {"id": "field"}]}}]})"));
    auto children = accessibility().copyAttributeValue(named("app"), "AXChildren");
    auto button = (*children.value->asList())[0].asElement();
    EXPECT_EQ(accessibility().isAttributeSettable(*button, "AXValue").value, true);
    EXPECT_EQ(accessibility().isAttributeSettable(*button, "AXTitle").value, false);

    EXPECT_EQ(accessibility().setAttributeValue(*button, "AXTitle", Value("New")), AXErrorCode::success);
    EXPECT_EQ(
        accessibility().setAttributeValue(named("field"), "AXFocusedUIElement", Value(*button)), AXErrorCode::success);
    EXPECT_EQ(*accessibility().copyAttributeValue(*button, "AXTitle").value, Value("New"));
    EXPECT_THAT(names(named("field")), ElementsAre("AXParent", "AXFocusedUIElement"));

    EXPECT_EQ(accessibility().copyActionNames(*button).value, std::vector<std::string> { "AXPress" });
    EXPECT_EQ(accessibility().copyActionDescription(*button, "AXPress").value, "press");
    EXPECT_EQ(accessibility().performAction(*button, "AXPress"), AXErrorCode::success);
    EXPECT_EQ(accessibility().performAction(*button, "AXCancel"), AXErrorCode::actionUnsupported);

    EXPECT_EQ(events(*desktop, "ax.set"),
        (std::vector<Json> { { { "pid", 9 }, { "element", nullptr }, { "attribute", "AXTitle" }, { "value", "New" } },
            { { "pid", 9 }, { "element", "field" }, { "attribute", "AXFocusedUIElement" },
                { "value", { { "ref", nullptr } } } } }));
    EXPECT_EQ(events(*desktop, "ax.action"),
        (std::vector<Json> { { { "pid", 9 }, { "element", nullptr }, { "action", "AXPress" } } }));
}

} // namespace
} // namespace vardel::scripted::testing
