#pragma once

#include "platform/EventTrace.h"

#include <nlohmann/json.hpp>

#include <functional>
#include <iosfwd>
#include <string_view>
#include <vector>

namespace vardel {

// Writes trace events as JSON lines {"t": seconds since start, "event": name, ...fields} to a stream
// and, when asked, keeps them in memory for tests. Each backend says what "seconds since start" is.
class JsonLinesTrace : public EventTrace {
public:
    explicit JsonLinesTrace(std::function<double()> elapsedSeconds)
        : elapsedSeconds_(std::move(elapsedSeconds))
    {
    }

    void write(std::string_view event, nlohmann::ordered_json fields) override;

    void setStream(std::ostream* stream) { stream_ = stream; }
    void setRecording(bool recording) { recording_ = recording; }
    const std::vector<nlohmann::ordered_json>& recorded() const { return recorded_; }

    // Seconds rounded to the microsecond, whole ones as integers, so that float noise stays out of
    // the trace.
    static nlohmann::ordered_json seconds(double);

private:
    std::function<double()> elapsedSeconds_;
    std::ostream* stream_ = nullptr;
    bool recording_ = false;
    std::vector<nlohmann::ordered_json> recorded_;
};

} // namespace vardel
