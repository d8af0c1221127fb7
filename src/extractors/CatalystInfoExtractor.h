#pragma once

#include "platform/VDActivity.h"

namespace vardel {

// The extractor for every application without one of its own. iPad applications running on the
// Mac title their windows with the application's name; their content heading says more.
class CatalystInfoExtractor {
public:
    static constexpr const char* className = "CatalystInfoExtractor";
    static void writeDetailsForActivity(VDActivity&);
};

} // namespace vardel
