#pragma once

#include "platform/VDActivity.h"

namespace vardel {

// Microsoft Teams titles its window with the channel or chat partner, the team and its own name;
// those become the context path, and the window title is kept.
class MicrosoftTeamsInfoExtractor {
public:
    static constexpr const char* className = "MicrosoftTeamsInfoExtractor";
    static void writeDetailsForActivity(VDActivity&);
};

} // namespace vardel
