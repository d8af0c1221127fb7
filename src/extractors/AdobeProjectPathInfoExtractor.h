#pragma once

#include "platform/VDActivity.h"

namespace vardel {

// Premiere Pro and After Effects name their project file only in the window title: the project
// path becomes the document path and the title keeps what is left.
class AdobeProjectPathInfoExtractor {
public:
    static constexpr const char* className = "AdobeProjectPathInfoExtractor";
    static void writeDetailsForActivity(VDActivity&);
};

} // namespace vardel
