#include "activity/VDInfoExtractor.h"
#include "extractors/MailWritingInfoExtractor.h"
#include "extractors/MimestreamInfoExtractor.h"
#include "extractors/NewOutlookInfoExtractor.h"
#include "extractors/SparkInfoExtractor.h"
#include "support/ScriptedDesktopTest.h"

namespace vardel {
namespace {

using namespace vardel::testing;
using Texts = std::vector<std::string>;

class MailExtractorsTest : public ScriptedDesktopTest {
protected:
    // Samples the application with the window "main" in front (and "focused" when there are two
    // windows), then runs the extractor on the record.
    template<typename Extractor>
    VDActivity extract(const std::string& bundleIdentifier, Json windows, Json preferences = Json::object())
    {
        windows = asList(std::move(windows));
        Json focused = windows.size() > 1 ? ref("focused") : Json();
        Json ui = node(
            "AXApplication", { { "AXMainWindow", ref("main") }, { "AXFocusedWindow", focused } }, std::move(windows));
        Json scenario = desktopWith(application(501, bundleIdentifier, std::move(ui)));
        scenario["preferences"] = std::move(preferences);
        ProcessWideState::resetAll();
        load(scenario);
        auto activity = VDInfoExtractor::currentActivity();
        EXPECT_TRUE(activity);
        Extractor::writeDetailsForActivity(*activity);
        return std::move(*activity);
    }
};

// Apple Mail

Json mailWindow(const std::string& id, Json fields, bool split = true)
{
    Json content = split ? Json::array({ node("AXSplitGroup", {}, std::move(fields)) }) : std::move(fields);
    return withId(node("AXWindow", { { "AXTitle", "Mail" } }, std::move(content)), id);
}

Json recipientToken(const std::string& value, const std::string& subrole = "AXTextAttachment")
{
    return node("AXStaticText", { { "AXSubrole", subrole }, { "AXValue", value } });
}

Json composeFields(Json recipients, Json subject, Json sender = "Jane <jane@example.com>")
{
    return { staticText("To:"), node("AXTextField", {}, std::move(recipients)), staticText("Cc:"), node("AXTextField"),
        node("AXPopUpButton", { { "AXValue", "Normal priority" } }), node("AXPopUpButton", { { "AXValue", sender } }),
        staticText("Subject:"), node("AXTextField", { { "AXValue", std::move(subject) } }) };
}

TEST_F(MailExtractorsTest, MailComposeWindowGivesSenderRecipientsAndSubject)
{
    Json recipients = { recipientToken("ann@example.com"), recipientToken(""), recipientToken("Bob", "AXOther"),
        recipientToken("cy@example.com") };
    auto activity = extract<MailWritingInfoExtractor>(
        "com.apple.mail", { mailWindow("main", composeFields(recipients, "Plans")) });
    EXPECT_EQ(activity.details.contextPath,
        Texts({ "From: Jane <jane@example.com>", "To: ann@example.com, cy@example.com", "Plans" }));

    // Fields directly in the window; nobody addressed yet, no subject, no address in the pop-ups.
    activity = extract<MailWritingInfoExtractor>(
        "com.apple.mail", { mailWindow("main", composeFields(Json::array(), "", "Signature"), false) });
    EXPECT_EQ(activity.details.contextPath, Texts({ "To: " }));
}

TEST_F(MailExtractorsTest, MailSkipsWindowsThatAreNotComposeHeaders)
{
    Json viewer = mailWindow("main", { staticText("Inbox"), node("AXTextField"), node("AXTextField") });
    Json compose = mailWindow("focused", composeFields({ recipientToken("ann@example.com") }, "Plans"));
    auto activity = extract<MailWritingInfoExtractor>("com.apple.mail", { viewer, compose });
    EXPECT_EQ(activity.details.contextPath, Texts({ "From: Jane <jane@example.com>", "To: ann@example.com", "Plans" }));

    for (Json fields : { Json { staticText("To:"), node("AXTextField") },
             Json { staticText("To:"), staticText("x"), node("AXTextField") },
             Json { node("AXTextField"), node("AXTextField"), node("AXTextField") } }) {
        activity = extract<MailWritingInfoExtractor>("com.apple.mail", { mailWindow("main", fields) });
        EXPECT_FALSE(activity.details.contextPath) << fields;
    }
}

// Mimestream

TEST_F(MailExtractorsTest, MimestreamComposeWindowGivesAccountNewMessageAndSubject)
{
    auto compose = [](Json title, Json account) {
        Json fields
            = account.is_null() ? Json::array() : Json::array({ node("AXPopUpButton", { { "AXValue", account } }) });
        return withId(node("AXWindow", { { "AXIdentifier", "ComposeWindow" }, { "AXTitle", title } }, fields), "main");
    };
    auto activity
        = extract<MimestreamInfoExtractor>("com.mimestream.Mimestream", { compose("New Message", "me@work.com") });
    EXPECT_EQ(activity.details.contextPath, Texts({ "me@work.com", "New Message" }));
    activity = extract<MimestreamInfoExtractor>("com.mimestream.Mimestream", { compose("Hello", "me@work.com") });
    EXPECT_EQ(activity.details.contextPath, Texts({ "me@work.com", "New Message", "Hello" }));
    activity = extract<MimestreamInfoExtractor>("com.mimestream.Mimestream", { compose("", nullptr) });
    EXPECT_EQ(activity.details.contextPath, Texts({ "New Message" }));
}

TEST_F(MailExtractorsTest, MimestreamMainWindowGivesMailboxAndSelectedMessage)
{
    auto messageList = [](const std::string& prefix, Json selected) {
        Json row = withId(
            node("AXRow", {},
                { node("AXCell", {},
                    { node("AXImage"), staticText(prefix + "Jane"),
                        node("AXStaticText", { { "AXIdentifier", "_NS:129" }, { "AXValue", prefix + "Lunch?" } }) }) }),
            prefix + "row");
        return node("AXScrollArea", {},
            { node("AXTable",
                { { "AXSelectedRows", selected ? Json::array({ testing::ref(prefix + "row") }) : Json::array() } },
                { row }) });
    };
    auto window = [&](bool selected) {
        return withId(node("AXWindow", { { "AXTitle", "Inbox" } },
                          { node("AXSplitGroup", {}, { messageList("sidebar ", true), messageList("", selected) }) }),
            "main");
    };
    auto activity = extract<MimestreamInfoExtractor>("com.mimestream.Mimestream", { window(true) });
    EXPECT_EQ(activity.details.contextPath, Texts({ "Inbox", "Jane", "Lunch?" }));
    activity = extract<MimestreamInfoExtractor>("com.mimestream.Mimestream", { window(false) });
    EXPECT_EQ(activity.details.contextPath, Texts({ "Inbox" }));
}

// Outlook

Json folderRow(const std::string& id, const std::string& name, const char* parent = nullptr)
{
    Json cell = node("AXCell", {}, { group({ node("AXImage"), node("AXTextField", { { "AXValue", name } }) }) });
    return withId(node("AXRow", { { "AXDisclosedByRow", parent ? testing::ref(parent) : Json() } }, { cell }), id);
}

struct OutlookMainWindow {
    Json selectedFolders = Json::array({ ref("projects") });
    Json summary = "Subject: Budget, final, Sender: Jane Doe, Received: Monday";
    Json picture = nullptr;
    Json readingPaneSender = "Jane Doe";

