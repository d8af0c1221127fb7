#include "platform/linux/InotifyFileEventStream.h"

#include "support/ScriptedDesktopTest.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <poll.h>

namespace vardel::testing {
namespace {

using linux_desktop::InotifyFileEventStream;
namespace Flag = FileSystemEventFlag;

void touch(const std::filesystem::path& file, const std::string& text = "x")
{
    std::ofstream(file) << text;
}

// The stream on real folders, its latency timer on the virtual run loop of a scripted desktop.
class InotifyFileEventStreamTest : public ScriptedDesktopTest {
protected:
    void SetUp() override
    {
        ScriptedDesktopTest::SetUp();
        load({ { "end", 10000 } });
        std::filesystem::create_directories(root() / "sub" / "deeper");
    }

    std::unique_ptr<InotifyFileEventStream> makeStream(double latency = 3)
    {
        return std::make_unique<InotifyFileEventStream>(desktop().runLoop(),
            std::vector<std::string> { root().string() + "/" }, latency,
            [this](const std::vector<FileSystemEvent>& events) {
                batches.push_back(events);
                batchTimes.push_back(desktop().elapsedSeconds());
            });
    }

    // Reads what the kernel queued, as the run loop would when the descriptor turns readable.
    static void readQueued(InotifyFileEventStream& stream)
    {
        pollfd descriptor { stream.fileDescriptor(), POLLIN, 0 };
        while (poll(&descriptor, 1, 20) > 0)
            stream.readAvailableEvents();
    }

    void advanceBy(double seconds) { desktop().runUntil(desktop().elapsedSeconds() + seconds); }

    std::filesystem::path root() const { return folder_.path() / "watched"; }
    std::string pathOf(const std::filesystem::path& relative) const { return (root() / relative).string(); }

    std::vector<std::vector<FileSystemEvent>> batches;
    std::vector<double> batchTimes;
    TemporaryFolder folder_;
};

TEST_F(InotifyFileEventStreamTest, ReportsEachChangedFolderOncePerLatencyWindow)
{
    auto stream = makeStream();
    ASSERT_GE(stream->fileDescriptor(), 0);
    ASSERT_TRUE(stream->start());
    touch(root() / "a");
    touch(root() / "a", "more");
    touch(root() / "sub" / "deeper" / "b");
    std::filesystem::remove(root() / "a");
    readQueued(*stream);
    advanceBy(2.5);
    EXPECT_TRUE(batches.empty());
    advanceBy(0.5);

    ASSERT_EQ(batches.size(), 1u);
    EXPECT_EQ(batchTimes[0], 3);
    EXPECT_EQ(batches[0],
        (std::vector<FileSystemEvent> { { 1, root().string(), Flag::none }, { 2, pathOf("sub/deeper"), Flag::none } }));

    std::filesystem::permissions(root() / "sub", std::filesystem::perms::owner_all);
    readQueued(*stream);
    advanceBy(3);
    ASSERT_EQ(batches.size(), 2u);
    // The folder's own attributes changed, and so did an entry of its parent.
    EXPECT_EQ(batches[1],
        (std::vector<FileSystemEvent> { { 3, root().string(), Flag::none }, { 4, pathOf("sub"), Flag::none } }));
}

TEST_F(InotifyFileEventStreamTest, WatchesFoldersThatAppearAndForgetsThoseMovedAway)
{
    auto stream = makeStream(0);
    stream->start();
    std::filesystem::create_directory(root() / "new");
    readQueued(*stream);
    touch(root() / "new" / "file");
    std::filesystem::rename(root() / "sub", folder_.path() / "moved");
    readQueued(*stream);
    touch(folder_.path() / "moved" / "deeper" / "unwatched");
    readQueued(*stream);
    advanceBy(1);

    ASSERT_EQ(batches.size(), 1u);
    EXPECT_EQ(batches[0],
        (std::vector<FileSystemEvent> {
            { 1, root().string(), Flag::mustScanSubDirs }, { 2, pathOf("new"), Flag::none } }));
}

TEST_F(InotifyFileEventStreamTest, ReportsARemovedRootAndWatchesWhatStandsThereLater)
{
    auto stream = makeStream(1);
    stream->start();
    std::filesystem::remove_all(root());
    std::filesystem::create_directory(root());
    readQueued(*stream);
    advanceBy(1);
    ASSERT_FALSE(batches.empty());
    EXPECT_EQ(batches[0].back().path, root().string());
    EXPECT_TRUE(batches[0].back().flags & Flag::rootChanged);

    touch(root() / "after");
    readQueued(*stream);
    advanceBy(1);
    ASSERT_EQ(batches.size(), 2u);
    EXPECT_EQ(batches[1], (std::vector<FileSystemEvent> { { batches[0].back().eventId + 1, root().string(), 0 } }));
}

TEST_F(InotifyFileEventStreamTest, DeliversNothingAfterStopAndFlushesOnRequest)
{
    auto stream = makeStream(30);
    stream->start();
    touch(root() / "a");
    stream->flushSync();
    ASSERT_EQ(batches.size(), 1u);
    EXPECT_EQ(batchTimes[0], 0);

    touch(root() / "b");
    readQueued(*stream);
    stream->flushAsync();
    advanceBy(0);
    EXPECT_EQ(batches.size(), 2u);

    touch(root() / "c");
    readQueued(*stream);
    stream->stop();
    touch(root() / "d");
    readQueued(*stream);
    advanceBy(60);
    EXPECT_EQ(batches.size(), 2u);
    EXPECT_NE(stream->description().find("stopped"), std::string::npos);
}

TEST_F(InotifyFileEventStreamTest, StartsOnlyWhenAFolderCanBeWatched)
{
    InotifyFileEventStream missing(desktop().runLoop(), { (root() / "missing").string() }, 3, [](const auto&) {});
    EXPECT_FALSE(missing.start());
}

} // namespace
} // namespace vardel::testing
