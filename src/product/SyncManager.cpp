#include "product/SyncManager.h"

#include "platform/Platform.h"
#include "product/DatabaseWrapper.h"

namespace vardel {

void SyncManager::dispatchSyncRequestWithDelay(double seconds)
{
    std::erase_if(pendingRequests_, [](const ScheduledTimer& request) { return !request.isPending(); });
    pendingRequests_.emplace_back(seconds, [this] { synchronize(); });
}

void SyncManager::synchronize()
{
    ActivityWriter* writer = DatabaseWrapper::sharedInstance().activityWriter();
    if (!writer)
        return;
    writer->flush();
    PostSyncUpdater* updater = writer->postSyncUpdater();
    if (!updater) {
        setStatusTitle(upToDateTitle);
        return;
    }
    updater->updateAfterSync([this, alive = std::weak_ptr<bool>(alive_)](const PostSyncUpdater::Result& result) {
        if (!alive.lock())
            return;
        if (result.ok()) {
            setStatusTitle(upToDateTitle);
            return;
        }
        platform().log().warning("The update after a sync failed: " + result.error().message);
        setStatusTitle(failedTitlePrefix + result.error().message);
    });
}

void SyncManager::setStatusTitle(std::optional<std::string> title)
{
    statusTitle_ = std::move(title);
    if (statusTitleHandler_)
        statusTitleHandler_(statusTitle_);
}

} // namespace vardel
