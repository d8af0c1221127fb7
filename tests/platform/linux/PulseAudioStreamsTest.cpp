// The stream list against real audio servers of the test's own: PulseAudio, and PipeWire through its
// PulseAudio server.

#include "platform/linux/PulseAudioStreams.h"

#include "support/TestAudioServer.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace vardel::linux_desktop {

namespace {

using testing::waitUntil;
using namespace std::chrono_literals;

bool hasStream(const PulseAudioStreams& streams, AudioStream::Direction direction, pid_t pid)
{
    auto evidence = streams.evidence();
    return std::any_of(evidence.begin(), evidence.end(),
        [&](const AudioStream& stream) { return stream.direction == direction && stream.pid == pid; });
}

PulseAudioStreams::Now fixedClock()
{
    return [] { return Date { 1000 }; };
}

class PulseAudioStreamsTest : public ::testing::TestWithParam<testing::TestAudioServer::Kind> { };

TEST_P(PulseAudioStreamsTest, FollowsCaptureAndPlaybackButNotMonitors)
{
    testing::TestAudioServer server(GetParam());
    PulseAudioStreams streams(fixedClock());
    ASSERT_TRUE(waitUntil([&] { return streams.isConnected(); }, 10s));

    pid_t microphone = server.record();
    pid_t speaker = server.play();
    pid_t visualiser = server.record("speaker.monitor");
    ASSERT_TRUE(waitUntil([&] { return hasStream(streams, AudioStream::Direction::capture, microphone); }, 10s));
    ASSERT_TRUE(waitUntil([&] { return hasStream(streams, AudioStream::Direction::playback, speaker); }, 10s));
    EXPECT_FALSE(hasStream(streams, AudioStream::Direction::capture, visualiser));

    auto evidence = streams.evidence();
    auto capture = std::find_if(
        evidence.begin(), evidence.end(), [&](const AudioStream& stream) { return stream.pid == microphone; });
    ASSERT_NE(capture, evidence.end());
    EXPECT_FALSE(capture->applicationName.empty());
    EXPECT_EQ(capture->firstSeenRunning, Date { 1000 });
    ASSERT_FALSE(capture->ancestry.empty());
    EXPECT_EQ(capture->ancestry.front(), microphone);

    server.stopClient(microphone);
    EXPECT_TRUE(waitUntil([&] { return !hasStream(streams, AudioStream::Direction::capture, microphone); }, 10s));
    EXPECT_TRUE(hasStream(streams, AudioStream::Direction::playback, speaker));
}

TEST_P(PulseAudioStreamsTest, FollowsTheServerAcrossARestart)
{
    testing::TestAudioServer server(GetParam());
    PulseAudioStreams streams(fixedClock());
    ASSERT_TRUE(waitUntil([&] { return streams.isConnected(); }, 10s));
    pid_t before = server.record();
    ASSERT_TRUE(waitUntil([&] { return hasStream(streams, AudioStream::Direction::capture, before); }, 10s));

    server.restart();
    EXPECT_TRUE(waitUntil([&] { return streams.evidence().empty(); }, 10s));
    pid_t after = server.record();
    EXPECT_TRUE(waitUntil([&] { return hasStream(streams, AudioStream::Direction::capture, after); }, 15s));
    auto notices = streams.takeNotices();
    EXPECT_TRUE(std::any_of(notices.begin(), notices.end(),
        [](const std::string& notice) { return notice.starts_with("Lost the audio server"); }));
}

INSTANTIATE_TEST_SUITE_P(Servers, PulseAudioStreamsTest,
    ::testing::Values(testing::TestAudioServer::Kind::pulseAudio, testing::TestAudioServer::Kind::pipeWire),
    [](const auto& info) {
        return info.param == testing::TestAudioServer::Kind::pulseAudio ? "PulseAudio" : "PipeWire";
    });

TEST(PulseAudioStreamsWithoutServerTest, ListIsEmptyAndSaysSoOnce)
{
    testing::TemporaryFolder nowhere;
    setenv("PULSE_SERVER", ("unix:" + (nowhere.path() / "none").string()).c_str(), 1);
    PulseAudioStreams streams(fixedClock());
    ASSERT_TRUE(waitUntil([&] { return !streams.takeNotices().empty(); }, 10s));
    EXPECT_TRUE(streams.evidence().empty());
    EXPECT_FALSE(streams.isConnected());
    // Another failed attempt is not news.
    std::this_thread::sleep_for(2500ms);
    EXPECT_TRUE(streams.takeNotices().empty());
    unsetenv("PULSE_SERVER");
}

} // namespace

} // namespace vardel::linux_desktop
