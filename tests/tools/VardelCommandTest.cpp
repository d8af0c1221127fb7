#include "tools/VardelCommand.h"

#include "product/Database.h"
#include "support/ScriptedDesktopTest.h"
#include "support/TemporaryFolder.h"
#include "support/TrackerProcess.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <sstream>

namespace vardel {
namespace {

using testing::Json;

// 2026-01-05T00:00:00Z.
constexpr double midnight = 1767571200;

Date at(int hour, int minute, int second = 0)
{
    return Date { midnight + hour * 3600 + minute * 60 + second };
}

RecordedActivity activity(std::string name, std::optional<std::string> title, std::optional<std::string> document = {},
    std::optional<std::string> documentTitle = {})
{
    return { "com.example." + name, name, std::move(title), std::move(document), std::move(documentTitle), std::nullopt,
        false, false };
}

struct CommandRun {
    int status;
    std::string output;
    std::string errors;
};

// Runs a shell command and keeps what it printed.
std::string outputOf(const std::string& command, int& status)
{
    std::string output;
    FILE* pipe = ::popen(command.c_str(), "r");
    char buffer[4096];
    while (size_t count = std::fread(buffer, 1, sizeof buffer, pipe))
        output.append(buffer, count);
    status = WEXITSTATUS(::pclose(pipe));
    return output;
}

class VardelCommandTest : public testing::ScriptedDesktopTest {
protected:
    void SetUp() override
    {
        ScriptedDesktopTest::SetUp();
        load(Json::object());
        setenv("TZ", "UTC", 1);
        tzset();
    }

    void TearDown() override
    {
        unsetenv("TZ");
        tzset();
        ScriptedDesktopTest::TearDown();
    }

    // A day of the editor, a browser page seen twice with a break, and a private window; one
    // span crosses midnight into the day.
    void fillStore()
    {
        auto opened = Database::open(data_.path());
        ASSERT_TRUE(opened.ok());
        auto database = std::move(opened).value();
        RecordedActivity privateWindow = activity("Firefox", std::nullopt);
        privateWindow.isPrivate = true;
        std::vector<ActivitySpan> spans = {
            { std::nullopt, Date { midnight - 600 }, at(0, 5), activity("Editor", "late.txt") },
            { std::nullopt, at(9, 0), at(9, 30), activity("Editor", "plan.md", "/home/me/plan.md") },
            { std::nullopt, at(9, 30), at(9, 40), activity("Browser", "Board", "https://board.example/", "Board") },
            { std::nullopt, at(9, 40), at(9, 45), activity("Browser", "Board", "https://board.example/", "Board") },
            { std::nullopt, at(10, 0), at(10, 2, 30), privateWindow },
        };
        ASSERT_FALSE(database->saveActivitySpans(spans));
        auto entry = database->mutateOrPresentError("test", __LINE__, [&](DatabaseTransaction& transaction) {
            return transaction.createTaskActivity({ at(9, 0), at(9, 45), "Planning", "Acme" }, true);
        });
        ASSERT_TRUE(entry);
    }

    CommandRun run(std::vector<std::string> arguments)
    {
        std::ostringstream output, errors;
        std::string dataPath = data_.path().string();
        auto lookup = [&](const char* name) -> const char* {
            return std::string_view(name) == "VARDEL_DATA_DIR" ? dataPath.c_str() : nullptr;
        };
        int status = VardelCommand::run(arguments, output, errors, lookup, at(12, 0));
        return { status, output.str(), errors.str() };
    }

