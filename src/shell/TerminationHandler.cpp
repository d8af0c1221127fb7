#include "shell/TerminationHandler.h"

#include "platform/Platform.h"
#include "product/DatabaseWrapper.h"
#include "product/HelperHelper.h"
#include "shell/StartupQuestions.h"

namespace vardel {

namespace {

constexpr double terminationFlushSeconds = 5;
constexpr size_t keptManualQuits = 5;

constexpr const char* quitMessage = "Do you really wish to quit the Vardel tracker app?";
constexpr const char* quitWithoutAskingKey = "shouldQuitHelperFromMenuItem";
constexpr const char* lastManualQuitsKey = "VDHelperAppDelegate_lastManualQuits";

PreferenceStore& defaults()
{
    return platform().standardUserDefaults();
}

} // namespace

TerminationHandler::TerminationHandler(InfoLogger& infoLogger)
    : infoLogger_(infoLogger)
{
}

TerminationHandler::~TerminationHandler()
{
    infoLogger_.setFlushAndSyncFinishedHandler(nullptr);
}

void TerminationHandler::askToQuit()
{
    if (defaults().getBool(quitWithoutAskingKey).value_or(false)) {
        quitNow();
        return;
    }
    AlertResponse response = platform().alerts().runModal(
        { quitMessage, StartupQuestions::trackerMustRunText, { "Keep Tracking", "Quit Vardel Tracker" }, true, true });
    if (response.suppressionState)
        defaults().setObject(quitWithoutAskingKey, Value(true));
    if (response.button != 1)
        quitNow();
}

void TerminationHandler::quitNow()
{
    logQuitEvent();
    applicationShouldTerminate("quit");
}

void TerminationHandler::logQuitEvent()
{
    HelperHelper::logEventWithName("VDHelperAppDelegate.quitManually", {}, true);
    Value::List quits;
    if (auto stored = defaults().object(lastManualQuitsKey); stored && stored->asList())
        quits = *stored->asList();
    quits.insert(quits.begin(), Value(platform().clock().now()));
    if (quits.size() > keptManualQuits)
        quits.erase(quits.begin() + keptManualQuits, quits.end());
    defaults().setObject(lastManualQuitsKey, Value(std::move(quits)));
    defaults().synchronize();
}

void TerminationHandler::applicationShouldTerminate(const std::string& reason)
{
    if (terminationReason_)
        return;
    terminationReason_ = reason;
    infoLogger_.setFlushAndSyncFinishedHandler([this] { replyToApplicationShouldTerminate(); });
    if (!infoLogger_.prepareForShutdownWithIsRelaunch(false)) {
        replyToApplicationShouldTerminate();
        return;
    }
    // Whichever comes first, the recording service's word or the time limit, ends the process.
    flushDeadline_ = ScheduledTimer(terminationFlushSeconds, [this] { replyToApplicationShouldTerminate(); });
}

void TerminationHandler::replyToApplicationShouldTerminate()
{
    if (terminating_)
        return;
    terminating_ = true;
    applicationWillTerminate();
}

void TerminationHandler::applicationWillTerminate()
{
    DatabaseWrapper::sharedInstance().configureUnavailable();
    platform().runLoop().stop(0, terminationReason_.value_or("quit"));
}

void TerminationHandler::prepareRecordingForShutdown(bool isRelaunch)
{
    std::erase_if(shutdownPreparations_, [](const ScheduledTimer& timer) { return !timer.isPending(); });
    shutdownPreparations_.emplace_back(
        0, [this, isRelaunch] { infoLogger_.prepareForShutdownWithIsRelaunch(isRelaunch); });
}

} // namespace vardel
