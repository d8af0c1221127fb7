#include "diagnostics/AccessibilityTreeFormatter.h"

#include "support/ScriptedDesktopTest.h"

namespace vardel {
namespace {

using namespace vardel::testing;

class AccessibilityTreeFormatterTest : public ScriptedDesktopTest {
protected:
    void loadWindow(Json window)
    {
        window["id"] = "window";
        load(desktopWith(application(501, "com.example.App", node("AXApplication", {}, { window }))));
    }

    static std::string treeText(const AXUIElement& element, int levels)
    {
        ElementTreeWalker walker(1000);
        return AccessibilityTreeFormatter::treeText(element, levels, walker);
    }
};

TEST_F(AccessibilityTreeFormatterTest, TheElementLineHoldsTheChosenEntriesInOrder)
{
    loadWindow(node("AXWindow",
        { { "AXPath", { 1, 2 } }, { "AXSelected", true }, { "AXDOMClassList", { "a", "b" } },
            { "AXDOMIdentifier", "main" }, { "AXIdentifier", "id" }, { "AXURL", { { "url", "https://a.example/" } } },
            { "AXValue", "line one\nline\ttwo" }, { "AXDescription", "label" }, { "AXHelp", "help" },
            { "AXTitle", "Title" }, { "AXDocument", "/Users/me/a.txt" }, { "AXSubrole", "AXStandardWindow" } },
        { node("AXGroup",
            { { "AXDocument", "/not/a/window" }, { "AXTitle", "" }, { "AXValue", 3 }, { "AXSelected", false },
                { "AXDOMClassList", { "a", 1 } }, { "AXHelp", { "not", "text" } } }) }));
    EXPECT_EQ(AccessibilityTreeFormatter::elementLine(element("window")),
        "role='AXWindow' subrole='AXStandardWindow' document='/Users/me/a.txt' title='Title' help='help' "
        "label='label' value='line one\\nline\\ttwo' url='https://a.example/' identifier='id' domIdentifier='main' "
        "domClassList='a, b' selected='true' path='<array of size 2>'");
    // Missing, empty and mistyped values are left out, and a document only belongs to windows.
    EXPECT_EQ(treeText(element("window"), 1).substr(AccessibilityTreeFormatter::elementLine(element("window")).size()),
        "\n|\t(0) role='AXGroup'");
}

TEST_F(AccessibilityTreeFormatterTest, TheSearchLineAddsFurtherTextAttributesSortedWithoutRepeatingKeys)
{
    loadWindow(node("AXWindow",
        { { "AXTitle", "Inbox" }, { "AXZoomed", "yes" }, { "AXtitle", "again" }, { "AXDOMIdentifier", "main" },
            { "AXHelp", "" }, { "AXDescription", "label" }, { "AXCount", 4 }, { "AXAlpha", "first" },
            { "AXhelp", "lowercase" }, { "AXHELP", "upper" } }));
    EXPECT_EQ(AccessibilityTreeFormatter::searchLine(element("window")),
        "role='AXWindow' title='Inbox' label='label' domIdentifier='main' AXAlpha='first' "
        "AXDescription='label' AXHELP='upper' AXZoomed='yes'");
}

TEST_F(AccessibilityTreeFormatterTest, AChildThatIsItsOwnAncestorIsNotExpandedAgainNorBeyondTheBound)
{
    loadWindow(node("AXWindow", {},
        { node("AXGroup", { { "id", "group" }, { "AXChildren", { ref("window"), ref("group"), ref("leaf") } } },
            { node("AXButton", { { "id", "leaf" } }) }) }));
    EXPECT_EQ(treeText(element("window"), 20),
        "role='AXWindow'\n|\t(0) role='AXGroup'\n|\t(0) |\t(0) \n|\t(0) |\t(1) \n|\t(0) |\t(2) role='AXButton'");
    // The deep cut is in the golden dumps; at the edges, level 0 shows the children as bare prefixes.
    EXPECT_EQ(treeText(element("window"), 0), "role='AXWindow'\n|\t(0) ");
    EXPECT_EQ(treeText(element("window"), -1), "");
}

TEST_F(AccessibilityTreeFormatterTest, AMatchShowsItsPathAndTheTreeBelowIt)
{
    loadWindow(node("AXWindow", { { "AXTitle", "Inbox" } },
        { node("AXGroup", { { "id", "group" } },
            { node("AXButton", { { "id", "send" }, { "AXTitle", "Send" }, { "AXFoo", "bar" } },
                { node("AXImage", {}, { node("AXStaticText") }) }) }) }));
    ElementPath path { { element("window"), 0 }, { element("group"), 0 }, { element("send"), 0 } };
    ElementTreeWalker walker(1000);
    EXPECT_EQ(AccessibilityTreeFormatter::matchText(path, 1, walker),
        "(0) role='AXWindow' title='Inbox'\n"
        "|\t(0) role='AXGroup'\n"
        "|\t|\t(0) role='AXButton' title='Send' AXFoo='bar' <--- matched element\n"
        "|\t|\t|\t(0) role='AXImage'\n"
        "|\t|\t|\t(0) |\t(0) ");
}

} // namespace
} // namespace vardel
