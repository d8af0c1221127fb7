#include "activity/EnhancedAccessibility.h"

#include "support/ScriptedDesktopTest.h"

namespace vardel {
namespace {

using namespace vardel::testing;

class EnhancedAccessibilityTest : public ScriptedDesktopTest {
protected:
    void loadApplication(Json enhancedValue, Json domains = Json::object(), bool allowed = true, bool manual = false)
    {
        Json ui = node("AXApplication");
        ui["id"] = "app";
        if (!enhancedValue.is_null())
            ui["AXEnhancedUserInterface"] = std::move(enhancedValue);
        ui["AXManualAccessibility"] = false;
        Json scenario = desktopWith(application(501, "com.example.Electron", ui));
        scenario["domains"] = std::move(domains);
        scenario["preferences"] = { { "advancedAccessibilityTrackingEnabled", allowed },
            { "fakeVoiceOverEnabled_shouldSetManualAccessibility", manual } };
        load(scenario);
    }

    void enable(bool force)
    {
        EnhancedAccessibility::enableFakeVoiceOver(element("app"), "com.example.Electron", force);
    }

    std::vector<std::pair<std::string, Json>> writes()
    {
        std::vector<std::pair<std::string, Json>> written;
        for (const auto& event : events("ax.set"))
            written.emplace_back(event["attribute"], event["value"]);
        return written;
    }
};

TEST_F(EnhancedAccessibilityTest, NothingHappensUnlessTheUserAllowedIt)
{
    loadApplication(false, Json::object(), false);
    enable(true);
    EXPECT_TRUE(events("process").empty());
    EXPECT_TRUE(writes().empty());
}

TEST_F(EnhancedAccessibilityTest, AnExistingDomainWithoutTheFlagGetsItAndTheApplicationIsTold)
{
    loadApplication(false, { { "com.example.Electron", Json::object() } }, true, true);
    enable(false);
    auto defaults = events("defaults");
    ASSERT_EQ(defaults.size(), 1u);
    EXPECT_EQ(defaults[0]["store"], "com.example.Electron");
    EXPECT_EQ(defaults[0]["key"], "voiceOverOnOffKey");
    EXPECT_EQ(defaults[0]["value"], true);
    // A boolean current value takes the text "1" as the number 1.
    EXPECT_EQ(writes(),
        (std::vector<std::pair<std::string, Json>> {
            { "AXEnhancedUserInterface", 1.0 }, { "AXManualAccessibility", true } }));
}

TEST_F(EnhancedAccessibilityTest, ForcedWritesGoThroughTheDefaultsProgramOnce)
{
    loadApplication("0");
    enable(true);
    ASSERT_EQ(events("process").size(), 1u);
    // The text value takes the text as it is.
    EXPECT_EQ(writes(), (std::vector<std::pair<std::string, Json>> { { "AXEnhancedUserInterface", "1" } }));

    // The flag is set now, so the program does not run again; the text "1" is no boolean true, so
    // the application is told again.
    enable(true);
    EXPECT_EQ(events("process").size(), 1u);
    EXPECT_EQ(writes().size(), 2u);
}

TEST_F(EnhancedAccessibilityTest, AnAlreadyEnhancedApplicationIsLeftAlone)
{
    loadApplication(true, { { "com.example.Electron", { { "voiceOverOnOffKey", true } } } });
    enable(false);
    EXPECT_TRUE(writes().empty());
    EXPECT_TRUE(events("process").empty());
}

TEST_F(EnhancedAccessibilityTest, AnApplicationWithoutTheAttributeIsNotWritten)
{
    loadApplication(nullptr);
    enable(false);
    EXPECT_TRUE(writes().empty());
}

} // namespace
} // namespace vardel
