#include "shell/SCEvents.h"

#include "platform/Platform.h"
#include "platform/ProcessWide.h"

namespace vardel {

namespace {

// A list as "("a", "b")", and a missing one as "(null)".
std::string describeList(const std::optional<std::vector<std::string>>& list)
{
    if (!list)
        return "(null)";
    std::string text = "(";
    for (size_t index = 0; index < list->size(); ++index)
        text += (index ? ", \"" : "\"") + (*list)[index] + "\"";
    return text + ")";
}

} // namespace

SCEvents& SCEvents::sharedPathWatcher()
{
    static ProcessWide<std::unique_ptr<SCEvents>> shared([] { return std::unique_ptr<SCEvents>(new SCEvents); });
    return *shared.get();
}

SCEvents::~SCEvents()
{
    delegate_ = nullptr;
    stopWatchingPaths();
}

bool SCEvents::startWatchingPaths(std::vector<std::string> paths)
{
    if (paths.empty() || isWatchingPaths())
        return false;
    watchedPaths_ = std::move(paths);
    createEventStream();
    if (!stream_->start())
        platform().log().warning("The file-system event stream could not watch " + describeList(watchedPaths_));
    return true;
}

bool SCEvents::stopWatchingPaths()
{
    if (!isWatchingPaths())
        return false;
    // Cleared before the stream goes, so that a delegate called meanwhile sees the watcher stopped.
    auto stream = std::move(stream_);
    stream->stop();
    return true;
}

void SCEvents::flushEventStreamSync()
{
    if (stream_)
        stream_->flushSync();
}

void SCEvents::flushEventStreamAsync()
{
    if (stream_)
        stream_->flushAsync();
}

std::string SCEvents::streamDescription() const
{
    if (!stream_)
        return "The event stream is not running. Start it by calling: startWatchingPaths:";
    return stream_->description();
}

std::string SCEvents::description() const
{
    return "<SCEvents { watchedPaths = " + describeList(watchedPaths_)
        + ", excludedPaths = " + describeList(excludedPaths_) + " } >";
}

void SCEvents::createEventStream()
{
    stream_.reset();
    stream_ = platform().fileEventStreams().create(
        watchedPaths_, notificationLatency_, [this](const std::vector<FileSystemEvent>& batch) { reportBatch(batch); });
}

void SCEvents::reportBatch(const std::vector<FileSystemEvent>& batch)
{
    for (size_t index = 0; index < batch.size(); ++index) {
        const FileSystemEvent& reported = batch[index];
        if (isExcluded(reported.path))
            continue;
        std::string path = reported.path;
        if (path.ends_with('/'))
            path.pop_back();
        SCEvent event = SCEvent::eventWithEventId(reported.eventId, platform().clock().now(), path, reported.flags);
        if (delegate_)
            delegate_->pathWatcher(*this, event);
        if (index + 1 == batch.size())
            lastEvent_ = std::move(event);
    }
}

// An exact match always excludes; a plain prefix does when events from sub-folders are ignored, so
// "/a/b" also excludes "/a/bc".
bool SCEvents::isExcluded(const std::string& path) const
{
    if (!excludedPaths_)
        return false;
    for (const auto& excluded : *excludedPaths_) {
        if (path == excluded)
            return true;
    }
    if (!ignoreEventsFromSubDirs_)
        return false;
    for (const auto& excluded : *excludedPaths_) {
        if (path.starts_with(excluded))
            return true;
    }
    return false;
}

} // namespace vardel
