#include "platform/linux/AtspiElement.h"

#include <atspi/atspi.h>
#include <memory>

namespace vardel::linux_desktop {

AXUIElement AtspiElement::adopt(AtspiAccessible* accessible)
{
    return AXUIElement(std::shared_ptr<const AtspiElement>(new AtspiElement(accessible, false)));
}

AXUIElement AtspiElement::systemWide()
{
    return AXUIElement(std::shared_ptr<const AtspiElement>(new AtspiElement(atspi_get_desktop(0), true)));
}

AtspiElement::~AtspiElement()
{
    if (accessible_)
        g_object_unref(accessible_);
}

bool AtspiElement::isEqual(const AXUIElementImpl& other) const
{
    auto* element = dynamic_cast<const AtspiElement*>(&other);
    return element && element->accessible_ == accessible_ && element->systemWide_ == systemWide_;
}

std::string AtspiElement::applicationBusName() const
{
    const AtspiObject& object = accessible_->parent;
    return object.app && object.app->bus_name ? object.app->bus_name : "";
}

std::optional<std::string> AtspiElement::traceName() const
{
    if (!accessible_)
        return std::nullopt;
    const AtspiObject& object = accessible_->parent;
    return applicationBusName() + (object.path ? object.path : "");
}

} // namespace vardel::linux_desktop
