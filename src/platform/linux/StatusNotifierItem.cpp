#include "platform/linux/StatusNotifierItem.h"

#include <gio/gio.h>
#include <libdbusmenu-glib/server.h>
#include <string_view>
#include <unistd.h>

namespace vardel::linux_desktop {

namespace {

constexpr const char* itemInterface = "org.kde.StatusNotifierItem";
constexpr const char* itemPath = "/StatusNotifierItem";
constexpr const char* menuPath = "/MenuBar";
constexpr const char* watcherName = "org.kde.StatusNotifierWatcher";
constexpr const char* watcherPath = "/StatusNotifierWatcher";
constexpr int registrationTimeoutMilliseconds = 2000;

constexpr const char* introspection = R"xml(<node>
  <interface name="org.kde.StatusNotifierItem">
    <property name="Category" type="s" access="read"/>
    <property name="Id" type="s" access="read"/>
    <property name="Title" type="s" access="read"/>
    <property name="Status" type="s" access="read"/>
    <property name="WindowId" type="i" access="read"/>
    <property name="IconName" type="s" access="read"/>
    <property name="IconThemePath" type="s" access="read"/>
    <property name="IconPixmap" type="a(iiay)" access="read"/>
    <property name="OverlayIconName" type="s" access="read"/>
    <property name="AttentionIconName" type="s" access="read"/>
    <property name="ToolTip" type="(sa(iiay)ss)" access="read"/>
    <property name="ItemIsMenu" type="b" access="read"/>
    <property name="Menu" type="o" access="read"/>
    <property name="XAyatanaLabel" type="s" access="read"/>
    <property name="XAyatanaLabelGuide" type="s" access="read"/>
    <method name="ContextMenu"><arg name="x" type="i" direction="in"/><arg name="y" type="i" direction="in"/></method>
    <method name="Activate"><arg name="x" type="i" direction="in"/><arg name="y" type="i" direction="in"/></method>
    <method name="SecondaryActivate"><arg name="x" type="i" direction="in"/><arg name="y" type="i" direction="in"/></method>
    <method name="Scroll"><arg name="delta" type="i" direction="in"/><arg name="orientation" type="s" direction="in"/></method>
    <signal name="NewTitle"/>
    <signal name="NewIcon"/>
    <signal name="NewAttentionIcon"/>
    <signal name="NewOverlayIcon"/>
    <signal name="NewToolTip"/>
    <signal name="NewStatus"><arg name="status" type="s"/></signal>
    <signal name="XAyatanaNewLabel"><arg name="label" type="s"/><arg name="guide" type="s"/></signal>
  </interface>
</node>)xml";

GVariant* property(const StatusNotifierItem& item, std::string_view name)
{
    const StatusNotifierLook& look = item.look();
    if (name == "Category")
        return g_variant_new_string("ApplicationStatus");
    if (name == "Id")
        return g_variant_new_string("vardel-tracker");
    if (name == "Title")
        return g_variant_new_string(look.title.c_str());
    if (name == "Status")
        return g_variant_new_string(look.status.c_str());
    if (name == "WindowId")
        return g_variant_new_int32(0);
    if (name == "IconName")
        return g_variant_new_string(look.iconName.c_str());
    if (name == "IconThemePath")
        return g_variant_new_string(item.iconThemePath().c_str());
    if (name == "IconPixmap")
        return g_variant_new_array(G_VARIANT_TYPE("(iiay)"), nullptr, 0);
    if (name == "ToolTip")
        return g_variant_new("(s@a(iiay)ss)", look.iconName.c_str(),
            g_variant_new_array(G_VARIANT_TYPE("(iiay)"), nullptr, 0), look.title.c_str(), "");
    if (name == "ItemIsMenu")
        return g_variant_new_boolean(TRUE);
    if (name == "Menu")
        return g_variant_new_object_path(menuPath);
    if (name == "XAyatanaLabel")
        return g_variant_new_string(look.label.c_str());
    // OverlayIconName, AttentionIconName, XAyatanaLabelGuide
    return g_variant_new_string("");
}

GVariant* getProperty(
    GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar* name, GError**, gpointer item)
{
    return property(*static_cast<StatusNotifierItem*>(item), name);
}

// The menu is the item's only action (ItemIsMenu): the host opens it itself, so clicks and
// scrolling on the icon have nothing to do.
void callMethod(GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar*, GVariant*,
    GDBusMethodInvocation* invocation, gpointer)
{
    g_dbus_method_invocation_return_value(invocation, nullptr);
}

const GDBusInterfaceVTable itemVTable = { callMethod, getProperty, nullptr, { nullptr } };

GDBusInterfaceInfo* itemInterfaceInfo()
{
    static GDBusNodeInfo* node = g_dbus_node_info_new_for_xml(introspection, nullptr);
    return node ? g_dbus_node_info_lookup_interface(node, itemInterface) : nullptr;
}

void onRegistered(GObject* bus, GAsyncResult* result, gpointer item)
{
    GError* rawError = nullptr;
    GVariantHandle reply(g_dbus_connection_call_finish(G_DBUS_CONNECTION(bus), result, &rawError));
    GErrorHandle error(rawError);
    // A cancelled call belongs to an item that has gone.
    if (error && g_error_matches(error.get(), G_IO_ERROR, G_IO_ERROR_CANCELLED))
        return;
    static_cast<StatusNotifierItem*>(item)->registered(reply != nullptr, error ? error->message : "");
}

void validate(std::vector<MenuItem>& items, MenuDelegate& delegate)
{
    for (MenuItem& item : items) {
        item.enabled = delegate.validateMenuItem(item);
        validate(item.submenu, delegate);
    }
}

} // namespace

