#include "activity/UIElementUtilities.h"
#include "support/ScriptedDesktopTest.h"

namespace vardel {
namespace {

using namespace vardel::testing;

class UIElementUtilitiesDescriptionsTest : public ScriptedDesktopTest {
protected:
    // An application with a window holding one button, and an element whose parent chain loops.
    void loadTree()
    {
        Json button = node("AXButton",
            { { "id", "button" }, { "AXTitle", "Send" }, { "AXDescription", "" },
                { "AXPosition", { { "point", { 3, 4.5 } } } }, { "actions", { { "AXPress", "press" } } },
                { "settable", { "AXTitle" } } });
        Json window = node("AXWindow", { { "id", "window" }, { "AXTitle", "Inbox" } }, { button });
        Json looping = node("AXGroup", { { "id", "looping" }, { "AXParent", ref("looping") } });
        load(desktopWith(application(501, "com.example.Mail", node("AXApplication", {}, { window, looping }))));
    }
};

TEST_F(UIElementUtilitiesDescriptionsTest, ValuesAreDescribedByKind)
{
    EXPECT_EQ(UIElementUtilities::stringDescriptionOfAXValue(Point { 3, 4.5 }, false), "x=3 y=4.5");
    EXPECT_EQ(UIElementUtilities::stringDescriptionOfAXValue(Point { 3, 4.5 }, true), "<AXPointValue x=3 y=4.5>");
    EXPECT_EQ(UIElementUtilities::stringDescriptionOfAXValue(Rect { { 1, 2 }, { 3, 0.25 } }, true),
        "<AXRectValue  x=1 y=2 w=3 h=0.25>");
    EXPECT_EQ(UIElementUtilities::stringDescriptionOfAXValue(Value("text"), false), "AXValue???");

    loadTree();
    EXPECT_EQ(UIElementUtilities::descriptionOfValue(std::nullopt, false), std::nullopt);
    EXPECT_EQ(UIElementUtilities::descriptionOfValue(Value(Value::List { 1, 2, 3 }), false), "<array of size 3>");
    EXPECT_EQ(UIElementUtilities::descriptionOfValue(Value(Range { 1, 2 }), true), "<AXRangeValue pos=1 len=2>");
    EXPECT_EQ(UIElementUtilities::descriptionOfValue(Value(element("button")), false), "<AXButton: \u201cSend\u201d>");
    EXPECT_EQ(UIElementUtilities::descriptionOfValue(Value(element("looping")), false), "<AXGroup>");
    EXPECT_EQ(UIElementUtilities::descriptionOfValue(Value("plain"), false), "plain");
    EXPECT_EQ(UIElementUtilities::descriptionOfValue(Value(Url { "https://a.example/" }), false), "https://a.example/");
    EXPECT_EQ(
        UIElementUtilities::descriptionOfValue(Value(Value::Dictionary { { "k", true } }), false), "{\"k\":true}");
    // A dictionary with text that is not UTF-8 is still described.
    EXPECT_TRUE(UIElementUtilities::descriptionOfValue(Value(Value::Dictionary { { "k", "\xff" } }), false));
}

TEST_F(UIElementUtilitiesDescriptionsTest, LineageRunsFromTheTopAncestorAndStopsAtALoop)
{
    loadTree();
    EXPECT_EQ(UIElementUtilities::lineageOfUIElement(element("button")),
        std::vector<std::string>(
            { "<AXApplication>", "<AXWindow: \u201cInbox\u201d>", "<AXButton: \u201cSend\u201d>" }));
    EXPECT_EQ(UIElementUtilities::lineageDescriptionOfUIElement(element("button")),
        "<AXApplication>\n <AXWindow: \u201cInbox\u201d>\n  <AXButton: \u201cSend\u201d>\n");
    EXPECT_EQ(UIElementUtilities::lineageOfUIElement(element("looping")), std::vector<std::string>({ "<AXGroup>" }));
}

TEST_F(UIElementUtilitiesDescriptionsTest, AnElementIsDescribedWithItsAttributesAndActions)
{
    loadTree();
    AXUIElement window = element("window");
    EXPECT_EQ(UIElementUtilities::descriptionForUIElement(window, "AXChildren", false), "<array of size 1>");
    EXPECT_EQ(UIElementUtilities::descriptionForUIElement(window, "AXParent", false), "<AXApplication>");
    EXPECT_EQ(UIElementUtilities::descriptionForUIElement(window, "AXMissing", false), std::nullopt);

    EXPECT_EQ(UIElementUtilities::stringDescriptionOfUIElement(element("button")),
        "<AXApplication>\n <AXWindow: \u201cInbox\u201d>\n  <AXButton: \u201cSend\u201d>\n"
        "\nAttributes:\n"
        "   AXRole:  \u201cAXButton\u201d\n"
        "   AXTitle (W):  \u201cSend\u201d\n"
        "   AXDescription:  \u201c\u201d\n"
        "   AXPosition:  \u201cx=3 y=4.5\u201d\n"
        "   AXParent:  \u201c<AXWindow: \u201cInbox\u201d>\u201d\n"
        "\nActions:\n"
        "   AXPress - press\n");
    EXPECT_EQ(UIElementUtilities::descriptionOfAXDescriptionOfUIElement(element("button")), "No Description");
}

} // namespace
} // namespace vardel
