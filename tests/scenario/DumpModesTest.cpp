#include "support/TrackerProcess.h"

#include <gtest/gtest.h>

namespace vardel {
namespace {

using namespace vardel::testing;
using Json = nlohmann::ordered_json;
namespace fs = std::filesystem;

const fs::path dumpsScenario = scenarios / "dumps" / "desktop.json";

struct DumpRun : TrackerRun {
    std::string standardOutput;
};

// Runs the tracker on the dumps scenario with the arguments, in a home folder of its own.
class DumpModesTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        fs::remove_all(folder_);
        fs::create_directories(folder_ / "home/.config");
    }

    void TearDown() override { fs::remove_all(folder_); }

    DumpRun runWith(const std::vector<std::string>& arguments)
    {
        std::string command = "HOME=" + quoted((folder_ / "home").string())
            + " XDG_CONFIG_HOME= VARDEL_DESKTOP=" + quoted(dumpsScenario.string())
            + " VARDEL_TRACE=" + quoted((folder_ / "trace.jsonl").string()) + " " + quoted(VARDEL_TRACKER_PATH);
        for (const std::string& argument : arguments)
            command += " " + quoted(argument);
        command += " >" + quoted((folder_ / "stdout.txt").string()) + " 2>" + quoted((folder_ / "stderr.txt").string());
        DumpRun run;
        int status = std::system(command.c_str());
        run.exitStatus = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        run.standardOutput = readFile(folder_ / "stdout.txt");
        run.standardError = readFile(folder_ / "stderr.txt");
        std::istringstream lines(readFile(folder_ / "trace.jsonl"));
        for (std::string line; std::getline(lines, line);)
            run.trace.push_back(Json::parse(line));
        return run;
    }

    const fs::path folder_ = fs::temp_directory_path() / ("vardel-dump-modes-" + std::to_string(::getpid()));
};

// The dump ran instead of the tracker and ended the process with its status.
void expectDumpEnded(const DumpRun& run, int status)
{
    EXPECT_EQ(run.exitStatus, status) << run.standardError;
    EXPECT_TRUE(run.events("sample").empty());
    ASSERT_GE(run.trace.size(), 2u);
    const Json& log = run.trace[run.trace.size() - 2];
    EXPECT_EQ(log["message"], "Dump finished; exiting.");
    EXPECT_EQ(
        run.trace.back(), Json({ { "t", log["t"] }, { "event", "exit" }, { "status", status }, { "reason", "dump" } }));
}

TEST_F(DumpModesTest, TheWindowDumpWaitsThreeSecondsThenPrintsAndExits)
{
    DumpRun dump = runWith({ "--dumpApplicationWindows", "com.example.Mail" });
    expectDumpEnded(dump, 0);
    EXPECT_TRUE(dump.standardOutput.starts_with("\n\nMain Window:\nrole='AXWindow' title='Inbox'\n"));
    std::string traced;
    for (const auto& event : dump.events("stdout"))
        traced += event["text"].get<std::string>();
    EXPECT_EQ(traced, dump.standardOutput);
    EXPECT_EQ(dump.events("stdout").front()["t"], 3);

    // A fourth argument is the query unless it is an option.
    EXPECT_EQ(
        runWith({ "--dumpApplicationWindows", "com.example.Mail", "-NSDocumentRevisionsDebugMode" }).standardOutput,
        dump.standardOutput);
    DumpRun search = runWith({ "--dumpApplicationWindows", "com.example.Mail", "Inbox (" });
    expectDumpEnded(search, 0);
    EXPECT_TRUE(
        search.standardOutput.starts_with("Using search query: 'Inbox ('\n\n\nMain Window - Found 1 matches:\n"))
        << search.standardOutput;
}

