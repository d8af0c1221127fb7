#include "extractors/ChatGPTAtlasInfoExtractor.h"
#include "extractors/ChromeProfileInfoExtractor.h"
#include "extractors/FirefoxInfoExtractor.h"
#include "extractors/SafariInfoExtractor.h"
#include "support/ScriptedDesktopTest.h"

namespace vardel {
namespace {

using namespace vardel::testing;

class BrowserExtractorsTest : public ScriptedDesktopTest {
protected:
    // A desktop whose frontmost application (pid 501) has this tree, plus the scenario's other keys.
    void loadBrowser(const std::string& bundleIdentifier, Json applicationChildren, Json scenarioKeys = Json::object(),
        Json applicationAttributes = Json::object())
    {
        Json ui = node("AXApplication", std::move(applicationAttributes), std::move(applicationChildren));
        Json scenario = desktopWith(application(501, bundleIdentifier, std::move(ui)));
        for (auto& [key, value] : scenarioKeys.items()) {
            if (key == "applications")
                scenario["applications"].insert(scenario["applications"].end(), value.begin(), value.end());
            else
                scenario[key] = value;
        }
        load(scenario);
    }

    // The record as the sampler leaves it for the extractor: these windows, this title.
    VDActivity record(std::optional<std::string> title, const std::vector<std::string>& windowIds)
    {
        VDActivityDetails details;
        details.windowTitle = std::move(title);
        VDActivity activity(*platform().workspace().frontmostApplication(), details);
        activity.accessibilityWindows.emplace();
        for (const std::string& id : windowIds)
            activity.accessibilityWindows->push_back(element(id));
        return activity;
    }

    std::vector<std::pair<std::string, Json>> writes()
    {
        std::vector<std::pair<std::string, Json>> written;
        for (const auto& event : events("ax.set"))
            written.emplace_back(event["element"], event["value"]);
        return written;
    }
};

// ---- Safari

constexpr const char* englishStrings
    = "/System/Library/PrivateFrameworks/Safari.framework/Versions/A/Resources/en.lproj/Localizable.strings";
constexpr const char* germanStrings
    = "/System/Library/PrivateFrameworks/Safari.framework/Versions/A/Resources/de.lproj/Localizable.strings";

class SafariInfoExtractorTest : public BrowserExtractorsTest {
protected:
    // Safari's window: toolbar → group → address field; the field shows the address in a static text.
    static Json safariWindow(const std::string& id, const Json& field, Json windowAttributes = Json::object())
    {
        windowAttributes["id"] = id;
        return node("AXWindow", windowAttributes, { node("AXToolbar", {}, { node("AXGroup", {}, { field }) }) });
    }

    static Json addressField(
        Json shownAddress, Json attributes = Json::object(), const std::string& role = "AXTextField")
    {
        return node(role, std::move(attributes), { node("AXStaticText", { { "AXValue", shownAddress } }) });
    }

    // Safari's menu bar: the history menu's first item names the window's profile.
    static Json menuBar(const Json& showHistoryItem)
    {
        auto menu = [](const std::string& identifier, const Json& firstItem) {
            return node("AXMenuBarItem", {}, { node("AXMenu", { { "AXIdentifier", identifier } }, { firstItem }) });
        };
        return node("AXMenuBar", { { "id", "menu bar" } },
            { menu("File", node("AXMenuItem", { { "AXIdentifier", "ShowHistory" }, { "AXTitle", "New Window" } })),
                menu("SafariHistoryMenu", showHistoryItem) });
    }

    void loadSafari(Json windows, Json scenarioKeys = Json::object(), Json showHistoryItem = nullptr)
    {
        if (showHistoryItem.is_null())
            showHistoryItem
                = node("AXMenuItem", { { "AXIdentifier", "ShowHistory" }, { "AXTitle", "Show Work History" } });
        windows = asList(std::move(windows));
        windows.push_back(menuBar(showHistoryItem));
        loadBrowser(
            "com.apple.Safari", std::move(windows), std::move(scenarioKeys), { { "AXMenuBar", ref("menu bar") } });
    }

    VDActivityDetails extract(std::optional<std::string> title, const std::vector<std::string>& windowIds = { "w" })
    {
        VDActivity activity = record(std::move(title), windowIds);
        SafariInfoExtractor::writeDetailsForActivity(activity);
        return activity.details;
    }

