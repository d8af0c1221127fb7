#include "activity/ElementTreeWalker.h"

#include "support/ScriptedDesktopTest.h"

#include <map>

namespace vardel {
namespace {

using namespace vardel::testing;

// window ─ a ─ a1 ─ a11
//        │    └ a2
//        └ b ─ b1
class ElementTreeWalkerTest : public ScriptedDesktopTest {
protected:
    void SetUp() override
    {
        ScriptedDesktopTest::SetUp();
        auto named = [](const std::string& id, Json children = Json::array()) {
            return node("AXGroup", { { "id", id } }, std::move(children));
        };
        Json window = named(
            "window", { named("a", { named("a1", { named("a11") }), named("a2") }), named("b", { named("b1") }) });
        load(desktopWith(application(501, "com.example.App", node("AXApplication", {}, { window }))));
    }

    // The visits as "id@depth", in order; the decisions are given per id, continue otherwise.
    std::vector<std::string> walk(
        ElementTreeWalker& walker, int depthBound, const std::map<std::string, TreeWalkDecision>& decisions = {})
    {
        std::vector<std::string> visits;
        walker.walk(element("window"), depthBound, [&](const AXUIElement& element, int depth) {
            std::string id = element.traceName().value_or("?");
            visits.push_back(id + "@" + std::to_string(depth));
            auto decision = decisions.find(id);
            return decision == decisions.end() ? TreeWalkDecision::continueWalk : decision->second;
        });
        return visits;
    }

    using Visits = std::vector<std::string>;
};

TEST_F(ElementTreeWalkerTest, VisitsPreOrderInChildOrderAndFollowsTheDecisions)
{
    ElementTreeWalker walker(100);
    EXPECT_EQ(walk(walker, 10), Visits({ "window@0", "a@1", "a1@2", "a11@3", "a2@2", "b@1", "b1@2" }));
    EXPECT_EQ(walk(walker, 10, { { "a1", TreeWalkDecision::skipChildren } }),
        Visits({ "window@0", "a@1", "a1@2", "a2@2", "b@1", "b1@2" }));
    EXPECT_EQ(
        walk(walker, 10, { { "a2", TreeWalkDecision::stop } }), Visits({ "window@0", "a@1", "a1@2", "a11@3", "a2@2" }));
    EXPECT_FALSE(walker.cutShort());
}

TEST_F(ElementTreeWalkerTest, TheDepthBoundIsTheDeepestLevelVisited)
{
    ElementTreeWalker walker(100);
    EXPECT_EQ(walk(walker, 1), Visits({ "window@0", "a@1", "b@1" }));
    EXPECT_EQ(walk(walker, 0), Visits({ "window@0" }));
    EXPECT_EQ(walk(walker, -1), Visits());
    EXPECT_FALSE(walker.cutShort());
}

TEST_F(ElementTreeWalkerTest, TheVisitBoundCountsEveryVisitOfAllTheWalks)
{
    // A tree of exactly the bound is walked whole.
    ElementTreeWalker exact(7);
    EXPECT_EQ(walk(exact, 10).size(), 7u);
    EXPECT_FALSE(exact.cutShort());

    ElementTreeWalker walker(9);
    walk(walker, 10);
    EXPECT_EQ(walk(walker, 10), Visits({ "window@0", "a@1" }));
    EXPECT_TRUE(walker.cutShort());
    EXPECT_EQ(walker.visits(), 9);
    EXPECT_EQ(walk(walker, 10), Visits());
}

} // namespace
} // namespace vardel
