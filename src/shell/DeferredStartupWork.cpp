#include "shell/DeferredStartupWork.h"

#include "platform/Platform.h"
#include "product/DatabaseWrapper.h"
#include "shell/RandomFraction.h"

namespace vardel {

namespace {

constexpr double defaultInitialSyncDelaySeconds = 15;
constexpr double firstSyncRequestDelaySeconds = 0.1;
constexpr double automaticBackupDelaySeconds = 270;
constexpr double accessibilityCheckDelaySeconds = 300;
constexpr double relaunchDelaySeconds = 60;

double preferredSeconds(const char* key)
{
    return platform().standardUserDefaults().getDouble(key).value_or(0);
}

void requestFirstSync()
{
    DatabaseWrapper& wrapper = DatabaseWrapper::sharedInstance();
    if (wrapper.database())
        wrapper.syncManager().dispatchSyncRequestWithDelay(firstSyncRequestDelaySeconds);
}

void createAutomaticBackup()
{
    DatabaseWrapper& wrapper = DatabaseWrapper::sharedInstance();
    if (wrapper.database())
        wrapper.createAutomaticBackup();
}

} // namespace

void DeferredStartupWork::schedule(SelfRelauncher& relauncher, std::function<void()> checkForAccessibilitySuccess)
{
    double syncDelay = preferredSeconds("initialSyncDelay");
    if (syncDelay == 0)
        syncDelay = defaultInitialSyncDelaySeconds;
    firstSync_ = ScheduledTimer(syncDelay + RandomFraction::next(), requestFirstSync);
    automaticBackup_ = ScheduledTimer(automaticBackupDelaySeconds, createAutomaticBackup);
    // One relaunch per process; the new process schedules its own.
    double relaunchInterval = preferredSeconds("VDHelperAppDelegate_relaunchInterval");
    if (relaunchInterval > 0) {
        relaunch_ = ScheduledTimer(relaunchInterval, [&relauncher] {
            relauncher.relaunchWithDelay(
                relaunchDelaySeconds, { { "reason", Value("VDHelperAppDelegate_relaunchInterval") } });
        });
    }
    accessibilityCheck_ = ScheduledTimer(accessibilityCheckDelaySeconds, std::move(checkForAccessibilitySuccess));
}

} // namespace vardel
