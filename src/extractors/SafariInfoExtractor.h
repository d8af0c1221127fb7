#pragma once

#include "platform/VDActivity.h"

namespace vardel {

// Safari and Safari Technology Preview. Marks private windows (by Safari's own localised phrases in
// the window title and by the address field's descriptions), moves the profile name from the front
// of the window title to its end, and records the address field's page address.
class SafariInfoExtractor {
public:
    static constexpr const char* className = "SafariInfoExtractor";
    static void writeDetailsForActivity(VDActivity&);
};

} // namespace vardel
