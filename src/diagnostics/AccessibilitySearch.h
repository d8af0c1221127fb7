#pragma once

#include "activity/ElementTreeWalker.h"
#include "diagnostics/ElementPath.h"
#include "platform/AXUIElement.h"

#include <string>
#include <string_view>
#include <vector>

namespace vardel {

// Finds the elements of a tree whose search line contains a query, without regard to case.
class AccessibilitySearch {
public:
    // A query key=value becomes key='value', as the entry stands on the line, so that it matches
    // that entry's whole value; every query is lowercased.
    static std::string preparedQuery(std::string_view query);
    // The paths from the root to the matching elements, in pre-order. The children of an element
    // whose path is longer than levels are not searched, nor an element that is its own ancestor,
    // nor anything once the walker's visit bound is reached.
    static std::vector<ElementPath> matches(
        const AXUIElement& root, std::string_view preparedQuery, int levels, ElementTreeWalker&);
};

} // namespace vardel
