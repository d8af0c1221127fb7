#include "platform/scripted/UnresolvedReference.h"

namespace vardel::scripted {

bool UnresolvedReference::isEqual(const AXUIElementImpl& other) const
{
    auto* reference = dynamic_cast<const UnresolvedReference*>(&other);
    return reference && reference->id_ == id_;
}

} // namespace vardel::scripted
