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
    // The condition on ?1 (from) and ?2 (to) that selects the spans overlapping [from, to). No span
    // that starts more than the longest span's length before ?1 can reach it, so the index on
    // started_at reads only the rows near the range, however many years the table holds.
    static constexpr const char* overlapsRange
        = "started_at >= ?1 - coalesce((SELECT value FROM meta WHERE key = 'longest_span_seconds'), 1e300) "
          "AND started_at < ?2 AND ended_at > ?1";

    // Inserts a span without id, or replaces the row of a span that has one; gives the row's id.
    static DatabaseResult<int64_t> save(SqliteConnection&, const ActivitySpan&);
    // The spans that overlap [from, to), earliest first, as stored (not clipped).
    static DatabaseResult<std::vector<ActivitySpan>> overlapping(SqliteConnection&, Date from, Date to);
    // The recorded seconds inside [from, to).
    static DatabaseResult<double> totalSecondsBetween(SqliteConnection&, Date from, Date to);
};

} // namespace vardel
