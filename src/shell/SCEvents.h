#pragma once

#include "platform/FileEventStream.h"
#include "shell/SCEvent.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vardel {

class SCEvents;

class SCEventListenerProtocol {
public:
    virtual void pathWatcher(SCEvents& watcher, const SCEvent& event) = 0;

protected:
    ~SCEventListenerProtocol() = default;
};

// Watches folders through the platform's file-event stream and reports each change to its delegate.
// There is one watcher per process: it cannot be constructed, copied or moved, only reached through
// sharedPathWatcher(). The stream reports on the main run loop, the process's only thread of
// work, so the watcher needs no locking.
class SCEvents {
public:
    static SCEvents& sharedPathWatcher();

    SCEvents(const SCEvents&) = delete;
    SCEvents& operator=(const SCEvents&) = delete;
    ~SCEvents();

    // Not retained: the delegate must outlive its registration.
    SCEventListenerProtocol* delegate() const { return delegate_; }
    void setDelegate(SCEventListenerProtocol* delegate) { delegate_ = delegate; }

    bool isWatchingPaths() const { return stream_ != nullptr; }

    // Drop events below an excluded path, not only at it.
    bool ignoreEventsFromSubDirs() const { return ignoreEventsFromSubDirs_; }
    void setIgnoreEventsFromSubDirs(bool ignore) { ignoreEventsFromSubDirs_ = ignore; }

    // Used by the next start.
    double notificationLatency() const { return notificationLatency_; }
    void setNotificationLatency(double seconds) { notificationLatency_ = seconds; }

    // The last event of the last batch, when that one was reported.
    const std::optional<SCEvent>& lastEvent() const { return lastEvent_; }
    void setLastEvent(std::optional<SCEvent> event) { lastEvent_ = std::move(event); }

    const std::vector<std::string>& watchedPaths() const { return watchedPaths_; }
    void setWatchedPaths(std::vector<std::string> paths) { watchedPaths_ = std::move(paths); }

    // Nothing means none.
    const std::optional<std::vector<std::string>>& excludedPaths() const { return excludedPaths_; }
    void setExcludedPaths(std::optional<std::vector<std::string>> paths) { excludedPaths_ = std::move(paths); }

    // False, changing nothing, when the list is empty or a stream already runs. The stream reports
    // on the main run loop.
    bool startWatchingPaths(std::vector<std::string> paths);
    // False when not watching.
    bool stopWatchingPaths();
    // Pending events are delivered now, or as soon as the run loop is free; nothing when not watching.
    void flushEventStreamSync();
    void flushEventStreamAsync();

    std::string streamDescription() const;
    std::string description() const;

private:
    SCEvents() = default;

    void createEventStream();
    void reportBatch(const std::vector<FileSystemEvent>& batch);
    bool isExcluded(const std::string& path) const;

    SCEventListenerProtocol* delegate_ = nullptr;
    bool ignoreEventsFromSubDirs_ = true;
    std::unique_ptr<FileEventStream> stream_;
    double notificationLatency_ = 3.0;
    std::optional<SCEvent> lastEvent_;
    std::vector<std::string> watchedPaths_;
    std::optional<std::vector<std::string>> excludedPaths_;
};

} // namespace vardel
