#include "product/TaskActivitySuggestionRanker.h"

#include "platform/ValueJson.h"
#include "product/Database.h"
#include "support/ScriptedDesktopTest.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace vardel {
namespace {

class TaskActivitySuggestionRankerTest : public testing::ScriptedDesktopTest {
protected:
    void SetUp() override
    {
        ScriptedDesktopTest::SetUp();
        load(testing::Json::object());
        database_ = std::move(Database::open(folder_.path())).value();
    }

    void store(const std::string& title, const std::string& start, std::optional<std::string> project)
    {
        Date begins = *ValueJson::parseIso8601(start);
        TaskActivityDescriptor descriptor { begins, Date { begins.secondsSince1970 + 3600 }, title,
            std::move(project) };
        ASSERT_TRUE(database_->mutateOrPresentError("TaskActivitySuggestionRankerTest", __LINE__,
            [&](DatabaseTransaction& transaction) { return transaction.createTaskActivity(descriptor, true); }));
    }

    std::optional<std::string> suggestionFor(const std::string& title)
    {
        Date now { 1767700000 };
        return TaskActivitySuggestionRanker(*database_)
            .suggestProjectBasedOnProvenanceMetadata(
                { now, Date { now.secondsSince1970 + 1800 }, title, std::nullopt });
    }

    testing::TemporaryFolder folder_;
    std::unique_ptr<Database> database_;
};

TEST_F(TaskActivitySuggestionRankerTest, ProposesTheProjectOfTheLatestEntryWithTheSameTitle)
{
    // Stored out of order: the entry that happened last counts, not the one stored last.
    store("Zoom: Weekly sync", "2026-01-05T09:00:00Z", "Acme");
    store("Zoom: Weekly sync", "2026-01-12T09:00:00Z", "Globex");
    store("Zoom: Weekly sync", "2025-12-29T09:00:00Z", "Initech");
    store("Zoom: Planning", "2026-01-13T09:00:00Z", "Umbrella");

    EXPECT_EQ(suggestionFor("Zoom: Weekly sync"), "Globex");
    EXPECT_EQ(suggestionFor("zoom: weekly sync"), std::nullopt);
    EXPECT_EQ(suggestionFor("Zoom: Retro"), std::nullopt);
}

TEST_F(TaskActivitySuggestionRankerTest, LatestEntryWithoutProjectProposesNone)
{
    store("Slack huddle", "2026-01-05T09:00:00Z", "Acme");
    store("Slack huddle", "2026-01-06T09:00:00Z", std::nullopt);

    EXPECT_EQ(suggestionFor("Slack huddle"), std::nullopt);
}

} // namespace
} // namespace vardel
