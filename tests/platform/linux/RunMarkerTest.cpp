// The mark a running tracker leaves in the session's runtime folder, read by the next start.

#include "platform/linux/RunMarker.h"

#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sys/wait.h>
#include <unistd.h>

namespace vardel::linux_desktop {

namespace {

// The id of a process that has ended and been reaped.
pid_t endedProcess()
{
    pid_t child = ::fork();
    if (child == 0)
        ::_exit(0);
    ::waitpid(child, nullptr, 0);
    return child;
}

TEST(RunMarkerTest, OnlyAMarkOfAProcessThatIsGoneIsACrash)
{
    vardel::testing::TemporaryFolder folder;
    auto file = folder.path() / "vardel/tracker.running";
    {
        RunMarker first(file);
        EXPECT_FALSE(first.previousRunCrashed());
        std::ifstream written(file);
        pid_t marked = 0;
        written >> marked;
        EXPECT_EQ(marked, ::getpid());
    }
    // A run that ended by itself took its mark away.
    EXPECT_FALSE(std::filesystem::exists(file));

    std::ofstream(file) << endedProcess() << '\n';
    EXPECT_TRUE(RunMarker(file).previousRunCrashed());

    // Another tracker still running, or a mark that is no process id, is no crash.
    std::ofstream(file) << ::getppid() << '\n';
    EXPECT_FALSE(RunMarker(file).previousRunCrashed());
    std::ofstream(file) << "garbage\n";
    EXPECT_FALSE(RunMarker(file).previousRunCrashed());
}

TEST(RunMarkerTest, ALaterTrackersMarkStays)
{
    vardel::testing::TemporaryFolder folder;
    auto file = folder.path() / "tracker.running";
    {
        RunMarker mine(file);
        std::ofstream(file) << ::getppid() << '\n';
    }
    EXPECT_TRUE(std::filesystem::exists(file));
}

TEST(RunMarkerTest, PathIsInTheRuntimeFolder)
{
    EXPECT_EQ(RunMarker::defaultPath([](const char*) -> const char* { return "/run/user/1000"; }),
        "/run/user/1000/vardel/tracker.running");
    EXPECT_EQ(RunMarker::defaultPath([](const char*) -> const char* { return nullptr; }), std::nullopt);
    EXPECT_EQ(RunMarker::defaultPath([](const char*) -> const char* { return "relative"; }), std::nullopt);
}

} // namespace

} // namespace vardel::linux_desktop
