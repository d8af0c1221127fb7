#include "product/OngoingTaskActivityManager.h"

#include <gtest/gtest.h>

namespace vardel {
namespace {

class FixedRunningTask final : public RunningTaskSource {
public:
    std::optional<RunningTaskTimer> runningTask() const override { return timer; }
    void startTimer(const RunningTaskTimer& started) override { timer = started; }
    void stopTimer() override { timer.reset(); }
    std::optional<RunningTaskTimer> timer;
};

TEST(OngoingTaskActivityManagerTest, FollowsTheTimerAsItStartsAndStops)
{
    FixedRunningTask source;
    OngoingTaskActivityManager manager(source);
    EXPECT_FALSE(manager.hasRunningActivity());
    EXPECT_EQ(manager.elapsedSeconds(Date { 1000 }), std::nullopt);

    source.timer = RunningTaskTimer { "Writing", Date { 400 } };
    EXPECT_TRUE(manager.hasRunningActivity());
    EXPECT_EQ(manager.runningActivity(), source.timer);
    EXPECT_EQ(manager.elapsedSeconds(Date { 1000 }), 600);
    // A timer started on a machine whose clock is ahead has run no time yet.
    EXPECT_EQ(manager.elapsedSeconds(Date { 300 }), 0);

    source.timer.reset();
    EXPECT_FALSE(manager.hasRunningActivity());
}

} // namespace
} // namespace vardel
