#pragma once

#include "platform/VDActivity.h"

namespace vardel {

// Firefox and the browsers built on it. Marks private windows by their title's suffix, then reads
// the page's address and title from the web content, which Firefox publishes once an assistive
// technology has announced itself.
class FirefoxInfoExtractor {
public:
    static constexpr const char* className = "FirefoxInfoExtractor";
    static void writeDetailsForActivity(VDActivity&);
};

} // namespace vardel
