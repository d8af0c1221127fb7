#pragma once

#include "product/ActivitySpan.h"
#include "product/Database.h"
#include "product/PostSyncUpdater.h"
#include "product/RecordedActivity.h"

#include <memory>
#include <optional>
#include <vector>

namespace vardel {

// Turns the recording service's samples into activity spans and writes them to the database.
// Consecutive samples with the same record make one span; the pending spans are written in one
// transaction at least every flushIntervalSeconds, so that a process killed between two writes
// loses at most that interval. The span still running is written as far as it goes and rewritten
// as it grows.
class ActivityWriter {
public:
    static constexpr double flushIntervalSeconds = 30;
    // Samples further apart than this (the computer slept, the process was stopped) never share a
    // span, even with the same record.
    static constexpr double longestSampleGapSeconds = 60;
    // While the store refuses writes (full disk, lock, read-only file), finished spans wait in
    // memory up to this many, days of ordinary use; beyond it the oldest are dropped, and said.
    static constexpr size_t defaultMaximumPendingSpans = 20000;

    explicit ActivityWriter(Database& database, size_t maximumPendingSpans = defaultMaximumPendingSpans)
        : database_(database)
        , maximumPendingSpans_(maximumPendingSpans)
    {
    }

    // The record of a sample taken at `at`, which stands for the `seconds` after it; nothing when
    // the sample had nothing to record (tracking paused, no frontmost application), which ends the
    // running span. Writes the pending spans when the last write is flushIntervalSeconds old.
    void recordSample(Date at, double seconds, const std::optional<RecordedActivity>&);

    // Writes every pending span now. False when the database refused them; they stay pending and
    // the next write tries again. The first failure after a success is logged as a warning.
    bool flush();
    bool hasPendingSpans() const;

    // The step run after each synchronisation; replaces any earlier one.
    void setPostSyncUpdater(std::unique_ptr<PostSyncUpdater> updater) { postSyncUpdater_ = std::move(updater); }
    PostSyncUpdater* postSyncUpdater() const { return postSyncUpdater_.get(); }

private:
    bool continuesRunningSpan(Date at, const RecordedActivity&) const;
    void startSpan(Date at, double seconds, const RecordedActivity&);
    // The running span becomes a finished one, ending no later than `at`.
    void finishRunningSpan(Date at);
    void flushWhenDue(Date at);
    void keepWithinBound();
    bool followStoreFile();
    void reportFailure(const DatabaseError&);

    Database& database_;
    size_t maximumPendingSpans_;
    // Ended, and not yet written in their final state.
    std::vector<ActivitySpan> finishedSpans_;
    std::optional<ActivitySpan> runningSpan_;
    bool runningSpanChanged_ = false;
    std::optional<Date> nextFlushDue_;
    bool lastFlushFailed_ = false;
    size_t droppedSpans_ = 0;
    std::unique_ptr<PostSyncUpdater> postSyncUpdater_;
};

} // namespace vardel
