#include "platform/linux/PollRunLoop.h"

#include <algorithm>
#include <cmath>
#include <thread>
#include <vector>

namespace vardel::linux_desktop {

namespace {

std::chrono::steady_clock::duration durationOf(double seconds)
{
    // Negative, NaN and absurd delays become "now" or a day, so that the loop's arithmetic holds.
    constexpr double maxSeconds = 86400.0 * 365;
    double bounded = std::isfinite(seconds) ? std::clamp(seconds, 0.0, maxSeconds) : (seconds > 0 ? maxSeconds : 0.0);
    return std::chrono::duration_cast<std::chrono::steady_clock::duration>(std::chrono::duration<double>(bounded));
}

} // namespace

PollRunLoop::PollRunLoop()
    : start_(std::chrono::steady_clock::now())
{
}

RunLoop::TimerId PollRunLoop::schedule(double delaySeconds, std::function<void()> callback)
{
    TimerId id = ++lastTimer_;
    timers_.emplace(std::pair(std::chrono::steady_clock::now() + durationOf(delaySeconds), id), std::move(callback));
    return id;
}

void PollRunLoop::cancel(TimerId id)
{
    std::erase_if(timers_, [id](const auto& entry) { return entry.first.second == id; });
}

void PollRunLoop::sleep(double seconds)
{
    std::this_thread::sleep_for(durationOf(seconds));
}

PollRunLoop::SourceId PollRunLoop::addReadableSource(int fileDescriptor, std::function<void()> onReadable)
{
    SourceId id = ++lastSource_;
    sources_.emplace(id, Source { fileDescriptor, std::move(onReadable) });
    return id;
}

void PollRunLoop::removeSource(SourceId id)
{
    sources_.erase(id);
}

double PollRunLoop::elapsedSeconds() const
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
}

void PollRunLoop::stop(int status, std::string reason)
{
    stopped_ = true;
    status_ = status;
    stopReason_ = std::move(reason);
}

void PollRunLoop::requestTermination(const std::string& reason)
{
    if (terminationRequestHandler_)
        terminationRequestHandler_(reason);
    else
        stop(0, reason);
}

int PollRunLoop::run()
{
    // A stop requested before the run (a command-line mode that finished at start-up) holds; each
    // stop ends one run.
    while (!stopped_) {
        if (serveDueTimers())
            continue;
        if (timers_.empty() && sources_.empty() && !participant_)
            return 0;
        waitForSources(millisecondsUntilNextTimer());
    }
    stopped_ = false;
    return status_;
}

// Serves the first due timer; true when one ran. One at a time, because a callback may cancel or
// schedule others, or stop the loop.
bool PollRunLoop::serveDueTimers()
{
    if (timers_.empty() || timers_.begin()->first.first > std::chrono::steady_clock::now())
        return false;
    auto callback = std::move(timers_.begin()->second);
    timers_.erase(timers_.begin());
    callback();
    return true;
}

int PollRunLoop::millisecondsUntilNextTimer() const
{
    if (timers_.empty())
        return -1;
    auto remaining = timers_.begin()->first.first - std::chrono::steady_clock::now();
    auto milliseconds = std::chrono::ceil<std::chrono::milliseconds>(remaining).count();
    return static_cast<int>(std::clamp<int64_t>(milliseconds, 0, 60'000));
}

void PollRunLoop::waitForSources(int timeoutMilliseconds)
{
    std::vector<pollfd> descriptors;
    std::vector<SourceId> ids;
    for (const auto& [id, source] : sources_) {
        descriptors.push_back({ source.fileDescriptor, POLLIN, 0 });
        ids.push_back(id);
    }
    size_t ownDescriptors = descriptors.size();
    if (participant_) {
        int participantTimeout = participant_->prepare(descriptors);
        if (participantTimeout >= 0 && (timeoutMilliseconds < 0 || participantTimeout < timeoutMilliseconds))
            timeoutMilliseconds = participantTimeout;
    }
    int ready = ::poll(descriptors.data(), descriptors.size(), timeoutMilliseconds);
    if (ready < 0) {
        for (pollfd& descriptor : descriptors)
            descriptor.revents = 0;
    }
    if (participant_)
        participant_->dispatch(std::span<const pollfd>(descriptors).subspan(ownDescriptors));
    descriptors.resize(ownDescriptors);
    if (ready > 0)
        serveReadySources(descriptors, ids);
}

void PollRunLoop::serveReadySources(const std::vector<pollfd>& descriptors, const std::vector<SourceId>& ids)
{
    for (size_t index = 0; index < descriptors.size() && !stopped_; ++index) {
        if (descriptors[index].revents == 0)
            continue;
        // An earlier callback may have removed this source.
        auto source = sources_.find(ids[index]);
        if (source == sources_.end())
            continue;
        // POLLNVAL means the descriptor was closed without removing its source: drop it rather than spin.
        if (descriptors[index].revents & POLLNVAL) {
            sources_.erase(source);
            continue;
        }
        auto callback = source->second.onReadable;
        callback();
    }
}

} // namespace vardel::linux_desktop
