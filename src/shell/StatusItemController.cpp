#include "shell/StatusItemController.h"

#include "platform/Platform.h"
#include "product/HelperPreferences.h"
#include "product/StatusItemInfoProvider.h"
#include "shell/StatusMenuResource.h"

namespace vardel {

namespace {

constexpr double defaultMaxStatusItemWidth = 200;
constexpr double appearanceChangeThrottleSeconds = 10;

bool defaultsFlag(std::string_view key)
{
    return platform().standardUserDefaults().getBool(key).value_or(false);
}

} // namespace

StatusItemController::StatusItemController(InfoLogger& infoLogger)
    : infoLogger_(infoLogger)
    , statusMenu_(StatusMenuResource::load())
{
}

void StatusItemController::install(MenuDelegate& menuDelegate)
{
    double maxWidth = platform().standardUserDefaults().getDouble("VDHelperAppDelegate_maxStatusItemWidth").value_or(0);
    if (maxWidth == 0)
        maxWidth = defaultMaxStatusItemWidth;
    if (maxWidth >= 0)
        statusItem_.maxWidth = maxWidth;
    std::string identifier = platform().currentProcess().mainBundle.bundleIdentifier.value_or("");
    platform().statusBar().installStatusItem(identifier + ".mainStatusItem", statusMenu_, menuDelegate);
    platform().statusBar().observeAppearanceChanges([this] { effectiveAppearanceChanged(); });
}

void StatusItemController::updateStatusItemTransparency()
{
    statusItem_.appearsDisabled = !infoLogger_.appearsActive();
    platform().statusBar().updateStatusItem(statusItem_);
}

void StatusItemController::updateStatusItemProperties()
{
    StatusItemInfoProvider::sharedInstance().updateStatusItem(
        statusItem_, menuEntry("totalTimeSpentToday:"), menuEntry("showCurrentTaskInfo:"));
    platform().statusBar().updateStatusItem(statusItem_);
    updateStatusItemVisibility();
}

void StatusItemController::updateSyncStatusItemWithTitle(const std::optional<std::string>& title)
{
    MenuItem* item = menuEntry("syncStatus:");
    if (!item)
        return;
    bool shown = shouldShowSyncStatusItem() && title;
    item->hidden = !shown;
    item->title = shown ? *title : "";
}

void StatusItemController::updateStatusItemVisibility()
{
    bool visible = HelperPreferences::statusItemVisible();
    if (statusItem_.visible == visible)
        return;
    statusItem_.visible = visible;
    platform().statusBar().updateStatusItem(statusItem_);
}

bool StatusItemController::shouldShowSyncStatusItem()
{
    return defaultsFlag("VDHelperAppDelegate_shouldShowSyncStatusItem");
}

void StatusItemController::effectiveAppearanceChanged()
{
    if (defaultsFlag("VDHelperAppDelegate_dontObserveStatusItemEffectiveAppearance"))
        return;
    Date current = platform().clock().now();
    if (lastEffectiveAppearanceChangeDispatched_
        && current.secondsSince1970 - lastEffectiveAppearanceChangeDispatched_->secondsSince1970
            <= appearanceChangeThrottleSeconds)
        return;
    StatusItemInfoProvider::sharedInstance().dispatchStatusUpdateRequest(false);
    lastEffectiveAppearanceChangeDispatched_ = current;
}

MenuItem* StatusItemController::menuEntry(std::string_view action)
{
    for (MenuItem& item : statusMenu_.items) {
        if (item.action == action)
            return &item;
    }
    return nullptr;
}

} // namespace vardel
