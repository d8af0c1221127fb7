#pragma once

#include "platform/Log.h"
#include "platform/RunLoop.h"
#include "platform/StatusBar.h"
#include "platform/linux/ColorSchemeWatcher.h"
#include "platform/linux/DbusmenuTree.h"
#include "platform/linux/GLibHandles.h"
#include "platform/linux/StatusNotifierLook.h"

#include <functional>
#include <gio/gio.h>
#include <libdbusmenu-glib/server.h>
#include <memory>
#include <optional>
#include <string>

namespace vardel::linux_desktop {

// The status item as a StatusNotifierItem on the session bus (org.kde.StatusNotifierItem at
// /StatusNotifierItem, registered with the session's org.kde.StatusNotifierWatcher) and its menu
// exported with libdbusmenu at /MenuBar. Before the host shows the menu, the delegate's
// menuWillOpen and validation run and the entries are updated; a clicked entry's action runs
// after the menu has closed. Everything the bus asks for is queued on the run loop, which also
// serves the GLib main context. Without a watcher the item waits, saying so once, and registers
// when one appears.
class StatusNotifierItem final : public StatusBar {
public:
    // heldModifierFlags tells which modifier keys are down now; iconThemePath is the folder of an
    // icon theme that holds the item's icons (empty: the desktop's themes).
    StatusNotifierItem(RunLoop&, Log&, std::function<uint64_t()> heldModifierFlags, std::string iconThemePath = {});
    ~StatusNotifierItem() override;
    StatusNotifierItem(const StatusNotifierItem&) = delete;
    StatusNotifierItem& operator=(const StatusNotifierItem&) = delete;

    void installStatusItem(const std::string& autosaveName, Menu&, MenuDelegate&) override;
    void updateStatusItem(const StatusItemAppearance&) override;
    uint64_t currentModifierFlags() override { return heldModifierFlags_(); }
    void observeAppearanceChanges(std::function<void()> observer) override
    {
        appearanceObserver_ = std::move(observer);
    }

    // For the bus handlers.
    const StatusNotifierLook& look() const { return look_; }
    const std::string& iconThemePath() const { return iconThemePath_; }
    void watcherAppeared();
    void watcherVanished();
    void registered(bool succeeded, const std::string& error);

private:
    void exportObjects();
    void emitChanges(const StatusNotifierLook& before);
    // Queues work on the run loop that is dropped when the item has gone.
    void queue(std::function<void(StatusNotifierItem&)>);
    void showMenu();
    void openMenu();
    void closeMenu();
    void choose(const DbusmenuTree::EntryPath&);

    RunLoop& runLoop_;
    Log& log_;
    std::function<uint64_t()> heldModifierFlags_;
    std::string iconThemePath_;
    std::function<void()> appearanceObserver_;
    std::shared_ptr<StatusNotifierItem*> self_;
    Menu* menu_ = nullptr;
    MenuDelegate* delegate_ = nullptr;
    bool menuOpen_ = false;
    StatusNotifierLook look_;
    DbusmenuTree tree_;
    GObjectHandle<GDBusConnection> bus_;
    GObjectHandle<GCancellable> cancellable_;
    GObjectHandle<DbusmenuServer> menuServer_;
    std::optional<ColorSchemeWatcher> colorScheme_;
    unsigned objectRegistration_ = 0;
    unsigned watcherWatch_ = 0;
    bool registered_ = false;
    bool saidNoWatcher_ = false;
    bool saidRegistrationFailed_ = false;
};

} // namespace vardel::linux_desktop
