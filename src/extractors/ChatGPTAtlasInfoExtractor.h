#pragma once

#include "platform/VDActivity.h"

namespace vardel {

// ChatGPT Atlas. Records the page title and address of the web content. The page lives in a
// separate web-content process (see the .cpp for its bundle identifier), which is told on every
// call that an assistive technology is present so that it publishes the page.
class ChatGPTAtlasInfoExtractor {
public:
    static constexpr const char* className = "ChatGPTAtlasInfoExtractor";
    static void writeDetailsForActivity(VDActivity&);
};

} // namespace vardel
