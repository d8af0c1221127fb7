#pragma once

#include "platform/VDActivity.h"

namespace vardel {

// Refines every record read through accessibility: the document behind a modal dialog, the only
// document among several windows, an open save sheet, and installed web applications.
class GeneralAccessibilityInfoExtractor {
public:
    static void extractAdditionalInformationFor(VDActivity&);
};

} // namespace vardel
