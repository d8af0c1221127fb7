#include "support/TrackerProcess.h"

#include <gtest/gtest.h>

namespace vardel {
namespace {

using namespace vardel::testing;
using Json = nlohmann::ordered_json;

TEST(ExtractorScenarioTest, EachApplicationInFrontIsDescribedByItsOwnExtractor)
{
    TrackerRun run = runTracker(std::filesystem::path(VARDEL_SCENARIOS_DIR) / "chat-and-browsing.json");
    ASSERT_EQ(run.exitStatus, 0) << run.standardError;
    auto samples = run.events("sample");
    ASSERT_EQ(samples.size(), 4u);

    const Json& slack = samples[0]["activity"]["details"];
    EXPECT_EQ(slack["contextPath"], Json({ "Acme", "design" }));

    const Json& discord = samples[1]["activity"]["details"];
    EXPECT_EQ(discord["contextPath"], Json({ "Friends" }));
    EXPECT_EQ(discord["windowTitle"], nullptr);

    const Json& firefox = samples[2]["activity"]["details"];
    EXPECT_EQ(firefox["isPrivate"], true);
    EXPECT_EQ(firefox["documentPath"], "https://rail.example/tickets");
    EXPECT_EQ(firefox["documentTitle"], "Train tickets");

    // Any other application keeps what the sampler read.
    const Json& unknown = samples[3]["activity"]["details"];
    EXPECT_EQ(unknown["windowTitle"], "Ledger");
    EXPECT_EQ(unknown["contextPath"], nullptr);
}

} // namespace
} // namespace vardel
