#pragma once

namespace vardel {

// Facts about the tracker's place in the product.
class VDHelper {
public:
    static constexpr const char* mainAppBundleIdentifierForLaunching = "info.quenby.Vardel2";
    // Where the desktop's settings let the user grant accessibility.
    static constexpr const char* accessibilitySettingsURL = "settings:privacy/accessibility";

    static bool accessibilityAvailable();
    static void openAccessibilityPreferencePane();
};

} // namespace vardel