    static Json englishTable()
    {
        return { { "in a private window", "in a Private Window" }, { "Private Browsing", "Private Browsing" },
            { "smart search field in a private window", 7 }, { "unrelated", "Tab" } };
    }
};

TEST_F(SafariInfoExtractorTest, ATitleNamingSafarisPrivatePhraseMarksThePrivateWindow)
{
    loadSafari({ safariWindow("w", addressField("https://apple.com/")) },
        { { "plists", { { englishStrings, englishTable() } } } });
    EXPECT_TRUE(extract("Apple \u2014 IN A PRIVATE WINDOW").isPrivate);
    EXPECT_FALSE(extract("Apple \u2014 Tab").isPrivate);
    EXPECT_FALSE(extract(std::nullopt).isPrivate);
}

TEST_F(SafariInfoExtractorTest, WithoutStringsFilesOnlyTheAddressFieldMarksPrivateWindows)
{
    loadSafari(
        { safariWindow("w", addressField("https://apple.com/", { { "AXRoleDescription", "Private address field" } })),
            safariWindow("plain", addressField("https://apple.com/", { { "AXTitle", "Address" } })) });
    EXPECT_FALSE(extract("Apple \u2014 Private Browsing", { "plain" }).isPrivate);
    EXPECT_TRUE(extract("Apple", { "w" }).isPrivate);
}

TEST_F(SafariInfoExtractorTest, PhrasesComeFromThePreferredLanguagesOnlyAndAreReadOncePerProcess)
{
    // The scripted desktop's user prefers English only, so the German table is not read.
    Json germanTable = { { "Private Browsing", "Privates Surfen" } };
    Json scenarioKeys = { { "plists", { { englishStrings, englishTable() }, { germanStrings, germanTable } } },
        { "timeline", { { { "at", 1 }, { "plists", { { englishStrings, nullptr } } } } } } };
    loadSafari({ safariWindow("w", addressField("https://apple.com/")) }, scenarioKeys);
    EXPECT_FALSE(extract("Apple \u2014 Privates Surfen").isPrivate);
    EXPECT_TRUE(extract("Apple \u2014 Private Browsing").isPrivate);

    desktop().runUntil(1);
    EXPECT_TRUE(extract("Apple \u2014 in a private window").isPrivate);
}

TEST_F(SafariInfoExtractorTest, TheProfileMovesToTheEndWhenTheHistoryMenuNamesIt)
{
    loadSafari({ safariWindow("w", addressField("https://apple.com/")) });
    EXPECT_EQ(extract("Work \u2014 Apple").windowTitle, "Apple \u2014 Work");
    EXPECT_EQ(extract("Work \u2014 Apple \u2014 Store").windowTitle, "Apple \u2014 Store \u2014 Work");
    EXPECT_EQ(extract("Apple").windowTitle, "Apple");
    EXPECT_EQ(extract("Home \u2014 Apple").windowTitle, "Home \u2014 Apple");
    // An en dash or a hyphen is not the profile separator.
    EXPECT_EQ(extract("Work \u2013 Apple").windowTitle, "Work \u2013 Apple");
}

TEST_F(SafariInfoExtractorTest, TheProfileStaysWhereItIsWithoutTheShowHistoryItem)
{
    loadSafari({ safariWindow("w", addressField("https://apple.com/")) }, Json::object(),
        node("AXMenuItem", { { "AXIdentifier", "ClearHistory" }, { "AXTitle", "Show Work History" } }));
    EXPECT_EQ(extract("Work \u2014 Apple").windowTitle, "Work \u2014 Apple");
}

TEST_F(SafariInfoExtractorTest, TheAddressComesFromTheFieldsTextOrElseFromTheFieldItself)
{
    loadSafari({ safariWindow("shown", addressField("https://apple.com/", { { "AXValue", "https://typed.example/" } })),
        safariWindow("own", addressField("apple.com", { { "AXValue", "https://apple.com/mac/" } }, "AXSearchField")),
        safariWindow("none", addressField("example page", { { "AXValue", "example page" } })),
        // No text or search field: the element holding the first static text is the field.
        node("AXWindow", { { "id", "holder" } },
            { node("AXToolbar", {},
                { node("AXGroup", { { "AXValue", "https://apple.com/ipad/" } },
                    { node("AXStaticText", { { "AXValue", "Apple" } }) }) }) }) });
    EXPECT_EQ(extract(std::nullopt, { "shown" }).documentPath, "https://apple.com/");
    EXPECT_EQ(extract(std::nullopt, { "own" }).documentPath, "https://apple.com/mac/");
    EXPECT_EQ(extract(std::nullopt, { "none" }).documentPath, std::nullopt);
    EXPECT_EQ(extract(std::nullopt, { "holder" }).documentPath, "https://apple.com/ipad/");
    // Every window is read; the last address wins, and a window without one keeps it.
    EXPECT_EQ(extract(std::nullopt, { "own", "shown", "none" }).documentPath, "https://apple.com/");
}

TEST_F(SafariInfoExtractorTest, InFullScreenTheToolbarIsFoundInTheFirstGroupInNavigationOrder)
{
    Json toolbar = node("AXToolbar", {}, { node("AXGroup", {}, { addressField("https://apple.com/tv/") }) });
    Json window = node("AXWindow",
        { { "id", "w" }, { "AXFullScreen", true }, { "AXChildrenInNavigationOrder", { ref("bar") } } },
        { node("AXGroup", { { "id", "bar" } }, { toolbar }) });
    loadSafari({ window });
    EXPECT_EQ(extract(std::nullopt).documentPath, "https://apple.com/tv/");
}

// ---- Firefox

class FirefoxInfoExtractorTest : public BrowserExtractorsTest {
protected:
    bool marksPrivate(std::optional<std::string> title)
    {
        VDActivity activity = record(std::move(title), {});
        FirefoxInfoExtractor::writeDetailsForActivity(activity);
        return activity.details.isPrivate;
    }
};

TEST_F(FirefoxInfoExtractorTest, PrivateWindowsAreKnownByTheEndOfTheirTitle)
{
    loadBrowser("org.mozilla.firefox", Json::array());
    EXPECT_TRUE(marksPrivate("Mozilla Firefox Private Browsing"));
    EXPECT_TRUE(marksPrivate("Notes \u2014 Mozilla Firefox (Private Browsing)"));
    EXPECT_TRUE(marksPrivate("Notizen \u2014 Privater Modus"));
    EXPECT_FALSE(marksPrivate("Private Browsing \u2014 Notes"));
    EXPECT_FALSE(marksPrivate("Mozilla Firefox private browsing"));
    EXPECT_FALSE(marksPrivate(std::nullopt));
}

TEST_F(FirefoxInfoExtractorTest, APreferenceAddsOneSuffixReadOncePerProcess)
{
    loadBrowser("org.mozilla.firefox", Json::array(),
        { { "preferences", { { "FirefoxInfoExtractor_extraPrivateBrowsingSuffix", "(Navigation privée)" } } } });
    EXPECT_TRUE(marksPrivate("Notes \u2014 Mozilla Firefox (Navigation privée)"));
    desktop().productPreferences().setObject("FirefoxInfoExtractor_extraPrivateBrowsingSuffix", Value("Notes"));
    EXPECT_FALSE(marksPrivate("Notes"));

    loadBrowser("org.mozilla.firefox", Json::array(),
        { { "preferences", { { "FirefoxInfoExtractor_extraPrivateBrowsingSuffix", "" } } } });
    ProcessWideState::resetAll();
    EXPECT_FALSE(marksPrivate("Notes"));
}

TEST_F(FirefoxInfoExtractorTest, WithoutATitleTheWebContentIsStillEnabledAndRead)
{
    Json page = node("AXWebArea", { { "AXTitle", "Notes" }, { "AXURL", { { "url", "https://notes.example/" } } } });
    Json window = node("AXWindow", { { "id", "w" } }, { node("AXScrollArea", {}, { page }) });
    loadBrowser(
        "org.mozilla.firefox", { window }, { { "preferences", { { "advancedAccessibilityTrackingEnabled", true } } } });
    VDActivity activity = record(std::nullopt, { "w" });
    FirefoxInfoExtractor::writeDetailsForActivity(activity);
    EXPECT_FALSE(activity.details.isPrivate);
    EXPECT_EQ(activity.details.documentPath, "https://notes.example/");
    EXPECT_EQ(activity.details.documentTitle, "Notes");
    auto processes = events("process");
    ASSERT_EQ(processes.size(), 1u);
    EXPECT_EQ(
        processes[0]["arguments"], Json({ "write", "org.mozilla.firefox", "voiceOverOnOffKey", "-bool", "true" }));
}

// ---- Chrome

class ChromeProfileInfoExtractorTest : public BrowserExtractorsTest {
protected:
    // Chrome's window: four groups, then the toolbar with the profile button among other buttons.
    static Json chromeWindow(const std::string& id, Json profileButton)
    {
        Json toolbar = node("AXToolbar", {},
            { node("AXButton", { { "AXDOMClassList", { "BackButton" } }, { "AXDescription", "Back" } }),
                std::move(profileButton) });
        Json reached = toolbar;
        for (int depth = 0; depth < 4; ++depth)
            reached = node("AXGroup", {}, { node("AXStaticText"), reached });
        return node("AXWindow", { { "id", id } }, { reached });
    }

