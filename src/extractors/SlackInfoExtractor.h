#pragma once

#include "platform/VDActivity.h"

namespace vardel {

// Slack's window title names the channel first and the workspace after it; the context path lists
// the workspace, then the channel, and the window title is dropped in its favour.
class SlackInfoExtractor {
public:
    static constexpr const char* className = "SlackInfoExtractor";
    static void writeDetailsForActivity(VDActivity&);
};

} // namespace vardel
