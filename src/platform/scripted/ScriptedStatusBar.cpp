#include "platform/scripted/ScriptedStatusBar.h"

#include "platform/Platform.h"

namespace vardel::scripted {

namespace {

using nlohmann::ordered_json;

bool changesWhatTheTraceShows(const std::optional<StatusItemAppearance>& before, const StatusItemAppearance& after)
{
    return !before || before->appearsDisabled != after.appearsDisabled || before->visible != after.visible
        || before->title != after.title;
}

ordered_json encode(const MenuItem& item)
{
    return { { "action", item.action }, { "tag", item.tag }, { "title", item.title }, { "enabled", item.enabled },
        { "hidden", item.hidden }, { "checked", item.checked }, { "keyEquivalent", item.keyEquivalent },
        { "keyEquivalentModifierMask", item.keyEquivalentModifierMask } };
}

void appendEntries(const std::vector<MenuItem>& items, ordered_json& list)
{
    for (const MenuItem& item : items) {
        list.push_back(encode(item));
        appendEntries(item.submenu, list);
    }
}

void validate(std::vector<MenuItem>& items, MenuDelegate& delegate)
{
    for (MenuItem& item : items) {
        item.enabled = delegate.validateMenuItem(item);
        validate(item.submenu, delegate);
    }
}

MenuItem* find(std::vector<MenuItem>& items, const MenuInteraction& interaction)
{
    for (MenuItem& item : items) {
        if (item.action == interaction.chosenAction && (!interaction.tag || item.tag == *interaction.tag))
            return &item;
        if (MenuItem* inSubmenu = find(item.submenu, interaction))
            return inSubmenu;
    }
    return nullptr;
}

} // namespace

void ScriptedStatusBar::installStatusItem(const std::string&, Menu& menu, MenuDelegate& delegate)
{
    menu_ = &menu;
    delegate_ = &delegate;
}

void ScriptedStatusBar::updateStatusItem(const StatusItemAppearance& appearance)
{
    if (changesWhatTheTraceShows(appearance_, appearance)) {
        trace_.write("statusItem",
            { { "appearsDisabled", appearance.appearsDisabled }, { "visible", appearance.visible },
                { "title", appearance.title } });
    }
    appearance_ = appearance;
}

void ScriptedStatusBar::holdKeys(const ModifierKeys& keys)
{
    modifierFlags_ = (keys.shift ? ModifierFlag::shift : 0) | (keys.control ? ModifierFlag::control : 0)
        | (keys.option ? ModifierFlag::option : 0) | (keys.command ? ModifierFlag::command : 0);
}

void ScriptedStatusBar::useMenu(const MenuInteraction& interaction)
{
    if (!menu_ || !delegate_)
        return;
    delegate_->menuWillOpen(*menu_);
    validate(menu_->items, *delegate_);
    traceMenu();
    std::optional<MenuItem> chosen;
    if (interaction.chosenAction) {
        MenuItem* entry = find(menu_->items, interaction);
        if (entry && entry->enabled && !entry->hidden)
            chosen = *entry;
        else
            platform().log().warning("The menu has no enabled entry with the action " + *interaction.chosenAction);
    }
    delegate_->menuDidClose(*menu_);
    if (chosen)
        delegate_->performAction(*chosen);
}

void ScriptedStatusBar::traceMenu() const
{
    ordered_json items = ordered_json::array();
    appendEntries(menu_->items, items);
    trace_.write("menu", { { "items", std::move(items) } });
}

} // namespace vardel::scripted
