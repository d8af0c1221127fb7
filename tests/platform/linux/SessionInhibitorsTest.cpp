#include "platform/linux/SessionInhibitors.h"

#include <gtest/gtest.h>

namespace vardel::linux_desktop {

namespace {

std::string typeOf(const Value::Dictionary& assertions, const std::string& pid, size_t index)
{
    return *assertions.at(pid).asList()->at(index).asDictionary()->at(AssertionKey::type).asText();
}

} // namespace

TEST(SessionInhibitorsTest, OnlyBlockingIdleInhibitorsOfLogindLookLikeACall)
{
    auto assertions = SessionInhibitors::assertionsOf(std::vector<SessionInhibitors::LogindInhibitor> {
        { "sleep:idle", "chromium", "WebRTC has active PeerConnections", "block", 1000, 77 },
        { "shutdown", "chromium", "Saving browser state", "delay", 1000, 77 },
        { "idle", "player", "Playing audio", "delay", 1000, 78 } });
    ASSERT_EQ(assertions.size(), 2u);
    ASSERT_EQ(assertions.at("77").asList()->size(), 2u);
    EXPECT_EQ(typeOf(assertions, "77", 0), "PreventUserIdleDisplaySleep");
    EXPECT_EQ(typeOf(assertions, "77", 1), "logind:shutdown:delay");
    EXPECT_EQ(typeOf(assertions, "78", 0), "logind:idle:delay");
    const auto& webRTC = *assertions.at("77").asList()->at(0).asDictionary();
    EXPECT_EQ(webRTC.at(AssertionKey::name), Value("WebRTC has active PeerConnections"));
    EXPECT_EQ(webRTC.at(AssertionKey::processName), Value("chromium"));
    EXPECT_EQ(webRTC.at(AssertionKey::level), Value(255));
}

TEST(SessionInhibitorsTest, SessionManagerInhibitorsAreHeldByTheApplicationTheyName)
{
    constexpr uint32_t idle = 8;
    constexpr uint32_t suspend = 4;
    auto resolver = [](const std::string& applicationId) -> std::optional<ProcessIdentifier> {
        if (applicationId == "chromium")
            return 77;
        return std::nullopt;
    };
    auto assertions = SessionInhibitors::assertionsOf(
        std::vector<SessionInhibitors::SessionManagerInhibitor> {
            { "chromium", "WebRTC has active PeerConnections", idle | suspend }, { "chromium", "Downloading", suspend },
            { "unknown-app", "Playing audio", idle } },
        resolver);
    ASSERT_EQ(assertions.size(), 1u);
    ASSERT_EQ(assertions.at("77").asList()->size(), 1u);
    EXPECT_EQ(typeOf(assertions, "77", 0), "PreventUserIdleDisplaySleep");
}

TEST(SessionInhibitorsTest, MergingKeepsTheRecordsOfBothSources)
{
    Value::Dictionary streams { { "77", Value::List { Value::Dictionary { { "AssertName", "capture" } } } } };
    Value::Dictionary inhibitors { { "77", Value::List { Value::Dictionary { { "AssertName", "WebRTC" } } } },
        { "80", Value::List {} } };
    auto merged = mergedAssertions(streams, inhibitors);
    ASSERT_EQ(merged.size(), 2u);
    ASSERT_EQ(merged.at("77").asList()->size(), 2u);
    EXPECT_EQ(merged.at("77").asList()->at(1).asDictionary()->at("AssertName"), Value("WebRTC"));
}

} // namespace vardel::linux_desktop
