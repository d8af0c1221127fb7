#pragma once

#include "platform/AXUIElement.h"
#include "platform/VDActivity.h"

#include <string>

namespace vardel {

// Chromium and Electron applications publish their full accessibility tree only when an assistive
// technology announces itself; these operations announce one, when the user allowed it.
class EnhancedAccessibility {
public:
    static void ensureEnhancedAccessibility(const VDActivity&, bool forceDefaultsWrite);
    static void enableFakeVoiceOver(
        const AXUIElement& application, const std::string& bundleIdentifier, bool forceDefaultsWrite);
};

} // namespace vardel
