#include "diagnostics/ElementPathFollower.h"

#include <algorithm>
#include <cstddef>

namespace vardel {

namespace {

bool contains(ElementPath::const_iterator begin, ElementPath::const_iterator end, const AXUIElement& element)
{
    return std::any_of(begin, end, [&](const ElementPathStep& step) { return step.element == element; });
}

} // namespace

// A visit at a depth the path already reaches is the next sibling of the step there.
const ElementPath& ElementPathFollower::visit(const AXUIElement& element, int depth)
{
    size_t level = static_cast<size_t>(depth);
    size_t childIndex = level < path_.size() ? path_[level].childIndex + 1 : 0;
    path_.erase(path_.begin() + static_cast<std::ptrdiff_t>(std::min(level, path_.size())), path_.end());
    path_.push_back({ element, level == 0 ? 0 : childIndex });
    return path_;
}

bool ElementPathFollower::revisitsAncestor(const ElementPath& firstAncestors) const
{
    const AXUIElement& element = path_.back().element;
    return contains(path_.begin(), path_.end() - 1, element)
        || contains(firstAncestors.begin(), firstAncestors.end(), element);
}

} // namespace vardel
