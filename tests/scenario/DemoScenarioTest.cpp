#include "support/TrackerProcess.h"

#include <gtest/gtest.h>

#include <cstdio>

namespace vardel {
namespace {

using namespace vardel::testing;
using Json = nlohmann::ordered_json;

const std::filesystem::path demoScenario = std::filesystem::path(VARDEL_EXAMPLES_DIR) / "morning.json";

Json sampleAt(const TrackerRun& run, int second)
{
    for (const auto& sample : run.events("sample")) {
        if (sample["t"] == second)
            return sample["activity"];
    }
    return nullptr;
}

TEST(DemoScenarioTest, TheMorningIsRecordedAsTheUserLivedIt)
{
    TrackerRun run = runTracker(demoScenario);
    ASSERT_EQ(run.exitStatus, 0) << run.standardError;
    EXPECT_EQ(run.events("sample").size(), 1800u);

    // The unsaved-changes alert in front of the editor hides neither the document nor its title.
    Json editor = sampleAt(run, 11 * 60 + 10);
    EXPECT_EQ(editor["accessibilityWindows"], Json({ "textedit-alert" }));
    EXPECT_EQ(editor["details"]["windowTitle"], "Meeting notes");
    EXPECT_EQ(editor["details"]["documentPath"], "file:///Users/alex/Documents/Meeting%20notes.rtf");

    EXPECT_EQ(sampleAt(run, 12 * 60)["details"]["windowTitle"], "Sprint 14 board");
    EXPECT_EQ(sampleAt(run, 18 * 60), nullptr);
    EXPECT_EQ(sampleAt(run, 23 * 60)["details"]["windowTitle"], "MATLAB R2025b - forecast_model.m");
}

TEST(DemoScenarioTest, TheSummaryMergesSecondsIntoSpans)
{
    auto folder = std::filesystem::temp_directory_path() / ("vardel-summary-" + std::to_string(::getpid()));
    std::filesystem::create_directories(folder);
    std::string command = "VARDEL_DESKTOP=" + quoted(demoScenario.string()) + " VARDEL_TRACE=- "
        + quoted(VARDEL_TRACKER_PATH) + " 2>/dev/null | " + quoted(VARDEL_TRACE_SUMMARY_PATH) + " > "
        + quoted((folder / "summary.txt").string());
    ASSERT_EQ(std::system(command.c_str()), 0);
    std::string summary = readFile(folder / "summary.txt");
    std::filesystem::remove_all(folder);
    EXPECT_NE(summary.find("0:07:00 – 0:12:00  5m"), std::string::npos) << summary;
    EXPECT_NE(summary.find("(nothing recorded)"), std::string::npos) << summary;
    EXPECT_NE(summary.find("exit with status 0"), std::string::npos) << summary;
}

TEST(DemoScenarioTest, TheSummaryRejectsAMalformedTrace)
{
    auto path = std::filesystem::temp_directory_path() / ("vardel-bad-trace-" + std::to_string(::getpid()));
    {
        std::ofstream file(path);
        file << "{\"t\":0,\"event\":\"sample\",\"activity\":null,\"calls\":null,\"paused\":false}\n{not json\n";
    }
    std::string command = quoted(VARDEL_TRACE_SUMMARY_PATH) + " " + quoted(path.string()) + " >/dev/null 2>&1";
    int status = std::system(command.c_str());
    std::filesystem::remove(path);
    EXPECT_EQ(WEXITSTATUS(status), 1);
}

} // namespace
} // namespace vardel
