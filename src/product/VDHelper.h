#pragma once

#include <string>

namespace vardel {

// Facts about the tracker's place in the product.
class VDHelper {
public:
    static constexpr const char* mainAppBundleIdentifierForLaunching = "info.quenby.Vardel2";
    static bool accessibilityAvailable();
    // Opens the desktop's settings where the user grants accessibility; nothing without such a place.
    static void openAccessibilityPreferencePane(const std::string& settingsURL);
};

} // namespace vardel
