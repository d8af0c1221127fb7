// The dump and its search over trees that applications should not report but do: children shared by
// many parents, references back to ancestors, values of any type. Every walk ends within its visit
// bound, and says so when the bound cut it short.

#include "activity/ElementHelpers.h"
#include "diagnostics/AccessibilitySearch.h"
#include "diagnostics/AccessibilityTreeFormatter.h"
#include "support/RandomElementTrees.h"

#include <algorithm>
#include <sstream>

namespace vardel {
namespace {

using namespace vardel::testing;

constexpr int visitBound = 5000;

std::vector<std::string> lines(const std::string& text)
{
    std::vector<std::string> split;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        split.push_back(line);
    return split;
}

// Each step of the path is the child its index names.
bool followsTheChildren(const ElementPath& path)
{
    for (size_t step = 1; step < path.size(); ++step) {
        ElementHelpers::ElementList children = ElementHelpers::children(path[step - 1].element);
        if (path[step].childIndex >= children.size() || !(children[path[step].childIndex] == path[step].element))
            return false;
    }
    return true;
}

class BoundedDumpWalksTest : public ScriptedDesktopTest {
protected:
    void loadSharedChildren() { load(RandomElementTrees(7).sharedChildrenScenario("com.example.App", 30, 2)); }
};

TEST_F(BoundedDumpWalksTest, SharedChildrenEndTheTreeTextAtTheVisitBound)
{
    loadSharedChildren();
    ElementTreeWalker walker(visitBound);
    std::vector<std::string> text = lines(AccessibilityTreeFormatter::treeText(element("e0"), 20, walker));
    EXPECT_EQ(walker.visits(), visitBound);
    // One line per element visited, then the cut-short line.
    ASSERT_EQ(text.size(), static_cast<size_t>(visitBound) + 1);
    EXPECT_EQ(text.back(), AccessibilityTreeFormatter::cutShortLine(walker));
}

TEST_F(BoundedDumpWalksTest, SharedChildrenEndTheSearchAtTheVisitBound)
{
    loadSharedChildren();
    ElementTreeWalker walker(visitBound);
    // Every element matches the empty query.
    std::vector<ElementPath> matches = AccessibilitySearch::matches(element("e0"), "", 20, walker);
    EXPECT_EQ(walker.visits(), visitBound);
    EXPECT_TRUE(walker.cutShort());
    EXPECT_EQ(matches.size(), static_cast<size_t>(visitBound));
    EXPECT_TRUE(followsTheChildren(matches.back()));

    // The subtrees below the matches share one bound, which the window's subtree uses up.
    ElementTreeWalker subtrees(visitBound);
    std::string windowMatch = AccessibilityTreeFormatter::matchText(matches[0], 20, subtrees);
    EXPECT_EQ(lines(windowMatch).size(), static_cast<size_t>(visitBound) + 1);
    std::vector<std::string> nextMatch = lines(AccessibilityTreeFormatter::matchText(matches[1], 20, subtrees));
    ASSERT_EQ(nextMatch.size(), 3u);
    EXPECT_EQ(nextMatch.back(), AccessibilityTreeFormatter::cutShortLine(subtrees));
}

TEST_F(BoundedDumpWalksTest, RandomTreesGiveOneLinePerVisitAndPathsThroughTheChildren)
{
    RandomElementTrees trees(20261124);
    for (int round = 0; round < 10; ++round) {
        load(trees.scenario("com.example.App"));
        AXUIElement root = element("e0");
        ElementTreeWalker walker(visitBound);
        std::string text = AccessibilityTreeFormatter::treeText(root, 20, walker);
        EXPECT_EQ(std::count(text.begin(), text.end(), '\n') + 1, walker.visits() + (walker.cutShort() ? 1 : 0));

        ElementTreeWalker searchWalker(visitBound);
        for (const ElementPath& match : AccessibilitySearch::matches(root, "role", 20, searchWalker))
            ASSERT_TRUE(followsTheChildren(match)) << "round " << round;
    }
}

} // namespace
} // namespace vardel
