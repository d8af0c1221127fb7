#include "platform/linux/AtspiElement.h"

#include <atspi/atspi.h>
#include <memory>

namespace vardel::linux_desktop {

AXUIElement AtspiElement::adopt(GObjectHandle<AtspiAccessible> accessible)
{
    return AXUIElement(std::shared_ptr<const AtspiElement>(new AtspiElement(std::move(accessible), false)));
}

AXUIElement AtspiElement::systemWide()
{
    return AXUIElement(std::shared_ptr<const AtspiElement>(
        new AtspiElement(GObjectHandle<AtspiAccessible>(atspi_get_desktop(0)), true)));
}

AtspiAccessible* AtspiElement::accessibleOf(const AXUIElement& element)
{
    auto* impl = dynamic_cast<const AtspiElement*>(&element.impl());
    return impl ? impl->accessible_.get() : nullptr;
}

bool AtspiElement::isSystemWide(const AXUIElement& element)
{
    auto* impl = dynamic_cast<const AtspiElement*>(&element.impl());
    return impl && impl->systemWide_;
}

std::string AtspiElement::applicationBusName(AtspiAccessible* accessible)
{
    const AtspiObject& object = accessible->parent;
    return object.app && object.app->bus_name ? object.app->bus_name : "";
}

bool AtspiElement::isEqual(const AXUIElementImpl& other) const
{
    auto* element = dynamic_cast<const AtspiElement*>(&other);
    return element && element->accessible_ == accessible_ && element->systemWide_ == systemWide_;
}

std::optional<std::string> AtspiElement::traceName() const
{
    if (!accessible_)
        return std::nullopt;
    const AtspiObject& object = accessible_->parent;
    return applicationBusName(accessible_.get()) + (object.path ? object.path : "");
}

} // namespace vardel::linux_desktop