StatusNotifierItem::StatusNotifierItem(
    RunLoop& runLoop, Log& log, std::function<uint64_t()> heldModifierFlags, std::string iconThemePath)
    : runLoop_(runLoop)
    , log_(log)
    , heldModifierFlags_(std::move(heldModifierFlags))
    , iconThemePath_(std::move(iconThemePath))
    , self_(std::make_shared<StatusNotifierItem*>(this))
    , look_(StatusNotifierLook::of({}))
    , tree_({ [this] { queue([](StatusNotifierItem& item) { item.openMenu(); }); },
          [this] { queue([](StatusNotifierItem& item) { item.closeMenu(); }); },
          [this](const DbusmenuTree::EntryPath& path) {
              queue([path](StatusNotifierItem& item) { item.choose(path); });
          } })
    , cancellable_(g_cancellable_new())
{
}

StatusNotifierItem::~StatusNotifierItem()
{
    g_cancellable_cancel(cancellable_.get());
    if (watcherWatch_)
        g_bus_unwatch_name(watcherWatch_);
    if (objectRegistration_)
        g_dbus_connection_unregister_object(bus_.get(), objectRegistration_);
}

void StatusNotifierItem::installStatusItem(const std::string&, Menu& menu, MenuDelegate& delegate)
{
    menu_ = &menu;
    delegate_ = &delegate;
    showMenu();
    if (bus_)
        return;
    bus_.reset(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr));
    if (!bus_) {
        log_.warning("There is no session bus: the status item is not shown.");
        return;
    }
    exportObjects();
}

void StatusNotifierItem::exportObjects()
{
    objectRegistration_ = g_dbus_connection_register_object(
        bus_.get(), itemPath, itemInterfaceInfo(), &itemVTable, this, nullptr, nullptr);
    menuServer_.reset(dbusmenu_server_new(menuPath));
    dbusmenu_server_set_root(menuServer_.get(), tree_.root());
    colorScheme_.emplace(bus_.get(), [this] {
        queue([](StatusNotifierItem& item) {
            item.log_.info("The desktop's colour scheme changed.");
            if (item.appearanceObserver_)
                item.appearanceObserver_();
        });
    });
    watcherWatch_ = g_bus_watch_name_on_connection(
        bus_.get(), watcherName, G_BUS_NAME_WATCHER_FLAGS_NONE,
        [](GDBusConnection*, const gchar*, const gchar*, gpointer item) {
            static_cast<StatusNotifierItem*>(item)->watcherAppeared();
        },
        [](GDBusConnection*, const gchar*, gpointer item) {
            static_cast<StatusNotifierItem*>(item)->watcherVanished();
        },
        this, nullptr);
}

