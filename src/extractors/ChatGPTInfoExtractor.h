#pragma once

#include "platform/VDActivity.h"

namespace vardel {

// Names the conversation open in the first window, or "New Chat" when none is.
class ChatGPTInfoExtractor {
public:
    static constexpr const char* className = "ChatGPTInfoExtractor";
    static void writeDetailsForActivity(VDActivity&);
};

} // namespace vardel
