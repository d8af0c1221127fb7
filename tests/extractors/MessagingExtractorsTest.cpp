#include "extractors/AmazonChimeInfoExtractor.h"
#include "extractors/DiscordInfoExtractor.h"
#include "extractors/MicrosoftTeamsInfoExtractor.h"
#include "extractors/SignalInfoExtractor.h"
#include "extractors/SlackInfoExtractor.h"
#include "extractors/WhatsAppInfoExtractor.h"
#include "support/ScriptedDesktopTest.h"

namespace vardel {
namespace {

using namespace vardel::testing;
using Path = std::vector<std::string>;

Json heading(const std::string& description)
{
    return node("AXHeading", { { "AXDescription", description } });
}

Json webWindow(const std::string& id, Json webAreaChildren, Json webAreaAttributes = Json::object())
{
    Json webArea = node("AXWebArea", std::move(webAreaAttributes), std::move(webAreaChildren));
    return withId(node("AXWindow", {}, { node("AXScrollArea", {}, { std::move(webArea) }) }), id);
}

// A group whose three children are itself: a walk bounded by depth alone never ends in it.
Json cycle(const std::string& id)
{
    Json made = withId(node("AXGroup"), id);
    made["AXChildren"] = { ref(id), ref(id), ref(id) };
    return made;
}

// Signal's layout down to the conversation header, with siblings that must not be taken.
Json signalWindow(const std::string& id, Json headerChildren)
{
    Json stack = group({ group({ group(std::move(headerChildren)), group({ staticText("Composer") }) }), group({}) });
    Json panel = node("AXGroup", { { "AXSubrole", "AXTabPanel" } }, { stack });
    Json tabs = node("AXGroup", { { "AXDOMClassList", { "NavTabs", "NavTabs__Container" } } },
        { group({ group({ staticText("Chats list") }) }), panel });
    Json app = node("AXGroup", { { "AXDOMIdentifier", "app-container" } }, { group({ tabs }) });
    return webWindow(id, { group({ app }) });
}

// WhatsApp's native layout without a toolbar: the chat header is the last group at the third level.
Json nativeWhatsAppWindow(const std::string& id, const std::string& name)
{
    Json chat = group({ group({ node("AXButton"), group({ heading(name) }) }), group({ heading("Later") }) });
    Json chatList = group({ group({ heading("Chats") }) });
    return withId(node("AXWindow", {}, { group({ group({ chatList, chat }) }), group({ heading("Other") }) }), id);
}

// WhatsApp's web layout: the banner sits beside a group, below the first groups.
Json webWhatsAppWindow(const std::string& id, Json headerChildren)
{
    Json banner = node("AXGroup", { { "AXSubrole", "AXLandmarkBanner" } }, std::move(headerChildren));
    return webWindow(id, { group({ node("AXButton"), group({ group({ node("AXImage") }), banner }) }) });
}

class MessagingExtractorsTest : public ScriptedDesktopTest {
protected:
    static VDActivity record(const std::string& bundleIdentifier)
    {
        return VDActivity(RunningApplication { 501, bundleIdentifier, "Chat", std::nullopt, std::nullopt }, {});
    }

    template<typename Extractor> static VDActivityDetails fromTitle(const std::string& title)
    {
        VDActivity activity = record("com.example.Chat");
        activity.details.windowTitle = title;
        Extractor::writeDetailsForActivity(activity);
        return activity.details;
    }

