#pragma once

#include "platform/VDActivity.h"

namespace vardel {

// Google Chrome and Chromium (and Brave's private windows). Marks incognito windows by their title's
// suffix and appends the profile name, read from the toolbar's avatar button, to the window title.
class ChromeProfileInfoExtractor {
public:
    static constexpr const char* className = "ChromeProfileInfoExtractor";
    static void writeDetailsForActivity(VDActivity&);
};

} // namespace vardel
