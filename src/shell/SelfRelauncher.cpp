#include "shell/SelfRelauncher.h"

#include "platform/Platform.h"
#include "product/AnalyticsWrapper.h"

namespace vardel {

namespace {

constexpr const char* suppressAllAppRelaunchesKey = "VDHelperAppDelegate_suppressAllAppRelaunches";
constexpr const char* suppressUpdateAppRelaunchesKey = "VDHelperAppDelegate_suppressUpdateAppRelaunches";
constexpr const char* lastSelfRelaunchAtKey = "lastSelfRelaunchAt";
constexpr double checkDelayAfterEventSeconds = 5;
constexpr double relaunchDelayAfterUpdateSeconds = 60;

void logCriticalEvent(std::string name, Value::Dictionary attributes)
{
    AnalyticsWrapper::logEvent(std::move(name), std::move(attributes), std::nullopt, {}, true);
}

bool preference(const char* key)
{
    return platform().standardUserDefaults().getBool(key).value_or(false);
}

Value textOrNil(const std::optional<std::string>& text)
{
    return Value(text.value_or("(nil)"));
}

std::optional<std::string> bundleVersion(const Value::Dictionary& info)
{
    auto found = info.find("CFBundleVersion");
    if (found == info.end() || !found->second.asText())
        return std::nullopt;
    return *found->second.asText();
}

size_t runningApplicationCount(const std::optional<std::string>& bundleIdentifier)
{
    size_t count = 0;
    for (const auto& application : platform().workspace().runningApplications()) {
        if (bundleIdentifier && application.bundleIdentifier == bundleIdentifier)
            ++count;
    }
    return count;
}

} // namespace

SelfRelauncher::SelfRelauncher(
    std::function<void(bool isRelaunch)> prepareForShutdown, std::function<void()> prepareForRelaunch)
    : prepareForShutdown_(std::move(prepareForShutdown))
    , prepareForRelaunch_(std::move(prepareForRelaunch))
    , currentAppBuild_(bundleVersion(platform().currentProcess().mainBundle.info))
{
}

void SelfRelauncher::relaunchWithDelay(double delay, Value::Dictionary attributes)
{
    if (preference(suppressAllAppRelaunchesKey)) {
        platform().log().info("App relaunch suppressed by preferences");
        return;
    }
    schedule(0, [this] { prepareForShutdown_(true); });
    logCriticalEvent("VDHelperAppDelegate.relaunchRequested", attributes);
    platform().standardUserDefaults().setObject(lastSelfRelaunchAtKey, Value(platform().clock().now()));

    CurrentProcess process = platform().currentProcess();
    std::string script = platform().relaunchScript(delay, process);
    auto launchError = platform().processLauncher().launch("/bin/sh", { "-c", script });

    platform().runLoop().sleep(1);
    sendRelaunchProcessFinished(std::move(attributes), launchError);
    platform().runLoop().sleep(2);
    prepareForRelaunch_();
}

void SelfRelauncher::relaunch()
{
    relaunchWithDelay(5, { { "reason", Value("IBAction") } });
}

void SelfRelauncher::sendRelaunchProcessFinished(
    Value::Dictionary attributes, const std::optional<std::string>& launchError) const
{
    attributes.insert_or_assign("launchResult", Value(!launchError));
    if (launchError)
        attributes.insert_or_assign("error", Value(*launchError));
    auto count = runningApplicationCount(platform().currentProcess().mainBundle.bundleIdentifier);
    attributes.insert_or_assign("runningAppCount", Value(static_cast<int64_t>(count)));
    logCriticalEvent("VDHelperAppDelegate.relaunchProcessFinished", std::move(attributes));
}

// Every event gets its own check: no earlier check is cancelled, since each carries its event.
void SelfRelauncher::pathWatcher(SCEvents&, const SCEvent& event)
{
    platform().log().info("Update detected - initiating relaunch...");
    if (preference(suppressUpdateAppRelaunchesKey)) {
        platform().log().info("Update relaunch suppressed by preferences");
        return;
    }
    schedule(checkDelayAfterEventSeconds, [this, event] { handlePathWatcherEvent(event); });
}

void SelfRelauncher::handlePathWatcherEvent(const SCEvent& event)
{
    InstalledBuild installed = platform().installedBuild();
    const std::string& infoPlistPath = installed.source;
    const std::optional<std::string>& newAppBuild = installed.version;
    if (newAppBuild && currentAppBuild_ && *newAppBuild == *currentAppBuild_) {
        platform().log().info("Old and new build are equal (" + *newAppBuild + "); skipping relaunch");
        return;
    }
    if (!newAppBuild) {
        platform().log().warning("Warning: Could not read new app build version from Info.plist at " + infoPlistPath);
        logCriticalEvent("VDHelperAppDelegate.relaunchForUpdate.couldNotReadNewVersion",
            { { "infoPlistPath", Value(infoPlistPath) }, { "eventPath", Value(event.eventPath()) } });
    }
    Value::Dictionary parameters { { "reason", Value("pathWatcherTriggered") },
        { "eventPath", Value(event.eventPath()) }, { "eventFlag", Value(static_cast<int64_t>(event.eventFlag())) },
        { "currentAppBuild", textOrNil(currentAppBuild_) }, { "newAppBuild", textOrNil(newAppBuild) },
        { "oldAndNewBuildAreEqual", Value(false) } };
    logCriticalEvent("VDHelperAppDelegate.relaunchForUpdate", parameters);

    schedule(0,
        [this, parameters = std::move(parameters)] { relaunchWithDelay(relaunchDelayAfterUpdateSeconds, parameters); });
}

void SelfRelauncher::schedule(double delaySeconds, std::function<void()> callback)
{
    std::erase_if(timers_, [](const ScheduledTimer& timer) { return !timer.isPending(); });
    timers_.emplace_back(delaySeconds, std::move(callback));
}

} // namespace vardel
