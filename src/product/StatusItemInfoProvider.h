#pragma once

#include "platform/StatusBar.h"
#include "platform/Value.h"

#include <functional>
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

// Draws the status item and its information lines: today's recorded time as the item's title and
// on its line, the running timer on the task line.
class StatusItemInfoProvider {
public:
    struct Sources {
        // Seconds of activity recorded in [from, to).
        std::function<double(Date from, Date to)> recordedSeconds;
        // The sync status line; none while unknown.
        std::function<std::optional<std::string>()> syncStatusTitle;
    };

    static StatusItemInfoProvider& sharedInstance();

    void setPresenter(StatusItemPresenter* presenter) { presenter_ = presenter; }
    void setSources(Sources sources) { sources_ = std::move(sources); }

    void updateStatusItem(StatusItemAppearance&, MenuItem* productivityScoreMenuItem, MenuItem* taskInfoMenuItem);
    // Asks the presenter, on the run loop, to update the item's properties; several requests before
    // it runs are served once.
    void dispatchStatusUpdateRequest(bool immediately);
    void setStatusItemHighlighted(bool highlighted) { highlighted_ = highlighted; }
    bool isStatusItemHighlighted() const { return highlighted_; }
    // Hands the current sync status to the presenter.
    void prepareSyncStatusMenuItem();

private:
    std::optional<double> todaysTotalSeconds() const;

    StatusItemPresenter* presenter_ = nullptr;
    Sources sources_;
    bool highlighted_ = false;
    bool updatePending_ = false;
};

} // namespace vardel