    static Json avatar(Json description, Json classes = { "ToolbarButton", "AvatarToolbarButton" })
    {
        return node(
            "AXButton", { { "AXDOMClassList", std::move(classes) }, { "AXDescription", std::move(description) } });
    }

    VDActivityDetails extract(std::optional<std::string> title, const std::vector<std::string>& windowIds)
    {
        VDActivity activity = record(std::move(title), windowIds);
        ChromeProfileInfoExtractor::writeDetailsForActivity(activity);
        return activity.details;
    }
};

TEST_F(ChromeProfileInfoExtractorTest, IncognitoAndBravePrivateWindowsAreKnownByTheirTitle)
{
    loadBrowser("com.google.Chrome", Json::array());
    EXPECT_TRUE(extract("New Tab - Google Chrome (Incognito)", {}).isPrivate);
    EXPECT_TRUE(extract("Neuer Tab - Google Chrome (anonym)", {}).isPrivate);
    EXPECT_TRUE(extract("New Tab - Brave (Private)", {}).isPrivate);
    EXPECT_FALSE(extract("New Tab - Google Chrome (incognito)", {}).isPrivate);
    EXPECT_FALSE(extract(std::nullopt, {}).isPrivate);
}

TEST_F(ChromeProfileInfoExtractorTest, TheProfileNameIsAppendedOnce)
{
    loadBrowser("com.google.Chrome", { chromeWindow("w", avatar("Work")), chromeWindow("again", avatar("Work")) });
    EXPECT_EQ(extract("Inbox", { "w" }).windowTitle, "Inbox \u2013 Work");
    EXPECT_EQ(extract("Inbox \u2013 Work", { "w" }).windowTitle, "Inbox \u2013 Work");
    EXPECT_EQ(extract("Inbox", { "w", "again" }).windowTitle, "Inbox \u2013 Work");
    EXPECT_EQ(extract(std::nullopt, { "w" }).windowTitle, "Work");
    EXPECT_EQ(extract("", { "w" }).windowTitle, "Work");
}

TEST_F(ChromeProfileInfoExtractorTest, WindowsWithoutAUsableProfileButtonWriteNothing)
{
    Json shallow = node(
        "AXWindow", { { "id", "shallow" } }, { node("AXGroup", {}, { node("AXToolbar", {}, { avatar("Home") }) }) });
    loadBrowser("com.google.Chrome",
        { shallow, chromeWindow("empty", avatar("")), chromeWindow("unnamed", avatar(nullptr)),
            chromeWindow("text", avatar("Home", "AvatarToolbarButton")), chromeWindow("w", avatar("Work")) });
    EXPECT_EQ(extract("Inbox", { "shallow", "empty", "unnamed", "text" }).windowTitle, "Inbox");
    // A window without the shape is skipped; the next one still counts.
    EXPECT_EQ(extract("Inbox", { "shallow", "w" }).windowTitle, "Inbox \u2013 Work");
}

// ---- ChatGPT Atlas

class ChatGPTAtlasInfoExtractorTest : public BrowserExtractorsTest {
protected:
    // Atlas's window: group → groups, the last holding the outer web area → frame → the page.
    static Json atlasWindow(const std::string& id, Json pageAttributes)
    {
        Json page = node("AXWebArea", std::move(pageAttributes), { node("AXGroup") });
        Json outer = node("AXWebArea", {}, { node("AXGroup", {}, { node("AXGroup"), page }) });
        Json decoy = node("AXGroup", {},
            { node("AXWebArea", {},
                { node("AXGroup", {},
                    { node("AXWebArea", { { "AXTitle", "Decoy" }, { "AXURL", "https://decoy.example/" } },
                        { node("AXGroup") }) }) }) });
        return node("AXWindow", { { "id", id } },
            { node("AXGroup", {}, { decoy, node("AXButton"), node("AXGroup", {}, { outer }) }) });
    }

