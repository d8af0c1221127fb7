#pragma once

#include "platform/VDActivity.h"

namespace vardel {

// Names the repository the user works on: the one the toolbar's current-repository button shows.
class GitHubDesktopInfoExtractor {
public:
    static constexpr const char* className = "GitHubDesktopInfoExtractor";
    static void writeDetailsForActivity(VDActivity&);
};

} // namespace vardel