    testing::TemporaryFolder data_;
};

TEST_F(VardelCommandTest, ReportShowsTheTimelineAndTheTotalsOfTheDay)
{
    fillStore();
    CommandRun report = run({ "report" });
    EXPECT_EQ(report.status, 0) << report.errors;
    EXPECT_EQ(report.output,
        "Activity on 2026-01-05\n"
        "\n"
        "Timeline\n"
        "  00:00:00-00:05:00           5m  Editor — late.txt\n"
        "  09:00:00-09:30:00          30m  Editor — plan.md\n"
        "  09:30:00-09:45:00          15m  Browser — Board\n"
        "  10:00:00-10:02:30       2m 30s  Firefox — private window\n"
        "\n"
        "Applications\n"
        "          35m  Editor\n"
        "          15m  Browser\n"
        "       2m 30s  Firefox\n"
        "\n"
        "Documents and pages\n"
        "          30m  /home/me/plan.md (Editor)\n"
        "          15m  Board <https://board.example/> (Browser)\n"
        "\n"
        "Total  52m 30s\n");
    EXPECT_EQ(run({ "report", "--date", "2026-01-04" }).output.find("Total  10m\n") != std::string::npos, true);
    EXPECT_EQ(run({ "report", "--date=2026-01-06" }).output, "No activity recorded on 2026-01-06.\n");
}

TEST_F(VardelCommandTest, ReportAsJsonHasEverySpanAndTotal)
{
    fillStore();
    CommandRun report = run({ "report", "--json", "--date", "2026-01-05" });
    ASSERT_EQ(report.status, 0) << report.errors;
    Json parsed = Json::parse(report.output);
    EXPECT_EQ(parsed["date"], "2026-01-05");
    EXPECT_EQ(parsed["totalSeconds"], 3150);
    ASSERT_EQ(parsed["timeline"].size(), 5u);
    EXPECT_EQ(parsed["timeline"][0]["start"], "2026-01-05T00:00:00Z");
    EXPECT_EQ(parsed["timeline"][4]["isPrivate"], true);
    EXPECT_EQ(parsed["timeline"][4]["windowTitle"], nullptr);
    EXPECT_EQ(parsed["applications"][0],
        Json({ { "bundleIdentifier", "com.example.Editor" }, { "application", "Editor" }, { "seconds", 2100 } }));
    EXPECT_EQ(parsed["documents"][1],
        Json({ { "documentPath", "https://board.example/" }, { "documentTitle", "Board" }, { "application", "Browser" },
            { "seconds", 900 } }));
}

TEST_F(VardelCommandTest, EntriesListTheDaysTimeEntries)
{
    fillStore();
    EXPECT_EQ(
        run({ "entries" }).output, "Time entries on 2026-01-05\n\n  09:00:00-09:45:00          45m  Planning [Acme]\n");
    Json parsed = Json::parse(run({ "entries", "--json" }).output);
    EXPECT_EQ(parsed["entries"][0]["title"], "Planning");
    EXPECT_EQ(parsed["entries"][0]["seconds"], 2700);
    EXPECT_EQ(run({ "entries", "--date", "2026-01-04" }).output, "No time entries on 2026-01-04.\n");
}

TEST_F(VardelCommandTest, BadArgumentsAreUsageErrors)
{
    for (const auto& arguments : std::vector<std::vector<std::string>> { {}, { "frobnicate" }, { "report", "--date" },
             { "report", "--date", "2026-02-30" }, { "report", "--daily" }, { "entries", "today" }, { "pause", "-1" },
             { "pause", "soon" }, { "pause", "1", "2" }, { "resume", "now" } }) {
        CommandRun result = run(arguments);
        EXPECT_EQ(result.status, VardelCommand::usageStatus) << ::testing::PrintToString(arguments);
        EXPECT_TRUE(result.errors.starts_with("vardel: ")) << result.errors;
        EXPECT_EQ(result.output, "");
    }
    EXPECT_NE(run({ "report", "--date", "2026-02-30" }).errors.find("YYYY-MM-DD"), std::string::npos);
    EXPECT_EQ(run({ "--help" }).output, VardelCommand::usage());
}

TEST_F(VardelCommandTest, AFolderWithoutAStoreIsReportedAndLeftAlone)
{
    CommandRun result = run({ "report" });
    EXPECT_EQ(result.status, VardelCommand::failureStatus);
    EXPECT_NE(result.errors.find("nothing has been recorded yet"), std::string::npos) << result.errors;
    EXPECT_TRUE(std::filesystem::is_empty(data_.path()));
}

TEST_F(VardelCommandTest, AStoreSetAsideAsDamagedIsMentionedWithTheReport)
{
    fillStore();
    std::ofstream(data_.path() / (std::string(Database::fileName) + ".damaged-20260105T090000Z")) << "damaged";
    CommandRun result = run({ "report", "--json" });
    EXPECT_EQ(result.status, VardelCommand::successStatus);
    EXPECT_NE(result.errors.find("note: The activity store was found damaged and set aside as "), std::string::npos)
        << result.errors;
    EXPECT_NE(result.errors.find("There was no backup before it."), std::string::npos) << result.errors;
    EXPECT_TRUE(nlohmann::json::accept(result.output)) << "the report itself stays readable";
}

// The whole path: the tracker replays a morning, ends, and `vardel report` shows it all.
TEST_F(VardelCommandTest, TheTrackersRunIsInTheReportUpToItsLastSecond)
{
    auto run = testing::runTracker(std::filesystem::path(VARDEL_EXAMPLES_DIR) / "morning.json", "", data_.path());
    ASSERT_EQ(run.exitStatus, 0) << run.standardError;

    int status = -1;
    std::string report = outputOf(
        "VARDEL_DATA_DIR='" + data_.path().string() + "' '" + VARDEL_COMMAND_PATH + "' report --json --date 2026-03-02",
        status);
    ASSERT_EQ(status, 0);
    Json parsed = Json::parse(report);
    // The morning lasts 30 minutes, five of them with nothing to record; the last seconds come only
    // from the write at the end of the run.
    EXPECT_EQ(parsed["totalSeconds"], 1500);
    EXPECT_EQ(parsed["timeline"].back()["end"], "2026-03-02T09:00:00Z");
    for (const Json& span : parsed["timeline"]) {
        if (span["isPrivate"] == true) {
            EXPECT_EQ(span["windowTitle"], nullptr);
            EXPECT_EQ(span["documentPath"], nullptr);
            EXPECT_EQ(span["documentTitle"], nullptr);
        }
    }
}

} // namespace
} // namespace vardel
