#include "product/OngoingTaskActivityManager.h"

#include "platform/Platform.h"
#include "product/DatabaseWrapper.h"

#include <algorithm>

namespace vardel {

std::optional<double> OngoingTaskActivityManager::elapsedSeconds(Date now) const
{
    auto running = runningActivity();
    if (!running)
        return std::nullopt;
    return std::max(0.0, now.secondsSince1970 - running->since.secondsSince1970);
}

namespace {

constexpr const char* fileLabel = "OngoingTaskActivityManager.cpp";
// How far back the latest entry is looked for when no timer runs.
constexpr double latestEntrySearchSeconds = 14 * 86400;

Date now()
{
    return platform().clock().now();
}

} // namespace

void OngoingTaskActivityManager::showEditorToStartTaskActivity()
{
    Date start = now();
    TimeEntryProposal proposal { "Start Timer", start, start, "", std::nullopt };
    // The editor answers later, when the manager (a short-lived view of the source) is long gone.
    platform().timeEntryEditor().present(proposal, [&source = source_](const TimeEntryProposal& saved) {
        source.startTimer({ saved.title, now() });
    });
}

void OngoingTaskActivityManager::stopRunningActivityWithShowNotification(bool showNotification, bool autoStopped)
{
    auto running = runningActivity();
    if (!running)
        return;
    TaskActivityDescriptor entry { running->since, now(), running->title, std::nullopt };
    if (Database* database = DatabaseWrapper::sharedInstance().database()) {
        database->mutateOrPresentError(fileLabel, __LINE__,
            [&](DatabaseTransaction& transaction) { return transaction.createTaskActivity(entry, false); });
    }
    source_.stopTimer();
    platform().log().info(std::string("Timer stopped") + (autoStopped ? " automatically" : "")
        + (showNotification ? "" : " without a notification"));
}

void OngoingTaskActivityManager::editRunningOrLatestTask()
{
    auto running = runningActivity();
    if (!running) {
        editLatestEntry();
        return;
    }
    TimeEntryProposal proposal { "Edit Running Timer", running->since, now(), running->title, std::nullopt };
    platform().timeEntryEditor().present(
        proposal, [&source = source_, since = running->since](const TimeEntryProposal& saved) {
            source.startTimer({ saved.title, since });
        });
}

void OngoingTaskActivityManager::editLatestEntry()
{
    Database* database = DatabaseWrapper::sharedInstance().database();
    if (!database)
        return;
    Date end = now();
    auto entries = database->entriesInRange(Date { end.secondsSince1970 - latestEntrySearchSeconds }, end);
    if (!entries.ok() || entries.value().empty())
        return;
    TaskActivity latest = entries.value().back();
    const TaskActivityDescriptor& saved = latest.descriptor;
    TimeEntryProposal proposal { "Edit Time Entry", saved.start, saved.end, saved.title, saved.project };
    platform().timeEntryEditor().present(proposal, [latest](const TimeEntryProposal& edited) {
        Database* database = DatabaseWrapper::sharedInstance().database();
        if (!database)
            return;
        TaskActivityDescriptor changed { edited.start, edited.end, edited.title, edited.project };
        database->mutateOrPresentError(fileLabel, __LINE__,
            [&](DatabaseTransaction& transaction) { return transaction.updateTaskActivity(latest, changed, false); });
    });
}

void OngoingTaskActivityManager::updateEditRunningOrLatestTaskMenuItem(MenuItem& item) const
{
    item.title = hasRunningActivity() ? "Edit Running Timer…" : "Edit Latest Timer…";
}

} // namespace vardel
