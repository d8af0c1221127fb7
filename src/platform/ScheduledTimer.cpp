#include "platform/ScheduledTimer.h"

#include "platform/Platform.h"

namespace vardel {

ScheduledTimer::ScheduledTimer(double delaySeconds, std::function<void()> callback)
    : state_(std::make_shared<State>())
{
    state_->installation = Platform::installation();
    state_->timer = platform().runLoop().schedule(
        delaySeconds, [weakState = std::weak_ptr<State>(state_), callback = std::move(callback)] {
            auto state = weakState.lock();
            if (!state)
                return;
            state->fired = true;
            callback();
        });
}

ScheduledTimer::~ScheduledTimer()
{
    cancel();
}

ScheduledTimer& ScheduledTimer::operator=(ScheduledTimer&& other) noexcept
{
    if (this != &other) {
        cancel();
        state_ = std::move(other.state_);
    }
    return *this;
}

bool ScheduledTimer::isPending() const
{
    return state_ && !state_->fired;
}

bool ScheduledTimer::hasFired() const
{
    return state_ && state_->fired;
}

void ScheduledTimer::cancel()
{
    if (!isPending())
        return;
    if (Platform::installation() == state_->installation)
        platform().runLoop().cancel(state_->timer);
    state_.reset();
}

} // namespace vardel
