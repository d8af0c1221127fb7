#include "product/ActivityWriter.h"

#include "platform/Platform.h"

#include <algorithm>

namespace vardel {

void ActivityWriter::recordSample(Date at, double seconds, const std::optional<RecordedActivity>& activity)
{
    Date sampleEnd { at.secondsSince1970 + std::max(0.0, seconds) };
    if (!activity) {
        finishRunningSpan(at);
    } else if (continuesRunningSpan(at, *activity)) {
        runningSpan_->end = std::max(runningSpan_->end, sampleEnd);
        runningSpanChanged_ = true;
    } else {
        finishRunningSpan(at);
        startSpan(at, seconds, *activity);
    }
    flushWhenDue(at);
}

bool ActivityWriter::continuesRunningSpan(Date at, const RecordedActivity& activity) const
{
    return runningSpan_ && runningSpan_->activity == activity && at >= runningSpan_->start
        && at.secondsSince1970 - runningSpan_->end.secondsSince1970 <= longestSampleGapSeconds;
}

void ActivityWriter::startSpan(Date at, double seconds, const RecordedActivity& activity)
{
    runningSpan_ = ActivitySpan { std::nullopt, at, Date { at.secondsSince1970 + std::max(0.0, seconds) }, activity };
    runningSpanChanged_ = true;
}

void ActivityWriter::finishRunningSpan(Date at)
{
    if (!runningSpan_)
        return;
    // A clock set back must not leave two spans covering the same moment.
    if (at < runningSpan_->end) {
        runningSpan_->end = std::max(at, runningSpan_->start);
        runningSpanChanged_ = true;
    }
    if (runningSpanChanged_)
        finishedSpans_.push_back(std::move(*runningSpan_));
    runningSpan_.reset();
    runningSpanChanged_ = false;
    keepWithinBound();
}

void ActivityWriter::keepWithinBound()
{
    if (finishedSpans_.size() <= maximumPendingSpans_)
        return;
    if (droppedSpans_ == 0)
        platform().log().warning("The store has refused writes for so long that the oldest recorded activity is "
                                 "being dropped to keep the tracker's memory bounded");
    size_t excess = finishedSpans_.size() - maximumPendingSpans_;
    finishedSpans_.erase(finishedSpans_.begin(), finishedSpans_.begin() + static_cast<std::ptrdiff_t>(excess));
    droppedSpans_ += excess;
}

void ActivityWriter::flushWhenDue(Date at)
{
    if (!nextFlushDue_)
        nextFlushDue_ = Date { at.secondsSince1970 + flushIntervalSeconds };
    if (at < *nextFlushDue_)
        return;
    flush();
    nextFlushDue_ = Date { at.secondsSince1970 + flushIntervalSeconds };
}

// The data folder may be deleted under a running tracker; writing on into the removed file would lose
// everything from then on when the process ends.
bool ActivityWriter::followStoreFile()
{
    auto reopened = database_.reopenIfGone();
    if (!reopened.ok()) {
        reportFailure(reopened.error());
        return false;
    }
    if (!reopened.value())
        return true;
    platform().log().warning("The activity store's file was removed while the tracker ran; recording goes on in a "
                             "new one");
    // The running span's row went with the old file.
    if (runningSpan_) {
        runningSpan_->id.reset();
        runningSpanChanged_ = true;
    }
    return true;
}

void ActivityWriter::reportFailure(const DatabaseError& failure)
{
    if (!lastFlushFailed_)
        platform().log().warning("The recorded activity cannot be written: " + failure.message);
    lastFlushFailed_ = true;
}

bool ActivityWriter::hasPendingSpans() const
{
    return !finishedSpans_.empty() || runningSpanChanged_;
}

bool ActivityWriter::flush()
{
    if (!hasPendingSpans())
        return true;
    if (!followStoreFile())
        return false;
    std::vector<ActivitySpan> batch = finishedSpans_;
    if (runningSpanChanged_)
        batch.push_back(*runningSpan_);
    if (auto failure = database_.saveActivitySpans(batch)) {
        reportFailure(*failure);
        return false;
    }
    if (runningSpanChanged_)
        runningSpan_->id = batch.back().id;
    finishedSpans_.clear();
    runningSpanChanged_ = false;
    if (lastFlushFailed_)
        platform().log().info("The recorded activity is written again"
            + (droppedSpans_ ? "; " + std::to_string(droppedSpans_) + " spans were dropped meanwhile" : std::string()));
    lastFlushFailed_ = false;
    droppedSpans_ = 0;
    return true;
}

} // namespace vardel
