#pragma once

#include <optional>
#include <string>
#include <vector>

namespace vardel {

// What the process arguments select besides the normal start: a diagnostic dump, the delayed start
// after a crash, and URLs for the URL handler.
class CommandLineModes {
public:
    // Runs the dump mode that the arguments select, if any, and gives its exit status.
    static std::optional<int> runDumpMode(const std::vector<std::string>& arguments);
    // With "--fromCrashRecovery": reports the start, waits, and stops the run loop when the last
    // recorded activity is recent. True when the process ends so.
    static bool recoverFromCrashIfAsked(const std::vector<std::string>& arguments);
    // Passes the URLs given as arguments (anything with a scheme) to the URL handler.
    static void handleURLArguments(const std::vector<std::string>& arguments);
};

} // namespace vardel
