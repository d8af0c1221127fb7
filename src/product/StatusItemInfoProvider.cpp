#include "product/StatusItemInfoProvider.h"

#include "platform/Platform.h"
#include "platform/ProcessWide.h"
#include "product/DatabaseWrapper.h"
#include "product/DurationFormatter.h"
#include "product/OngoingTaskActivityManager.h"

#include <cmath>
#include <ctime>

namespace vardel {

namespace {

ProcessWide<StatusItemInfoProvider> sharedProvider([] { return StatusItemInfoProvider(); });

// The start of the local day that holds the time.
Date startOfDay(Date date)
{
    std::time_t wholeSeconds = static_cast<std::time_t>(std::floor(date.secondsSince1970));
    std::tm local {};
    localtime_r(&wholeSeconds, &local);
    local.tm_hour = local.tm_min = local.tm_sec = 0;
    local.tm_isdst = -1;
    return Date { static_cast<double>(std::mktime(&local)) };
}

std::string taskLine()
{
    OngoingTaskActivityManager manager(platform().runningTasks());
    auto running = manager.runningActivity();
    if (!running)
        return "No Timer Running";
    double elapsed = manager.elapsedSeconds(platform().clock().now()).value_or(0);
    std::string title = running->title.empty() ? "Untitled Timer" : running->title;
    return title + " (" + DurationFormatter::shortStringFor(elapsed, 2, false) + ")";
}

} // namespace

StatusItemInfoProvider& StatusItemInfoProvider::sharedInstance()
{
    return sharedProvider.get();
}

std::optional<double> StatusItemInfoProvider::todaysTotalSeconds() const
{
    Database* database = DatabaseWrapper::sharedInstance().database();
    if (!database)
        return std::nullopt;
    Date now = platform().clock().now();
    auto total = database->totalActivitySecondsBetween(startOfDay(now), now);
    return total.ok() ? std::optional(total.value()) : std::nullopt;
}

void StatusItemInfoProvider::updateStatusItem(
    StatusItemAppearance& appearance, MenuItem* productivityScoreMenuItem, MenuItem* taskInfoMenuItem)
{
    appearance.highlighted = highlighted_;
    auto total = todaysTotalSeconds();
    appearance.title = total ? DurationFormatter::shortStringFor(*total, 2, false) : "";
    if (productivityScoreMenuItem)
        productivityScoreMenuItem->title = total ? "Today: " + DurationFormatter::format(*total) : "Today";
    if (taskInfoMenuItem)
        taskInfoMenuItem->title = taskLine();
}

void StatusItemInfoProvider::dispatchStatusUpdateRequest(bool immediately)
{
    if (!presenter_)
        return;
    if (immediately) {
        presenter_->updateStatusItemProperties();
        return;
    }
    if (updatePending_)
        return;
    updatePending_ = true;
    platform().runLoop().schedule(0, [this] {
        updatePending_ = false;
        if (presenter_)
            presenter_->updateStatusItemProperties();
    });
}

void StatusItemInfoProvider::prepareSyncStatusMenuItem()
{
    const auto& title = DatabaseWrapper::sharedInstance().syncManager().statusTitle();
    if (presenter_ && title)
        presenter_->updateSyncStatusItemWithTitle(title);
}

} // namespace vardel
