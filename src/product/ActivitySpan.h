#pragma once

#include "platform/Value.h"
#include "product/RecordedActivity.h"

#include <cstdint>
#include <optional>
#include <ostream>

namespace vardel {

// Consecutive samples with the same record: the user did this from start to end.
struct ActivitySpan {
    // The stored row; nothing until the span has been written.
    std::optional<int64_t> id;
    Date start;
    Date end;
    RecordedActivity activity;

    double durationSeconds() const { return end.secondsSince1970 - start.secondsSince1970; }
    // The part of the span inside [from, to), in seconds; 0 when they do not overlap.
    double secondsWithin(Date from, Date to) const;

    bool operator==(const ActivitySpan&) const = default;
};

std::ostream& operator<<(std::ostream&, const ActivitySpan&);

} // namespace vardel
