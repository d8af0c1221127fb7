#pragma once

#include "platform/VDActivity.h"

namespace vardel {

// WhatsApp names the open chat in its header, as a heading in the native application and as a
// banner in the web-based ones; that name is the context path.
class WhatsAppInfoExtractor {
public:
    static constexpr const char* className = "WhatsAppInfoExtractor";
    static void writeDetailsForActivity(VDActivity&);
};

} // namespace vardel
