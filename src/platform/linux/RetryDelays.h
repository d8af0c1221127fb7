#pragma once

#include <chrono>

namespace vardel::linux_desktop {

// When to try again to reach a peer that is not there (an audio server, a message bus): the first
// retry after `first`, each later one twice as long after the last, never longer than `longest`. A
// desktop without the peer then costs a few attempts an hour instead of one every few seconds, and
// a peer that comes back is still found within `longest`.
class RetryDelays {
public:
    using Clock = std::chrono::steady_clock;

    RetryDelays(Clock::duration first, Clock::duration longest);

    // Whether an attempt may be made now: none failed yet, or the last failure's delay has passed.
    bool isDue(Clock::time_point now) const;
    // An attempt failed at `now`: returns how long until the next one, and lengthens the one after.
    Clock::duration failed(Clock::time_point now);
    // The peer answered: its next loss is retried after the first delay again.
    void succeeded();

private:
    Clock::duration first_;
    Clock::duration longest_;
    Clock::duration next_;
    Clock::time_point due_ {};
};

} // namespace vardel::linux_desktop
