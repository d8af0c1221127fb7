#include "activity/VDInfoExtractor.h"
#include "support/ScriptedDesktopTest.h"

namespace vardel {
namespace {

using namespace vardel::testing;

class GeneralAccessibilityInfoExtractorTest : public ScriptedDesktopTest {
protected:
    static Json window(const std::string& id, Json attributes, Json children = Json::array())
    {
        Json made = node("AXWindow", std::move(attributes), std::move(children));
        made["id"] = id;
        return made;
    }

    static Json alert() { return window("alert", { { "AXTitle", "" }, { "AXModal", true } }); }

    std::optional<VDActivity> sample(
        const std::string& bundleIdentifier, Json windows, Json main, Json preferences = Json::object())
    {
        Json ui = node("AXApplication", { { "AXMainWindow", std::move(main) } }, std::move(windows));
        Json scenario = desktopWith(application(501, bundleIdentifier, ui));
        scenario["preferences"] = std::move(preferences);
        ProcessWideState::resetAll();
        load(scenario);
        return VDInfoExtractor::currentActivity();
    }
};

TEST_F(GeneralAccessibilityInfoExtractorTest, AModalAlertGivesWayToTheOnlyDocumentWindowBehindIt)
{
    Json document = window(
        "doc", { { "AXTitle", "Letter.txt" }, { "AXDocument", "/Users/me/Letter.txt" }, { "AXModal", false } });
    auto activity = sample("com.example.Editor", { alert(), document }, ref("alert"));
    EXPECT_EQ(activity->details.windowTitle, "Letter.txt");
    EXPECT_EQ(activity->details.documentPath, "/Users/me/Letter.txt");

    Json preferences = { { "GeneralAccessibilityInfoExtractor_preferTitleOfOnlyNonModalWindow", false },
        { "GeneralAccessibilityInfoExtractor_fallBackToDocumentPathOfOnlyNonModalWindow", false },
        { "GeneralAccessibilityInfoExtractor_fallBackToOnlyDocumentPathAmongAllWindows", false } };
    activity = sample("com.example.Editor", { alert(), document }, ref("alert"), preferences);
    EXPECT_EQ(activity->details.windowTitle, "");
    EXPECT_FALSE(activity->details.documentPath);
}

TEST_F(GeneralAccessibilityInfoExtractorTest, BehindAnAlertWithTwoWindowsOnlyASingleDocumentIsTaken)
{
    Json first = window("first", { { "AXTitle", "One" }, { "AXDocument", "/one.txt" } });
    Json second = window("second", { { "AXTitle", "Two" } });
    auto activity = sample("com.example.Editor", { alert(), first, second }, ref("alert"));
    EXPECT_EQ(activity->details.windowTitle, "");
    EXPECT_EQ(activity->details.documentPath, "/one.txt");

    second["AXDocument"] = "/two.txt";
    activity = sample("com.example.Editor", { alert(), first, second }, ref("alert"));
    EXPECT_FALSE(activity->details.documentPath);
}

TEST_F(GeneralAccessibilityInfoExtractorTest, ANonModalFrontWindowStillGetsTheOnlyDocumentAmongAllWindows)
{
    Json inspector = window("inspector", { { "AXTitle", "Inspector" } });
    Json document = window("doc", { { "AXTitle", "Drawing" }, { "AXDocument", "/drawing.svg" } });
    auto activity = sample("com.example.Draw", { inspector, document }, ref("inspector"));
    EXPECT_EQ(activity->details.windowTitle, "Inspector");
    EXPECT_EQ(activity->details.documentPath, "/drawing.svg");
}

TEST_F(GeneralAccessibilityInfoExtractorTest, OnlyASaveSheetOnTheFrontWindowCounts)
{
    Json label = node("AXStaticText", { { "AXIdentifier", "nameFieldLabel" } });
    Json withSheet = window("doc", { { "AXTitle", "Untitled" } }, { node("AXSheet", {}, { label }) });
    EXPECT_TRUE(sample("com.example.Editor", { withSheet }, ref("doc"))->isShowingSaveSheet);

    Json savePanel = window("panel", { { "AXTitle", "Save" } }, { label });
    Json document = window("doc", { { "AXTitle", "Untitled" } });
    EXPECT_FALSE(sample("com.example.Editor", { document, savePanel }, ref("doc"))->isShowingSaveSheet);
}

TEST_F(GeneralAccessibilityInfoExtractorTest, ChromiumWebApplicationsReportTheirAddressAndTitle)
{
    Json group = node("AXGroup",
        { { "AXURL", { { "url", "https://calendar.example/week" } } }, { "AXTitle", "Calendar" },
            { "AXDescription", "Calendar" } });
    Json app = window("app", {}, { group });
    auto activity = sample("com.google.Chrome.app.abcdefgh", { app }, ref("app"));
    EXPECT_EQ(activity->details.documentPath, "https://calendar.example/week");
    EXPECT_EQ(activity->details.windowTitle, "Calendar");

    group["AXDescription"] = "Calendar - Week";
    activity = sample(
        "com.google.Chrome.app.abcdefgh", { window("app", { { "AXTitle", "Week 12" } }, { group }) }, ref("app"));
    EXPECT_EQ(activity->details.windowTitle, "Week 12");

    // The other browser's web applications match no prefix.
    activity = sample("com.brave.Browser.beta.app.abcdefgh", { window("app", {}, { group }) }, ref("app"));
    EXPECT_FALSE(activity->details.documentPath);
}

TEST_F(GeneralAccessibilityInfoExtractorTest, SafariWebApplicationsReportTheirPage)
{
    Json page = node("AXWebArea", { { "AXURL", { { "url", "https://news.example/" } } }, { "AXTitle", "News" } });
    Json app = window("app", {}, { node("AXScrollArea", {}, { page }) });
    auto activity = sample("com.apple.Safari.WebApp.1234", { app }, ref("app"));
    EXPECT_EQ(activity->details.documentPath, "https://news.example/");
    EXPECT_EQ(activity->details.documentTitle, "News");
    EXPECT_EQ(activity->details.windowTitle, "News");
}

} // namespace
} // namespace vardel
