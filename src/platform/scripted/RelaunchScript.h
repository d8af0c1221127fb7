#pragma once

#include "platform/Accessibility.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vardel::scripted {

// The shell script with which the tracker relaunches itself: after a delay it ends the tracker's
// process and opens the bundle again. Only the exact form the tracker writes is recognised, for the
// tracker's own process identifier; any other started process stays a plain started process.
struct RelaunchScript {
    int64_t delaySeconds = 0;
    // As the shell reads it from between the script's double quotes.
    std::string bundlePath;

    static std::optional<RelaunchScript> recognize(
        const std::string& path, const std::vector<std::string>& arguments, ProcessIdentifier trackerPid);
};

} // namespace vardel::scripted
