#pragma once

#include "platform/VDActivity.h"

namespace vardel {

// For single-page applications whose window title says little: the page title, without the
// application's name, becomes the window title.
class WebAreaTitleInfoExtractor {
public:
    static constexpr const char* className = "WebAreaTitleInfoExtractor";
    static void writeDetailsForActivity(VDActivity&);
};

} // namespace vardel
