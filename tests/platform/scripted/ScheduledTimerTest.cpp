#include "platform/ScheduledTimer.h"

#include "support/ScriptedDesktopTest.h"

#include <vector>

namespace vardel::testing {
namespace {

class ScheduledTimerTest : public ScriptedDesktopTest {
protected:
    void SetUp() override
    {
        ScriptedDesktopTest::SetUp();
        load({ { "end", 100 } });
    }

    // A timer that notes the time at which it fires.
    ScheduledTimer timerAt(double delay)
    {
        return ScheduledTimer(delay, [this] { fired.push_back(desktop().elapsedSeconds()); });
    }

    std::vector<double> fired;
};

TEST_F(ScheduledTimerTest, FiresOnceAndKnowsItFired)
{
    ScheduledTimer timer = timerAt(5);
    EXPECT_TRUE(timer.isPending());
    desktop().runUntil(4);
    EXPECT_FALSE(timer.hasFired());
    desktop().runUntil(20);
    EXPECT_EQ(fired, std::vector<double> { 5 });
    EXPECT_TRUE(timer.hasFired());
    EXPECT_FALSE(timer.isPending());
    timer.cancel();
    EXPECT_TRUE(timer.hasFired());
}

TEST_F(ScheduledTimerTest, DestroyingOrCancellingTheHandleKeepsTheTimerFromFiring)
{
    {
        ScheduledTimer destroyed = timerAt(5);
    }
    ScheduledTimer cancelled = timerAt(5);
    cancelled.cancel();
    EXPECT_FALSE(cancelled.isPending());
    desktop().runUntil(20);
    EXPECT_TRUE(fired.empty());
    EXPECT_FALSE(cancelled.hasFired());
}

TEST_F(ScheduledTimerTest, AMovedTimerStaysWithItsNewHandle)
{
    std::vector<ScheduledTimer> handles;
    ScheduledTimer original = timerAt(5);
    handles.push_back(std::move(original));
    // Growing the vector moves the handles again.
    for (double delay : { 6, 7, 8 })
        handles.push_back(timerAt(delay));
    {
        ScheduledTimer movedFrom = std::move(original);
        EXPECT_FALSE(movedFrom.isPending());
    }
    EXPECT_FALSE(original.isPending());
    EXPECT_FALSE(original.hasFired());
    desktop().runUntil(20);
    EXPECT_EQ(fired, (std::vector<double> { 5, 6, 7, 8 }));
    EXPECT_TRUE(handles.front().hasFired());
}

TEST_F(ScheduledTimerTest, ANewTimerReplacesThePendingOneAlsoFromItsOwnCallback)
{
    ScheduledTimer timer = timerAt(5);
    timer = timerAt(8);
    desktop().runUntil(20);
    EXPECT_EQ(fired, std::vector<double> { 8 });

    // As a sampler re-arms itself each time it fires.
    fired.clear();
    std::function<void()> rearm = [&] {
        fired.push_back(desktop().elapsedSeconds());
        if (fired.size() < 3)
            timer = ScheduledTimer(1, rearm);
    };
    timer = ScheduledTimer(1, rearm);
    desktop().runUntil(40);
    EXPECT_EQ(fired, (std::vector<double> { 21, 22, 23 }));
}

// The run loop outlives the platform's installation, as when a test or benchmark uninstalls the
// platform before the objects that used it go.
TEST_F(ScheduledTimerTest, AHandleLeftWithoutItsPlatformNeitherCallsItNorFiresLater)
{
    auto timer = std::make_unique<ScheduledTimer>(timerAt(5));
    Platform::install(nullptr);
    timer.reset();
    Platform::install(&desktop());
    ScheduledTimer another = timerAt(6);
    desktop().runUntil(20);
    EXPECT_EQ(fired, std::vector<double> { 6 });
}

// Equal desktops number their timers alike: the old handle's number belongs to another timer now.
TEST_F(ScheduledTimerTest, AHandleNeverCancelsATimerOfALaterPlatform)
{
    load({ { "end", 100 } });
    ScheduledTimer old = timerAt(5);
    load({ { "end", 100 } });
    ScheduledTimer current = timerAt(5);
    old.cancel();
    desktop().runUntil(20);
    EXPECT_EQ(fired, std::vector<double> { 5 });
}

} // namespace
} // namespace vardel::testing
