#include "calls/CallTimeEntryOffers.h"

#include "product/DatabaseWrapper.h"
#include "product/SupportRequests.h"
#include "support/ScriptedDesktopTest.h"
#include "support/TemporaryFolder.h"

#include <fstream>
#include <sstream>

namespace vardel {
namespace {

using namespace vardel::testing;
using Kind = UserNotificationResponse::Kind;

class CallTimeEntryOffersTest : public ScriptedDesktopTest {
protected:
    void SetUp() override
    {
        ScriptedDesktopTest::SetUp();
        Json scenario = desktopWith(application(501, "us.zoom.xos"));
        scenario["preferences"] = { { "RunningCallDetector_appsWithCallTrackingDisabled", { "com.example.Other" } } };
        scenario["timeline"] = { { { "at", 100 }, { "runningTask", { { "title", "Focus" }, { "since", 100 } } } } };
        scenario["editorAnswers"] = { { { "action", "save" }, { "title", "Zoom call with Anna" } } };
        load(scenario);
        DatabaseWrapper::sharedInstance().configure(folder.path());
        SupportRequests::sharedInstance().configure(folder.path());
    }

    void TearDown() override
    {
        DatabaseWrapper::sharedInstance().configureUnavailable();
        ScriptedDesktopTest::TearDown();
    }

    static Value::Dictionary userInfoFor(const CallProperties& call, const std::string& key)
    {
        return { { "callProperties", Value(CallPropertiesJson::encode(call).dump()) },
            { "bundleIdentifier", Value(key) } };
    }

    void respond(Kind kind, const std::string& action, const Value::Dictionary& userInfo)
    {
        offers.handleResponse(CallTimeEntryOffers::categoryIdentifier, { kind, action }, userInfo);
    }

    std::string supportFile(const std::string& name)
    {
        for (const auto& request : std::filesystem::directory_iterator(folder.path() / "support")) {
            std::ifstream file(request.path() / name);
            std::stringstream contents;
            contents << file.rdbuf();
            return contents.str();
        }
        return {};
    }

