#pragma once

#include "platform/Clock.h"

#include <chrono>

namespace vardel::linux_desktop {

// The wall clock.
class SystemClock final : public Clock {
public:
    Date now() override
    {
        return { std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count() };
    }
};

} // namespace vardel::linux_desktop
