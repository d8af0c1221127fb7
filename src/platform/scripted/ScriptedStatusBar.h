#pragma once

#include "platform/EventTrace.h"
#include "platform/StatusBar.h"
#include "platform/scripted/Scenario.h"

#include <optional>
#include <string>

namespace vardel::scripted {

// The status item as the scenario's `menu` steps use it. Appearance changes are traced as
// `statusItem` events, each opening of the menu as a `menu` event.
class ScriptedStatusBar final : public StatusBar {
public:
    explicit ScriptedStatusBar(EventTrace& trace)
        : trace_(trace)
    {
    }

    void installStatusItem(const std::string& autosaveName, Menu&, MenuDelegate&) override;
    void updateStatusItem(const StatusItemAppearance&) override;
    uint64_t currentModifierFlags() override { return modifierFlags_; }
    void observeAppearanceChanges(std::function<void()> observer) override
    {
        appearanceObserver_ = std::move(observer);
    }

    // The keys held from now on.
    void holdKeys(const ModifierKeys&);
    // Opens the menu as the user would, and chooses an entry when the interaction names one. A
    // hidden or disabled entry cannot be chosen; that is logged as a warning. Without a status
    // item nothing happens.
    void useMenu(const MenuInteraction&);
    // The desktop's look changes, for tests: the observer hears of it.
    void changeAppearance() const
    {
        if (appearanceObserver_)
            appearanceObserver_();
    }

    const std::optional<StatusItemAppearance>& appearance() const { return appearance_; }

private:
    void traceMenu() const;
    MenuItem* findEntry(const MenuInteraction&);

    EventTrace& trace_;
    Menu* menu_ = nullptr;
    MenuDelegate* delegate_ = nullptr;
    std::optional<StatusItemAppearance> appearance_;
    uint64_t modifierFlags_ = 0;
    std::function<void()> appearanceObserver_;
};

} // namespace vardel::scripted
