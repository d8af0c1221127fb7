#include "platform/JsonLinesTrace.h"

#include <cmath>
#include <cstdint>
#include <ostream>

namespace vardel {

nlohmann::ordered_json JsonLinesTrace::seconds(double value)
{
    double rounded = std::round(value * 1e6) / 1e6;
    if (std::trunc(rounded) == rounded && std::fabs(rounded) < 9e15)
        return static_cast<int64_t>(rounded);
    return rounded;
}

void JsonLinesTrace::write(std::string_view event, nlohmann::ordered_json fields)
{
    if (!stream_ && !recording_)
        return;
    nlohmann::ordered_json line = { { "t", seconds(elapsedSeconds_()) }, { "event", event } };
    if (fields.is_object()) {
        for (auto& [key, value] : fields.items())
            line[key] = std::move(value);
    }
    if (stream_) {
        // Texts from other applications may hold invalid UTF-8; the line must still be written.
        *stream_ << line.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) << '\n';
        stream_->flush();
    }
    if (recording_)
        recorded_.push_back(std::move(line));
}

} // namespace vardel
