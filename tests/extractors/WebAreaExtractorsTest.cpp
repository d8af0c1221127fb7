#include "activity/VDInfoExtractor.h"
#include "activity/WebAreaTitleInfoExtractor.h"
#include "activity/WebAreaURLInfoExtractor.h"
#include "support/ScriptedDesktopTest.h"

namespace vardel {
namespace {

using namespace vardel::testing;

class WebAreaExtractorsTest : public ScriptedDesktopTest {
protected:
    static Json page(Json url, Json title)
    {
        Json attributes = Json::object();
        if (!url.is_null())
            attributes["AXURL"] = std::move(url);
        if (!title.is_null())
            attributes["AXTitle"] = std::move(title);
        return node("AXWebArea", attributes);
    }

    static Json window(const std::string& id, Json pages, Json title = "Window")
    {
        Json made
            = node("AXWindow", { { "AXTitle", std::move(title) } }, { node("AXScrollArea", {}, std::move(pages)) });
        made["id"] = id;
        return made;
    }

    // Samples the application as the recording service does: the record, then its extractor.
    std::optional<VDActivity> sample(const std::string& bundleIdentifier, const std::string& name, Json windows,
        Json focused = nullptr, Json preferences = Json::object())
    {
        Json ui = node("AXApplication", { { "AXMainWindow", ref("main") }, { "AXFocusedWindow", focused } }, windows);
        Json app = application(501, bundleIdentifier, ui);
        app["localizedName"] = name;
        Json scenario = desktopWith(app);
        scenario["preferences"] = std::move(preferences);
        ProcessWideState::resetAll();
        load(scenario);
        auto activity = VDInfoExtractor::currentActivity();
        if (activity)
            VDInfoExtractor::callInfoExtractorForActivity(*activity);
        return activity;
    }
};

TEST_F(WebAreaExtractorsTest, TheAddressComesFromTheFirstWebAreaThatHasOne)
{
    Json pages = { page(nullptr, "Inbox"), page({ { "url", "https://mail.example/inbox" } }, "Ignored") };
    auto activity = sample("company.thebrowser.dia", "Dia", { window("main", pages) });
    EXPECT_EQ(activity->details.documentPath, "https://mail.example/inbox");
    EXPECT_EQ(activity->details.documentTitle, "Inbox");
    EXPECT_EQ(activity->details.windowTitle, "Window");
}

TEST_F(WebAreaExtractorsTest, ALaterWindowSuppliesTheAddressWhenTheFirstHasNone)
{
    Json windows
        = { node("AXWindow", { { "AXTitle", "Downloads" } }), window("second", { page("https://b.example/", "B") }) };
    windows[0]["id"] = "main";
    auto activity = sample("company.thebrowser.dia", "Dia", windows, ref("second"));
    EXPECT_EQ(activity->details.documentPath, "https://b.example/");
    EXPECT_EQ(activity->details.documentTitle, "B");
}

TEST_F(WebAreaExtractorsTest, AnEmptyFirstTitleIsNotStored)
{
    Json pages = { page("https://a.example/", ""), page("https://b.example/", "B") };
    auto activity = sample("company.thebrowser.dia", "Dia", { window("main", pages) });
    EXPECT_FALSE(activity->details.documentTitle);
    EXPECT_EQ(activity->details.documentPath, "https://a.example/");
}

TEST_F(WebAreaExtractorsTest, ThePageTitleReplacesTheWindowTitleWithoutTheApplicationsName)
{
    auto activity = sample("com.superhuman.electron", "Superhuman",
        { window("main", { page(nullptr, "Inbox \u2022 Superhuman") }, "Superhuman") });
    EXPECT_EQ(activity->details.windowTitle, "Inbox");

    activity = sample("com.superhuman.electron", "Superhuman",
        { window("main", { page(nullptr, "Inbox \u2022 Other") }, "Superhuman") });
    EXPECT_EQ(activity->details.windowTitle, "Inbox \u2022 Other");

    // Invisible characters in the application's name do not stop the suffix from matching.
    activity = sample("com.superhuman.electron", "Super\u200Bhuman",
        { window("main", { page(nullptr, "Inbox \u2022 Superhuman") }, "Superhuman") });
    EXPECT_EQ(activity->details.windowTitle, "Inbox");
}

TEST_F(WebAreaExtractorsTest, WithoutAPageTitleTheWindowTitleIsKept)
{
    auto activity
        = sample("com.superhuman.electron", "Superhuman", { window("main", { page(nullptr, "") }, "Compose") });
    EXPECT_EQ(activity->details.windowTitle, "Compose");
}

TEST_F(WebAreaExtractorsTest, BothLeaveARecordWithoutWindowsUnchanged)
{
    VDActivity activity(
        RunningApplication { 501, "com.superhuman.electron", "Superhuman", std::nullopt, std::nullopt }, {});
    activity.details.windowTitle = "Kept";
    activity.accessibilityWindows = std::vector<AXUIElement> {};
    load(desktopWith(application(501, "com.superhuman.electron")));
    VDActivityDetails before = activity.details;
    WebAreaTitleInfoExtractor::writeDetailsForActivity(activity);
    WebAreaURLInfoExtractor::writeDetailsForActivity(activity);
    EXPECT_EQ(activity.details, before);
}

TEST_F(WebAreaExtractorsTest, TheTitleExtractorAnnouncesAssistiveTechnologyWhenAllowed)
{
    Json preferences = { { "advancedAccessibilityTrackingEnabled", true } };
    sample("com.canva.CanvaDesktop", "Canva", { window("main", { page(nullptr, "Design") }) }, nullptr, preferences);
    auto processes = events("process");
    ASSERT_EQ(processes.size(), 1u);
    EXPECT_EQ(processes[0]["path"], "/usr/bin/defaults");
    EXPECT_EQ(
        processes[0]["arguments"], Json({ "write", "com.canva.CanvaDesktop", "voiceOverOnOffKey", "-bool", "true" }));
}

} // namespace
} // namespace vardel
