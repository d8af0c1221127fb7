#include "platform/linux/DbusmenuTree.h"

#include <libdbusmenu-glib/menuitem.h>
#include <string_view>

namespace vardel::linux_desktop {

namespace {

// dbusmenu labels take "_" as the mark of an access key; a title's own underscores are doubled.
std::string label(std::string_view title)
{
    std::string escaped;
    for (char character : title) {
        escaped += character;
        if (character == '_')
            escaped += '_';
    }
    return escaped;
}

// The modifier names dbusmenu menus use, with Command as the Super key.
GVariant* shortcut(const MenuItem& item)
{
    GVariantBuilder keys;
    g_variant_builder_init(&keys, G_VARIANT_TYPE("as"));
    const std::pair<uint64_t, const char*> modifiers[]
        = { { ModifierFlag::control, DBUSMENU_MENUITEM_SHORTCUT_CONTROL },
              { ModifierFlag::option, DBUSMENU_MENUITEM_SHORTCUT_ALT },
              { ModifierFlag::shift, DBUSMENU_MENUITEM_SHORTCUT_SHIFT },
              { ModifierFlag::command, DBUSMENU_MENUITEM_SHORTCUT_SUPER } };
    for (const auto& [flag, name] : modifiers) {
        if (item.keyEquivalentModifierMask & flag)
            g_variant_builder_add(&keys, "s", name);
    }
    g_variant_builder_add(&keys, "s", item.keyEquivalent.c_str());
    GVariantBuilder combinations;
    g_variant_builder_init(&combinations, G_VARIANT_TYPE("aas"));
    g_variant_builder_add_value(&combinations, g_variant_builder_end(&keys));
    return g_variant_builder_end(&combinations);
}

void setOrRemove(DbusmenuMenuitem* entry, const char* property, GVariant* value)
{
    if (value)
        dbusmenu_menuitem_property_set_variant(entry, property, value);
    else
        dbusmenu_menuitem_property_remove(entry, property);
}

void shape(const std::vector<MenuItem>& items, std::vector<size_t>& sizes)
{
    sizes.push_back(items.size());
    for (const MenuItem& item : items)
        shape(item.submenu, sizes);
}

std::vector<size_t> shape(const Menu& menu)
{
    std::vector<size_t> sizes;
    shape(menu.items, sizes);
    return sizes;
}

} // namespace

struct DbusmenuTree::Connection {
    DbusmenuTree* tree;
    EntryPath path;
    DbusmenuMenuitem* entry;
    gulong handler = 0;
};

DbusmenuTree::DbusmenuTree(Handlers handlers)
    : handlers_(std::move(handlers))
{
}

DbusmenuTree::~DbusmenuTree()
{
    disconnectAll();
}

void DbusmenuTree::applyProperties(DbusmenuMenuitem* entry, const MenuItem& item)
{
    dbusmenu_menuitem_property_set(entry, DBUSMENU_MENUITEM_PROP_LABEL, label(item.title).c_str());
    dbusmenu_menuitem_property_set_bool(entry, DBUSMENU_MENUITEM_PROP_ENABLED, item.enabled);
    dbusmenu_menuitem_property_set_bool(entry, DBUSMENU_MENUITEM_PROP_VISIBLE, !item.hidden);
    setOrRemove(entry, DBUSMENU_MENUITEM_PROP_TOGGLE_TYPE,
        item.checked ? g_variant_new_string(DBUSMENU_MENUITEM_TOGGLE_CHECK) : nullptr);
    setOrRemove(entry, DBUSMENU_MENUITEM_PROP_TOGGLE_STATE,
        item.checked ? g_variant_new_int32(DBUSMENU_MENUITEM_TOGGLE_STATE_CHECKED) : nullptr);
    setOrRemove(entry, DBUSMENU_MENUITEM_PROP_CHILD_DISPLAY,
        item.submenu.empty() ? nullptr : g_variant_new_string(DBUSMENU_MENUITEM_CHILD_DISPLAY_SUBMENU));
    setOrRemove(entry, DBUSMENU_MENUITEM_PROP_SHORTCUT, item.keyEquivalent.empty() ? nullptr : shortcut(item));
}

const MenuItem* DbusmenuTree::itemAt(const Menu& menu, const EntryPath& path)
{
    const std::vector<MenuItem>* items = &menu.items;
    const MenuItem* found = nullptr;
    for (size_t index : path) {
        if (index >= items->size())
            return nullptr;
        found = &(*items)[index];
        items = &found->submenu;
    }
    return found;
}

void DbusmenuTree::show(const Menu& menu)
{
    if (!root_ || shape(menu) != shape_)
        build(menu);
    refresh(root_.get(), menu.items);
}

void DbusmenuTree::build(const Menu& menu)
{
    disconnectAll();
    root_.reset(dbusmenu_menuitem_new());
    shape_ = shape(menu);
    auto connectRoot = [this](const char* signal, GCallback callback) {
        auto connection = std::make_unique<Connection>(Connection { this, {}, root_.get() });
        connection->handler = g_signal_connect(root_.get(), signal, callback, connection.get());
        connections_.push_back(std::move(connection));
    };
    connectRoot(DBUSMENU_MENUITEM_SIGNAL_ABOUT_TO_SHOW, G_CALLBACK(+[](DbusmenuMenuitem*, gpointer data) -> gboolean {
        auto* connection = static_cast<Connection*>(data);
        connection->tree->handlers_.opening();
        return FALSE;
    }));
    connectRoot(DBUSMENU_MENUITEM_SIGNAL_EVENT,
        G_CALLBACK(+[](DbusmenuMenuitem*, const gchar* name, GVariant*, guint, gpointer data) -> gboolean {
            auto* connection = static_cast<Connection*>(data);
            std::string_view event = name ? name : "";
            if (event == DBUSMENU_MENUITEM_EVENT_OPENED)
                connection->tree->handlers_.opening();
            else if (event == DBUSMENU_MENUITEM_EVENT_CLOSED)
                connection->tree->handlers_.closed();
            return FALSE;
        }));
    EntryPath path;
    addEntries(root_.get(), menu.items, path);
}

void DbusmenuTree::addEntries(DbusmenuMenuitem* parent, const std::vector<MenuItem>& items, EntryPath& path)
{
    for (size_t index = 0; index < items.size(); ++index) {
        path.push_back(index);
        GObjectHandle<DbusmenuMenuitem> entry(dbusmenu_menuitem_new());
        auto connection = std::make_unique<Connection>(Connection { this, path, entry.get() });
        connection->handler = g_signal_connect(entry.get(), DBUSMENU_MENUITEM_SIGNAL_ITEM_ACTIVATED,
            G_CALLBACK(+[](DbusmenuMenuitem*, guint, gpointer data) {
                auto* connection = static_cast<Connection*>(data);
                connection->tree->handlers_.clicked(connection->path);
            }),
            connection.get());
        connections_.push_back(std::move(connection));
        dbusmenu_menuitem_child_append(parent, entry.get());
        addEntries(entry.get(), items[index].submenu, path);
        path.pop_back();
    }
}

void DbusmenuTree::refresh(DbusmenuMenuitem* parent, const std::vector<MenuItem>& items)
{
    size_t index = 0;
    for (GList* child = dbusmenu_menuitem_get_children(parent); child && index < items.size();
         child = child->next, ++index) {
        auto* entry = static_cast<DbusmenuMenuitem*>(child->data);
        applyProperties(entry, items[index]);
        refresh(entry, items[index].submenu);
    }
}

// A host may still hold an entry of an old tree (libdbusmenu refers to it from an idle call); its
// signals must not reach this tree any more.
void DbusmenuTree::disconnectAll()
{
    for (const auto& connection : connections_)
        g_signal_handler_disconnect(connection->entry, connection->handler);
    connections_.clear();
}

} // namespace vardel::linux_desktop
