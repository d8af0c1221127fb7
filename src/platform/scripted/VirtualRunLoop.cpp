#include "platform/scripted/VirtualRunLoop.h"

#include <algorithm>
#include <cmath>

namespace vardel::scripted {

VirtualRunLoop::VirtualRunLoop(VirtualClock& clock, Timeline& timeline, double endSeconds)
    : clock_(clock)
    , timeline_(timeline)
    , endSeconds_(endSeconds)
{
}

RunLoop::TimerId VirtualRunLoop::schedule(double delaySeconds, std::function<void()> callback)
{
    // A negative or not-a-number delay means as soon as the loop is free.
    double delay = delaySeconds > 0 ? delaySeconds : 0;
    timers_.emplace(std::pair(clock_.elapsedSeconds() + delay, ++lastTimer_), std::move(callback));
    return lastTimer_;
}

void VirtualRunLoop::cancel(TimerId timer)
{
    std::erase_if(timers_, [timer](const auto& entry) { return entry.first.second == timer; });
}

void VirtualRunLoop::sleep(double seconds)
{
    if (std::isfinite(seconds) && seconds > 0)
        timeline_.advanceTo(clock_.elapsedSeconds() + seconds);
}

int VirtualRunLoop::run()
{
    while (!stopped_) {
        auto due = nextDue();
        if (clock_.elapsedSeconds() >= endSeconds_ || !due || *due >= endSeconds_) {
            endRun();
            break;
        }
        serveNext();
    }
    return status_;
}

void VirtualRunLoop::endRun()
{
    timeline_.advanceTo(endSeconds_);
    if (terminationRequestHandler_) {
        terminationRequestHandler_("end");
        // Only what the program scheduled to finish its work runs in the grace time; the timeline
        // has ended.
        double graceEnd = endSeconds_ + terminationGraceSeconds;
        while (!stopped_ && !timers_.empty() && timers_.begin()->first.first <= graceEnd) {
            auto first = timers_.begin();
            auto callback = std::move(first->second);
            clock_.moveTo(first->first.first);
            timers_.erase(first);
            callback();
        }
    }
    stop(0, "end");
}

void VirtualRunLoop::stop(int status, std::string reason)
{
    if (stopped_)
        return;
    stopped_ = true;
    status_ = status;
    stopReason_ = std::move(reason);
}

void VirtualRunLoop::runUntil(double elapsedSeconds)
{
    for (auto due = nextDue(); !stopped_ && due && *due <= elapsedSeconds; due = nextDue())
        serveNext();
    timeline_.advanceTo(elapsedSeconds);
}

std::optional<double> VirtualRunLoop::nextDue() const
{
    auto step = timeline_.nextStepTime();
    if (timers_.empty())
        return step;
    double timer = timers_.begin()->first.first;
    return step ? std::min(*step, timer) : timer;
}

void VirtualRunLoop::serveNext()
{
    // A step takes effect at its own time, before a timer due then: what it hands to the loop is
    // due at the step's time, ahead of every later timer.
    auto step = timeline_.nextStepTime();
    if (step && (timers_.empty() || *step <= timers_.begin()->first.first)) {
        timeline_.advanceTo(*step);
        return;
    }
    auto first = timers_.begin();
    double due = first->first.first;
    auto callback = std::move(first->second);
    timers_.erase(first);
    timeline_.advanceTo(due);
    callback();
}

} // namespace vardel::scripted
