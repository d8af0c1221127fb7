#pragma once

#include "platform/VDActivity.h"

namespace vardel {

// Mimestream. A compose window gives the sending account, "New Message" and the subject; the main
// window gives the mailbox and the selected message's texts.
class MimestreamInfoExtractor {
public:
    static constexpr const char* className = "MimestreamInfoExtractor";
    static void writeDetailsForActivity(VDActivity&);
};

} // namespace vardel
