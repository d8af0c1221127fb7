#include "diagnostics/AccessibilitySearch.h"

#include "support/ScriptedDesktopTest.h"

namespace vardel {
namespace {

using namespace vardel::testing;

class AccessibilitySearchTest : public ScriptedDesktopTest {
protected:
    void SetUp() override
    {
        ScriptedDesktopTest::SetUp();
        Json deep = node("AXGroup", { { "AXTitle", "Inbox deep" } });
        for (int level = 3; level >= 1; --level)
            deep = node("AXGroup", {}, { deep });
        Json window = node("AXWindow", { { "id", "window" }, { "AXTitle", "Mail" } },
            { node("AXButton", { { "AXTitle", "Inbox" } }), node("AXButton", { { "AXTitle", "INBOX" } }),
                node("AXGroup", { { "AXChildren", { ref("window") } } }),
                node("AXRow", { { "AXTitle", "Inbox (3)" }, { "AXLabelText", "unread inbox" } }), deep });
        load(desktopWith(application(501, "com.example.Mail", node("AXApplication", {}, { window }))));
    }

    // Each match as the child indices of its path.
    std::vector<std::vector<size_t>> matchIndices(std::string_view query, int levels)
    {
        std::vector<std::vector<size_t>> indices;
        ElementTreeWalker walker(1000);
        for (const ElementPath& path : AccessibilitySearch::matches(
                 element("window"), AccessibilitySearch::preparedQuery(query), levels, walker)) {
            std::vector<size_t>& steps = indices.emplace_back();
            for (const ElementPathStep& step : path)
                steps.push_back(step.childIndex);
        }
        return indices;
    }
};

using Indices = std::vector<std::vector<size_t>>;

TEST_F(AccessibilitySearchTest, AKeyValueQueryMatchesTheWholeEntryWithoutRegardToCase)
{
    EXPECT_EQ(AccessibilitySearch::preparedQuery("Title=Inbox=2"), "title='inbox=2'");
    EXPECT_EQ(matchIndices("title=Inbox", 20), Indices({ { 0, 0 }, { 0, 1 } }));
    EXPECT_EQ(matchIndices("role=AXButton", 20), Indices({ { 0, 0 }, { 0, 1 } }));
    // A plain query is contained anywhere on the search line, further attributes included.
    EXPECT_EQ(matchIndices("inbox", 20), Indices({ { 0, 0 }, { 0, 1 }, { 0, 3 }, { 0, 4, 0, 0, 0 } }));
    EXPECT_EQ(matchIndices("AXLabelText=Unread Inbox", 20), Indices({ { 0, 3 } }));
}

TEST_F(AccessibilitySearchTest, TheSearchStopsAtTheLevelBoundAndAtCycles)
{
    // The deep group is four levels below the window; the window's own reference is not followed.
    EXPECT_EQ(matchIndices("deep", 4), Indices({ { 0, 4, 0, 0, 0 } }));
    EXPECT_EQ(matchIndices("deep", 3), Indices());
    EXPECT_EQ(matchIndices("mail", 20), Indices({ { 0 } }));
    EXPECT_EQ(matchIndices("mail", -1), Indices({ { 0 } }));
}

} // namespace
} // namespace vardel
