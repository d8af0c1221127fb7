#include "calls/CallTimeEntryOffers.h"

#include "calls/PowerManagementAssertions.h"
#include "calls/RunningCallDetector.h"
#include "platform/JsonText.h"
#include "platform/Platform.h"
#include "platform/ValueJson.h"
#include "product/AnalyticsWrapper.h"
#include "product/DatabaseWrapper.h"
#include "product/DurationFormatter.h"
#include "product/LogScale.h"
#include "product/OngoingTaskActivityManager.h"
#include "product/SupportRequests.h"
#include "product/TaskActivitySuggestionRanker.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace vardel {

namespace {

constexpr const char* fileLabel = "RunningCallDetector";
constexpr int immediateSaveLine = 622;
constexpr int editorSaveLine = 784;
constexpr int editedEntryLine = 640;

void logSensitiveEvent(std::string name, Value::Dictionary attributes)
{
    AnalyticsWrapper::logEvent(
        std::move(name), std::move(attributes), AnalyticsFrequency::always, { AnalyticsFlag::sensitive });
}

Value::Dictionary callAttributes(const CallProperties& call, const std::string& key)
{
    return { { "bundleIdentifier", Value(key) },
        { "effectiveServiceName", textOrNil(RunningCallDetector::displayName(call.metadata)) },
        { "duration", Value(roundNumberToLogScale(call.duration())) } };
}

Date withoutFractionalSeconds(Date date)
{
    return Date { std::floor(date.secondsSince1970) };
}

TaskActivityDescriptor descriptorFor(const CallProperties& call, const std::string& title)
{
    return TaskActivityDescriptor { withoutFractionalSeconds(call.startedAt), withoutFractionalSeconds(call.lastSeen),
        title, std::nullopt };
}

std::optional<std::string> userInfoText(const Value::Dictionary& userInfo, const char* key)
{
    auto found = userInfo.find(key);
    if (found == userInfo.end() || !found->second.asText())
        return std::nullopt;
    return *found->second.asText();
}

std::optional<CallProperties> decodedCall(const Value::Dictionary& userInfo)
{
    auto encoded = userInfoText(userInfo, "callProperties");
    return encoded ? CallPropertiesJson::decodeText(*encoded) : std::nullopt;
}

std::string joinedKeys(const Value::Dictionary& userInfo)
{
    std::string joined;
    for (const auto& [key, value] : userInfo)
        joined += (joined.empty() ? "" : ", ") + key;
    return joined;
}

std::string falsePositiveBody(const std::optional<CallProperties>& call, const std::optional<std::string>& key)
{
    auto field = [](const std::optional<std::string>& text) { return text.value_or("(nil)"); };
    std::optional<std::string> appName, serviceName, meetingTitle;
    if (call) {
        appName = call->metadata.appName;
        serviceName = call->metadata.serviceName;
        meetingTitle = call->metadata.meetingTitle;
    }
    char duration[64];
    std::snprintf(duration, sizeof duration, "%f", call ? call->duration() : 0.0);
    return "App Name: " + field(appName) + "\nApp ID: " + field(key) + "\nService Name: " + field(serviceName)
        + "\nMeeting Title: " + field(meetingTitle) + "\nCall Duration: " + duration
        + " s\n\nPlease describe what you were doing when the call notification appeared, and whether your Mac's "
          "speakers and/or microphone were active:\n\n";
}

} // namespace

void CallTimeEntryOffers::registerNotificationCategory()
{
    platform().userNotificationCenter().registerCategory(categoryIdentifier,
        { { "createTaskForCall", "Create Time Entry" }, { "reportFalsePositive", "Report False Positive" },
            { "doNotAskAgain", "Don\u2019t Ask Again" },
            { "doNotAskAgainForThisApp", "Don't Ask Again for This App" } },
        this);
}

bool CallTimeEntryOffers::canOfferTimeEntries()
{
    return DatabaseWrapper::sharedInstance().database()
        && !OngoingTaskActivityManager(platform().runningTasks()).hasRunningActivity();
}

std::optional<TaskActivity> CallTimeEntryOffers::saveTimeEntry(const CallProperties& call, const std::string&)
{
    Database* database = DatabaseWrapper::sharedInstance().database();
    auto title = RunningCallDetector::callTitle(call.metadata);
    if (!database || !title)
        return std::nullopt;
    return database->mutateOrPresentError(fileLabel, immediateSaveLine, [&](DatabaseTransaction& transaction) {
        return transaction.createTaskActivity(descriptorFor(call, *title), true);
    });
}

void CallTimeEntryOffers::editTimeEntry(const TaskActivity& entry)
{
    const TaskActivityDescriptor& saved = entry.descriptor;
    TimeEntryProposal proposal { "Edit Time Entry", saved.start, saved.end, saved.title, saved.project };
    platform().timeEntryEditor().present(proposal, [entry](const TimeEntryProposal& edited) {
        Database* database = DatabaseWrapper::sharedInstance().database();
        if (!database)
            return;
        TaskActivityDescriptor changed { edited.start, edited.end, edited.title, edited.project };
        database->mutateOrPresentError(fileLabel, editedEntryLine,
            [&](DatabaseTransaction& transaction) { return transaction.updateTaskActivity(entry, changed, true); });
    });
}

