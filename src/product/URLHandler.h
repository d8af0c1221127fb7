#pragma once

#include <string>

namespace vardel {

// Receives the URLs that other programs hand to the tracker. The product's actions behind its
// URLs live in the main application; this build only acknowledges them in the log.
class URLHandler {
public:
    static void handleGetURL(const std::string& url);
};

} // namespace vardel