TEST_F(DumpModesTest, TheIconIsCopiedOnceUnderTheBundlesIdentifierAndName)
{
    fs::path icons = folder_ / "home/Documents/Vardel/AppIcons";
    DumpRun first = runWith({ "--dumpApplicationIcon", "com.example.Sketcher" });
    expectDumpEnded(first, 0);
    EXPECT_EQ(first.standardOutput, "");
    EXPECT_EQ(readFile(icons / "com.example.Sketcher Sketcher.icns"),
        readFile(dumpsScenario.parent_path() / "Sketcher.app/Contents/Resources/Sketcher.icns"));
    // A name given with its extension is used as it is; a slash from the bundle cannot leave the folder.
    expectDumpEnded(runWith({ "--dumpApplicationIcon", "com.example/Painter" }), 0);
    EXPECT_TRUE(fs::exists(icons / "com.example_Painter Painter.icns"));

    DumpRun second = runWith({ "--dumpApplicationIcon", "com.example.Sketcher" });
    expectDumpEnded(second, 1);
    auto errors = second.events("stderr");
    ASSERT_EQ(errors.size(), 1u);
    std::string message = errors[0]["text"];
    EXPECT_TRUE(message.starts_with("Cannot copy")) << message;
    EXPECT_TRUE(second.standardError.starts_with(message));
}

TEST_F(DumpModesTest, AnIconThatCannotBeFoundIsReportedOnStandardOutput)
{
    std::string lostIcon = (dumpsScenario.parent_path() / "Lost.app/Contents/Resources/Lost.icns").string();
    for (const auto& [bundleIdentifier, message] : std::vector<std::pair<std::string, std::string>> {
             { "com.example.Missing", "Application 'com.example.Missing' not found.\n" },
             { "com.example.Plain", "Application icon path for 'com.example.Plain' not found.\n" },
             { "com.example.Lost", "Application icon for 'com.example.Lost' not found at '" + lostIcon + "'.\n" } }) {
        DumpRun run = runWith({ "--dumpApplicationIcon", bundleIdentifier });
        expectDumpEnded(run, 0);
        EXPECT_EQ(run.standardOutput, message);
    }
}

TEST_F(DumpModesTest, TheIconGoesToTheDocumentsFolderThatTheUserDirectoriesFileNames)
{
    std::ofstream(folder_ / "home/.config/user-dirs.dirs") << R"(XDG_DOCUMENTS_DIR="/nowhere"
  XDG_DOCUMENTS_DIR="$HOME/My \"Docs\""
XDG_DOCUMENTS_DIR=relative
)";
    fs::path documents = folder_ / "home/My \"Docs\"";
    fs::create_directories(documents);
    std::ofstream(documents / "Vardel") << "a file where the folder belongs";
    DumpRun blocked = runWith({ "--dumpApplicationIcon", "com.example.Sketcher" });
    expectDumpEnded(blocked, 1);
    EXPECT_TRUE(blocked.standardError.starts_with("Cannot create the folder '" + (documents / "Vardel").string()))
        << blocked.standardError;

    fs::remove(documents / "Vardel");
    expectDumpEnded(runWith({ "--dumpApplicationIcon", "com.example.Sketcher" }), 0);
    EXPECT_TRUE(fs::exists(documents / "Vardel/AppIcons/com.example.Sketcher Sketcher.icns"));
}

TEST_F(DumpModesTest, ADumpSwitchWithoutItsArgumentOrNotFirstStartsTheTracker)
{
    for (const auto& arguments : std::vector<std::vector<std::string>> {
             { "--dumpApplicationWindows" }, { "--verbose", "--dumpApplicationIcon", "com.example.Sketcher" } }) {
        DumpRun run = runWith(arguments);
        EXPECT_EQ(run.exitStatus, 0) << run.standardError;
        EXPECT_FALSE(run.events("sample").empty());
        EXPECT_EQ(run.trace.back()["reason"], "end");
    }
    EXPECT_FALSE(fs::exists(folder_ / "home/Documents"));
}

} // namespace
} // namespace vardel
