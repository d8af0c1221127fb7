#pragma once

#include <string>
#include <vector>

namespace vardel {

// The question asked at start-up when the tracker cannot read other applications' windows.
struct AccessibilityQuestion {
    std::string message;
    std::string informativeText;
    // The first button opens the settings URL, when there is one.
    std::vector<std::string> buttons;
    // Where the desktop's settings let the user switch accessibility on; empty when there is no such
    // place to open.
    std::string settingsURL;
};

// Texts the user sees that name the desktop's own things.
struct DesktopTexts {
    AccessibilityQuestion accessibilityQuestion;
    // The line that names the system in dumps and support requests.
    std::string systemLine;
};

} // namespace vardel
