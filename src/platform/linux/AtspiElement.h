#pragma once

#include "platform/AXUIElement.h"

typedef struct _AtspiAccessible AtspiAccessible;

namespace vardel::linux_desktop {

// An element reference: one reference to libatspi's proxy of the remote object. libatspi keeps one
// proxy per object, so two references denote the same element when they hold the same proxy.
class AtspiElement final : public AXUIElementImpl {
public:
    // Takes over the caller's reference.
    static AXUIElement adopt(AtspiAccessible*);
    // The desktop element of the registry, standing for the whole desktop.
    static AXUIElement systemWide();

    ~AtspiElement() override;
    AtspiElement(const AtspiElement&) = delete;
    AtspiElement& operator=(const AtspiElement&) = delete;

    bool isEqual(const AXUIElementImpl& other) const override;
    // The application's bus name and the object's path.
    std::optional<std::string> traceName() const override;

    AtspiAccessible* accessible() const { return accessible_; }
    bool isSystemWide() const { return systemWide_; }
    // The bus name of the application the element belongs to, for telling applications apart.
    std::string applicationBusName() const;

private:
    AtspiElement(AtspiAccessible* accessible, bool systemWide)
        : accessible_(accessible)
        , systemWide_(systemWide)
    {
    }

    AtspiAccessible* accessible_;
    bool systemWide_;
};

} // namespace vardel::linux_desktop
