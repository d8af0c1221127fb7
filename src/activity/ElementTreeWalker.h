#pragma once

#include "platform/AXUIElement.h"

#include <functional>

namespace vardel {

// What a tree walk does after visiting an element.
enum class TreeWalkDecision {
    continueWalk,
    skipChildren,
    stop,
};

// Walks accessibility element trees through their children, pre-order and in child order.
// Applications report trees whose children are shared by many parents or refer back to their
// ancestors; a depth bound alone lets such a tree grow a walk exponentially or forever. So every
// walk also has a visit bound: all the walks of one walker together visit at most visitBound
// elements, counting an element again each time the walk reaches it.
class ElementTreeWalker {
public:
    using Visitor = std::function<TreeWalkDecision(const AXUIElement&, int depth)>;

    explicit ElementTreeWalker(int visitBound);

    // Visits the root at depth 0 and its descendants down to depthBound; the children of an
    // element at depthBound are not read. Nothing is visited when depthBound is negative.
    void walk(const AXUIElement& root, int depthBound, const Visitor&);

    int visits() const { return visits_; }
    // True once the visit bound has ended a walk before it was done.
    bool cutShort() const { return cutShort_; }

private:
    int visitBound_;
    int visits_ = 0;
    bool cutShort_ = false;
};

} // namespace vardel
