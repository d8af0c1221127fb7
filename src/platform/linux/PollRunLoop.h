#pragma once

#include "platform/RunLoop.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <poll.h>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace vardel::linux_desktop {

// The main run loop in real, monotonic time. Timers are served in order of due time (equal times in
// the order they were scheduled). Besides timers it watches file descriptors: a readable source's
// callback runs on the loop whenever poll() reports the descriptor readable (or hung up, or in
// error), until the source is removed. The loop never closes a descriptor; remove its source
// before closing it.
class PollRunLoop final : public RunLoop {
public:
    using SourceId = uint64_t;

    // Another event loop served from this one's wait, so that what it queues is handled at once
    // rather than on a timer. Each wait is one prepare(), then one dispatch() with what poll()
    // reported for the descriptors prepare() added, even when the wait timed out.
    class Participant {
    public:
        virtual ~Participant() = default;
        // Appends the descriptors to watch and gives the longest wait in milliseconds (-1: no limit).
        virtual int prepare(std::vector<pollfd>& descriptors) = 0;
        virtual void dispatch(std::span<const pollfd> descriptors) = 0;
    };

    PollRunLoop();

    TimerId schedule(double delaySeconds, std::function<void()> callback) override;
    void cancel(TimerId) override;
    void sleep(double seconds) override;
    // Serves timers and sources until stop() is called, or until nothing is scheduled, no source
    // is watched and no participant is set (then the status is 0). A stop() before run() makes it return at once; each
    // stop ends one run.
    int run() override;
    void stop(int status, std::string reason) override;
    void setTerminationRequestHandler(std::function<void(const std::string& reason)> handler) override
    {
        terminationRequestHandler_ = std::move(handler);
    }
    // A termination signal arrived: the handler decides when to stop; without one the run stops now.
    void requestTermination(const std::string& reason);

    SourceId addReadableSource(int fileDescriptor, std::function<void()> onReadable);
    // Removing an unknown or already removed source does nothing.
    void removeSource(SourceId);
    // At most one; nullptr removes it. The participant must outlive the loop or be removed first.
    void setParticipant(Participant* participant) { participant_ = participant; }

    // Seconds since the loop was made.
    double elapsedSeconds() const;
    // The reason given to stop(); empty while running or when the loop ran out of work.
    const std::string& stopReason() const { return stopReason_; }

private:
    using Instant = std::chrono::steady_clock::time_point;
    struct Source {
        int fileDescriptor;
        std::function<void()> onReadable;
    };

    bool serveDueTimers();
    void waitForSources(int timeoutMilliseconds);
    void serveReadySources(const std::vector<pollfd>& descriptors, const std::vector<SourceId>& ids);
    int millisecondsUntilNextTimer() const;

    Instant start_;
    TimerId lastTimer_ = 0;
    SourceId lastSource_ = 0;
    std::map<std::pair<Instant, TimerId>, std::function<void()>> timers_;
    std::map<SourceId, Source> sources_;
    Participant* participant_ = nullptr;
    bool stopped_ = false;
    int status_ = 0;
    std::string stopReason_;
    std::function<void(const std::string&)> terminationRequestHandler_;
};

} // namespace vardel::linux_desktop
