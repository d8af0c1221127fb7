#pragma once

#include <string>

namespace vardel {

// A text file sent along with a support request.
struct SupportAttachment {
    std::string fileName;
    std::string text;
};

} // namespace vardel