void CallTimeEntryOffers::presentCallEditor(const CallProperties& call, const std::string& key)
{
    auto title = RunningCallDetector::callTitle(call.metadata);
    Database* database = DatabaseWrapper::sharedInstance().database();
    if (!title || !database)
        return;
    logSensitiveEvent("RunningCallDetector.createTask.started", callAttributes(call, key));
    TaskActivityDescriptor descriptor = descriptorFor(call, *title);
    descriptor.project = TaskActivitySuggestionRanker(*database).suggestProjectBasedOnProvenanceMetadata(descriptor);
    TimeEntryProposal proposal { "Record Meeting Details", descriptor.start, descriptor.end, descriptor.title,
        descriptor.project };
    platform().timeEntryEditor().present(proposal, [call, key](const TimeEntryProposal& saved) {
        Database* database = DatabaseWrapper::sharedInstance().database();
        if (!database)
            return;
        TaskActivityDescriptor edited { saved.start, saved.end, saved.title, saved.project };
        auto created = database->mutateOrPresentError(fileLabel, editorSaveLine,
            [&](DatabaseTransaction& transaction) { return transaction.createTaskActivity(edited, true); });
        if (created)
            logSensitiveEvent("RunningCallDetector.createTask.saved", callAttributes(call, key));
    });
}

void CallTimeEntryOffers::requestNotificationPermission(std::function<void(bool granted)> answer)
{
    platform().userNotificationCenter().requestPermission(std::move(answer));
}

void CallTimeEntryOffers::presentCallEndedNotification(const CallProperties& call, const std::string& key)
{
    auto name = RunningCallDetector::displayName(call.metadata);
    if (!name)
        return;
    logSensitiveEvent("RunningCallDetector.presentCallEndedNotification", callAttributes(call, key));
    std::string title = *name + " call has ended (" + DurationFormatter::format(call.duration()) + ")";
    if (call.metadata.meetingTitle)
        title += ": " + *call.metadata.meetingTitle;
    UserNotification notification {
        title,
        "Click here to record time for this call.",
        categoryIdentifier,
        platform().productPreferences().getBool("RunningCallDetector_playSoundWhenMeetingDetected").value_or(false),
        { { "callProperties", Value(jsonText(CallPropertiesJson::encode(call))) }, { "bundleIdentifier", Value(key) } },
    };
    platform().userNotificationCenter().deliver(notification);
}

void CallTimeEntryOffers::handleResponse(
    const std::string& category, const UserNotificationResponse& response, const Value::Dictionary& userInfo)
{
    if (category != categoryIdentifier)
        return;
    AnalyticsWrapper::logEvent("RunningCallDetector.notificationResponse",
        { { "action", Value(response.description()) } }, AnalyticsFrequency::always);
    using Kind = UserNotificationResponse::Kind;
    const std::string& action = response.actionIdentifier;
    if (response.kind == Kind::dismissed)
        return;
    if (response.kind == Kind::clicked || action == "createTaskForCall") {
        auto call = decodedCall(userInfo);
        auto key = userInfoText(userInfo, "bundleIdentifier");
        if (call && key)
            presentCallEditor(*call, *key);
    } else if (action == "reportFalsePositive") {
        reportFalsePositive(userInfo);
    } else if (action == "doNotAskAgainForThisApp") {
        stopAskingForApplication(userInfo);
    } else if (action == "doNotAskAgain") {
        platform().productPreferences().setObject("callNotificationMode", Value(2));
    }
}

void CallTimeEntryOffers::stopAskingForApplication(const Value::Dictionary& userInfo)
{
    auto key = userInfoText(userInfo, "bundleIdentifier");
    if (!key) {
        std::string keys = joinedKeys(userInfo);
        platform().log().warning(
            "[RunningCallDetector] missing bundleIdentifier in doNotAskAgainForThisApp, userInfo keys: " + keys);
        AnalyticsWrapper::logEvent(
            "RunningCallDetector.doNotAskAgainForThisApp.missingBundleIdentifier", { { "userInfoKeys", Value(keys) } });
        return;
    }
    constexpr const char* disabledKey = "RunningCallDetector_appsWithCallTrackingDisabled";
    auto disabled = platform().productPreferences().getStringList(disabledKey).value_or(std::vector<std::string> {});
    if (std::find(disabled.begin(), disabled.end(), *key) == disabled.end()) {
        disabled.push_back(*key);
        Value::List list(disabled.begin(), disabled.end());
        platform().productPreferences().setObject(disabledKey, Value(std::move(list)));
    }
    auto call = decodedCall(userInfo);
    logSensitiveEvent("RunningCallDetector.doNotAskAgainForThisApp",
        { { "bundleIdentifier", Value(*key) }, { "appName", textOrNil(call ? call->metadata.appName : std::nullopt) },
            { "serviceName", textOrNil(call ? call->metadata.serviceName : std::nullopt) } });
}

void CallTimeEntryOffers::reportFalsePositive(const Value::Dictionary& userInfo)
{
    auto call = decodedCall(userInfo);
    auto key = userInfoText(userInfo, "bundleIdentifier");
    std::vector<std::string> lines = { "Dump created at: " + ValueJson::formatIso8601(platform().clock().now()),
        platform().desktopTexts().systemLine };
    PowerManagementAssertions snapshot([&lines](const std::string& line) { lines.push_back(line); });
    std::string dump;
    for (const std::string& line : lines)
        dump += (dump.empty() ? "" : "\n") + line;
    SupportRequests::sharedInstance().createRequest(falsePositiveBody(call, key), { { "PMAssertions.txt", dump } });
}

} // namespace vardel
