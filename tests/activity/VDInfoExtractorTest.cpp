#include "activity/VDInfoExtractor.h"

#include "support/ScriptedDesktopTest.h"

namespace vardel {
namespace {

using namespace vardel::testing;

class VDInfoExtractorTest : public ScriptedDesktopTest {
protected:
    // An editor whose main window is "main" and whose focused window is given.
    static Json editor(const std::string& bundleIdentifier, Json windows, Json mainWindow, Json focusedWindow)
    {
        Json ui = node("AXApplication", { { "AXMainWindow", mainWindow }, { "AXFocusedWindow", focusedWindow } },
            std::move(windows));
        return application(501, bundleIdentifier, ui);
    }

    static Json window(const std::string& id, const std::string& title, Json more = Json::object())
    {
        Json attributes = { { "AXTitle", title } };
        for (auto& [key, value] : more.items())
            attributes[key] = value;
        Json made = node("AXWindow", attributes);
        made["id"] = id;
        return made;
    }

    // One sample in a fresh process on the scenario's desktop.
    std::optional<VDActivity> sampleWith(const Json& scenario)
    {
        ProcessWideState::resetAll();
        load(scenario);
        return VDInfoExtractor::currentActivity();
    }
};

TEST_F(VDInfoExtractorTest, NothingIsRecordedWhenTrackingIsOffOrNothingIsInFront)
{
    Json scenario = desktopWith(application(501, "com.example.App"));
    scenario["defaults"] = { { "VDInfoExtractor_skipAllTracking", true } };
    EXPECT_FALSE(sampleWith(scenario));
    EXPECT_EQ(VDInfoExtractor::statistics(), AccessibilityStatistics {});

    scenario = desktopWith(application(501, "com.example.App"));
    scenario["frontmost"] = nullptr;
    EXPECT_FALSE(sampleWith(scenario));
}

TEST_F(VDInfoExtractorTest, AlwaysIgnoredApplicationsAreCountedByIdentifierOrExecutableName)
{
    load(desktopWith(application(501, "com.apple.loginwindow")));
    EXPECT_FALSE(VDInfoExtractor::currentActivity());
    EXPECT_FALSE(VDInfoExtractor::currentActivity());
    EXPECT_EQ(VDInfoExtractor::statistics().numberOfTimesWeHaveSeenAlwaysIgnoredApplications, 2u);
    EXPECT_EQ(VDInfoExtractor::statistics().lastAlwaysIgnoredApplication, "com.apple.loginwindow");

    Json helper = application(502, "com.example.backup");
    helper["executablePath"] = "/Applications/Backup.app/Contents/MacOS/ccc_helper";
    EXPECT_FALSE(sampleWith(desktopWith(helper)));
    EXPECT_EQ(VDInfoExtractor::statistics().lastAlwaysIgnoredApplication, "com.example.backup");

    // Matching is exact: another case is another application.
    EXPECT_TRUE(sampleWith(desktopWith(application(503, "com.apple.LoginWindow"))));
}

TEST_F(VDInfoExtractorTest, IgnoredListsAreExtendedByPreferences)
{
    Json scenario = desktopWith(application(501, "com.apple.finder"));
    scenario["applications"].push_back(application(502, "com.apple.dock"));
    scenario["defaults"] = { { "extraAlwaysIgnoredApplicationBundleIdentifiers", { "com.apple.finder" } } };
    scenario["timeline"] = { { { "at", 1 }, { "frontmost", 502 } } };
    EXPECT_FALSE(sampleWith(scenario));
    desktop().runUntil(1);
    EXPECT_FALSE(VDInfoExtractor::currentActivity());

    // A preference of the wrong type leaves the built-in list alone.
    scenario = desktopWith(application(501, "com.apple.finder"));
    scenario["defaults"] = { { "extraAlwaysIgnoredApplicationBundleIdentifiers", "com.apple.finder" } };
    EXPECT_TRUE(sampleWith(scenario));
}

TEST_F(VDInfoExtractorTest, OwnApplicationGetsNoTitleEvenFromTheWindowList)
{
    Json scenario = desktopWith(editor("info.quenby.VardelHelper", { window("w", "Preferences") }, ref("w"), ref("w")));
    scenario["windowList"]
        = { { { "kCGWindowOwnerPID", 501 }, { "kCGWindowName", "Preferences" }, { "kCGWindowLayer", 0 } } };
    auto activity = sampleWith(scenario);
    ASSERT_TRUE(activity);
    EXPECT_FALSE(activity->details.windowTitle);
    EXPECT_FALSE(activity->details.documentPath);
    EXPECT_FALSE(activity->accessibilityWindows);
    EXPECT_FALSE(VDInfoExtractor::statistics().hasEnteredAccessibilityBranchAtAll);
}

TEST_F(VDInfoExtractorTest, MainAndFocusedWindowsGiveTitleDocumentAndStatistics)
{
    Json windows = { window("main", "Report.docx*", { { "AXDocument", "/Users/me/Report.docx" } }),
        window("palette", "Styles", { { "AXDocument", "/Users/me/Other.docx" } }) };
    auto activity = sampleWith(desktopWith(editor("com.example.Writer", windows, ref("main"), ref("palette"))));
    ASSERT_TRUE(activity);
    ASSERT_TRUE(activity->accessibilityWindows);
    EXPECT_EQ(activity->accessibilityWindows->size(), 2u);
    EXPECT_EQ(activity->details.windowTitle, "Report.docx");
    EXPECT_EQ(activity->details.documentPath, "/Users/me/Report.docx");

    const auto& statistics = VDInfoExtractor::statistics();
    EXPECT_TRUE(statistics.hasEnteredAccessibilityBranchAtAll);
    EXPECT_TRUE(statistics.hasSuccessfullyFetchedAccessibilityApplication);
    EXPECT_TRUE(statistics.hasSuccessfullyFetchedAccessibilityWindow);
    EXPECT_TRUE(statistics.hasSuccessfullyUsedAccessibility);
    EXPECT_TRUE(statistics.lastSuccessfulAccessibilityWindowFetch);
}

TEST_F(VDInfoExtractorTest, TheSameWindowCountsOnce)
{
    // Equal elements.
    auto activity
        = sampleWith(desktopWith(editor("com.example.Writer", { window("main", "A") }, ref("main"), ref("main"))));
    ASSERT_TRUE(activity && activity->accessibilityWindows);
    EXPECT_EQ(activity->accessibilityWindows->size(), 1u);

    // Different elements with the same identifier.
    Json windows
        = { window("one", "A", { { "AXIdentifier", "doc" } }), window("two", "B", { { "AXIdentifier", "doc" } }) };
    activity = sampleWith(desktopWith(editor("com.example.Writer", windows, ref("one"), ref("two"))));
    ASSERT_TRUE(activity && activity->accessibilityWindows);
    ASSERT_EQ(activity->accessibilityWindows->size(), 1u);
    EXPECT_EQ(activity->accessibilityWindows->front().traceName(), "one");
}

TEST_F(VDInfoExtractorTest, AFocusedSheetStandsForItsWindow)
{
    Json sheet = node("AXSheet", { { "AXTitle", "Save" } });
    sheet["id"] = "sheet";
    Json main = window("main", "Budget.numbers");
    main["children"] = Json::array({ sheet });
    auto activity = sampleWith(desktopWith(editor("com.example.Sheets", { main }, ref("main"), ref("sheet"))));
    ASSERT_TRUE(activity && activity->accessibilityWindows);
    ASSERT_EQ(activity->accessibilityWindows->size(), 1u);
    EXPECT_EQ(activity->accessibilityWindows->front().traceName(), "main");
}

TEST_F(VDInfoExtractorTest, AnApplicationWithoutWindowsIsCountedAndTitledFromTheWindowList)
{
    Json scenario = desktopWith(application(501, "com.example.Quiet", node("AXApplication")));
    scenario["windowList"] = {
        { { "kCGWindowOwnerPID", 501 }, { "kCGWindowName", "Activity window for Quiet" }, { "kCGWindowLayer", 0 } },
        { { "kCGWindowOwnerPID", 501 }, { "kCGWindowName", "Floating" }, { "kCGWindowLayer", 3 } },
        { { "kCGWindowOwnerPID", 777 }, { "kCGWindowName", "Someone else" }, { "kCGWindowLayer", 0 } },
        { { "kCGWindowOwnerPID", 501 }, { "kCGWindowName", "Hidden" }, { "kCGWindowLayer", 0 },
            { "kCGWindowSharingState", 0 } },
        { { "kCGWindowOwnerPID", 501 }, { "kCGWindowName", "Quiet Document" }, { "kCGWindowLayer", 0 } },
    };
    auto activity = sampleWith(scenario);
    ASSERT_TRUE(activity);
    EXPECT_EQ(activity->details.windowTitle, "Quiet Document");
    ASSERT_TRUE(activity->accessibilityWindows);
    EXPECT_TRUE(activity->accessibilityWindows->empty());

    const auto& statistics = VDInfoExtractor::statistics();
    EXPECT_EQ(statistics.lastApplicationWithoutWindow, "com.example.Quiet");
    EXPECT_EQ(statistics.unsuccessfulWindowFetchesSinceLastSuccessful, 1u);
    EXPECT_EQ(statistics.lastWindowFetchError, -25212);
    EXPECT_FALSE(statistics.hasSuccessfullyFetchedAccessibilityWindow);

    // Without preferring regular windows the first named window of any layer wins.
    scenario["defaults"] = { { "VDInfoExtractor_doNotPreferTitleOfRegularWindow", true } };
    EXPECT_EQ(sampleWith(scenario)->details.windowTitle, "Floating");
    scenario["defaults"] = { { "VDInfoExtractor_skipWindowTitleExtraction", true } };
    EXPECT_FALSE(sampleWith(scenario)->details.windowTitle);
}

TEST_F(VDInfoExtractorTest, ASuccessfulWindowFetchResetsTheFailureCountExceptForOwnApplications)
{
    Json scenario = desktopWith(application(501, "com.example.Quiet", node("AXApplication")));
    scenario["applications"].push_back(editor("com.example.Writer", { window("w", "Doc") }, ref("w"), nullptr));
    scenario["applications"][1]["pid"] = 502;
    scenario["applications"].push_back(editor("info.quenby.Vardel2", { window("v", "Timeline") }, ref("v"), nullptr));
    scenario["applications"][2]["pid"] = 503;
    scenario["timeline"] = { { { "at", 1 }, { "frontmost", 503 } }, { { "at", 2 }, { "frontmost", 502 } } };
    load(scenario);
    VDInfoExtractor::currentActivity();
    desktop().runUntil(1);
    VDInfoExtractor::currentActivity();
    EXPECT_EQ(VDInfoExtractor::statistics().unsuccessfulWindowFetchesSinceLastSuccessful, 1u);
    EXPECT_FALSE(VDInfoExtractor::statistics().hasSuccessfullyFetchedAccessibilityWindow);
    desktop().runUntil(2);
    VDInfoExtractor::currentActivity();
    EXPECT_EQ(VDInfoExtractor::statistics().unsuccessfulWindowFetchesSinceLastSuccessful, 0u);
    EXPECT_TRUE(VDInfoExtractor::statistics().hasSuccessfullyFetchedAccessibilityWindow);
}

TEST_F(VDInfoExtractorTest, FullScreenFromTheAttributeOrAScreenSizedWindowExceptInFinder)
{
    Json screenSized = window("w", "Movie", { { "AXSize", { { "size", { 1920, 1080 } } } } });
    Json scenario = desktopWith(editor("com.example.Player", { screenSized }, ref("w"), nullptr));
    EXPECT_TRUE(sampleWith(scenario)->isFullscreen);

    scenario["screens"] = { { 0, 0, 2560, 1440 }, { 2560, 0, 1920, 1080 } };
    EXPECT_TRUE(sampleWith(scenario)->isFullscreen);

    scenario = desktopWith(editor("com.apple.finder", { screenSized }, ref("w"), nullptr));
    EXPECT_FALSE(sampleWith(scenario)->isFullscreen);

    Json flagged = window("w", "Desktop", { { "AXFullScreen", true } });
    EXPECT_TRUE(sampleWith(desktopWith(editor("com.apple.finder", { flagged }, ref("w"), nullptr)))->isFullscreen);

    // A screen-sized entry of the window list marks it too.
    scenario = desktopWith(application(501, "com.mathworks.matlab"));
    scenario["windowList"] = { { { "kCGWindowOwnerPID", 501 }, { "kCGWindowName", "MATLAB" }, { "kCGWindowLayer", 0 },
        { "kCGWindowBounds", { { "X", 0 }, { "Y", 0 }, { "Width", 1920 }, { "Height", 1080 } } } } };
    auto activity = sampleWith(scenario);
    EXPECT_TRUE(activity->isFullscreen);
    EXPECT_EQ(activity->details.windowTitle, "MATLAB");
}

TEST_F(VDInfoExtractorTest, ApplicationsThatMustNotBeAskedGoStraightToTheWindowList)
{
    Json matlab = editor("com.mathworks.matlab", { window("w", "From accessibility") }, ref("w"), nullptr);
    Json scenario = desktopWith(matlab);
    scenario["windowList"]
        = { { { "kCGWindowOwnerPID", 501 }, { "kCGWindowName", "From window list" }, { "kCGWindowLayer", 0 } } };
    auto activity = sampleWith(scenario);
    EXPECT_EQ(activity->details.windowTitle, "From window list");
    EXPECT_FALSE(activity->accessibilityWindows);

    // An empty list in the preference replaces the built-in one.
    scenario["defaults"] = { { "extraNoAccessibilityApplicationBundleIdentifiers", Json::array() } };
    EXPECT_EQ(sampleWith(scenario)->details.windowTitle, "From accessibility");

    Json brave = editor("com.brave.Browser.app.abcdef", { window("w", "From accessibility") }, ref("w"), nullptr);
    scenario = desktopWith(brave);
    scenario["windowList"]
        = { { { "kCGWindowOwnerPID", 501 }, { "kCGWindowName", "Web app" }, { "kCGWindowLayer", 0 } } };
    EXPECT_EQ(sampleWith(scenario)->details.windowTitle, "Web app");

    scenario = desktopWith(matlab);
    scenario["applications"][0]["bundleIdentifier"] = "com.example.Writer";
    scenario["accessibilityTrusted"] = false;
    EXPECT_FALSE(sampleWith(scenario)->accessibilityWindows);
}

TEST_F(VDInfoExtractorTest, DocumentPathsCanBeSwitchedOffPerApplication)
{
    Json scenario = desktopWith(
        editor("com.example.Secret", { window("w", "Plan", { { "AXDocument", "/secret.txt" } }) }, ref("w"), nullptr));
    scenario["defaults"]
        = { { "VDInfoExtractor_extraNoPathExtractionApplicationBundleIdentifiers", { "com.example.Secret" } } };
    // The only document among the application's windows is a fallback of its own, with its own switch.
    scenario["preferences"]
        = { { "GeneralAccessibilityInfoExtractor_fallBackToOnlyDocumentPathAmongAllWindows", false } };
    auto activity = sampleWith(scenario);
    EXPECT_EQ(activity->details.windowTitle, "Plan");
    EXPECT_FALSE(activity->details.documentPath);

    scenario["preferences"] = Json::object();
    EXPECT_EQ(sampleWith(scenario)->details.documentPath, "/secret.txt");
}

TEST_F(VDInfoExtractorTest, TitlesLoseUnsavedMarksAndDirectionMarks)
{
    struct Case {
        std::string bundleIdentifier;
        std::string title;
        std::string expected;
    };
    const Case cases[] = {
        { "com.example.Writer", "Report.docx*", "Report.docx" },
        { "com.example.Writer", "Notes \u2014 Edited", "Notes" },
        { "com.example.Writer", "Notes \u2013 Edited", "Notes" },
        { "com.example.Writer", "Notes-Edited", "Notes" },
        { "com.example.Writer", "Edited - Notes", "Notes" },
        { "com.example.Writer", "Notes  - Edited", "Notes " },
        { "com.example.Writer", "Edited Notes", "Edited Notes" },
        { "com.example.Writer", "Notes - edited", "Notes - edited" },
        { "com.example.Writer", "\u200EShalom\u200F", "Shalom" },
    };
    for (const auto& testCase : cases) {
        auto activity = sampleWith(
            desktopWith(editor(testCase.bundleIdentifier, { window("w", testCase.title) }, ref("w"), nullptr)));
        EXPECT_EQ(activity->details.windowTitle, testCase.expected) << testCase.title;
    }

    Json scenario = desktopWith(editor("com.example.Writer", { window("w", "Report.docx*") }, ref("w"), nullptr));
    scenario["defaults"] = { { "VDInfoExtractor_skipTrackingPostprocessing", true } };
    EXPECT_EQ(sampleWith(scenario)->details.windowTitle, "Report.docx*");
}

TEST_F(VDInfoExtractorTest, AccessibilityCanBeSkippedWhileTheCleanUpStillRuns)
{
    Json scenario = desktopWith(editor("com.example.Writer", { window("w", "Report*") }, ref("w"), nullptr));
    scenario["defaults"] = { { "VDInfoExtractor_skipAccessibilityTracking", true } };
    scenario["windowList"]
        = { { { "kCGWindowOwnerPID", 501 }, { "kCGWindowName", "Report*" }, { "kCGWindowLayer", 0 } } };
    auto activity = sampleWith(scenario);
    EXPECT_FALSE(activity->details.windowTitle);
    EXPECT_FALSE(activity->accessibilityWindows);
}

TEST_F(VDInfoExtractorTest, ScreenCaptureIsRequestedOnlyWhenAskedAndMissing)
{
    Json scenario = desktopWith(application(501, "com.mathworks.matlab"));
    scenario["screenCaptureAccess"] = false;
    scenario["windowList"]
        = { { { "kCGWindowOwnerPID", 501 }, { "kCGWindowName", "MATLAB" }, { "kCGWindowLayer", 0 } } };
    EXPECT_FALSE(sampleWith(scenario)->details.windowTitle);
    EXPECT_TRUE(events("screenCaptureRequest").empty());

    scenario["defaults"] = { { "VDInfoExtractor_shouldRequestScreenCaptureAccess", true } };
    sampleWith(scenario);
    EXPECT_EQ(events("screenCaptureRequest").size(), 1u);
}

TEST_F(VDInfoExtractorTest, TheMessagingTimeOutIsSetOncePerProcessFromThePreference)
{
    Json scenario = desktopWith(editor("com.example.Writer", { window("w", "Doc") }, ref("w"), nullptr));
    scenario["defaults"] = { { "VDInfoExtractor_globalAccessibilityTimeout", 0.5 } };
    load(scenario);
    VDInfoExtractor::currentActivity();
    VDInfoExtractor::currentActivity();
    auto timeouts = events("ax.timeout");
    ASSERT_EQ(timeouts.size(), 1u);
    EXPECT_EQ(timeouts[0]["seconds"], 0.5);

    for (const Json& wrong : { Json("fast"), Json(-3) }) {
        ProcessWideState::resetAll();
        scenario["defaults"]["VDInfoExtractor_globalAccessibilityTimeout"] = wrong;
        load(scenario);
        VDInfoExtractor::currentActivity();
        ASSERT_EQ(events("ax.timeout").size(), 1u);
        EXPECT_EQ(events("ax.timeout")[0]["seconds"], 2.0);
    }
}

TEST_F(VDInfoExtractorTest, AnApplicationThatDoesNotAnswerCostsTheTimeOutButStillYieldsARecord)
{
    Json scenario = desktopWith(editor("com.example.Frozen", { window("w", "Doc") }, ref("w"), nullptr));
    scenario["applications"][0]["responds"] = false;
    scenario["windowList"] = { { { "kCGWindowOwnerPID", 501 }, { "kCGWindowName", "Doc" }, { "kCGWindowLayer", 0 } } };
    load(scenario);
    auto activity = VDInfoExtractor::currentActivity();
    ASSERT_TRUE(activity);
    EXPECT_EQ(activity->details.windowTitle, "Doc");
    EXPECT_EQ(VDInfoExtractor::statistics().lastWindowFetchError, -25204);
    // Two window reads and the direct read, each bounded by the two-second time-out.
    EXPECT_DOUBLE_EQ(desktop().elapsedSeconds(), 6.0);
}

} // namespace
} // namespace vardel