    TemporaryFolder folder;
    CallTimeEntryOffers offers;
    CallProperties zoomCall { Date { 1767607200 }, Date { 1767609900 },
        CallMetadata { "Zoom", "zoom.us", std::nullopt, true } };
};

TEST_F(CallTimeEntryOffersTest, TheNotificationNamesTheCallItsLengthAndItsMeeting)
{
    offers.presentCallEndedNotification(zoomCall, "us.zoom.xos");
    zoomCall.metadata.meetingTitle = "Weekly planning";
    offers.presentCallEndedNotification(zoomCall, "us.zoom.xos");
    auto delivered = events("notification");
    ASSERT_EQ(delivered.size(), 2u);
    EXPECT_EQ(delivered[0]["title"], "Zoom call has ended (45m)");
    EXPECT_EQ(delivered[1]["title"], "Zoom call has ended (45m): Weekly planning");
    EXPECT_EQ(delivered[0]["sound"], false);

    // A call that does not qualify is offered nothing.
    CallProperties unknown { zoomCall.startedAt, zoomCall.lastSeen,
        CallMetadata { std::nullopt, "Talk", std::nullopt, false } };
    offers.presentCallEndedNotification(unknown, "com.example.Talk");
    offers.presentCallEditor(unknown, "com.example.Talk");
    EXPECT_EQ(events("notification").size(), 2u);
    EXPECT_TRUE(events("editor").empty());
}

// The meeting's title comes from another program's window.
TEST_F(CallTimeEntryOffersTest, AMeetingTitleThatIsNotUtf8IsStillOffered)
{
    zoomCall.metadata.meetingTitle = "Planning \xff";
    offers.presentCallEndedNotification(zoomCall, "us.zoom.xos");
    auto delivered = events("notification");
    ASSERT_EQ(delivered.size(), 1u);
    EXPECT_EQ(delivered[0]["title"].get<std::string>(), "Zoom call has ended (45m): Planning \xff");
}

TEST_F(CallTimeEntryOffersTest, ClickingOpensTheEditorOnlyForAReadablePayload)
{
    respond(
        Kind::clicked, "", { { "callProperties", Value("{broken") }, { "bundleIdentifier", Value("us.zoom.xos") } });
    respond(Kind::action, "createTaskForCall",
        { { "callProperties", Value(CallPropertiesJson::encode(zoomCall).dump()) } });
    EXPECT_TRUE(events("editor").empty());

    respond(Kind::action, "createTaskForCall", userInfoFor(zoomCall, "us.zoom.xos"));
    auto editors = events("editor");
    ASSERT_EQ(editors.size(), 1u);
    EXPECT_EQ(editors[0]["title"], "Zoom call");
    auto analytics = events("analytics");
    ASSERT_GE(analytics.size(), 2u);
    EXPECT_EQ(analytics[analytics.size() - 2]["name"], "RunningCallDetector.createTask.started");
    // The editor was saved with a title of the user's own.
    EXPECT_EQ(analytics.back()["name"], "RunningCallDetector.createTask.saved");
    EXPECT_EQ(events("timeEntry").back()["title"], "Zoom call with Anna");
}

TEST_F(CallTimeEntryOffersTest, NotAskingAgainForAnApplicationStoresItOnce)
{
    respond(Kind::action, "doNotAskAgainForThisApp", userInfoFor(zoomCall, "us.zoom.xos"));
    respond(Kind::action, "doNotAskAgainForThisApp", userInfoFor(zoomCall, "us.zoom.xos"));
    auto disabled = platform().productPreferences().getStringList("RunningCallDetector_appsWithCallTrackingDisabled");
    EXPECT_EQ(disabled, (std::vector<std::string> { "com.example.Other", "us.zoom.xos" }));

    respond(Kind::action, "doNotAskAgainForThisApp", { { "other", Value(1) } });
    auto warnings = events("log");
    ASSERT_FALSE(warnings.empty());
    EXPECT_EQ(warnings.back()["message"],
        "[RunningCallDetector] missing bundleIdentifier in doNotAskAgainForThisApp, userInfo keys: other");

    respond(Kind::action, "doNotAskAgain", {});
    EXPECT_EQ(platform().productPreferences().getInt("callNotificationMode"), 2);
    respond(Kind::dismissed, "", userInfoFor(zoomCall, "us.zoom.xos"));
    EXPECT_TRUE(events("editor").empty());
}

TEST_F(CallTimeEntryOffersTest, AFalsePositiveReportCarriesTheAssertionDumpEvenWithoutAPayload)
{
    respond(Kind::action, "reportFalsePositive", {});
    std::string body = supportFile("body.txt");
    EXPECT_EQ(
        body.rfind("App Name: (nil)\nApp ID: (nil)\nService Name: (nil)\nMeeting Title: (nil)\nCall Duration: ", 0), 0u)
        << body;
    std::string dump = supportFile("PMAssertions.txt");
    EXPECT_EQ(dump.rfind("Dump created at: 2026-01-05T09:00:00Z\n", 0), 0u) << dump;
    EXPECT_NE(dump.find("PowerManagementAssertions.pmAssertionsDictionary:"), std::string::npos);
    EXPECT_EQ(events("supportRequest").size(), 1u);
}

TEST_F(CallTimeEntryOffersTest, ASavedEntryOpensInTheEditorAndTheCorrectionIsStored)
{
    auto saved = offers.saveTimeEntry(zoomCall, "us.zoom.xos");
    ASSERT_TRUE(saved);
    offers.editTimeEntry(*saved);
    auto editors = events("editor");
    ASSERT_EQ(editors.size(), 1u);
    EXPECT_EQ(editors[0]["title"], "Zoom call");
    auto entries = DatabaseWrapper::sharedInstance().database()->entriesInRange(Date { 0 }, Date { 4e9 });
    ASSERT_TRUE(entries.ok());
    ASSERT_EQ(entries.value().size(), 1u);
    EXPECT_EQ(entries.value()[0].descriptor.title, "Zoom call with Anna");
    EXPECT_EQ(events("timeEntry").size(), 2u);
}

TEST_F(CallTimeEntryOffersTest, ImmediateSavesAreRefusedBelowAMinuteAndWhileATaskRuns)
{
    EXPECT_TRUE(offers.canOfferTimeEntries());
    EXPECT_TRUE(offers.saveTimeEntry(zoomCall, "us.zoom.xos"));
    CallProperties brief { zoomCall.startedAt, Date { zoomCall.startedAt.secondsSince1970 + 59.9 }, zoomCall.metadata };
    EXPECT_FALSE(offers.saveTimeEntry(brief, "us.zoom.xos"));
    EXPECT_EQ(events("timeEntry").size(), 1u);

    desktop().runUntil(100);
    EXPECT_FALSE(offers.canOfferTimeEntries()) << "a task timer runs";
    DatabaseWrapper::sharedInstance().configureUnavailable();
    EXPECT_FALSE(offers.canOfferTimeEntries());
}

} // namespace
} // namespace vardel
