#pragma once

#include "platform/StatusBar.h"
#include "platform/linux/GLibHandles.h"

#include <cstddef>
#include <functional>
#include <libdbusmenu-glib/menuitem.h>
#include <memory>
#include <vector>

namespace vardel::linux_desktop {

// The shell's menu as libdbusmenu entries: one entry per menu item (submenus below their parent),
// whose properties follow the item's title, enabled, hidden and checked state and key equivalent.
// What a menu host does to the entries comes back through the handlers, which run inside GLib's
// dispatch: they should only queue work.
class DbusmenuTree {
public:
    // Where an entry sits: its index in the menu, then in each submenu below.
    using EntryPath = std::vector<size_t>;
    struct Handlers {
        // The host is about to show the menu (AboutToShow, or the "opened" event of the root).
        std::function<void()> opening;
        // The "closed" event of the root.
        std::function<void()> closed;
        std::function<void(const EntryPath&)> clicked;
    };

    explicit DbusmenuTree(Handlers);
    ~DbusmenuTree();
    DbusmenuTree(const DbusmenuTree&) = delete;
    DbusmenuTree& operator=(const DbusmenuTree&) = delete;

    // Makes the entries show the menu: built anew when the menu's shape changed, else only the
    // properties that differ change (libdbusmenu tells the host about those).
    void show(const Menu&);
    DbusmenuMenuitem* root() const { return root_.get(); }

    // The dbusmenu properties of one item: label, enabled, visible, toggle type and state (only a
    // checked item has a check mark), children display and shortcut.
    static void applyProperties(DbusmenuMenuitem*, const MenuItem&);
    // The item at the path, or nullptr when the menu has no such item.
    static const MenuItem* itemAt(const Menu&, const EntryPath&);

private:
    struct Connection;
    void build(const Menu&);
    void addEntries(DbusmenuMenuitem* parent, const std::vector<MenuItem>&, EntryPath&);
    void disconnectAll();
    void refresh(DbusmenuMenuitem* parent, const std::vector<MenuItem>&);

    Handlers handlers_;
    GObjectHandle<DbusmenuMenuitem> root_;
    // The shape the entries were built for: each item's submenu size, depth first.
    std::vector<size_t> shape_;
    std::vector<std::unique_ptr<Connection>> connections_;
};

} // namespace vardel::linux_desktop