    static Json companion(Json enhanced)
    {
        Json ui = node("AXApplication", { { "id", "companion" } });
        if (!enhanced.is_null())
            ui["AXEnhancedUserInterface"] = std::move(enhanced);
        return application(777, "com.openai.atlas.web", ui);
    }

    VDActivityDetails extract(const std::vector<std::string>& windowIds)
    {
        VDActivity activity = record(std::nullopt, windowIds);
        ChatGPTAtlasInfoExtractor::writeDetailsForActivity(activity);
        return activity.details;
    }
};

TEST_F(ChatGPTAtlasInfoExtractorTest, ThePageInTheLastGroupGivesTitleAndAddress)
{
    loadBrowser("com.openai.atlas",
        { atlasWindow("w", { { "AXTitle", "Docs" }, { "AXURL", { { "url", "https://docs.example/" } } } }) });
    auto details = extract({ "w" });
    EXPECT_EQ(details.documentTitle, "Docs");
    EXPECT_EQ(details.documentPath, "https://docs.example/");
}

TEST_F(ChatGPTAtlasInfoExtractorTest, WindowsAreTriedUntilOneGivesAnAddress)
{
    loadBrowser("com.openai.atlas",
        { atlasWindow("untitled", { { "AXTitle", "" } }), atlasWindow("titled", { { "AXTitle", "New Tab" } }),
            atlasWindow("page", { { "AXTitle", "Docs" }, { "AXURL", "https://docs.example/" } }),
            atlasWindow("later", { { "AXTitle", "Later" }, { "AXURL", "https://later.example/" } }) });
    auto details = extract({ "untitled", "titled" });
    EXPECT_EQ(details.documentTitle, "New Tab");
    EXPECT_EQ(details.documentPath, std::nullopt);

    details = extract({ "titled", "page", "later" });
    EXPECT_EQ(details.documentTitle, "Docs");
    EXPECT_EQ(details.documentPath, "https://docs.example/");
}

TEST_F(ChatGPTAtlasInfoExtractorTest, TheWebContentCompanionIsSwitchedOnUnlessItAlreadyIs)
{
    Json window = atlasWindow("w", { { "AXTitle", "Docs" }, { "AXURL", "https://docs.example/" } });
    loadBrowser("com.openai.atlas", { window }, { { "applications", { companion(false) } } });
    extract({ "w" });
    // The typed write turns the text "1" into the number 1 on a boolean attribute.
    EXPECT_EQ(writes(), (std::vector<std::pair<std::string, Json>> { { "companion", 1.0 } }));

    loadBrowser("com.openai.atlas", { window }, { { "applications", { companion(true) } } });
    extract({ "w" });
    EXPECT_TRUE(writes().empty());

    // Without a current value the typed write has nothing to go by, and writes nothing.
    loadBrowser("com.openai.atlas", { window }, { { "applications", { companion(nullptr) } } });
    EXPECT_EQ(extract({ "w" }).documentPath, "https://docs.example/");
    EXPECT_TRUE(writes().empty());
}

TEST_F(ChatGPTAtlasInfoExtractorTest, WithoutWindowsNothingIsReadOrWritten)
{
    loadBrowser("com.openai.atlas", Json::array(), { { "applications", { companion(false) } } });
    VDActivity activity = record(std::nullopt, {});
    activity.accessibilityWindows.reset();
    ChatGPTAtlasInfoExtractor::writeDetailsForActivity(activity);
    EXPECT_TRUE(writes().empty());
    EXPECT_EQ(activity.details, VDActivityDetails {});
}

} // namespace
} // namespace vardel
