#include "platform/linux/PollRunLoop.h"

#include <gtest/gtest.h>

#include <unistd.h>

namespace vardel::linux_desktop {

namespace {

TEST(PollRunLoopTest, ServesTimersInDueOrderAndEqualTimesInSchedulingOrder)
{
    PollRunLoop loop;
    std::vector<std::string> served;
    loop.schedule(0.02, [&] { served.push_back("late"); });
    loop.schedule(0, [&] { served.push_back("first"); });
    loop.schedule(0, [&] { served.push_back("second"); });
    auto cancelled = loop.schedule(0.01, [&] { served.push_back("cancelled"); });
    loop.cancel(cancelled);
    EXPECT_EQ(loop.run(), 0);
    EXPECT_EQ(served, (std::vector<std::string> { "first", "second", "late" }));
    EXPECT_GE(loop.elapsedSeconds(), 0.02);
}

TEST(PollRunLoopTest, StopEndsTheRunWithItsStatusAndAStopBeforeTheRunHolds)
{
    PollRunLoop loop;
    bool servedAfterStop = false;
    loop.schedule(0, [&] { loop.stop(3, "done"); });
    loop.schedule(0, [&] { servedAfterStop = true; });
    EXPECT_EQ(loop.run(), 3);
    EXPECT_FALSE(servedAfterStop);
    EXPECT_EQ(loop.stopReason(), "done");

    PollRunLoop stoppedEarly;
    stoppedEarly.schedule(60, [] {});
    stoppedEarly.stop(5, "dump");
    EXPECT_EQ(stoppedEarly.run(), 5);
    stoppedEarly.schedule(0, [&] { stoppedEarly.stop(6, "again"); });
    EXPECT_EQ(stoppedEarly.run(), 6);
}

TEST(PollRunLoopTest, ReadableSourceRunsUntilRemoved)
{
    PollRunLoop loop;
    int pipe[2];
    ASSERT_EQ(::pipe(pipe), 0);
    int reads = 0;
    PollRunLoop::SourceId source = 0;
    source = loop.addReadableSource(pipe[0], [&] {
        char byte;
        ASSERT_EQ(::read(pipe[0], &byte, 1), 1);
        if (++reads == 2)
            loop.removeSource(source);
    });
    loop.schedule(0.01, [&] { ASSERT_EQ(::write(pipe[1], "ab", 2), 2); });
    // Without timers or sources left, the run ends by itself.
    EXPECT_EQ(loop.run(), 0);
    EXPECT_EQ(reads, 2);
    ::close(pipe[0]);
    ::close(pipe[1]);
}

TEST(PollRunLoopTest, SleepBlocksWithoutServingTimers)
{
    PollRunLoop loop;
    bool served = false;
    loop.schedule(0, [&] { served = true; });
    loop.sleep(0.01);
    EXPECT_FALSE(served);
    EXPECT_GE(loop.elapsedSeconds(), 0.01);
}

} // namespace

} // namespace vardel::linux_desktop