    Json build() const
    {
        Json folders = node("AXScrollArea", {},
            { node("AXOutline", { { "AXSelectedRows", selectedFolders } },
                { folderRow("account", "me@example.com"), folderRow("inbox", "Inbox", "account"),
                    folderRow("projects", "Projects", "inbox") }) });
        Json pictures
            = picture.is_null() ? Json::array() : Json::array({ node("AXImage", { { "AXDescription", picture } }) });
        Json message
            = withId(node("AXRow", {}, { node("AXCell", { { "AXDescription", summary } }, pictures) }), "message");
        Json messageList = node("AXSplitGroup", {},
            { node("AXSplitGroup", {},
                { node("AXScrollArea", {},
                    { node("AXTable", { { "AXSelectedRows", { ref("message") } } }, { message }) }) }) });
        Json readingPane = group({ group({ group({ node("AXButton", { { "AXTitle", readingPaneSender } }) },
                                     { { "AXIdentifier", "messageHeaderFromContent" } }) }) },
            { { "AXIdentifier", "HeaderMainContainer" } });
        Json panes = node("AXSplitGroup", {}, { folders, messageList, readingPane });
        return withId(
            node("AXWindow", { { "AXTitle", "Mail - Outlook" } }, { node("AXSplitGroup", {}, { group({}), panes }) }),
            "main");
    }
};

TEST_F(MailExtractorsTest, OutlookMainWindowGivesFolderPathAndSelectedMessage)
{
    OutlookMainWindow window;
    auto activity = extract<NewOutlookInfoExtractor>("com.microsoft.Outlook", { window.build() });
    EXPECT_EQ(
        activity.details.contextPath, Texts({ "me@example.com", "Inbox", "Projects", "Jane Doe", "Budget, final" }));

    // Not exactly one selected folder; a summary in another form falls back on the sender's picture;
    // the reading pane adds a sender the list did not name.
    window.selectedFolders = { ref("inbox"), ref("projects") };
    window.summary = "Betreff: Budget, Absender: Jane Doe,";
    window.picture = "Jane Doe";
    window.readingPaneSender = "John Roe";
    activity = extract<NewOutlookInfoExtractor>("com.microsoft.Outlook", { window.build() });
    EXPECT_EQ(activity.details.contextPath, Texts({ "Jane Doe", "John Roe" }));

    window.selectedFolders = Json::array();
    window.summary = "subject: Budget, sender: Jane Doe,";
    window.picture = nullptr;
    activity = extract<NewOutlookInfoExtractor>("com.microsoft.Outlook", { window.build() });
    EXPECT_EQ(activity.details.contextPath, Texts({ "John Roe" }));
}

TEST_F(MailExtractorsTest, OutlookFolderChainThatLoopsEnds)
{
    OutlookMainWindow window;
    Json built = window.build();
    // The account row claims to be disclosed by the selected row.
    Json& outline = built["children"][0]["children"][1]["children"][0]["children"][0];
    outline["children"][0]["AXDisclosedByRow"] = ref("projects");
    auto activity = extract<NewOutlookInfoExtractor>("com.microsoft.Outlook", { built });
    EXPECT_EQ(
        activity.details.contextPath, Texts({ "me@example.com", "Inbox", "Projects", "Jane Doe", "Budget, final" }));
}

Json outlookMessageWindow(const std::string& id, const std::string& title, Json content)
{
    return withId(node("AXWindow", { { "AXTitle", title } }, { node("AXSplitGroup", {}, std::move(content)) }), id);
}

TEST_F(MailExtractorsTest, OutlookMessageWindowGivesTitlePartsSenderAndSubject)
{
    Json header = group({ staticText("Budget"),
                            node("AXScrollArea", {},
                                { node("AXStaticText", {}, { node("AXButton", { { "AXValue", "Jane Doe" } }) }) }) },
        { { "AXIdentifier", "HeaderMainContainer" } });
    Json composeForm = { node("AXScrollArea", {}, { node("AXTextField", {}, { staticText("Bob Smith") }) }),
        node("AXTextField", { { "AXValue", "Draft" } }) };

    auto activity = extract<NewOutlookInfoExtractor>("com.microsoft.Outlook",
        { outlookMessageWindow("main", "Re: Q3 - plan - jane@example.com - OUTLOOK", { node("AXButton"), header }) });
    EXPECT_EQ(activity.details.contextPath, Texts({ "Re: Q3 - plan", "jane@example.com", "Jane Doe", "Budget" }));

    // Without the application's name the title has one part: only the window's own texts count.
    header.erase("AXIdentifier");
    activity = extract<NewOutlookInfoExtractor>(
        "com.microsoft.Outlook", { outlookMessageWindow("main", "Budget - Outlook", { header }) });
    EXPECT_EQ(activity.details.contextPath, Texts({ "Jane Doe", "Budget" }));

    activity = extract<NewOutlookInfoExtractor>(
        "com.microsoft.Outlook", { outlookMessageWindow("main", " - me@example.com", composeForm) });
    EXPECT_EQ(activity.details.contextPath, Texts({ "me@example.com", "Bob Smith", "Draft" }));

    // A window with nothing to read gives way to the next one.
    Json empty = outlookMessageWindow("main", "Untitled", { group({}) });
    activity = extract<NewOutlookInfoExtractor>(
        "com.microsoft.Outlook", { empty, outlookMessageWindow("focused", "Untitled", composeForm) });
    EXPECT_EQ(activity.details.contextPath, Texts({ "Bob Smith", "Draft" }));
}

// Spark

// The message view sits at the second position twice, below three first groups of the page.
Json sparkWindow(Json header)
{
    Json messageView = group({ group({ std::move(header) }) });
    Json page = node("AXWebArea", { { "AXTitle", "Spark" } },
        { group({ group({ group(
            { group({ staticText("list") }), group({ group({ staticText("folders") }), messageView }) }) }) }) });
    return withId(node("AXWindow", {}, { node("AXScrollArea", {}, { page }) }), "main");
}

Json sparkHeader(Json avatarClasses)
{
    Json avatar = group({ staticText("JD") }, { { "AXDOMClassList", std::move(avatarClasses) } });
    return group({ group({ staticText(""), staticText("Quarterly report") }),
        group({ avatar, group({ staticText(""), staticText("Jane Doe") }), staticText("to me") }) });
}

TEST_F(MailExtractorsTest, SparkGivesSubjectAndSenderFromTheMessageHeader)
{
    Json preferences = { { "advancedAccessibilityTrackingEnabled", true } };
    auto activity = extract<SparkInfoExtractor>(
        "com.readdle.SparkDesktop", { sparkWindow(sparkHeader({ "round", "avatar" })) }, preferences);
    EXPECT_EQ(activity.details.contextPath, Texts({ "Quarterly report", "Jane Doe" }));
    ASSERT_EQ(events("process").size(), 1u);
    EXPECT_EQ(events("process")[0]["arguments"][1], "com.readdle.SparkDesktop");

    // Class names match exactly: without a picture there is no sender.
    activity = extract<SparkInfoExtractor>("com.readdle.SparkDesktop", { sparkWindow(sparkHeader({ "Avatar" })) });
    EXPECT_EQ(activity.details.contextPath, Texts({ "Quarterly report" }));
}

TEST_F(MailExtractorsTest, SparkLeavesTheRecordAloneWhenTheShapeDiffers)
{
    Json shortView = withId(
        node("AXWindow", {},
            { node("AXScrollArea", {}, { node("AXWebArea", {}, { group({ group({ group({ group({}) }) }) }) }) }) }),
        "main");
    auto activity = extract<SparkInfoExtractor>("com.readdle.SparkDesktop", { shortView });
    EXPECT_FALSE(activity.details.contextPath);

    // A header whose elements list the header again as their child.
    Json header = withId(sparkHeader({ "avatar" }), "header");
    header["children"][0]["AXChildren"] = { ref("header"), ref("header") };
    header["children"][1]["children"][0]["AXChildren"] = Json::array({ ref("header") });
    activity = extract<SparkInfoExtractor>("com.readdle.SparkDesktop", { sparkWindow(header) });
    EXPECT_EQ(activity.details.contextPath, Texts({ "Jane Doe" }));
}

} // namespace
} // namespace vardel
