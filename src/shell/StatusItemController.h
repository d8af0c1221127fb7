#pragma once

#include "platform/StatusBar.h"
#include "platform/Value.h"
#include "product/InfoLogger.h"

#include <optional>
#include <string>
#include <string_view>

namespace vardel {

// The status item in the menu bar and the information lines of its menu: the item's title and
// today's total, the running timer's line, the sync status line, the disabled look while tracking
// is paused, and whether the item shows at all.
class StatusItemController {
public:
    explicit StatusItemController(InfoLogger&);
    StatusItemController(const StatusItemController&) = delete;
    StatusItemController& operator=(const StatusItemController&) = delete;

    // Puts the item in the menu bar with the menu, served by the delegate; the width limit follows
    // its preference.
    void install(MenuDelegate&);

    void updateStatusItemTransparency();
    void updateStatusItemProperties();
    void updateSyncStatusItemWithTitle(const std::optional<std::string>& title);
    void updateStatusItemVisibility();
    static bool shouldShowSyncStatusItem();
    // The item's own redrawing changes its appearance, so changes are passed on at most every ten
    // seconds.
    void effectiveAppearanceChanged();

    const StatusItemAppearance& statusItem() const { return statusItem_; }

private:
    MenuItem* menuEntry(std::string_view action);

    InfoLogger& infoLogger_;
    Menu statusMenu_;
    StatusItemAppearance statusItem_;
    std::optional<Date> lastEffectiveAppearanceChangeDispatched_;
};

} // namespace vardel
