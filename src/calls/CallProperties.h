#pragma once

#include "platform/Value.h"

#include <nlohmann/json.hpp>

#include <optional>
#include <string>

namespace vardel {

// What is known about one call.
struct CallMetadata {
    std::optional<std::string> serviceName; // "Zoom", "Teams"; nothing for an unknown application
    std::optional<std::string> appName;
    std::optional<std::string> meetingTitle;
    // The microphone was announced by an assertion of its own, or the call was read from the screen.
    bool audioInAndOutAssertionsHaveBeenRecordedSeparately = false;

    bool operator==(const CallMetadata&) const = default;
};

// One call from its first to its last sighting.
struct CallProperties {
    Date startedAt;
    Date lastSeen;
    CallMetadata metadata;

    double duration() const { return lastSeen.secondsSince1970 - startedAt.secondsSince1970; }
    bool operator==(const CallProperties&) const = default;
};

// One candidate of one sample: the key of the call and what was seen of it.
struct ApplicationAndMetadata {
    std::string bundleIdentifier;
    CallMetadata metadata;
};

// The JSON form that travels in notifications: dates as seconds since 2001-01-01, the platform
// encoder's default, and absent texts left out.
// A text for the analytics events, which write "(nil)" for a missing one.
Value textOrNil(const std::optional<std::string>& text);

namespace CallPropertiesJson {
nlohmann::json encode(const CallProperties&);
std::optional<CallProperties> decode(const nlohmann::json&);
std::optional<CallProperties> decodeText(std::string_view text);
} // namespace CallPropertiesJson

} // namespace vardel
