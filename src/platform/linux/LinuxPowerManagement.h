#pragma once

#include "platform/PowerManagement.h"
#include "platform/Workspace.h"
#include "platform/linux/PulseAudioStreams.h"
#include "platform/linux/SessionInhibitors.h"

#include <memory>
#include <set>

namespace vardel {
class Clock;
class Log;
} // namespace vardel

namespace vardel::linux_desktop {

// The desktop's evidence of calls in the shape of power-management assertions, keyed by the
// holder's pid: every running microphone and speaker stream of the audio server (PulseAudio or
// PipeWire), and the session's idle inhibitors. A snapshot is read from memory: both sources are
// kept up to date in the background.
class LinuxPowerManagement final : public PowerManagement {
public:
    // Audio streams are mapped to the running applications the workspace lists.
    LinuxPowerManagement(Workspace&, Clock&, Log&);

    AssertionsByProcess copyAssertionsByProcess() override;
    // /proc/PID/exe.
    std::optional<std::string> pathForProcess(ProcessIdentifier) override;

private:
    std::shared_ptr<const Value::Dictionary> currentStreamAssertions();
    std::set<ProcessIdentifier> runningApplicationPids();
    std::optional<ProcessIdentifier> runningApplicationWithId(const std::string& applicationId);
    void logNotices();

    Workspace& workspace_;
    Log& log_;
    PulseAudioStreams streams_;
    bool settled_ = false;
    std::shared_ptr<const Value::Dictionary> streamAssertions_ = std::make_shared<const Value::Dictionary>();
    std::optional<uint64_t> streamGeneration_;
    bool everyStreamOwned_ = false;
    SessionInhibitors inhibitors_;
};

} // namespace vardel::linux_desktop
