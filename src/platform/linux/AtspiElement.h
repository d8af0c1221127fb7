#pragma once

#include "platform/AXUIElement.h"
#include "platform/linux/GLibHandles.h"

#include <string>

typedef struct _AtspiAccessible AtspiAccessible;

namespace vardel::linux_desktop {

// An element reference: one reference to libatspi's proxy of the remote object. libatspi keeps one
// proxy per object, so two references denote the same element when they hold the same proxy.
class AtspiElement final : public AXUIElementImpl {
public:
    static AXUIElement adopt(GObjectHandle<AtspiAccessible>);
    // The desktop element of the registry, standing for the whole desktop.
    static AXUIElement systemWide();

    // The proxy behind an element of this backend; nullptr for other elements.
    static AtspiAccessible* accessibleOf(const AXUIElement&);
    static bool isSystemWide(const AXUIElement&);
    // The bus name of the application the proxy belongs to, for telling applications apart.
    static std::string applicationBusName(AtspiAccessible*);

    bool isEqual(const AXUIElementImpl& other) const override;
    // The application's bus name and the object's path.
    std::optional<std::string> traceName() const override;

private:
    AtspiElement(GObjectHandle<AtspiAccessible> accessible, bool systemWide)
        : accessible_(std::move(accessible))
        , systemWide_(systemWide)
    {
    }

    GObjectHandle<AtspiAccessible> accessible_;
    bool systemWide_;
};

} // namespace vardel::linux_desktop
