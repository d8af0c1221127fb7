#pragma once

#include "platform/VDActivity.h"

namespace vardel {

// Names the page being edited by its breadcrumb, most general page first; without a breadcrumb the
// window title stands in as the document.
class NotionInfoExtractor {
public:
    static constexpr const char* className = "NotionInfoExtractor";
    static void writeDetailsForActivity(VDActivity&);
};

} // namespace vardel
