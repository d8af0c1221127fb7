#include "diagnostics/AccessibilitySearch.h"

#include "diagnostics/AccessibilityTreeFormatter.h"
#include "diagnostics/ElementPathFollower.h"
#include "product/TextHelpers.h"

#include <algorithm>

namespace vardel {

std::string AccessibilitySearch::preparedQuery(std::string_view query)
{
    size_t separator = query.find('=');
    if (separator == std::string_view::npos)
        return TextHelpers::lowercased(query);
    std::string shaped
        = std::string(query.substr(0, separator)) + "='" + std::string(query.substr(separator + 1)) + "'";
    return TextHelpers::lowercased(shaped);
}

std::vector<ElementPath> AccessibilitySearch::matches(
    const AXUIElement& root, std::string_view preparedQuery, int levels, ElementTreeWalker& walker)
{
    std::vector<ElementPath> found;
    ElementPathFollower follower;
    walker.walk(root, std::max(levels, 0), [&](const AXUIElement& element, int depth) {
        const ElementPath& path = follower.visit(element, depth);
        if (follower.revisitsAncestor())
            return TreeWalkDecision::skipChildren;
        std::string line = TextHelpers::lowercased(AccessibilityTreeFormatter::searchLine(element));
        if (TextHelpers::contains(line, preparedQuery))
            found.push_back(path);
        return TreeWalkDecision::continueWalk;
    });
    return found;
}

} // namespace vardel
