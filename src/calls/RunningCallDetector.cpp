#include "calls/RunningCallDetector.h"

#include "calls/AccessibilityCallDetection.h"
#include "calls/CallApplicationTables.h"
#include "platform/Platform.h"
#include "platform/ProcessWide.h"
#include "product/AnalyticsWrapper.h"
#include "product/ApplicationList.h"
#include "product/DurationFormatter.h"
#include "product/LogScale.h"
#include "product/TextHelpers.h"

#include <algorithm>
#include <memory>

namespace vardel {

namespace {

struct Switches {
    bool pmAssertionBasedCallDetectionEnabled = true;
    bool browserBasedCallDetectionEnabled = true;
    bool callDetectionEnabledForUnknownApps = true;
    bool callDetectionAlwaysRequiresSeparateAudioAssertions = false;
    bool callDetectionRequiresSeparateAudioAssertionsIfServiceNameUnknown = true;
    bool detectCallsWhenTrackingPaused = false;
    double thresholdForConsideringACallToBeOver = 2.2;
};

PreferenceStore& preferences()
{
    return platform().productPreferences();
}

ProcessWide<Switches> switches([] {
    auto flag = [](const char* key, bool fallback) { return preferences().getBool(key).value_or(fallback); };
    Switches read;
    read.pmAssertionBasedCallDetectionEnabled = flag("RunningCallDetector_pmAssertionBasedCallDetectionEnabled", true);
    read.browserBasedCallDetectionEnabled = flag("RunningCallDetector_browserBasedCallDetectionEnabled", true);
    read.callDetectionEnabledForUnknownApps = flag("RunningCallDetector_callDetectionEnabledForUnknownApps", true);
    read.callDetectionAlwaysRequiresSeparateAudioAssertions
        = flag("RunningCallDetector_callDetectionAlwaysRequiresSeparateAudioAssertions", false);
    read.callDetectionRequiresSeparateAudioAssertionsIfServiceNameUnknown
        = flag("RunningCallDetector_callDetectionRequiresSeparateAudioAssertionsIfServiceNameUnknown", true);
    read.detectCallsWhenTrackingPaused = flag("RunningCallDetector_detectCallsWhenTrackingPaused", false);
    read.thresholdForConsideringACallToBeOver
        = preferences().getDouble("RunningCallDetector_thresholdForConsideringACallToBeOver").value_or(2.2);
    return read;
});

ProcessWide<CallApplicationTables::KnownCallApplications> knownCallApplications([] {
    auto extra = preferences().getStringList("RunningCallDetector_extraAppsForCallTracking");
    return CallApplicationTables::withExtraRows(
        CallApplicationTables::builtInKnownCallApplications(), extra.value_or(std::vector<std::string> {}));
});

ProcessWideVariable<RunningCallDetector> sharedDetector;

enum class CallNotificationMode { notification = 0, popover = 1, none = 2 };

CallNotificationMode callNotificationMode()
{
    auto mode = preferences().getInt("callNotificationMode").value_or(0);
    if (mode == 1)
        return CallNotificationMode::popover;
    if (mode == 2)
        return CallNotificationMode::none;
    return CallNotificationMode::notification;
}

void logEvent(std::string name, Value::Dictionary attributes, AnalyticsFrequency frequency, bool sensitive)
{
    std::vector<AnalyticsFlag> flags;
    if (sensitive)
        flags.push_back(AnalyticsFlag::sensitive);
    AnalyticsWrapper::logEvent(std::move(name), std::move(attributes), frequency, flags);
}

// Browsers say little about a call by their identifier; their unknown-application events are noise.
bool isBrowserKey(const std::string& key)
{
    std::string lowercased = TextHelpers::lowercased(key);
    for (const std::string& browser : ApplicationList::webBrowsing()) {
        if (TextHelpers::contains(lowercased, TextHelpers::lowercased(browser)))
            return true;
    }
    return TextHelpers::contains(lowercased, "firefox") || TextHelpers::contains(lowercased, "mozilla")
        || TextHelpers::contains(lowercased, "stack.io");
}

void logUnknownApplicationEvent(const std::string& name, const std::string& key,
    const std::optional<std::string>& appName, Value::Dictionary extra = {})
{
    if (isBrowserKey(key))
        return;
    extra.insert_or_assign("bundleIdentifier", Value(key));
    extra.insert_or_assign("appName", textOrNil(appName));
    logEvent(name, std::move(extra), AnalyticsFrequency::always, true);
}

std::optional<std::string> serviceNameFor(const std::string& bundleIdentifier)
{
    for (const auto& [fragment, serviceName] : knownCallApplications.get()) {
        if (TextHelpers::contains(bundleIdentifier, fragment))
            return serviceName;
    }
    return std::nullopt;
}

std::optional<std::string> firstProcessNameContaining(const PowerManagementAssertions& snapshot, std::string_view part)
{
    for (const auto& assertion : snapshot.assertions) {
        if (assertion.processName && TextHelpers::contains(*assertion.processName, part))
            return std::string(*assertion.processName);
    }
    return std::nullopt;
}

CallMetadata merged(const CallMetadata& old, const CallMetadata& seen)
{
    return CallMetadata { seen.serviceName ? seen.serviceName : old.serviceName,
        seen.appName ? seen.appName : old.appName, seen.meetingTitle ? seen.meetingTitle : old.meetingTitle,
        old.audioInAndOutAssertionsHaveBeenRecordedSeparately
            || seen.audioInAndOutAssertionsHaveBeenRecordedSeparately };
}

std::optional<std::string> faceTimeCallTitle()
{
    if (auto title = AccessibilityCallDetection::faceTimeTitle())
        return title;
    for (const RunningApplication& application : platform().workspace().runningApplications()) {
        if (application.bundleIdentifier != "com.apple.notificationcenterui")
            continue;
        if (auto title = AccessibilityCallDetection::notificationCenterCallTitle(application))
            return title;
    }
    return std::nullopt;
}

// A browser already taken as an unknown application is replaced by its browser call, so that one
// call never counts twice in a sample.
void addBrowserCalls(std::vector<ApplicationAndMetadata>& found, const PowerManagementAssertions& snapshot,
    const VDActivity* activity, const ExcludedApplications& excluded)
{
    for (const auto& process : snapshot.appsWithMeetingRelatedPMAssertions) {
        auto call = AccessibilityCallDetection::browserCall(process, activity, excluded);
        if (!call)
            continue;
        std::erase_if(
            found, [&](const auto& candidate) { return candidate.bundleIdentifier == call->bundleIdentifier; });
        found.push_back(std::move(*call));
    }
}

double secondsBetween(Date earlier, Date later)
{
    return later.secondsSince1970 - earlier.secondsSince1970;
}

} // namespace

RunningCallDetector& RunningCallDetector::sharedInstance()
{
    return sharedDetector.get();
}

bool RunningCallDetector::isQualifyingCall(const CallMetadata& metadata)
{
    bool separately = metadata.audioInAndOutAssertionsHaveBeenRecordedSeparately;
    if (!separately && switches.get().callDetectionAlwaysRequiresSeparateAudioAssertions)
        return false;
    if (metadata.serviceName)
        return true;
    if (!metadata.appName)
        return false;
    return separately || !switches.get().callDetectionRequiresSeparateAudioAssertionsIfServiceNameUnknown;
}

std::optional<std::string> RunningCallDetector::displayName(const CallMetadata& metadata)
{
    if (!isQualifyingCall(metadata))
        return std::nullopt;
    return metadata.serviceName ? metadata.serviceName : metadata.appName;
}

std::optional<std::string> RunningCallDetector::callTitle(const CallMetadata& metadata)
{
    auto name = displayName(metadata);
    if (!name)
        return std::nullopt;
    std::string title = *name + " call";
    if (metadata.meetingTitle)
        title += ": " + *metadata.meetingTitle;
    return title;
}

bool RunningCallDetector::hasRunningCall() const
{
    return std::any_of(runningCalls_.begin(), runningCalls_.end(),
        [](const auto& entry) { return isQualifyingCall(entry.second.metadata); });
}

std::optional<std::string> RunningCallDetector::descriptionOfRunningCalls() const
{
    std::vector<const CallProperties*> calls;
    for (const auto& [key, call] : runningCalls_)
        calls.push_back(&call);
    std::stable_sort(calls.begin(), calls.end(),
        [](const auto* left, const auto* right) { return left->startedAt < right->startedAt; });
    std::string description;
    for (const CallProperties* call : calls) {
        auto title = callTitle(call->metadata);
        if (!title)
            continue;
        if (!description.empty())
            description += ", ";
        description += *title + " (" + DurationFormatter::format(call->duration()) + ")";
    }
    if (description.empty())
        return std::nullopt;
    return description;
}

ExcludedApplications RunningCallDetector::effectiveExcludedApplications()
{
    return ExcludedApplications::current();
}

std::optional<ApplicationAndMetadata> RunningCallDetector::candidateForApplication(
    const PowerManagementAssertions::PIDAndRunningApplication& process, const VDActivity* activity,
    const ExcludedApplications& excluded) const
{
    if (!process.bundleIdentifier)
        return std::nullopt;
    const std::string& identifier = *process.bundleIdentifier;
    if (excluded.contains(identifier))
        return std::nullopt;
    std::string lowercased = TextHelpers::lowercased(identifier);
    if (TextHelpers::hasPrefix(lowercased, "com.steinberg") || TextHelpers::hasPrefix(lowercased, "net.steinberg"))
        return std::nullopt;
    auto serviceName = serviceNameFor(identifier);
    if (!serviceName && !(process.applicationName && switches.get().callDetectionEnabledForUnknownApps))
        return std::nullopt;
    return ApplicationAndMetadata { identifier,
        CallMetadata { serviceName, process.applicationName,
            AccessibilityCallDetection::meetingTitle(identifier, activity),
            process.audioInAndOutAssertionsHaveBeenRecordedSeparately } };
}

std::vector<ApplicationAndMetadata> RunningCallDetector::candidates(
    const PowerManagementAssertions& snapshot, const VDActivity* activity) const
{
    // The preferences are followed live, but one sample sees one set.
    auto excluded = effectiveExcludedApplications();
    auto found = assertionBasedCandidates(snapshot, activity, excluded);
    if (switches.get().browserBasedCallDetectionEnabled)
        addBrowserCalls(found, snapshot, activity, excluded);
    return found;
}

std::vector<ApplicationAndMetadata> RunningCallDetector::assertionBasedCandidates(
    const PowerManagementAssertions& snapshot, const VDActivity* activity) const
{
    return assertionBasedCandidates(snapshot, activity, effectiveExcludedApplications());
}

std::vector<ApplicationAndMetadata> RunningCallDetector::assertionBasedCandidates(
    const PowerManagementAssertions& snapshot, const VDActivity* activity, const ExcludedApplications& excluded) const
{
    std::vector<ApplicationAndMetadata> found;
    for (const auto& process : snapshot.appsWithMeetingRelatedPMAssertions) {
        if (auto candidate = candidateForApplication(process, activity, excluded))
            found.push_back(std::move(*candidate));
    }
    if (firstProcessNameContaining(snapshot, "TeamViewer") && !excluded.contains("TeamViewer"))
        found.push_back({ "TeamViewer", CallMetadata { "TeamViewer", "TeamViewer", std::nullopt, true } });
    if (firstProcessNameContaining(snapshot, "FaceTime") && !excluded.contains("FaceTime"))
        found.push_back({ "com.apple.FaceTime", CallMetadata { "FaceTime", "FaceTime", faceTimeCallTitle(), true } });
    return found;
}

void RunningCallDetector::reportMeetingAssertions(const PowerManagementAssertions& snapshot)
{
    for (const auto& process : snapshot.appsWithMeetingRelatedPMAssertions) {
        if (!process.application || !process.application->bundleIdentifier
            || !process.audioInAndOutAssertionsHaveBeenRecordedSeparately)
            continue;
        const std::string& identifier = *process.application->bundleIdentifier;
        if (!analyticsEventsSentForMeetingPMAssertionsWithBundleIdentifiers_.insert(identifier).second)
            continue;
        logEvent("RunningCallDetector.meetingPMAssertionDetected",
            { { "bundleIdentifier", Value(identifier) }, { "applicationName", textOrNil(process.applicationName) } },
            AnalyticsFrequency::always, true);
    }
}

void RunningCallDetector::recordSighting(const ApplicationAndMetadata& candidate, Date now)
{
    auto running = runningCalls_.find(candidate.bundleIdentifier);
    if (running != runningCalls_.end()) {
        running->second.lastSeen = now;
        running->second.metadata = merged(running->second.metadata, candidate.metadata);
        return;
    }
    runningCalls_.emplace(candidate.bundleIdentifier, CallProperties { now, now, candidate.metadata });
    logEvent("RunningCallDetector.callStartDetected", { { "bundleIdentifier", Value(candidate.bundleIdentifier) } },
        AnalyticsFrequency::medium, true);
    if (!candidate.metadata.serviceName)
        logUnknownApplicationEvent("RunningCallDetector.callStartDetected.forUnknownApplication",
            candidate.bundleIdentifier, candidate.metadata.appName);
}

void RunningCallDetector::reportParallelCalls(const std::vector<ApplicationAndMetadata>& found)
{
    if (found.size() < 2 || hasSentAnalyticsEventForMultipleParallelPMAssertions_)
        return;
    std::vector<std::string> keys;
    keys.reserve(found.size());
    for (const auto& candidate : found)
        keys.push_back(candidate.bundleIdentifier);
    std::sort(keys.begin(), keys.end());
    logEvent("RunningCallDetector.multipleParallelPMAssertionsDetected",
        { { "numberOfParallelPMAssertions", Value(static_cast<int64_t>(found.size())) },
            { "bundleIdentifiers", Value(TextHelpers::joined(keys, ",")) } },
        AnalyticsFrequency::always, true);
    hasSentAnalyticsEventForMultipleParallelPMAssertions_ = true;
}

void RunningCallDetector::updateCallStatusForActivity(const VDActivity* activity, bool isTracking)
{
    if (!isTracking && !switches.get().detectCallsWhenTrackingPaused)
        return;
    if (!switches.get().pmAssertionBasedCallDetectionEnabled)
        return;
    Date now = platform().clock().now();
    PowerManagementAssertions snapshot;
    reportMeetingAssertions(snapshot);
    auto found = candidates(snapshot, activity);
    for (const auto& candidate : found)
        recordSighting(candidate, now);
    reportParallelCalls(found);
    std::erase_if(runningCalls_, [&](const auto& entry) { return !isStillRunning(entry.first, entry.second, now); });
}

bool RunningCallDetector::isStillRunning(const std::string& key, const CallProperties& call, Date now)
{
    // Dates are seconds since 1970 in double precision, so a difference is only exact to a microsecond.
    constexpr double dateResolution = 1e-6;
    if (secondsBetween(call.lastSeen, now) <= switches.get().thresholdForConsideringACallToBeOver + dateResolution)
        return true;
    const CallMetadata& metadata = call.metadata;
    Value::Dictionary attributes = {
        { "bundleIdentifier", Value(key) },
        { "appName", textOrNil(metadata.appName) },
        { "appNamePresent", Value(metadata.appName.has_value()) },
        { "serviceName", textOrNil(metadata.serviceName) },
        { "serviceNamePresent", Value(metadata.serviceName.has_value()) },
        { "meetingTitlePresent", Value(metadata.meetingTitle.has_value()) },
        { "duration", Value(roundNumberToLogScale(call.duration())) },
    };
    if (metadata.meetingTitle)
        attributes.insert_or_assign("bundleIdentifier_meetingTitlePresent", Value(key));
    if (metadata.serviceName)
        attributes.insert_or_assign("bundleIdentifier_serviceNamePresent", Value(key));
    logEvent("RunningCallDetector.callEndDetected", std::move(attributes), AnalyticsFrequency::medium, true);
    std::string actionTaken = reactToEndedCall(key, call);
    if (!metadata.serviceName)
        logUnknownApplicationEvent("RunningCallDetector.callEndDetected.forUnknownApplication", key, metadata.appName,
            { { "actionTaken", Value(actionTaken) } });
    return false;
}

std::string RunningCallDetector::reactToEndedCall(const std::string& key, const CallProperties& call)
{
    double minimum = preferences().getDouble("RunningCallDetector_minimumCallDurationForNotifying").value_or(60);
    if (call.duration() < minimum || !reaction_ || !reaction_->canOfferTimeEntries())
        return "tooShort";
    std::string actionTaken;
    CallNotificationMode mode = callNotificationMode();
    if (preferences().getBool("RunningCallDetector_immediatelySaveTimeEntriesForCalls").value_or(false)) {
        actionTaken = "save";
        auto entry = reaction_->saveTimeEntry(call, key);
        if (entry && mode != CallNotificationMode::none) {
            actionTaken = "saveAndEdit";
            reaction_->editTimeEntry(*entry);
        }
    } else if (mode == CallNotificationMode::none) {
        actionTaken = "none";
    } else if (mode == CallNotificationMode::popover) {
        actionTaken = "popover";
        reaction_->presentCallEditor(call, key);
    } else {
        // The permission answer decides what is offered, and names the action when it comes in time.
        auto answered = std::make_shared<std::string>("tooShort");
        CallEndReaction* reaction = reaction_;
        reaction_->requestNotificationPermission([reaction, call, key, answered](bool granted) {
            *answered = granted ? "notification" : "popover_notificationWasDenied";
            if (granted)
                reaction->presentCallEndedNotification(call, key);
            else
                reaction->presentCallEditor(call, key);
        });
        actionTaken = *answered;
    }
    preferences().setObject("RunningCallDetector_lastDetectedCallDate", Value(platform().clock().now()));
    return actionTaken;
}

} // namespace vardel
