#include "platform/scripted/ScriptedElementReference.h"

#include "platform/scripted/ScriptedElement.h"

namespace vardel::scripted {

ScriptedElementReference::ScriptedElementReference(
    std::weak_ptr<ElementTree> tree, ScriptedElement& element, ProcessIdentifier pid)
    : tree_(std::move(tree))
    , element_(&element)
    , pid_(pid)
    , id_(element.id())
{
}

bool ScriptedElementReference::isEqual(const AXUIElementImpl& other) const
{
    auto* reference = dynamic_cast<const ScriptedElementReference*>(&other);
    // A tree's bookkeeping outlives it while references remain, so (tree, element) never names two
    // elements, even after the element is gone.
    return reference && reference->element_ == element_ && !tree_.owner_before(reference->tree_)
        && !reference->tree_.owner_before(tree_);
}

} // namespace vardel::scripted
