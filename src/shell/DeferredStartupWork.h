#pragma once

#include "platform/ScheduledTimer.h"
#include "shell/SelfRelauncher.h"

#include <functional>

namespace vardel {

// What start-up leaves for later: the first sync (a random part of a second after its delay, so that
// many machines do not sync at once), the automatic backup, the accessibility report, and the
// configured relaunch. All of it is cancelled when this object goes.
class DeferredStartupWork {
public:
    // The relauncher must outlive this object.
    void schedule(SelfRelauncher&, std::function<void()> checkForAccessibilitySuccess);

private:
    ScheduledTimer firstSync_;
    ScheduledTimer automaticBackup_;
    ScheduledTimer relaunch_;
    ScheduledTimer accessibilityCheck_;
};

} // namespace vardel
