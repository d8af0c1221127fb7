#include "platform/linux/GlibMainContextPoll.h"

#include <gtest/gtest.h>

#include <thread>

namespace vardel::linux_desktop {

namespace {

// A loop that gives up after a while, so that a source GLib never serves fails the test instead of
// hanging it.
constexpr double guardSeconds = 20;
constexpr int guardStatus = -1;

struct Stopping {
    PollRunLoop* loop;
    int status;
};

gboolean stopLoop(gpointer data)
{
    auto* stopping = static_cast<Stopping*>(data);
    stopping->loop->stop(stopping->status, "glib");
    return G_SOURCE_REMOVE;
}

TEST(GlibMainContextPollTest, IdleAndTimeoutSourcesRunFromTheLoopsOwnWait)
{
    PollRunLoop loop;
    GlibMainContextPoll glib(loop);
    loop.schedule(guardSeconds, [&] { loop.stop(guardStatus, "guard"); });

    Stopping idle { &loop, 1 };
    g_idle_add(stopLoop, &idle);
    EXPECT_EQ(loop.run(), 1);

    Stopping timeout { &loop, 2 };
    g_timeout_add(20, stopLoop, &timeout);
    EXPECT_EQ(loop.run(), 2);
}

TEST(GlibMainContextPollTest, WorkHandedOverByAnotherThreadWakesTheWait)
{
    PollRunLoop loop;
    GlibMainContextPoll glib(loop);
    loop.schedule(guardSeconds, [&] { loop.stop(guardStatus, "guard"); });
    Stopping fromThread { &loop, 3 };
    std::thread other([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        g_main_context_invoke(nullptr, stopLoop, &fromThread);
    });
    EXPECT_EQ(loop.run(), 3);
    other.join();
}

TEST(GlibMainContextPollTest, OnceGoneTheLoopNoLongerWaitsForGlib)
{
    PollRunLoop loop;
    {
        GlibMainContextPoll glib(loop);
    }
    EXPECT_EQ(loop.run(), 0) << "with nothing scheduled and nothing watched the run ends at once";
}

} // namespace

} // namespace vardel::linux_desktop
