#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vardel {

// Modifier flags of keys held down, with the platform's values.
namespace ModifierFlag {
inline constexpr uint64_t shift = 131072;
inline constexpr uint64_t control = 262144;
inline constexpr uint64_t option = 524288;
inline constexpr uint64_t command = 1048576;
} // namespace ModifierFlag

// One entry of a menu. The action names what choosing it does; the tag carries a number for the
// action, such as a pause duration.
struct MenuItem {
    std::string action;
    int64_t tag = 0;
    std::string title;
    bool enabled = true;
    bool hidden = false;
    bool checked = false;
    std::string keyEquivalent;
    uint64_t keyEquivalentModifierMask = 0;
    std::vector<MenuItem> submenu;
};

struct Menu {
    std::vector<MenuItem> items;
};

// What the desktop asks of the owner of a menu while the user uses it. Before the menu shows, every
// entry is validated; the answer enables or disables it. A chosen entry's action runs after the
// menu has closed.
class MenuDelegate {
public:
    virtual ~MenuDelegate() = default;
    virtual void menuWillOpen(Menu&) = 0;
    virtual bool validateMenuItem(MenuItem&) = 0;
    virtual void menuDidClose(Menu&) = 0;
    virtual void performAction(const MenuItem&) = 0;
};

// How the status item looks in the menu bar.
struct StatusItemAppearance {
    bool visible = true;
    bool appearsDisabled = false;
    bool highlighted = false;
    std::string title;
    // The widest the item may grow, in points; none means no limit.
    std::optional<double> maxWidth;

    bool operator==(const StatusItemAppearance&) const = default;
};

// The menu bar's status area, where the tracker shows its one item.
class StatusBar {
public:
    virtual ~StatusBar() = default;

    // Shows the item; a click opens the menu, served through the delegate. Neither is owned.
    virtual void installStatusItem(const std::string& autosaveName, Menu&, MenuDelegate&) = 0;
    virtual void updateStatusItem(const StatusItemAppearance&) = 0;
    // The modifier keys held during the event being handled.
    virtual uint64_t currentModifierFlags() = 0;
    // Called on the run loop when the desktop's look (such as its colour scheme) changes, which
    // changes how the item is drawn; nullptr stops the calls.
    virtual void observeAppearanceChanges(std::function<void()>) = 0;
};

} // namespace vardel
