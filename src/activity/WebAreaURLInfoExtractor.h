#pragma once

#include "platform/VDActivity.h"

namespace vardel {

// Records the page address as the document path and the page title as the document title: the
// first window whose web area has an address supplies them.
void writeWebAreaURLDetails(VDActivity&);

// For browsers without an extractor of their own.
class WebAreaURLInfoExtractor {
public:
    static constexpr const char* className = "WebAreaURLInfoExtractor";
    static void writeDetailsForActivity(VDActivity& activity) { writeWebAreaURLDetails(activity); }
};

} // namespace vardel
