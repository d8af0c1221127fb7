#pragma once

#include "platform/ScheduledTimer.h"
#include "product/InfoLoggerCallDetector.h"
#include "product/InfoLoggerExtractor.h"
#include "product/InfoLoggerPresenter.h"

#include <nlohmann/json.hpp>

#include <functional>

namespace vardel {

// The recording service: samples the tracker once a second while it runs and records what it got
// in the activity store, through the database's activity writer.
class InfoLogger {
public:
    static constexpr double sampleIntervalSeconds = 1.0;

    void setInfoExtractor(InfoLoggerExtractor* extractor) { extractor_ = extractor; }
    void setCallDetector(InfoLoggerCallDetector* callDetector) { callDetector_ = callDetector; }
    // The logger never changes whether it appears active on its own (only setShouldTrack does,
    // and its caller updates the status item), so the presenter is held but not called.
    void setPresenter(InfoLoggerPresenter* presenter) { presenter_ = presenter; }
    InfoLoggerPresenter* presenter() const { return presenter_; }
    void setShouldTrack(bool shouldTrack) { shouldTrack_ = shouldTrack; }
    bool shouldTrack() const { return shouldTrack_; }
    // True exactly while tracking is on.
    bool appearsActive() const { return shouldTrack_; }

    // The status menu opens: what is recorded so far is written, so that today's total is current.
    void statusItemClicked();
    // Writes everything recorded so far, then calls the flush-and-sync-finished handler. The
    // write is synchronous, so nothing is left to wait for: always false.
    bool prepareForShutdownWithIsRelaunch(bool isRelaunch);
    void setFlushAndSyncFinishedHandler(std::function<void()> handler) { flushAndSyncFinished_ = std::move(handler); }

    // Takes the first sample now and the next ones on the run loop.
    void startSampling();
    void sample();

    // How a record appears in the trace.
    static nlohmann::ordered_json encode(const VDActivity&);

private:
    void scheduleNextSample();

    nlohmann::ordered_json callStatus() const;
    void record(Date sampledAt, const std::optional<VDActivity>&);
    void flushRecordedActivity();

    InfoLoggerExtractor* extractor_ = nullptr;
    InfoLoggerCallDetector* callDetector_ = nullptr;
    InfoLoggerPresenter* presenter_ = nullptr;
    std::function<void()> flushAndSyncFinished_;
    // Whether anything went to the activity writer; until then there is nothing to write, and the
    // database is not opened for nothing (a dump mode never samples).
    bool hasRecorded_ = false;
    bool shouldTrack_ = false;
    double nextSampleDue_ = 0;
    ScheduledTimer nextSample_;
};

} // namespace vardel
