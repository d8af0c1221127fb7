#pragma once

#include "platform/VDActivity.h"

namespace vardel {

// Spark. The open message's subject and sender, read from its web-content message view, become the
// context path.
class SparkInfoExtractor {
public:
    static constexpr const char* className = "SparkInfoExtractor";
    static void writeDetailsForActivity(VDActivity&);
};

} // namespace vardel
