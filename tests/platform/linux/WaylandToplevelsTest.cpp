#include "platform/linux/WaylandToplevels.h"

#include <gtest/gtest.h>

namespace vardel::linux_desktop {

namespace {

constexpr uint32_t activated[] = { WaylandToplevels::activatedState };
constexpr uint32_t activatedFullScreen[]
    = { WaylandToplevels::maximizedState, WaylandToplevels::activatedState, WaylandToplevels::fullScreenState };
constexpr uint32_t minimized[] = { WaylandToplevels::minimizedState };

void announce(WaylandToplevels& toplevels, uint32_t id, const std::string& appId, const std::string& title,
    std::span<const uint32_t> states = {})
{
    toplevels.add(id);
    toplevels.setAppId(id, appId);
    toplevels.setTitle(id, title);
    toplevels.setStates(id, states);
    toplevels.done(id);
}

std::vector<uint32_t> ids(const std::vector<WaylandToplevel>& toplevels)
{
    std::vector<uint32_t> found;
    found.reserve(toplevels.size());
    for (const auto& toplevel : toplevels)
        found.push_back(toplevel.id);
    return found;
}

TEST(WaylandToplevelsTest, ChangesTakeEffectAtDone)
{
    WaylandToplevels toplevels;
    toplevels.add(1);
    toplevels.setAppId(1, "firefox-esr");
    toplevels.setTitle(1, "Page — Mozilla Firefox");
    toplevels.setStates(1, activated);
    EXPECT_FALSE(toplevels.active());
    EXPECT_TRUE(toplevels.frontToBack().empty());
    toplevels.done(1);
    ASSERT_TRUE(toplevels.active());
    EXPECT_EQ(toplevels.active()->title, "Page — Mozilla Firefox");

    toplevels.setTitle(1, "Other — Mozilla Firefox");
    toplevels.setStates(1, activatedFullScreen);
    EXPECT_EQ(toplevels.active()->title, "Page — Mozilla Firefox");
    EXPECT_FALSE(toplevels.active()->fullScreen);
    toplevels.done(1);
    EXPECT_EQ(toplevels.active()->title, "Other — Mozilla Firefox");
    EXPECT_TRUE(toplevels.active()->fullScreen);
    EXPECT_EQ(toplevels.active()->appId, "firefox-esr");
}

TEST(WaylandToplevelsTest, FocusMovesAndFrontToBackFollowsActivation)
{
    WaylandToplevels toplevels;
    announce(toplevels, 1, "a", "A", activated);
    announce(toplevels, 2, "b", "B");
    announce(toplevels, 3, "c", "C");
    EXPECT_EQ(ids(toplevels.frontToBack()), (std::vector<uint32_t> { 1, 3, 2 }));

    // The compositor deactivates the old window and activates the new one, each with its own done.
    toplevels.setStates(1, {});
    toplevels.done(1);
    EXPECT_FALSE(toplevels.active());
    toplevels.setStates(2, activated);
    toplevels.done(2);
    EXPECT_EQ(toplevels.active()->id, 2u);
    EXPECT_EQ(ids(toplevels.frontToBack()), (std::vector<uint32_t> { 2, 1, 3 }));

    // Reported the other way round, two windows are activated for a moment: the later one is active.
    toplevels.setStates(3, activated);
    toplevels.done(3);
    EXPECT_EQ(toplevels.active()->id, 3u);
    toplevels.setStates(2, minimized);
    toplevels.done(2);
    EXPECT_EQ(toplevels.active()->id, 3u);
    EXPECT_TRUE(toplevels.frontToBack()[1].minimized);
    // A state repeated without a change does not bring a window forward.
    toplevels.setStates(1, {});
    toplevels.done(1);
    EXPECT_EQ(ids(toplevels.frontToBack()), (std::vector<uint32_t> { 3, 2, 1 }));
}

TEST(WaylandToplevelsTest, ClosedAndUnknownToplevelsLeaveNoTrace)
{
    WaylandToplevels toplevels;
    announce(toplevels, 1, "a", "A", activated);
    toplevels.enterOutput(1, 7);
    toplevels.enterOutput(1, 7);
    toplevels.enterOutput(1, 8);
    toplevels.leaveOutput(1, 7);
    toplevels.done(1);
    EXPECT_EQ(toplevels.active()->outputs, (std::vector<uint32_t> { 8 }));

    // Events for a toplevel never announced, or already closed, change nothing.
    toplevels.setTitle(9, "ghost");
    toplevels.done(9);
    toplevels.close(1);
    toplevels.setStates(1, activated);
    toplevels.done(1);
    EXPECT_FALSE(toplevels.active());
    EXPECT_TRUE(toplevels.frontToBack().empty());

    announce(toplevels, 2, "b", "B", activated);
    toplevels.clear();
    EXPECT_FALSE(toplevels.active());
}

} // namespace

} // namespace vardel::linux_desktop
