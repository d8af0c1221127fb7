#pragma once

#include "platform/VDActivity.h"

#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace vardel {

// What the activity store keeps of one sample: the application and what it showed. Process
// identifiers, executable paths and window references say nothing about the user's day and are
// left out, so that samples differing only in them belong to one span.
struct RecordedActivity {
    std::optional<std::string> bundleIdentifier;
    std::optional<std::string> applicationName;
    std::optional<std::string> windowTitle;
    std::optional<std::string> documentPath;
    std::optional<std::string> documentTitle;
    std::optional<std::vector<std::string>> contextPath;
    bool isPrivate = false;
    bool isFullscreen = false;

    // A private window keeps its application, but never what it showed.
    static RecordedActivity from(const VDActivity&);

    bool operator==(const RecordedActivity&) const = default;
};

std::ostream& operator<<(std::ostream&, const RecordedActivity&);

} // namespace vardel
