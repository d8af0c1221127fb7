#pragma once

#include "platform/VDActivity.h"

namespace vardel {

// Names where in the library the user works: the ancestry of the row selected in the window's
// first outline (libraries, events) followed by that of the row selected in its second outline.
class FinalCutInfoExtractor {
public:
    static constexpr const char* className = "FinalCutInfoExtractor";
    static void writeDetailsForActivity(VDActivity&);
};

} // namespace vardel
