#include "product/InfoLogger.h"

#include "platform/JsonText.h"
#include "platform/Platform.h"
#include "product/DatabaseWrapper.h"
#include "product/RecordedActivity.h"

namespace vardel {

namespace {

using nlohmann::ordered_json;

double secondsNow()
{
    return platform().clock().now().secondsSince1970;
}

ordered_json encodeDetails(const VDActivityDetails& details)
{
    return {
        { "windowTitle", textOrNull(details.windowTitle) },
        { "documentPath", textOrNull(details.documentPath) },
        { "documentTitle", textOrNull(details.documentTitle) },
        { "contextPath", details.contextPath ? ordered_json(*details.contextPath) : ordered_json(nullptr) },
        { "isPrivate", details.isPrivate },
    };
}

ordered_json encodeWindows(const std::optional<std::vector<AXUIElement>>& windows)
{
    if (!windows)
        return nullptr;
    ordered_json names = ordered_json::array();
    for (const AXUIElement& window : *windows)
        names.push_back(textOrNull(window.traceName()));
    return names;
}

} // namespace

ordered_json InfoLogger::encode(const VDActivity& activity)
{
    return {
        { "bundleIdentifier", textOrNull(activity.applicationBundleIdentifier) },
        { "pid", activity.applicationProcessIdentifier },
        { "localizedName", textOrNull(activity.application.localizedName) },
        { "executablePath", textOrNull(activity.applicationExecutableURL) },
        { "isFullscreen", activity.isFullscreen },
        { "saveSheet", activity.isShowingSaveSheet },
        { "accessibilityWindows", encodeWindows(activity.accessibilityWindows) },
        { "details", encodeDetails(activity.details) },
    };
}

void InfoLogger::startSampling()
{
    nextSampleDue_ = secondsNow();
    nextSample_ = ScheduledTimer(0, [this] {
        sample();
        scheduleNextSample();
    });
}

void InfoLogger::scheduleNextSample()
{
    // A sample that took longer than the interval (an application that did not answer) skips the
    // samples it overran instead of catching up with a burst.
    double current = secondsNow();
    nextSampleDue_ += sampleIntervalSeconds;
    while (nextSampleDue_ < current)
        nextSampleDue_ += sampleIntervalSeconds;
    nextSample_ = ScheduledTimer(nextSampleDue_ - current, [this] {
        sample();
        scheduleNextSample();
    });
}

void InfoLogger::sample()
{
    Date sampledAt = platform().clock().now();
    std::optional<VDActivity> activity;
    if (shouldTrack_ && extractor_) {
        activity = extractor_->getCurrentActivity();
        if (activity)
            extractor_->callInfoExtractorFor(*activity);
    }
    if (callDetector_)
        callDetector_->updateCallStatusForActivity(activity ? &*activity : nullptr, shouldTrack_);
    record(sampledAt, activity);
    platform().trace().write("sample",
        { { "activity", activity ? encode(*activity) : ordered_json(nullptr) }, { "calls", callStatus() },
            { "paused", !shouldTrack_ } });
}

ordered_json InfoLogger::callStatus() const
{
    if (!callDetector_)
        return nullptr;
    auto description = callDetector_->descriptionOfRunningCalls();
    return { { "hasRunningCall", callDetector_->hasRunningCall() },
        { "descriptionOfRunningCalls", description ? ordered_json(*description) : ordered_json(nullptr) } };
}

// The record describes what was in front when the sample began, also when reading it took long.
void InfoLogger::record(Date sampledAt, const std::optional<VDActivity>& activity)
{
    ActivityWriter* writer = DatabaseWrapper::sharedInstance().activityWriter();
    if (!writer)
        return;
    std::optional<RecordedActivity> recorded;
    if (activity)
        recorded = RecordedActivity::from(*activity);
    writer->recordSample(sampledAt, sampleIntervalSeconds, recorded);
    hasRecorded_ = true;
}

void InfoLogger::flushRecordedActivity()
{
    if (!hasRecorded_)
        return;
    if (ActivityWriter* writer = DatabaseWrapper::sharedInstance().activityWriter())
        writer->flush();
}

void InfoLogger::statusItemClicked()
{
    flushRecordedActivity();
}

bool InfoLogger::prepareForShutdownWithIsRelaunch(bool /*isRelaunch: a relaunch writes the same*/)
{
    flushRecordedActivity();
    if (flushAndSyncFinished_)
        flushAndSyncFinished_();
    return false;
}

} // namespace vardel
