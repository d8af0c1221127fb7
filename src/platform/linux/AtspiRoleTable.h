#pragma once

#include <optional>
#include <string_view>

namespace vardel::linux_desktop {

// The accessibility role (and subrole) an AT-SPI role plays. docs/linux-desktop.md lists the table.
struct AXRoleNames {
    std::string_view role;
    std::optional<std::string_view> subrole;
};

// atspiRole is an AtspiRole value; roles the table does not know are "AXUnknown".
AXRoleNames axRoleNamesFor(int atspiRole);
// A subrole from the element's ARIA role (the object attribute xml-roles), which is more precise
// than the AT-SPI role for landmarks and timers; nothing for other ARIA roles.
std::optional<std::string_view> axSubroleForAriaRole(std::string_view ariaRole);
// Roles whose elements are windows of their application.
bool isWindowRole(int atspiRole);
// Documents other than web documents, which have a file behind them.
bool isDocumentRole(int atspiRole);
// Roles whose AXValue is their text (the Text interface) or their number (the Value interface).
bool isTextValueRole(int atspiRole);
bool isNumericValueRole(int atspiRole);

} // namespace vardel::linux_desktop
