#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace vardel {

// The main run loop. Everything runs on it: timers fire one after another, never concurrently.
class RunLoop {
public:
    using TimerId = uint64_t;

    virtual ~RunLoop() = default;

    // Runs the callback once, after the delay in seconds (0: as soon as the loop is free).
    virtual TimerId schedule(double delaySeconds, std::function<void()> callback) = 0;
    virtual void cancel(TimerId) = 0;

    // Blocks the main thread for that long; timers do not fire meanwhile.
    virtual void sleep(double seconds) = 0;

    // Serves timers until stop() is called or the loop has nothing more to do; returns the status
    // given to stop().
    virtual int run() = 0;
    virtual void stop(int status, std::string reason) = 0;

    // Someone outside asks the process to end (the session ends, a termination signal, the end of
    // a scripted run). The handler ends the run with stop() when the program is ready; without a
    // handler the run stops at once.
    virtual void setTerminationRequestHandler(std::function<void(const std::string& reason)>) = 0;
};

} // namespace vardel
