#pragma once

#include "platform/ScheduledTimer.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vardel {

// Synchronises the product database. This build has no sync server: a synchronisation writes
// what the activity writer holds, runs the step after a sync and reports the outcome as the sync
// status title.
class SyncManager {
public:
    static constexpr const char* upToDateTitle = "Up to date";
    static constexpr const char* failedTitlePrefix = "Sync failed: ";

    using StatusTitleHandler = std::function<void(const std::optional<std::string>&)>;

    // Synchronises on the run loop after the delay, when the database is available; otherwise
    // nothing happens.
    void dispatchSyncRequestWithDelay(double seconds);

    // What the sync status line shows; nothing before the first synchronisation.
    const std::optional<std::string>& statusTitle() const { return statusTitle_; }
    // Called with the new title each time a synchronisation ends.
    void setStatusTitleHandler(StatusTitleHandler handler) { statusTitleHandler_ = std::move(handler); }

private:
    void synchronize();
    void setStatusTitle(std::optional<std::string>);

    std::optional<std::string> statusTitle_;
    StatusTitleHandler statusTitleHandler_;
    // Each request synchronises once; the requests end with this manager.
    std::vector<ScheduledTimer> pendingRequests_;
    // An update after a sync that ends when this manager is gone must not reach it.
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

} // namespace vardel
