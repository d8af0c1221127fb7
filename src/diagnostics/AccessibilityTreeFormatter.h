#pragma once

#include "activity/ElementTreeWalker.h"
#include "diagnostics/ElementPath.h"
#include "platform/AXUIElement.h"

#include <string>

namespace vardel {

// The texts of the accessibility dump. Every element is one line of entries key='value'; a tree
// shows each child's lines below its parent, prefixed with "|", a tab and the child's index.
class AccessibilityTreeFormatter {
public:
    // The chosen attributes: role, subrole, document (of windows), title, help, label, value, url,
    // identifier, domIdentifier, domClassList, selected and path, those that have a value.
    static std::string elementLine(const AXUIElement&);
    // The element line followed by every further attribute that has text.
    static std::string searchLine(const AXUIElement&);
    // The element line and its children's tree texts, levels deep: the children of the last level
    // show as their bare prefixes. Empty when levels is negative. When the walker's visit bound cuts
    // the walk short, the text ends with the cut-short line.
    static std::string treeText(const AXUIElement&, int levels, ElementTreeWalker&);
    // The path from its start to the matched element, one search line per step, the last one
    // marked; then the matched element's children, as its tree text shows them, below it.
    static std::string matchText(const ElementPath&, int levels, ElementTreeWalker&);
    // Says that the walker's visit bound ended the walk.
    static std::string cutShortLine(const ElementTreeWalker&);
};

} // namespace vardel
