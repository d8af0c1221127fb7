#include "product/StatusItemInfoProvider.h"

#include "platform/Platform.h"
#include "platform/ProcessWide.h"
#include "product/DatabaseWrapper.h"
#include "product/DurationFormatter.h"
#include "product/LocalCalendar.h"
#include "product/OngoingTaskActivityManager.h"

namespace vardel {

namespace {

ProcessWide<StatusItemInfoProvider> sharedProvider([] { return StatusItemInfoProvider(); });

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
    auto total = database->totalActivitySecondsBetween(LocalCalendar::startOfDay(now), now);
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
    if (pendingUpdate_.isPending())
        return;
    pendingUpdate_ = ScheduledTimer(0, [this] {
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
