#include "activity/UIElementUtilities.h"

#include "support/ScriptedDesktopTest.h"

namespace vardel {
namespace {

using namespace vardel::testing;

class UIElementUtilitiesTest : public ScriptedDesktopTest {
protected:
    void loadElement(Json attributes, Json scenarioExtras = Json::object())
    {
        Json target = node("AXGroup", std::move(attributes));
        target["id"] = "target";
        Json scenario = desktopWith(application(501, "com.example.App", node("AXApplication", {}, { target })));
        for (auto& [key, value] : scenarioExtras.items())
            scenario[key] = value;
        load(scenario);
    }

    Json lastWrite()
    {
        auto writes = events("ax.set");
        return writes.empty() ? Json(nullptr) : writes.back()["value"];
    }
};

TEST_F(UIElementUtilitiesTest, TypedWritesFollowTheTypeOfTheCurrentValue)
{
    loadElement({ { "AXPosition", { { "point", { 0, 0 } } } }, { "AXSize", { { "size", { 1, 1 } } } },
        { "AXFrame", { { "rect", { 0, 0, 1, 1 } } } }, { "AXSelectedTextRange", { { "range", { 0, 0 } } } },
        { "AXValue", "old" }, { "AXEnabled", false }, { "AXCount", 3 }, { "AXList", { 1, 2 } } });
    AXUIElement target = element("target");
    UIElementUtilities::setStringValue("x=10 y=20", "AXPosition", target);
    EXPECT_EQ(lastWrite(), Json({ { "point", { 10.0, 20.0 } } }));
    UIElementUtilities::setStringValue("w=3.5 h=4", "AXSize", target);
    EXPECT_EQ(lastWrite(), Json({ { "size", { 3.5, 4.0 } } }));
    UIElementUtilities::setStringValue("x=1 y=2 w=3 h=4", "AXFrame", target);
    EXPECT_EQ(lastWrite(), Json({ { "rect", { 1.0, 2.0, 3.0, 4.0 } } }));
    UIElementUtilities::setStringValue("pos=5 len=7", "AXSelectedTextRange", target);
    EXPECT_EQ(lastWrite(), Json({ { "range", { 5, 7 } } }));
    UIElementUtilities::setStringValue("new", "AXValue", target);
    EXPECT_EQ(lastWrite(), "new");
    UIElementUtilities::setStringValue("1", "AXEnabled", target);
    EXPECT_EQ(lastWrite(), 1.0);
    UIElementUtilities::setStringValue("2.5", "AXCount", target);
    EXPECT_EQ(lastWrite(), 2.5);
    // Values of other types, missing attributes and unparsable geometry are not written.
    size_t writesSoFar = events("ax.set").size();
    UIElementUtilities::setStringValue("1", "AXList", target);
    UIElementUtilities::setStringValue("1", "AXMissing", target);
    UIElementUtilities::setStringValue("nonsense", "AXPosition", target);
    UIElementUtilities::setStringValue("1", "", target);
    EXPECT_EQ(events("ax.set").size(), writesSoFar);
}

TEST_F(UIElementUtilitiesTest, ReadsOfTheWrongTypeAreMissing)
{
    loadElement({ { "AXTitle", 7 }, { "AXValue", true }, { "AXDescription", "text" }, { "AXPosition", "here" } });
    AXUIElement target = element("target");
    EXPECT_FALSE(UIElementUtilities::titleOfUIElement(target));
    EXPECT_EQ(UIElementUtilities::numberValueOfAttribute("AXValue", target), 1.0);
    EXPECT_FALSE(UIElementUtilities::numberValueOfAttribute("AXDescription", target));
    EXPECT_EQ(UIElementUtilities::originOfUIElement(target), Point {});
    EXPECT_EQ(UIElementUtilities::frameOfUIElement(target), Rect {});
    EXPECT_EQ(UIElementUtilities::processIdentifierOfUIElement(target), 501);
    EXPECT_FALSE(UIElementUtilities::isApplicationUIElement(target));
    EXPECT_TRUE(UIElementUtilities::isApplicationUIElement(*UIElementUtilities::parentOfUIElement(target)));
}

TEST_F(UIElementUtilitiesTest, FramesAreFlippedAgainstThePrimaryScreen)
{
    loadElement({ { "AXPosition", { { "point", { 100, 50 } } } }, { "AXSize", { { "size", { 300, 200 } } } } },
        { { "screens", { { 0, 0, 1440, 900 }, { 1440, -180, 1920, 1080 } } } });
    EXPECT_EQ(UIElementUtilities::frameOfUIElement(element("target")), (Rect { { 100, 650 }, { 300, 200 } }));
    EXPECT_EQ(
        UIElementUtilities::flippedScreenBounds(Rect { { 0, 0 }, { 1440, 900 } }), (Rect { { 0, 0 }, { 1440, 900 } }));
}

TEST_F(UIElementUtilitiesTest, CocoaPointsAreConvertedOnTheScreenThatHoldsThem)
{
    loadElement({}, { { "screens", { { 0, 0, 1440, 900 }, { 1440, 0, 1920, 1080 } } } });
    EXPECT_EQ(UIElementUtilities::carbonScreenPointFromCocoaScreenPoint({ 10, 100 }), (Point { 10, 799 }));
    EXPECT_EQ(UIElementUtilities::carbonScreenPointFromCocoaScreenPoint({ 1500, 100 }), (Point { 1500, 979 }));
    EXPECT_EQ(UIElementUtilities::carbonScreenPointFromCocoaScreenPoint({ -5, -5 }), Point {});
}

TEST_F(UIElementUtilitiesTest, TheRecursionLevelIsReadOncePerProcess)
{
    loadElement({});
    EXPECT_EQ(UIElementUtilities::maxRecursionLevel(), 20);

    ProcessWideState::resetAll();
    loadElement({}, { { "preferences", { { "AXUIElement_maxRecursionLevel", 5 } } } });
    EXPECT_EQ(UIElementUtilities::maxRecursionLevel(), 5);
    platform().productPreferences().setObject("AXUIElement_maxRecursionLevel", Value(9));
    EXPECT_EQ(UIElementUtilities::maxRecursionLevel(), 5);
}

} // namespace
} // namespace vardel
