#pragma once

#include <chrono>
#include <functional>
#include <thread>

namespace vardel::testing {

// Checks the condition every interval until it holds or the time-out passes, and says whether it
// held. Tests wait for what they need this way instead of sleeping for a guessed while: they go on
// as soon as the machine is ready and still pass when it is slow.
inline bool waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds timeout,
    std::chrono::milliseconds interval = std::chrono::milliseconds(50))
{
    auto deadline = std::chrono::steady_clock::now() + timeout;
    while (std::chrono::steady_clock::now() < deadline) {
        if (condition())
            return true;
        std::this_thread::sleep_for(interval);
    }
    return condition();
}

} // namespace vardel::testing
