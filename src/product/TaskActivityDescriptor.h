#pragma once

#include "platform/Value.h"

#include <optional>
#include <ostream>
#include <string>

namespace vardel {

// A time entry as the user or the tracker proposes it, before it is stored.
struct TaskActivityDescriptor {
    // Shorter entries are refused when short durations are prevented: they are nearly always a
    // timer started by mistake or a call that barely connected, and they clutter the timeline. One
    // minute is also the call detector's default minimum, so every call long enough to be offered
    // can be saved.
    static constexpr double minimumDurationSeconds = 60;

    Date start;
    Date end;
    std::string title;
    std::optional<std::string> project;

    double durationSeconds() const { return end.secondsSince1970 - start.secondsSince1970; }
    bool operator==(const TaskActivityDescriptor&) const = default;
};

std::ostream& operator<<(std::ostream&, const TaskActivityDescriptor&);

} // namespace vardel
