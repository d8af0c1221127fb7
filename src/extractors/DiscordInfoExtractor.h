#pragma once

#include "platform/VDActivity.h"

namespace vardel {

// Discord titles its window with the channel and the server; the context path lists the server,
// then the channel, and the window title is dropped in its favour.
class DiscordInfoExtractor {
public:
    static constexpr const char* className = "DiscordInfoExtractor";
    static void writeDetailsForActivity(VDActivity&);
};

} // namespace vardel
