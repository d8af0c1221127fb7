#include "diagnostics/AccessibilitySearch.h"

#include "activity/ElementHelpers.h"
#include "diagnostics/AccessibilityTreeFormatter.h"
#include "product/TextHelpers.h"

#include <algorithm>

namespace vardel {

namespace {

bool isOnPath(const ElementPath& path, const AXUIElement& element)
{
    return std::any_of(path.begin(), path.end(), [&](const ElementPathStep& step) { return step.element == element; });
}

void collectMatches(ElementPath& path, std::string_view query, int levels, std::vector<ElementPath>& matches)
{
    // A copy, since the path grows below while the element is in use.
    const AXUIElement element = path.back().element;
    std::string line = TextHelpers::lowercased(AccessibilityTreeFormatter::searchLine(element));
    if (TextHelpers::contains(line, query))
        matches.push_back(path);
    if (path.size() > static_cast<size_t>(std::max(levels, 0)))
        return;
    ElementHelpers::ElementList children = ElementHelpers::children(element);
    for (size_t index = 0; index < children.size(); ++index) {
        if (isOnPath(path, children[index]))
            continue;
        path.push_back({ children[index], index });
        collectMatches(path, query, levels, matches);
        path.pop_back();
    }
}

} // namespace

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
    const AXUIElement& root, std::string_view preparedQuery, int levels)
{
    std::vector<ElementPath> found;
    ElementPath path { { root, 0 } };
    collectMatches(path, preparedQuery, levels, found);
    return found;
}

} // namespace vardel
