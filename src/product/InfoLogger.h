#pragma once

#include "platform/InfoLoggerCallDetector.h"
#include "platform/InfoLoggerExtractor.h"
#include "platform/RunLoop.h"

#include <nlohmann/json.hpp>

namespace vardel {

// The recording service: samples the tracker once a second while it runs and records what it got.
class InfoLogger {
public:
    static constexpr double sampleIntervalSeconds = 1.0;

    void setInfoExtractor(InfoLoggerExtractor* extractor) { extractor_ = extractor; }
    void setCallDetector(InfoLoggerCallDetector* callDetector) { callDetector_ = callDetector; }
    void setShouldTrack(bool shouldTrack) { shouldTrack_ = shouldTrack; }
    bool shouldTrack() const { return shouldTrack_; }

    // Takes the first sample now and the next ones on the run loop.
    void startSampling();
    void sample();

    // How a record appears in the trace.
    static nlohmann::ordered_json encode(const VDActivity&);

private:
    void scheduleNextSample();

    nlohmann::ordered_json callStatus() const;

    InfoLoggerExtractor* extractor_ = nullptr;
    InfoLoggerCallDetector* callDetector_ = nullptr;
    bool shouldTrack_ = false;
    double nextSampleDue_ = 0;
};

} // namespace vardel
