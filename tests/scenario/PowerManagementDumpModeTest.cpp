#include "support/TrackerProcess.h"

#include <gtest/gtest.h>

namespace vardel {
namespace {

using namespace vardel::testing;
namespace fs = std::filesystem;

const fs::path assertionsScenario = scenarios / "pm-dump.json";

struct AssertionsDump {
    TrackerRun run;
    std::string standardOutput;
    std::string traced;
};

AssertionsDump dumpWith(const std::string& arguments)
{
    fs::path output = fs::temp_directory_path() / ("vardel-pm-dump-" + std::to_string(::getpid()) + ".txt");
    AssertionsDump dump { runTracker(assertionsScenario, arguments + " >" + quoted(output.string())), readFile(output),
        "" };
    fs::remove(output);
    for (const auto& event : dump.run.events("stdout"))
        dump.traced += event["text"].get<std::string>();
    return dump;
}

TEST(PowerManagementDumpModeTest, PrintsTheDumpInsteadOfTrackingAndExits)
{
    AssertionsDump dump = dumpWith("--dumpPMAssertions");
    EXPECT_EQ(dump.run.exitStatus, 0) << dump.run.standardError;
    EXPECT_TRUE(dump.run.events("sample").empty());
    EXPECT_EQ(dump.traced, dump.standardOutput);
    const std::string& text = dump.standardOutput;
    EXPECT_TRUE(text.starts_with("Dump created at: 2026-03-02T14:30:00Z\nmacOS Version: ")) << text;
    EXPECT_NE(text.find("\nPowerManagementAssertions.pmAssertionsDictionary:\n{"), std::string::npos);
    EXPECT_NE(text.find("\tpidsOfAppsWithAudioOutAssertion: [501]\n\tpidsOfAppsWithAudioInAssertion: [501]\n"),
        std::string::npos);
    EXPECT_NE(text.find("\nPID: 501\nbundleIdentifier: us.zoom.xos\nlocalizedName: zoom.us\n"), std::string::npos);
    EXPECT_TRUE(text.ends_with("\n\nCall information derived from that:\n"
                               "[ApplicationAndMetadata(bundleIdentifier: \"us.zoom.xos\", metadata: CallMetadata("
                               "serviceName: \"Zoom\", appName: \"zoom.us\", meetingTitle: nil, "
                               "audioInAndOutAssertionsHaveBeenRecordedSeparately: true))]\n"))
        << text;

    const auto& trace = dump.run.trace;
    ASSERT_GE(trace.size(), 2u);
    EXPECT_EQ(trace[trace.size() - 2]["message"], "Dump finished; exiting.");
    EXPECT_EQ(trace.back()["event"], "exit");
    EXPECT_EQ(trace.back()["status"], 0);
    EXPECT_EQ(trace.back()["reason"], "dump");
}

TEST(PowerManagementDumpModeTest, LaterArgumentsAreIgnoredButTheSwitchMustComeFirst)
{
    AssertionsDump extra = dumpWith("--dumpPMAssertions us.zoom.xos");
    EXPECT_EQ(extra.run.exitStatus, 0);
    EXPECT_EQ(extra.standardOutput, dumpWith("--dumpPMAssertions").standardOutput);

    AssertionsDump notFirst = dumpWith("-NSDocumentRevisionsDebugMode --dumpPMAssertions");
    EXPECT_EQ(notFirst.run.exitStatus, 0);
    EXPECT_EQ(notFirst.standardOutput, "");
    EXPECT_FALSE(notFirst.run.events("sample").empty());
}

} // namespace
} // namespace vardel
