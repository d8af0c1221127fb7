// The shell's menu as dbusmenu entries, without a bus: properties, updates and what a host's
// events reach.

#include "platform/linux/DbusmenuTree.h"

#include <gtest/gtest.h>

#include <libdbusmenu-glib/menuitem.h>

namespace vardel::linux_desktop {

namespace {

MenuItem entry(std::string title)
{
    MenuItem item;
    item.action = title + ":";
    item.title = std::move(title);
    return item;
}

Menu sampleMenu()
{
    MenuItem start = entry("Start Timer…");
    start.keyEquivalent = "t";
    start.keyEquivalentModifierMask = ModifierFlag::command | ModifierFlag::shift;
    MenuItem today = entry("Today: 2h 5m");
    today.enabled = false;
    MenuItem remaining = entry("");
    remaining.hidden = true;
    MenuItem pause = entry("Pause App Tracking for…");
    pause.submenu = { entry("5 Minutes"), entry("1 Hour") };
    MenuItem launch = entry("Launch at Login");
    launch.checked = true;
    return Menu { { start, today, remaining, pause, launch, entry("Ask_for Task") } };
}

std::vector<DbusmenuMenuitem*> children(DbusmenuMenuitem* parent)
{
    std::vector<DbusmenuMenuitem*> found;
    for (GList* child = dbusmenu_menuitem_get_children(parent); child; child = child->next)
        found.push_back(static_cast<DbusmenuMenuitem*>(child->data));
    return found;
}

std::string text(DbusmenuMenuitem* entry, const char* property)
{
    const gchar* value = dbusmenu_menuitem_property_get(entry, property);
    return value ? value : "";
}

std::string printed(DbusmenuMenuitem* entry, const char* property)
{
    GVariant* value = dbusmenu_menuitem_property_get_variant(entry, property);
    if (!value)
        return "";
    gchar* text = g_variant_print(value, FALSE);
    std::string result = text;
    g_free(text);
    return result;
}

struct Heard {
    int openings = 0;
    int closings = 0;
    std::vector<DbusmenuTree::EntryPath> clicks;
};

DbusmenuTree::Handlers recorder(Heard& heard)
{
    return { [&heard] { ++heard.openings; }, [&heard] { ++heard.closings; },
        [&heard](const DbusmenuTree::EntryPath& path) { heard.clicks.push_back(path); } };
}

TEST(DbusmenuTreeTest, EntriesCarryTheItemsStates)
{
    Heard heard;
    DbusmenuTree tree(recorder(heard));
    tree.show(sampleMenu());

    auto entries = children(tree.root());
    ASSERT_EQ(entries.size(), 6u);
    EXPECT_EQ(text(entries[0], DBUSMENU_MENUITEM_PROP_LABEL), "Start Timer…");
    EXPECT_EQ(printed(entries[0], DBUSMENU_MENUITEM_PROP_SHORTCUT), "[['Shift', 'Super', 't']]");
    EXPECT_TRUE(dbusmenu_menuitem_property_get_bool(entries[0], DBUSMENU_MENUITEM_PROP_ENABLED));
    EXPECT_FALSE(dbusmenu_menuitem_property_exist(entries[0], DBUSMENU_MENUITEM_PROP_TOGGLE_TYPE));
    EXPECT_FALSE(dbusmenu_menuitem_property_get_bool(entries[1], DBUSMENU_MENUITEM_PROP_ENABLED));
    EXPECT_FALSE(dbusmenu_menuitem_property_exist(entries[1], DBUSMENU_MENUITEM_PROP_SHORTCUT));
    EXPECT_FALSE(dbusmenu_menuitem_property_get_bool(entries[2], DBUSMENU_MENUITEM_PROP_VISIBLE));
    EXPECT_TRUE(dbusmenu_menuitem_property_get_bool(entries[3], DBUSMENU_MENUITEM_PROP_VISIBLE));
    EXPECT_EQ(text(entries[3], DBUSMENU_MENUITEM_PROP_CHILD_DISPLAY), DBUSMENU_MENUITEM_CHILD_DISPLAY_SUBMENU);
    auto durations = children(entries[3]);
    ASSERT_EQ(durations.size(), 2u);
    EXPECT_EQ(text(durations[1], DBUSMENU_MENUITEM_PROP_LABEL), "1 Hour");
    EXPECT_FALSE(dbusmenu_menuitem_property_exist(entries[0], DBUSMENU_MENUITEM_PROP_CHILD_DISPLAY));
    EXPECT_EQ(text(entries[4], DBUSMENU_MENUITEM_PROP_TOGGLE_TYPE), DBUSMENU_MENUITEM_TOGGLE_CHECK);
    EXPECT_EQ(dbusmenu_menuitem_property_get_int(entries[4], DBUSMENU_MENUITEM_PROP_TOGGLE_STATE),
        DBUSMENU_MENUITEM_TOGGLE_STATE_CHECKED);
    // An underscore would otherwise mark the next letter as the access key.
    EXPECT_EQ(text(entries[5], DBUSMENU_MENUITEM_PROP_LABEL), "Ask__for Task");
}

TEST(DbusmenuTreeTest, ChangesKeepTheEntriesUntilTheMenuChangesShape)
{
    Heard heard;
    DbusmenuTree tree(recorder(heard));
    Menu menu = sampleMenu();
    tree.show(menu);
    DbusmenuMenuitem* launch = children(tree.root())[4];
    gint launchId = dbusmenu_menuitem_get_id(launch);

    menu.items[4].checked = false;
    menu.items[3].title = "Paused for the next 4m";
    menu.items[0].keyEquivalent.clear();
    tree.show(menu);
    auto entries = children(tree.root());
    EXPECT_EQ(dbusmenu_menuitem_get_id(entries[4]), launchId);
    EXPECT_FALSE(dbusmenu_menuitem_property_exist(entries[4], DBUSMENU_MENUITEM_PROP_TOGGLE_TYPE));
    EXPECT_FALSE(dbusmenu_menuitem_property_exist(entries[4], DBUSMENU_MENUITEM_PROP_TOGGLE_STATE));
    EXPECT_EQ(text(entries[3], DBUSMENU_MENUITEM_PROP_LABEL), "Paused for the next 4m");
    EXPECT_FALSE(dbusmenu_menuitem_property_exist(entries[0], DBUSMENU_MENUITEM_PROP_SHORTCUT));

    menu.items[3].submenu.push_back(entry("4 Hours"));
    tree.show(menu);
    ASSERT_EQ(children(children(tree.root())[3]).size(), 3u);
    EXPECT_EQ(text(children(children(tree.root())[3])[2], DBUSMENU_MENUITEM_PROP_LABEL), "4 Hours");
}

TEST(DbusmenuTreeTest, HostEventsReachTheHandlersWithTheEntrysPlace)
{
    Heard heard;
    DbusmenuTree tree(recorder(heard));
    Menu menu = sampleMenu();
    tree.show(menu);

    dbusmenu_menuitem_send_about_to_show(tree.root(), nullptr, nullptr);
    dbusmenu_menuitem_handle_event(tree.root(), DBUSMENU_MENUITEM_EVENT_OPENED, nullptr, 0);
    dbusmenu_menuitem_handle_event(
        children(children(tree.root())[3])[1], DBUSMENU_MENUITEM_EVENT_ACTIVATED, nullptr, 0);
    dbusmenu_menuitem_handle_event(tree.root(), DBUSMENU_MENUITEM_EVENT_CLOSED, nullptr, 0);
    EXPECT_EQ(heard.openings, 2);
    EXPECT_EQ(heard.closings, 1);
    ASSERT_EQ(heard.clicks.size(), 1u);
    EXPECT_EQ(heard.clicks[0], (DbusmenuTree::EntryPath { 3, 1 }));
    EXPECT_EQ(DbusmenuTree::itemAt(menu, heard.clicks[0])->title, "1 Hour");
    EXPECT_EQ(DbusmenuTree::itemAt(menu, { 3, 2 }), nullptr);

    // Entries of a tree built anew no longer report to it through the old ones.
    GObjectHandle<DbusmenuMenuitem> old(DBUSMENU_MENUITEM(g_object_ref(children(tree.root())[0])));
    menu.items.pop_back();
    tree.show(menu);
    dbusmenu_menuitem_handle_event(old.get(), DBUSMENU_MENUITEM_EVENT_ACTIVATED, nullptr, 0);
    EXPECT_EQ(heard.clicks.size(), 1u);
}

} // namespace

} // namespace vardel::linux_desktop
