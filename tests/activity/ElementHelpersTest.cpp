#include "activity/ElementHelpers.h"

#include "activity/UIElementUtilities.h"
#include "support/RandomElementTrees.h"

namespace vardel {
namespace {

using namespace vardel::testing;
using namespace vardel::ElementHelpers;

class ElementHelpersTest : public ScriptedDesktopTest {
protected:
    static Json withId(Json made, const std::string& id)
    {
        made["id"] = id;
        return made;
    }

    static Json webArea(const std::string& id, Json url, Json more = Json::object())
    {
        Json attributes = { { "AXURL", std::move(url) } };
        for (auto& [key, value] : more.items())
            attributes[key] = value;
        return withId(node("AXWebArea", attributes), id);
    }

    void loadWindow(Json window)
    {
        load(desktopWith(application(501, "com.example.Browser", node("AXApplication", {}, { std::move(window) }))));
    }

    VDActivity activity()
    {
        return VDActivity(RunningApplication { 501, "com.example.Browser", "Browser", std::nullopt, std::nullopt }, {});
    }
};

TEST_F(ElementHelpersTest, WebAreasInsideScrollAreasAreFoundInOrderAndTitleTheWindow)
{
    Json page1 = webArea("page1", { { "url", "https://a.example/" } }, { { "AXTitle", "" } });
    Json page2 = webArea("page2", "https://b.example/", { { "AXTitle", "Second" } });
    Json notAWebArea = node("AXGroup", { { "AXTitle", "Toolbar" } });
    Json scroll = node("AXScrollArea", {}, { page1, notAWebArea, page2 });
    loadWindow(
        withId(node("AXWindow", {}, { node("AXGroup", {}, { webArea("hidden", "https://c/") }), scroll }), "window"));

    VDActivity record = activity();
    ElementList found = findWebAreas(element("window"), &record);
    ASSERT_EQ(found.size(), 2u);
    EXPECT_EQ(found[0], element("page1"));
    EXPECT_EQ(found[1], element("page2"));
    EXPECT_EQ(record.details.windowTitle, "Second");

    // A title already there stays.
    record.details.windowTitle = "Kept";
    findWebAreas(element("window"), &record);
    EXPECT_EQ(record.details.windowTitle, "Kept");
}

TEST_F(ElementHelpersTest, WithoutScrollAreasTheWebAreaUnderTheWindowsCentreIsFound)
{
    Json page = webArea("page", { { "url", "https://docs.example/" } },
        { { "AXTitle", "Docs" }, { "AXPosition", { { "point", { 0, 100 } } } },
            { "AXSize", { { "size", { 800, 500 } } } } });
    Json link = withId(
        node("AXLink", { { "AXPosition", { { "point", { 390, 340 } } } }, { "AXSize", { { "size", { 20, 20 } } } } }),
        "link");
    page["children"] = Json::array({ link });
    loadWindow(withId(
        node("AXWindow", { { "AXPosition", { { "point", { 0, 0 } } } }, { "AXSize", { { "size", { 800, 700 } } } } },
            { node("AXGroup", {}, { page }) }),
        "window"));
    VDActivity record = activity();
    ElementList found = findWebAreas(element("window"), &record);
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(found[0], element("page"));
    EXPECT_EQ(record.details.windowTitle, "Docs");

    // A probe away from the centre that hits nothing finds nothing.
    EXPECT_TRUE(findWebAreas(element("window"), nullptr, { 10, false, 10, false }).empty());
}

TEST_F(ElementHelpersTest, AWindowWithoutScrollAreaOrParentHasNoWebAreas)
{
    Json scenario = desktopWith(application(501, "com.example.Browser", node("AXApplication")));
    scenario["applications"][0]["ui"]["children"]
        = Json::array({ withId(node("AXWindow", { { "AXParent", nullptr } }), "window") });
    load(scenario);
    VDActivity record = activity();
    EXPECT_TRUE(findWebAreas(element("window"), &record).empty());
    EXPECT_FALSE(record.details.windowTitle);
}

TEST_F(ElementHelpersTest, TheEnclosingWebAreaIsTheOutermostWithAnHttpAddress)
{
    Json button = withId(node("AXButton"), "button");
    Json frame = webArea("frame", "about:srcdoc", { { "children", { button } } });
    Json page = webArea(
        "page", { { "url", "https://mail.example/" } }, { { "children", { node("AXGroup", {}, { frame }) } } });
    Json outer = webArea("outer", "chrome://newtab", { { "children", { page } } });
    loadWindow(withId(node("AXWindow", {}, { outer }), "window"));
    EXPECT_EQ(enclosingWebArea(element("button")), element("page"));
    EXPECT_EQ(enclosingWebArea(element("frame")), element("page"));
}

TEST_F(ElementHelpersTest, WithoutHttpAddressesTheNearestWebAreaEncloses)
{
    Json button = withId(node("AXButton"), "button");
    Json inner = webArea("inner", "about:blank", { { "children", { button } } });
    loadWindow(withId(node("AXWindow", {}, { webArea("outer", nullptr, { { "children", { inner } } }) }), "window"));
    EXPECT_EQ(enclosingWebArea(element("button")), element("inner"));
}

TEST_F(ElementHelpersTest, TheParentWalkExaminesAtMostOneHundredElements)
{
    // The web area is the 100th element of the chain from "leaf-99" and the 101st from "leaf-100".
    Json chain = withId(node("AXGroup"), "leaf-100");
    for (int level = 99; level >= 1; --level)
        chain = withId(node("AXGroup", {}, { chain }), "leaf-" + std::to_string(level));
    loadWindow(node("AXWindow", {}, { webArea("page", "https://x.example/", { { "children", { chain } } }) }));
    EXPECT_EQ(enclosingWebArea(element("leaf-99")), element("page"));
    EXPECT_FALSE(enclosingWebArea(element("leaf-100")));
}

TEST_F(ElementHelpersTest, ParentCyclesEndTheWalks)
{
    Json first = webArea("first", "https://a/", { { "AXParent", ref("second") } });
    Json second = webArea("second", "https://b/", { { "AXParent", ref("first") } });
    loadWindow(node("AXWindow", {}, { first, second }));
    EXPECT_TRUE(enclosingWebArea(element("first")));
}

TEST_F(ElementHelpersTest, DepthBoundsOfTheTreeSearches)
{
    Json leaf = withId(node("AXButton", { { "AXTitle", "Send" } }), "send");
    loadWindow(withId(node("AXWindow", {}, { node("AXGroup", {}, { node("AXGroup"), leaf }) }), "window"));
    auto isSend = [](const AXUIElement& candidate) { return titleText(candidate) == "Send"; };
    auto isWindow = [](const AXUIElement& candidate) { return roleText(candidate) == "AXWindow"; };

    EXPECT_FALSE(firstDescendant(element("window"), isWindow, 0));
    EXPECT_EQ(firstDescendant(element("window"), isWindow, 1), element("window"));
    EXPECT_FALSE(firstDescendant(element("window"), isSend, 2));
    EXPECT_EQ(firstDescendant(element("window"), isSend, 3), element("send"));

    EXPECT_EQ(descendFirstChildren(element("window"), isWindow, 0), element("window"));
    EXPECT_FALSE(descendFirstChildren(element("window"), isWindow, -1));
    // Only first children are followed, and the button is a second child.
    EXPECT_FALSE(descendFirstChildren(element("window"), isSend, 10));
}

TEST_F(ElementHelpersTest, ASearchThroughSharedChildrenEndsAfterTenThousandElements)
{
    // Thirty levels of the same two children: a billion paths to walk without the budget.
    RandomElementTrees trees(20261123);
    load(trees.sharedChildrenScenario("com.example.Browser", 30, 2));
    int tested = 0;
    auto never = [&](const AXUIElement&) {
        ++tested;
        return false;
    };
    EXPECT_FALSE(firstDescendant(element("e0"), never, 31));
    EXPECT_EQ(tested, 10000);
}

TEST_F(ElementHelpersTest, ListSearchesLookOnlyAtTheListInItsOrder)
{
    Json children = { withId(node("AXGroup", { { "AXSubrole", "AXLandmarkBanner" } }), "banner"),
        withId(node("AXGroup", { { "AXDOMIdentifier", "main" } }), "main"),
        withId(node("AXGroup", {}, { withId(node("AXButton"), "nested") }), "last") };
    loadWindow(withId(node("AXWindow", {}, children), "window"));
    ElementList list = ElementHelpers::children(element("window"));
    EXPECT_EQ(firstElementWithRole(list, "AXGroup"), element("banner"));
    EXPECT_EQ(lastElementWithRole(list, "AXGroup"), element("last"));
    EXPECT_FALSE(firstElementWithRole(list, "AXButton"));
    EXPECT_EQ(firstElementWithRoleAndSubrole(list, "AXGroup", "AXLandmarkBanner"), element("banner"));
    EXPECT_EQ(firstElementWithDOMIdentifier(list, "main"), element("main"));
    EXPECT_TRUE(elementListContains(list, element("main")));
    EXPECT_FALSE(elementListContains(list, element("nested")));
    EXPECT_EQ(childrenOfElements(list), ElementList { element("nested") });
}

TEST_F(ElementHelpersTest, AddressesAndListsOfTheWrongTypeReadAsMissing)
{
    Json children = { webArea("url", { { "url", "https://a.example/x" } }), webArea("text", "https://b.example/"),
        webArea("number", 42), withId(node("AXGroup", { { "AXChildren", "not a list" } }), "odd") };
    loadWindow(node("AXWindow", {}, children));
    EXPECT_EQ(urlStringOfElement(element("url")), "https://a.example/x");
    EXPECT_EQ(urlStringOfElement(element("text")), "https://b.example/");
    EXPECT_FALSE(urlStringOfElement(element("number")));
    EXPECT_TRUE(ElementHelpers::children(element("odd")).empty());
}

} // namespace
} // namespace vardel
