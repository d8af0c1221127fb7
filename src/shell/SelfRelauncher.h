#pragma once

#include "platform/ScheduledTimer.h"
#include "platform/Value.h"
#include "shell/SCEvents.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vardel {

// Restarts the tracker through a detached shell script (the platform's) that ends this process and
// starts the program again: on request, and when the installed build was replaced by another (the
// file-event watcher on the executable's folder reports it). The application delegate owns one and forwards to it.
//
// Work that the desktop platform would do on a background queue (the relaunch after an update) runs
// on the main run loop here, since the whole process works on that one thread; the relaunch's
// waits of 1 and 2 seconds therefore block it.
class SelfRelauncher final : public SCEventListenerProtocol {
public:
    // prepareForShutdown lets the recording service store what it holds (called with true, on the run
    // loop); prepareForRelaunch is the product's last step before the script's signal comes. Reads
    // the running bundle's build.
    SelfRelauncher(std::function<void(bool isRelaunch)> prepareForShutdown, std::function<void()> prepareForRelaunch);
    SelfRelauncher(const SelfRelauncher&) = delete;
    SelfRelauncher& operator=(const SelfRelauncher&) = delete;

    // Blocks the run loop for 3 seconds unless relaunches are suppressed.
    void relaunchWithDelay(double delay, Value::Dictionary attributes);
    void relaunch();

    void pathWatcher(SCEvents& watcher, const SCEvent& event) override;
    void handlePathWatcherEvent(const SCEvent& event);

    // The running bundle's "CFBundleVersion" as read at start-up.
    const std::optional<std::string>& currentAppBuild() const { return currentAppBuild_; }

private:
    void sendRelaunchProcessFinished(Value::Dictionary attributes, const std::optional<std::string>& launchError) const;
    // Runs the callback later on the run loop, unless this object is gone by then.
    void schedule(double delaySeconds, std::function<void()> callback);

    std::function<void(bool)> prepareForShutdown_;
    std::function<void()> prepareForRelaunch_;
    std::optional<std::string> currentAppBuild_;
    // The pending shutdown preparations, checks and relaunches; each event has its own check.
    std::vector<ScheduledTimer> timers_;
};

} // namespace vardel
