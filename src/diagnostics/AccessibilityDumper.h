#pragma once

#include <optional>
#include <string>

namespace vardel {

// The diagnostic dumps of the command-line modes, printed to standard output for support.
class AccessibilityDumper {
public:
    // Prints the tree texts of the running application's windows and of their web areas; with a
    // query, only the elements that match it, each with its path.
    static void dumpWindowsForApplicationWithBundleIdentifier(
        const std::string& bundleIdentifier, const std::optional<std::string>& searchQuery);
    // Copies the installed application's icon file into Vardel/AppIcons of the user's documents
    // folder. An application or icon that cannot be found is reported on standard output; false
    // only when the folder or the copy could not be made (reported on standard error).
    static bool dumpIconForApplicationWithPossibleBundleIdentifier(const std::string& argument);
};

} // namespace vardel
