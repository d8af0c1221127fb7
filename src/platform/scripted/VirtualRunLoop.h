#pragma once

#include "platform/RunLoop.h"
#include "platform/scripted/Timeline.h"
#include "platform/scripted/VirtualClock.h"

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>

namespace vardel::scripted {

// The run loop in virtual time: timeline steps and timers are served in order of due time (a step
// before a timer due at the same time, equal timers in the order they were scheduled), and the clock
// jumps to each one. A blocking sleep moves the clock without serving timers. The run ends at the scenario's end, as by
// a termination request: the program may finish its work in the grace time that follows; nothing else due at or after
// the end is served.
class VirtualRunLoop final : public RunLoop {
public:
    // How long past the end a program that asked to finish its work before ending may take.
    static constexpr double terminationGraceSeconds = 5;

    VirtualRunLoop(VirtualClock&, Timeline&, double endSeconds);

    TimerId schedule(double delaySeconds, std::function<void()> callback) override;
    void cancel(TimerId) override;
    void sleep(double seconds) override;
    int run() override;
    void stop(int status, std::string reason) override;
    void setTerminationRequestHandler(std::function<void(const std::string& reason)> handler) override
    {
        terminationRequestHandler_ = std::move(handler);
    }

    // Asks the program to end, as a termination signal does; nothing happens without a handler.
    void requestTermination(const std::string& reason)
    {
        if (terminationRequestHandler_)
            terminationRequestHandler_(reason);
    }
    // Serves the steps and timers due up to and including that time, then moves the clock there;
    // the run goes on.
    void runUntil(double elapsedSeconds);
    // "end" when the run reached the scenario's end, else the reason given to stop(); empty while
    // running.
    const std::string& stopReason() const { return stopReason_; }

private:
    // The time of the next step or timer, whichever comes first.
    std::optional<double> nextDue() const;
    void serveNext();
    void endRun();

    VirtualClock& clock_;
    Timeline& timeline_;
    double endSeconds_;
    TimerId lastTimer_ = 0;
    // Keyed by due time and id, so that equal due times keep the order of scheduling.
    std::map<std::pair<double, TimerId>, std::function<void()>> timers_;
    bool stopped_ = false;
    int status_ = 0;
    std::string stopReason_;
    std::function<void(const std::string&)> terminationRequestHandler_;
};

} // namespace vardel::scripted
