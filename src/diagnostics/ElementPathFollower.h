#pragma once

#include "diagnostics/ElementPath.h"

namespace vardel {

// Follows a pre-order tree walk that visits every child of an expanded element in order: from the
// elements and depths it is shown, the path from the walk's root to the element just visited.
class ElementPathFollower {
public:
    const ElementPath& visit(const AXUIElement&, int depth);
    // Whether the element just visited is also one of its own ancestors, the first given ones
    // (the way to the walk's root) included.
    bool revisitsAncestor(const ElementPath& firstAncestors = {}) const;

private:
    ElementPath path_;
};

} // namespace vardel
