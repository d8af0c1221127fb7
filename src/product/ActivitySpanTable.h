#pragma once

#include "product/ActivitySpan.h"
#include "product/DatabaseResult.h"
#include "product/SqliteConnection.h"

#include <cstdint>
#include <vector>

namespace vardel {

// The rows of the activity_spans table.
class ActivitySpanTable {
public:
    // Inserts a span without id, or replaces the row of a span that has one; gives the row's id.
    static DatabaseResult<int64_t> save(SqliteConnection&, const ActivitySpan&);
    // The spans that overlap [from, to), earliest first, as stored (not clipped).
    static DatabaseResult<std::vector<ActivitySpan>> overlapping(SqliteConnection&, Date from, Date to);
    // The recorded seconds inside [from, to).
    static DatabaseResult<double> totalSecondsBetween(SqliteConnection&, Date from, Date to);
};

} // namespace vardel
