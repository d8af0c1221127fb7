#pragma once

#include "platform/ScheduledTimer.h"
#include "platform/StatusBar.h"
#include "platform/Value.h"

#include <optional>
#include <string>

namespace vardel {

// What the status item draws on, as the tracker application offers it.
class StatusItemPresenter {
public:
    virtual ~StatusItemPresenter() = default;
    virtual void updateStatusItemProperties() = 0;
    virtual void updateSyncStatusItemWithTitle(const std::optional<std::string>& title) = 0;
};

// Draws the status item and its information lines: today's recorded time (from the activity store)
// as the item's title and on its line, the running timer on the task line.
class StatusItemInfoProvider {
public:
    static StatusItemInfoProvider& sharedInstance();

    void setPresenter(StatusItemPresenter* presenter) { presenter_ = presenter; }

    void updateStatusItem(StatusItemAppearance&, MenuItem* productivityScoreMenuItem, MenuItem* taskInfoMenuItem);
    // Asks the presenter, on the run loop, to update the item's properties; several requests before
    // it runs are served once.
    void dispatchStatusUpdateRequest(bool immediately);
    void setStatusItemHighlighted(bool highlighted) { highlighted_ = highlighted; }
    bool isStatusItemHighlighted() const { return highlighted_; }
    // Hands the sync status to the presenter once it is known; until then the line stays as it is.
    void prepareSyncStatusMenuItem();

private:
    std::optional<double> todaysTotalSeconds() const;

    StatusItemPresenter* presenter_ = nullptr;
    bool highlighted_ = false;
    ScheduledTimer pendingUpdate_;
};

} // namespace vardel
