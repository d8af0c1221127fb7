#include "activity/ElementTreeWalker.h"

#include "activity/ElementHelpers.h"

#include <vector>

namespace vardel {

namespace {

// The elements of one level of the walk still to be visited, as the parent's children list them.
struct PendingLevel {
    ElementHelpers::ElementList elements;
    size_t next = 0;
};

} // namespace

ElementTreeWalker::ElementTreeWalker(int visitBound)
    : visitBound_(visitBound)
{
}

// Iterative, so that no depth bound a preference gives can exhaust the stack.
void ElementTreeWalker::walk(const AXUIElement& root, int depthBound, const Visitor& visit)
{
    if (depthBound < 0)
        return;
    std::vector<PendingLevel> levels { { { root } } };
    while (!levels.empty()) {
        PendingLevel& level = levels.back();
        if (level.next == level.elements.size()) {
            levels.pop_back();
            continue;
        }
        if (visits_ >= visitBound_) {
            cutShort_ = true;
            return;
        }
        ++visits_;
        // A copy: the next level's list may move this one.
        const AXUIElement element = level.elements[level.next++];
        const int depth = static_cast<int>(levels.size()) - 1;
        TreeWalkDecision decision = visit(element, depth);
        if (decision == TreeWalkDecision::stop)
            return;
        if (decision == TreeWalkDecision::continueWalk && depth < depthBound)
            levels.push_back({ ElementHelpers::children(element) });
    }
}

} // namespace vardel