void StatusNotifierItem::watcherAppeared()
{
    const gchar* service = g_dbus_connection_get_unique_name(bus_.get());
    g_dbus_connection_call(bus_.get(), watcherName, watcherPath, watcherName, "RegisterStatusNotifierItem",
        g_variant_new("(s)", service ? service : ""), nullptr, G_DBUS_CALL_FLAGS_NONE, registrationTimeoutMilliseconds,
        cancellable_.get(), onRegistered, this);
}

void StatusNotifierItem::watcherVanished()
{
    registered_ = false;
    if (saidNoWatcher_)
        return;
    saidNoWatcher_ = true;
    log_.warning("No tray (StatusNotifierWatcher) runs on this desktop: the status item is shown once one starts.");
}

void StatusNotifierItem::registered(bool succeeded, const std::string& error)
{
    registered_ = succeeded;
    if (succeeded) {
        log_.info("The status item is registered with the tray.");
        return;
    }
    if (saidRegistrationFailed_)
        return;
    saidRegistrationFailed_ = true;
    log_.warning("The tray did not take the status item: " + error);
}

void StatusNotifierItem::updateStatusItem(const StatusItemAppearance& appearance)
{
    StatusNotifierLook before = look_;
    look_ = StatusNotifierLook::of(appearance);
    if (menu_)
        showMenu();
    emitChanges(before);
}

void StatusNotifierItem::emitChanges(const StatusNotifierLook& before)
{
    if (!objectRegistration_)
        return;
    auto emit = [this](const char* signal, GVariant* parameters) {
        g_dbus_connection_emit_signal(bus_.get(), nullptr, itemPath, itemInterface, signal, parameters, nullptr);
    };
    if (before.title != look_.title) {
        emit("NewTitle", nullptr);
        emit("NewToolTip", nullptr);
    }
    if (before.iconName != look_.iconName)
        emit("NewIcon", nullptr);
    if (before.status != look_.status)
        emit("NewStatus", g_variant_new("(s)", look_.status.c_str()));
    if (before.label != look_.label)
        emit("XAyatanaNewLabel", g_variant_new("(ss)", look_.label.c_str(), ""));
}

void StatusNotifierItem::queue(std::function<void(StatusNotifierItem&)> work)
{
    runLoop_.schedule(0, [self = std::weak_ptr<StatusNotifierItem*>(self_), work = std::move(work)] {
        if (auto item = self.lock())
            work(**item);
    });
}

// Hosts ask again for submenus and may send "opened" after AboutToShow: one opening until closed.
void StatusNotifierItem::openMenu()
{
    if (!menu_ || !delegate_)
        return;
    if (!menuOpen_) {
        menuOpen_ = true;
        delegate_->menuWillOpen(*menu_);
    }
    validate(menu_->items, *delegate_);
    showMenu();
}

void StatusNotifierItem::closeMenu()
{
    if (!menuOpen_)
        return;
    menuOpen_ = false;
    delegate_->menuDidClose(*menu_);
    showMenu();
}

// A menu of another shape gets new entries, which the server must export instead of the old ones.
void StatusNotifierItem::showMenu()
{
    DbusmenuMenuitem* exported = tree_.root();
    tree_.show(*menu_);
    if (menuServer_ && tree_.root() != exported)
        dbusmenu_server_set_root(menuServer_.get(), tree_.root());
}

void StatusNotifierItem::choose(const DbusmenuTree::EntryPath& path)
{
    if (!menu_ || !delegate_)
        return;
    const MenuItem* entry = DbusmenuTree::itemAt(*menu_, path);
    std::optional<MenuItem> chosen;
    if (entry && entry->enabled && !entry->hidden)
        chosen = *entry;
    closeMenu();
    if (chosen)
        delegate_->performAction(*chosen);
    else
        log_.warning("A menu entry that is hidden, disabled or gone was clicked; nothing is done.");
}

} // namespace vardel::linux_desktop
