#include "product/MyLilTimer.h"

#include "platform/Platform.h"

namespace vardel {

MyLilTimer::MyLilTimer(double intervalSeconds, std::function<void()> action)
    : fireDate_ { platform().clock().now().secondsSince1970 + intervalSeconds }
    , timer_(intervalSeconds, std::move(action))
{
}

} // namespace vardel
