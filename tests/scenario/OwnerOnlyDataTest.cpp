#include "support/TemporaryFolder.h"
#include "support/TrackerProcess.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sys/stat.h>

namespace vardel {
namespace {

namespace fs = std::filesystem;
using namespace vardel::testing;

// A run that records a call, stores its entry and writes analytics, from a session whose umask lets
// everyone read what it creates, over a data folder an older version left readable.
TEST(OwnerOnlyDataTest, EverythingARunLeavesInTheDataFolderIsTheOwnersAlone)
{
    TemporaryFolder temporary;
    fs::path dataFolder = temporary.path() / "data";
    fs::create_directories(dataFolder);
    ::chmod(dataFolder.c_str(), 0755);
    std::ofstream(dataFolder / "left-by-an-older-version.txt") << "x";
    ::chmod((dataFolder / "left-by-an-older-version.txt").c_str(), 0644);

    mode_t saved = ::umask(022);
    TrackerRun run = runTracker(scenarios / "zoom-call.json", "", dataFolder);
    ::umask(saved);
    ASSERT_EQ(run.exitStatus, 0) << run.standardError;

    size_t files = 0;
    for (const auto& entry : fs::recursive_directory_iterator(dataFolder)) {
        struct stat status { };
        ASSERT_EQ(::lstat(entry.path().c_str(), &status), 0);
        unsigned expected = S_ISDIR(status.st_mode) ? 0700 : 0600;
        EXPECT_EQ(status.st_mode & 07777, expected) << entry.path();
        files += S_ISREG(status.st_mode) ? 1 : 0;
    }
    EXPECT_GE(files, 3u) << "the store and the analytics log are written";

    bool said = false;
    for (const auto& log : run.events("log"))
        said = said || log["message"] == "Made 2 entries in " + dataFolder.string() + " readable by their owner only";
    EXPECT_TRUE(said);
}

} // namespace
} // namespace vardel
