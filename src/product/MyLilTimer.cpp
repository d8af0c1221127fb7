#include "product/MyLilTimer.h"

#include "platform/Platform.h"

namespace vardel {

MyLilTimer::MyLilTimer(double intervalSeconds, std::function<void()> action)
    : fireDate_ { platform().clock().now().secondsSince1970 + intervalSeconds }
{
    timer_ = platform().runLoop().schedule(intervalSeconds, [this, action = std::move(action)] {
        valid_ = false;
        action();
    });
}

MyLilTimer::~MyLilTimer()
{
    invalidate();
}

void MyLilTimer::invalidate()
{
    if (!valid_)
        return;
    valid_ = false;
    platform().runLoop().cancel(timer_);
}

} // namespace vardel
