#pragma once

#include "platform/VDActivity.h"

namespace vardel {

// Apple Mail. In a compose window the context path becomes the sender line, the recipient line and
// the subject; other windows are left alone.
class MailWritingInfoExtractor {
public:
    static constexpr const char* className = "MailWritingInfoExtractor";
    static void writeDetailsForActivity(VDActivity&);
};

} // namespace vardel
