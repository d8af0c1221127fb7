#include "platform/linux/AudioStreamList.h"

#include "platform/linux/ProcessAncestry.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <unistd.h>

namespace vardel::linux_desktop {

namespace {

using Direction = AudioStream::Direction;

AudioStream stream(uint32_t index, Direction direction, ProcessIdentifier pid, bool corked = false)
{
    return AudioStream { .index = index,
        .direction = direction,
        .pid = pid,
        .applicationName = "Chromium",
        .mediaName = "Playback",
        .corked = corked,
        .readsLevelsOnly = false,
        .ancestry = { pid, 500, 1 },
        .firstSeenRunning = std::nullopt };
}

const Value::Dictionary& onlyRecordOf(const Value::Dictionary& assertions, const std::string& pid, size_t index = 0)
{
    return *assertions.at(pid).asList()->at(index).asDictionary();
}

} // namespace

TEST(AudioStreamListTest, RunningLocalStreamsAreTheEvidence)
{
    AudioStreamList list;
    list.update(stream(1, Direction::capture, 42), Date { 10 });
    list.update(stream(2, Direction::playback, 42), Date { 10 });
    list.update(stream(3, Direction::playback, 43, /*corked=*/true), Date { 10 });
    AudioStream meter = stream(4, Direction::capture, 44);
    meter.readsLevelsOnly = true;
    list.update(meter, Date { 10 });
    AudioStream remote = stream(5, Direction::capture, 45);
    remote.pid.reset();
    list.update(remote, Date { 10 });

    std::vector<AudioStream> evidence = list.evidence();
    ASSERT_EQ(evidence.size(), 2u);
    EXPECT_EQ(evidence[0].index, 1u);
    EXPECT_EQ(evidence[1].index, 2u);

    list.remove(Direction::capture, 1);
    list.remove(Direction::playback, 1); // another direction's index: nothing to remove
    ASSERT_EQ(list.evidence().size(), 1u);
    EXPECT_EQ(list.evidence()[0].direction, Direction::playback);
    list.clear();
    EXPECT_TRUE(list.evidence().empty());
}

TEST(AudioStreamListTest, AStreamIsDatedFromItsFirstRunAndKeepsItsParents)
{
    AudioStreamList list;
    list.update(stream(7, Direction::capture, 42, /*corked=*/true), Date { 100 });
    EXPECT_TRUE(list.knowsAncestryOf(Direction::capture, 7));
    EXPECT_FALSE(list.knowsAncestryOf(Direction::playback, 7));

    AudioStream resumed = stream(7, Direction::capture, 42);
    resumed.ancestry.clear(); // parents are read once, when the stream appears
    list.update(resumed, Date { 160 });
    list.update(stream(7, Direction::capture, 42, /*corked=*/true), Date { 200 });
    list.update(stream(7, Direction::capture, 42), Date { 260 });

    auto evidence = list.evidence();
    ASSERT_EQ(evidence.size(), 1u);
    EXPECT_EQ(evidence[0].firstSeenRunning, Date { 160 });
    EXPECT_EQ(evidence[0].ancestry, (std::vector<ProcessIdentifier> { 42, 500, 1 }));
}

TEST(AudioStreamListTest, RecordsAreHeldOnBehalfOfTheNearestRunningApplication)
{
    AudioStream capture = stream(1, Direction::capture, 42);
    capture.firstSeenRunning = Date { 30 };
    capture.mediaName = "WebRTC";
    AudioStream playback = stream(2, Direction::playback, 500);
    playback.ancestry = { 500, 1 };

    auto assertions = AudioStreamList::assertionsOf({ capture, playback }, /*runningApplications=*/ { 500, 1 });
    ASSERT_EQ(assertions.size(), 2u);
    const auto& fromChild = onlyRecordOf(assertions, "42");
    EXPECT_EQ(fromChild.at(AssertionKey::type), Value("PreventUserIdleSystemSleep"));
    EXPECT_EQ(fromChild.at(AssertionKey::level), Value(255));
    EXPECT_EQ(fromChild.at(AssertionKey::name), Value("WebRTC"));
    EXPECT_EQ(fromChild.at(AssertionKey::processName), Value("Chromium"));
    EXPECT_EQ(fromChild.at(AssertionKey::startedAt), Value(Date { 30 }));
    EXPECT_EQ(fromChild.at(AssertionKey::resourcesUsed), Value(Value::List { "audio-in" }));
    EXPECT_EQ(fromChild.at(AssertionKey::onBehalfOfPID), Value(int64_t { 500 }));

    // The application's own stream needs no one to hold it for it; a stream of no running
    // application is its process's own.
    const auto& fromApplication = onlyRecordOf(assertions, "500");
    EXPECT_EQ(fromApplication.at(AssertionKey::resourcesUsed), Value(Value::List { "audio-out" }));
    EXPECT_FALSE(fromApplication.contains(AssertionKey::onBehalfOfPID));
    EXPECT_FALSE(fromApplication.contains(AssertionKey::startedAt));
    auto alone = AudioStreamList::assertionsOf({ capture }, {});
    EXPECT_FALSE(onlyRecordOf(alone, "42").contains(AssertionKey::onBehalfOfPID));
}

TEST(ProcessAncestryTest, ParentIsReadAfterTheCommandName)
{
    EXPECT_EQ(ProcessAncestry::parentInStat("123 (bash) S 77 123 123 0"), 77);
    EXPECT_EQ(ProcessAncestry::parentInStat("123 (a) b) (c d) R 88 1 1"), 88);
    EXPECT_EQ(ProcessAncestry::parentInStat("1 (init) S 0 1 1"), std::nullopt);
    EXPECT_EQ(ProcessAncestry::parentInStat("123 (bash S 77"), std::nullopt);
    EXPECT_EQ(ProcessAncestry::parentInStat("123 (bash) S"), std::nullopt);
    EXPECT_EQ(ProcessAncestry::parentInStat("123 (bash) S x7"), std::nullopt);
}

TEST(ProcessAncestryTest, LineGoesUpToTheFirstProcessAndEndsOnCycles)
{
    ProcessAncestry real;
    auto line = real.lineOf(getpid());
    ASSERT_GE(line.size(), 2u);
    EXPECT_EQ(line[0], getpid());
    EXPECT_EQ(line[1], getppid());

    testing::TemporaryFolder proc;
    auto writeStat = [&](int pid, int parent) {
        std::filesystem::create_directory(proc.path() / std::to_string(pid));
        std::ofstream(proc.path() / std::to_string(pid) / "stat") << pid << " (p) S " << parent << " 0 0";
    };
    writeStat(10, 11);
    writeStat(11, 12);
    writeStat(12, 10);
    ProcessAncestry racing(proc.path());
    EXPECT_EQ(racing.lineOf(10), (std::vector<ProcessIdentifier> { 10, 11, 12 }));
    EXPECT_EQ(racing.lineOf(10, 2).size(), 2u);
    EXPECT_EQ(racing.lineOf(99), (std::vector<ProcessIdentifier> { 99 }));
}

} // namespace vardel::linux_desktop
