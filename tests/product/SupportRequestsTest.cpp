#include "product/SupportRequests.h"

#include "support/ScriptedDesktopTest.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <map>

namespace vardel {
namespace {

std::map<std::string, std::string> filesIn(const std::filesystem::path& folder)
{
    std::map<std::string, std::string> files;
    for (const auto& item : std::filesystem::directory_iterator(folder)) {
        std::ifstream stream(item.path(), std::ios::binary);
        files[item.path().filename().string()] = { std::istreambuf_iterator<char>(stream), {} };
    }
    return files;
}

class SupportRequestsTest : public testing::ScriptedDesktopTest {
protected:
    void SetUp() override
    {
        ScriptedDesktopTest::SetUp();
        load(testing::Json::object());
        requests_.configure(folder_.path() / "data");
    }

    testing::TemporaryFolder folder_;
    SupportRequests requests_;
};

TEST_F(SupportRequestsTest, RequestIsAFolderWithTheBodyAndEachAttachment)
{
    auto folder = requests_.createRequest(
        "App Name: zoom.us\n", { { "PMAssertions.txt", "pid 501: PreventUserIdleDisplaySleep" } });

    ASSERT_TRUE(folder);
    EXPECT_EQ(folder->parent_path(), folder_.path() / "data" / "support");
    EXPECT_EQ(folder->filename(), "20260105T090000Z-1");
    EXPECT_EQ(filesIn(*folder),
        (std::map<std::string, std::string> {
            { "body.txt", "App Name: zoom.us\n" }, { "PMAssertions.txt", "pid 501: PreventUserIdleDisplaySleep" } }));
    auto traced = events("supportRequest");
    ASSERT_EQ(traced.size(), 1u);
    EXPECT_EQ(traced[0]["body"], "App Name: zoom.us\n");
    EXPECT_EQ(
        traced[0]["attachments"], (testing::Json { { "PMAssertions.txt", "pid 501: PreventUserIdleDisplaySleep" } }));
}

TEST_F(SupportRequestsTest, HostileAttachmentNamesStayInsideTheFolderAndReplaceNothing)
{
    const std::string longName = std::string(150, 'a') + std::string(50, '\xC3') + "\xA9.txt";
    std::vector<SupportAttachment> attachments = {
        { "../../escape.txt", "1" },
        { "/etc/passwd", "2" },
        { "..", "3" },
        { ".", "4" },
        { "", "5" },
        { std::string("nul\0.txt", 8), "6" },
        { "body.txt", "7" },
        { "Body.TXT", "8" },
        { "notes.txt", "9" },
        { "notes.txt", "10" },
        { "C:\\Windows\\x", "11" },
        { longName, "12" },
    };
    auto folder = requests_.createRequest("body", attachments);
    ASSERT_TRUE(folder);

    auto files = filesIn(*folder);
    EXPECT_EQ(files.size(), attachments.size() + 1);
    EXPECT_EQ(files["body.txt"], "body");
    EXPECT_EQ(files[".._.._escape.txt"], "1");
    EXPECT_EQ(files["_etc_passwd"], "2");
    EXPECT_EQ(files["attachment"], "3");
    EXPECT_EQ(files["attachment (2)"], "4");
    EXPECT_EQ(files["nul_.txt"], "6");
    EXPECT_EQ(files["body (2).txt"], "7");
    EXPECT_EQ(files["notes (2).txt"], "10");
    EXPECT_EQ(files["C:_Windows_x"], "11");
    EXPECT_EQ(std::distance(std::filesystem::recursive_directory_iterator(folder_.path()),
                  std::filesystem::recursive_directory_iterator()),
        static_cast<long>(files.size()) + 3)
        << "only data/, support/ and the request folder besides the files";
    for (const auto& [name, text] : files)
        EXPECT_LE(name.size(), 200u) << text;
    EXPECT_EQ(events("supportRequest")[0]["attachments"].size(), attachments.size());
}

TEST_F(SupportRequestsTest, RequestsOfTheSameSecondAndOfEarlierRunsGetTheirOwnFolders)
{
    SupportRequests earlierRun;
    earlierRun.configure(folder_.path() / "data");
    auto first = earlierRun.createRequest("first", {});
    auto second = requests_.createRequest("second", {});
    auto third = requests_.createRequest("third", {});

    ASSERT_TRUE(first && second && third);
    EXPECT_NE(*first, *second);
    EXPECT_NE(*second, *third);
    EXPECT_EQ(filesIn(*first)["body.txt"], "first");
}

TEST_F(SupportRequestsTest, UnwritableDataFolderIsLoggedAndTheRequestStillTraced)
{
    std::ofstream(folder_.path() / "file") << "in the way";
    requests_.configure(folder_.path() / "file");

    EXPECT_EQ(requests_.createRequest("body", {}), std::nullopt);
    EXPECT_EQ(events("supportRequest").size(), 1u);
    auto logged = events("log");
    ASSERT_EQ(logged.size(), 1u);
    EXPECT_EQ(logged[0]["level"], "warning");
}

} // namespace
} // namespace vardel
