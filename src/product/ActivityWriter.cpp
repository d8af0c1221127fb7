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

bool ActivityWriter::hasPendingSpans() const
{
    return !finishedSpans_.empty() || runningSpanChanged_;
}

bool ActivityWriter::flush()
{
    if (!hasPendingSpans())
        return true;
    std::vector<ActivitySpan> batch = finishedSpans_;
    if (runningSpanChanged_)
        batch.push_back(*runningSpan_);
    if (auto failure = database_.saveActivitySpans(batch)) {
        if (!lastFlushFailed_)
            platform().log().warning("The recorded activity cannot be written: " + failure->message);
        lastFlushFailed_ = true;
        return false;
    }
    if (runningSpanChanged_)
        runningSpan_->id = batch.back().id;
    finishedSpans_.clear();
    runningSpanChanged_ = false;
    lastFlushFailed_ = false;
    return true;
}

} // namespace vardel