    // Runs the extractor on a record whose accessibility windows are the given ones, in order.
    template<typename Extractor>
    VDActivityDetails fromWindows(const std::string& bundleIdentifier, Json windows, bool announcingAllowed = false,
        std::optional<std::string> title = std::nullopt)
    {
        windows = asList(std::move(windows));
        Json scenario = desktopWith(application(501, bundleIdentifier, node("AXApplication", {}, windows)));
        scenario["preferences"] = { { "advancedAccessibilityTrackingEnabled", announcingAllowed } };
        load(scenario);
        VDActivity activity = record(bundleIdentifier);
        activity.details.windowTitle = std::move(title);
        activity.accessibilityWindows.emplace();
        for (const Json& window : windows)
            activity.accessibilityWindows->push_back(element(window["id"]));
        Extractor::writeDetailsForActivity(activity);
        return activity.details;
    }
};

TEST_F(MessagingExtractorsTest, SlackKeepsWorkspaceAndChannelOfItsTitle)
{
    auto slack = [](const std::string& title) { return fromTitle<SlackInfoExtractor>(title).contextPath; };
    EXPECT_FALSE(fromTitle<SlackInfoExtractor>("general (Channel) - Acme - Slack").windowTitle);
    EXPECT_EQ(slack("general (Channel) - Acme - Slack"), Path({ "Acme", "general (Channel)" }));
    EXPECT_EQ(slack("12:05 | Huddle | Acme | Slack"), Path({ "Acme", "Huddle" }));
    EXPECT_EQ(slack("1:02:03 | Huddle | Slack [Acme Corp]"), Path({ "Huddle" }));
    EXPECT_EQ(slack("* design - Acme - Slack"), Path({ "Acme", "design" }));
    EXPECT_EQ(slack("! alerts | ^ ops | Slack"), Path({ "ops", "alerts" }));
    EXPECT_EQ(slack("Acme - 3 new messages - Slack"), Path({ "Acme" }));
    EXPECT_EQ(slack("1200 new items - Acme - Slack"), Path({ "Acme" }));
    // Trailing emoji go first; bars win over dashes, and other dashes never separate.
    EXPECT_EQ(slack("fix - deploy | Acme | Slack \U0001F680"), Path({ "Acme", "fix - deploy" }));
    EXPECT_EQ(slack("design \u2013 Acme \u2014 Slack"), Path({ "design \u2013 Acme \u2014 Slack" }));
    // A last component starting with a number goes only when something else remains.
    EXPECT_EQ(slack("Acme - 1234 members"), Path({ "Acme" }));
    EXPECT_EQ(slack("1234 members - Slack"), Path({ "1234 members" }));
    EXPECT_EQ(slack("design - slack"), Path({ "slack", "design" }));

    for (const char* title : { "Slack", "Slack [Acme]", "12:05 - Slack" }) {
        VDActivityDetails details = fromTitle<SlackInfoExtractor>(title);
        EXPECT_FALSE(details.contextPath) << title;
        EXPECT_EQ(details.windowTitle, title);
    }
}

TEST_F(MessagingExtractorsTest, WithoutWindowTitleSlackReadsThePageTitle)
{
    Json windows
        = { withId(node("AXWindow"), "empty"), webWindow("page", {}, { { "AXTitle", "design - Acme - Slack" } }) };
    VDActivityDetails details = fromWindows<SlackInfoExtractor>("com.tinyspeck.slackmacgap", windows, true);
    EXPECT_EQ(details.contextPath, Path({ "Acme", "design" }));
    EXPECT_FALSE(details.windowTitle);
    EXPECT_EQ(events("process").size(), 1u);

    // A page title that names nothing stays as the window title.
    windows[1] = webWindow("page", {}, { { "AXTitle", "Slack" } });
    details = fromWindows<SlackInfoExtractor>("com.tinyspeck.slackmacgap", windows);
    EXPECT_FALSE(details.contextPath);
    EXPECT_EQ(details.windowTitle, "Slack");
}

TEST_F(MessagingExtractorsTest, TeamsEndsThePathWithTheFirstPartOfItsTitle)
{
    auto teams = [](const std::string& title) { return fromTitle<MicrosoftTeamsInfoExtractor>(title).contextPath; };
    EXPECT_EQ(teams("Chat | Jane Doe (External) | Microsoft Teams"), Path({ "Jane Doe" }));
    EXPECT_EQ(teams("General | Team X | Microsoft Teams"), Path({ "Team X", "General" }));
    EXPECT_EQ(teams("Plans | Team X | Contoso"), Path({ "Team X", "Contoso", "Plans" }));
    EXPECT_EQ(teams("Jo (Ops) (Guest) | Old (Archived)"), Path({ "Old (Archived)", "Jo (Ops)" }));
    EXPECT_EQ(teams("chat | microsoft teams"), Path({ "microsoft teams", "chat" }));
    EXPECT_EQ(teams("General - Team X"), Path({ "General - Team X" }));
    EXPECT_FALSE(teams("Microsoft Teams"));
    EXPECT_FALSE(teams("Chat | Microsoft Teams"));
    EXPECT_EQ(fromTitle<MicrosoftTeamsInfoExtractor>("General | Team X").windowTitle, "General | Team X");

    // Only the new client is asked to publish its tree.
    Json windows = Json::array({ withId(node("AXWindow"), "main") });
    fromWindows<MicrosoftTeamsInfoExtractor>("com.microsoft.teams", windows, true, "General | Team X");
    EXPECT_TRUE(events("process").empty());
    fromWindows<MicrosoftTeamsInfoExtractor>("com.microsoft.teams2", windows, true, "General | Team X");
    EXPECT_EQ(events("process").size(), 1u);
}

TEST_F(MessagingExtractorsTest, DiscordKeepsServerAndChannelOfItsTitle)
{
    auto discord = [](const std::string& title) { return fromTitle<DiscordInfoExtractor>(title).contextPath; };
    EXPECT_EQ(discord("#general | My Server - Discord"), Path({ "My Server", "#general" }));
    EXPECT_EQ(discord("Friends - Discord"), Path({ "Friends" }));
    EXPECT_FALSE(fromTitle<DiscordInfoExtractor>("Friends - Discord").windowTitle);
    EXPECT_EQ(discord("Discord | #dev |  | Guild"), Path({ "Guild", "#dev" }));
    EXPECT_EQ(discord("Friends \u2014 Discord"), Path({ "Friends \u2014 Discord" }));
    EXPECT_EQ(discord("friends - discord"), Path({ "friends - discord" }));

    for (const char* title : { "Discord", " - Discord", "Discord | " }) {
        VDActivityDetails details = fromTitle<DiscordInfoExtractor>(title);
        EXPECT_FALSE(details.contextPath) << title;
        EXPECT_EQ(details.windowTitle, title);
    }
}

TEST_F(MessagingExtractorsTest, ChimeTakesTheFirstNamedStaticTextOfTheConversationPane)
{
    Json call = node("AXButton", { { "AXValue", "Call" } });
    Json silent = node(
        "AXSplitGroup", {}, { node("AXScrollArea"), group({ staticText(""), call }), group({ staticText("Pane") }) });
    Json named = node(
        "AXSplitGroup", {}, { group({ call, staticText(""), staticText("Team Standup"), staticText("Later") }) });
    Json windows = { withId(node("AXWindow", {}, { group({ staticText("No split") }) }), "plain"),
        withId(node("AXWindow", {}, { silent }), "silent"), withId(node("AXWindow", {}, { named }), "named") };
    EXPECT_EQ(fromWindows<AmazonChimeInfoExtractor>("com.amazon.Amazon-Chime", windows).contextPath,
        Path({ "Team Standup" }));
}

TEST_F(MessagingExtractorsTest, SignalReadsTheConversationHeader)
{
    auto signal = [this](Json windows) {
        return fromWindows<SignalInfoExtractor>("org.whispersystems.signal-desktop", std::move(windows)).contextPath;
    };
    Json button = node("AXButton", { { "AXTitle", "\u200EJane Doe\u200F" } });
    EXPECT_EQ(signal({ withId(node("AXWindow"), "plain"), signalWindow("main", { staticText("Muted"), button }) }),
        Path({ "Jane Doe" }));
    // An unnamed button gives way to the static text; a label stands in for a missing title.
    EXPECT_EQ(signal({ signalWindow("main", { node("AXButton"), staticText("Book club") }) }), Path({ "Book club" }));
    button = node("AXButton", { { "AXValue", "" }, { "AXDescription", "Mum" } });
    EXPECT_EQ(signal({ signalWindow("main", { button, staticText("Ignored") }) }), Path({ "Mum" }));
    // A name of invisible characters only counts as none, and the next window is asked.
    EXPECT_EQ(signal({ signalWindow("first", { staticText("\u200E\u200F") }),
                  signalWindow("second", { staticText("Dad") }) }),
        Path({ "Dad" }));

    Json renamed = signalWindow("main", { staticText("Jane") });
    renamed["children"][0]["children"][0]["children"][0]["children"][0]["AXDOMIdentifier"] = "root";
    EXPECT_FALSE(signal({ renamed }));
    Json cyclic = cycle("app");
    cyclic["AXDOMIdentifier"] = "app-container";
    EXPECT_FALSE(signal({ webWindow("main", { cyclic }) }));
}

TEST_F(MessagingExtractorsTest, WhatsAppPrefersTheNativeHeadingToTheWebHeader)
{
    auto whatsApp = [this](const char* bundleIdentifier, Json windows, bool announcingAllowed = false) {
        return fromWindows<WhatsAppInfoExtractor>(bundleIdentifier, std::move(windows), announcingAllowed).contextPath;
    };
    EXPECT_EQ(whatsApp("desktop.WhatsApp", { nativeWhatsAppWindow("main", "\u200EBob\u200F") }), Path({ "Bob" }));
    Json toolbar
        = node("AXToolbar", {}, { node("AXButton", { { "AXDescription", "Back" } }), group({ heading("Ann") }) });
    EXPECT_EQ(whatsApp("WhatsApp",
                  { nativeWhatsAppWindow("first", "\u200E"),
                      withId(node("AXWindow", {}, { group({}), toolbar }), "second") }),
        Path({ "Ann" }));

    // Web content is read only when no window has a native name.
    Json button = node("AXButton", { { "AXValue", "" }, { "AXDescription", "\u200EDad" } });
    EXPECT_EQ(whatsApp("net.whatsapp.WhatsApp", { webWhatsAppWindow("main", { button, staticText("online") }) }, true),
        Path({ "Dad" }));
    EXPECT_EQ(events("process").size(), 1u);
    EXPECT_EQ(whatsApp("WhatsApp", { webWhatsAppWindow("main", { node("AXButton"), staticText("Mum") }) }, true),
        Path({ "Mum" }));
    EXPECT_TRUE(events("process").empty());
    Json windows = { webWhatsAppWindow("web", { staticText("Web") }), nativeWhatsAppWindow("native", "Native") };
    EXPECT_EQ(whatsApp("net.whatsapp.WhatsApp", windows, true), Path({ "Native" }));
    EXPECT_TRUE(events("process").empty());

    Json notBanner
        = node("AXGroup", { { "AXSubrole", "AXLandmarkMain" } }, { node("AXButton", { { "AXValue", "Jane" } }) });
    EXPECT_FALSE(whatsApp("WhatsApp", { webWindow("main", { notBanner }) }));
    windows
        = { withId(node("AXWindow", {}, { cycle("native loop") }), "native"), webWindow("web", { cycle("web loop") }) };
    EXPECT_FALSE(whatsApp("WhatsApp", windows));
}

} // namespace
} // namespace vardel
