#pragma once

#include "platform/VDActivity.h"

namespace vardel {

// Signal shows the open conversation's name in the header of its conversation pane; that name is
// the context path.
class SignalInfoExtractor {
public:
    static constexpr const char* className = "SignalInfoExtractor";
    static void writeDetailsForActivity(VDActivity&);
};

} // namespace vardel
