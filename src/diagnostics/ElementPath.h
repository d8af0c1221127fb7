#pragma once

#include "platform/AXUIElement.h"

#include <cstddef>
#include <vector>

namespace vardel {

// One step of the way from a window down to one of its elements: the element and its index among
// its parent's children (0 for the element the way starts from).
struct ElementPathStep {
    AXUIElement element;
    size_t childIndex = 0;
};

using ElementPath = std::vector<ElementPathStep>;

} // namespace vardel
