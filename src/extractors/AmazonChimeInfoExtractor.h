#pragma once

#include "platform/VDActivity.h"

namespace vardel {

// Amazon Chime shows the open conversation's name at the top of its content pane; that name is
// the context path.
class AmazonChimeInfoExtractor {
public:
    static constexpr const char* className = "AmazonChimeInfoExtractor";
    static void writeDetailsForActivity(VDActivity&);
};

} // namespace vardel
