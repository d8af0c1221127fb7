#include "platform/linux/InotifyFileEventStream.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <map>
#include <sstream>
#include <sys/inotify.h>
#include <unistd.h>

namespace vardel::linux_desktop {

namespace {

constexpr uint32_t watchedChanges
    = IN_CREATE | IN_DELETE | IN_MODIFY | IN_ATTRIB | IN_MOVED_FROM | IN_MOVED_TO | IN_DELETE_SELF | IN_MOVE_SELF;

std::string withoutTrailingSlashes(std::string path)
{
    while (path.size() > 1 && path.back() == '/')
        path.pop_back();
    return path;
}

std::string childPath(const std::string& folder, const char* name)
{
    return folder == "/" ? "/" + std::string(name) : folder + "/" + name;
}

bool isAtOrBelow(const std::string& path, const std::string& folder)
{
    return path == folder || (path.starts_with(folder) && path.size() > folder.size() && path[folder.size()] == '/');
}

} // namespace

// Shared with the latency timer and the descriptor's callback, which may outlive the stream.
struct InotifyFileEventStream::State : std::enable_shared_from_this<State> {
    struct Watch {
        std::string path;
        bool isRoot = false;
    };
    struct PendingFolder {
        uint64_t eventId = 0;
        uint32_t flags = 0;
    };

    State(RunLoop& loop, std::vector<std::string> paths, double latency, Callback report)
        : fileDescriptor(inotify_init1(IN_NONBLOCK | IN_CLOEXEC))
        , runLoop(loop)
        , latencySeconds(latency)
        , callback(std::move(report))
    {
        for (auto& path : paths)
            roots.push_back(withoutTrailingSlashes(std::move(path)));
    }

    ~State()
    {
        if (fileDescriptor >= 0)
            close(fileDescriptor);
    }

    int fileDescriptor;
    RunLoop& runLoop;
    std::vector<std::string> roots;
    double latencySeconds;
    Callback callback;
    bool running = false;
    std::map<int, Watch> watches;
    // Roots that were removed or moved away, to watch again when a folder stands there.
    std::vector<std::string> lostRoots;
    // The batch being collected, in the order the folders first changed.
    std::vector<std::string> pendingOrder;
    std::map<std::string, PendingFolder> pending;
    uint64_t lastEventId = 0;
    // Counts batches, so that a scheduled delivery of a batch already flushed does nothing.
    uint64_t batch = 0;
    bool deliveryScheduled = false;

    bool addWatch(const std::string& path, bool isRoot)
    {
        uint32_t mask = watchedChanges | IN_ONLYDIR | (isRoot ? 0 : IN_DONT_FOLLOW);
        int watch = inotify_add_watch(fileDescriptor, path.c_str(), mask);
        if (watch < 0)
            return false;
        watches.insert_or_assign(watch, Watch { path, isRoot });
        return true;
    }

    // The folder and every folder below it that can be read; a folder that vanishes meanwhile is
    // simply not watched.
    bool addWatchTree(const std::string& path, bool isRoot)
    {
        if (!addWatch(path, isRoot))
            return false;
        std::error_code error;
        std::filesystem::recursive_directory_iterator entries(
            path, std::filesystem::directory_options::skip_permission_denied, error);
        for (auto end = std::filesystem::end(entries); !error && entries != end; entries.increment(error)) {
            if (entries->is_directory(error) && !entries->is_symlink(error))
                addWatch(entries->path().string(), false);
        }
        return true;
    }

    void removeWatchesAt(const std::string& path)
    {
        std::erase_if(watches, [&](const auto& entry) {
            if (!isAtOrBelow(entry.second.path, path))
                return false;
            inotify_rm_watch(fileDescriptor, entry.first);
            return true;
        });
    }

    void removeAllWatches()
    {
        for (const auto& [watch, unused] : watches)
            inotify_rm_watch(fileDescriptor, watch);
        watches.clear();
    }

    void note(const std::string& folder, uint32_t flags)
    {
        auto [entry, added] = pending.try_emplace(folder);
        if (added) {
            entry->second.eventId = ++lastEventId;
            pendingOrder.push_back(folder);
        }
        entry->second.flags |= flags;
        if (!deliveryScheduled)
            scheduleDelivery(latencySeconds);
    }

    void scheduleDelivery(double delaySeconds);

    void readAvailable()
    {
        // Aligned for the kernel's records, and large enough for several with long names.
        alignas(inotify_event) std::array<char, std::size_t { 16 } * 1024> buffer;
        while (fileDescriptor >= 0) {
            ssize_t length = read(fileDescriptor, buffer.data(), buffer.size());
            if (length <= 0)
                return;
            for (ssize_t offset = 0; offset < length;) {
                const auto* event = reinterpret_cast<const inotify_event*>(buffer.data() + offset);
                if (running)
                    handle(*event);
                offset += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
            }
        }
    }

    void handle(const inotify_event& event)
    {
        if (event.mask & IN_Q_OVERFLOW) {
            for (const auto& root : roots)
                note(root, FileSystemEventFlag::mustScanSubDirs | FileSystemEventFlag::kernelDropped);
            return;
        }
        auto found = watches.find(event.wd);
        if (found == watches.end())
            return;
        Watch watch = found->second;
        if (event.mask & IN_IGNORED) {
            watches.erase(found);
        } else if (event.mask & IN_UNMOUNT) {
            note(watch.path, FileSystemEventFlag::unmount);
        } else if (event.mask & (IN_DELETE_SELF | IN_MOVE_SELF)) {
            // A sub-folder's removal is reported by its parent; only a root reports itself.
            if (watch.isRoot)
                loseRoot(watch.path);
        } else {
            note(watch.path, folderChange(watch.path, event));
        }
    }

    uint32_t folderChange(const std::string& folder, const inotify_event& event)
    {
        if (!(event.mask & IN_ISDIR) || event.len == 0)
            return FileSystemEventFlag::none;
        std::string child = childPath(folder, event.name);
        if (event.mask & (IN_CREATE | IN_MOVED_TO)) {
            addWatchTree(child, false);
            return FileSystemEventFlag::mustScanSubDirs;
        }
        if (event.mask & IN_MOVED_FROM)
            removeWatchesAt(child);
        return FileSystemEventFlag::none;
    }

    void loseRoot(const std::string& root)
    {
        // The watches below it follow the moved folder, whose paths they no longer know.
        removeWatchesAt(root);
        if (std::find(lostRoots.begin(), lostRoots.end(), root) == lostRoots.end())
            lostRoots.push_back(root);
        note(root, FileSystemEventFlag::rootChanged);
    }

    void watchLostRootsAgain()
    {
        std::erase_if(lostRoots, [&](const std::string& root) { return addWatchTree(root, true); });
    }

    void deliver()
    {
        ++batch;
        deliveryScheduled = false;
        watchLostRootsAgain();
        if (pendingOrder.empty())
            return;
        std::vector<FileSystemEvent> events;
        for (const auto& folder : pendingOrder) {
            const PendingFolder& change = pending.at(folder);
            events.push_back({ change.eventId, folder, change.flags });
        }
        pendingOrder.clear();
        pending.clear();
        callback(events);
    }

    void dropPending()
    {
        pendingOrder.clear();
        pending.clear();
        lostRoots.clear();
        ++batch;
        deliveryScheduled = false;
    }
};

void InotifyFileEventStream::State::scheduleDelivery(double delaySeconds)
{
    deliveryScheduled = true;
    // The stream and its state may be gone when the timer fires.
    runLoop.schedule(delaySeconds, [weak = weak_from_this(), expected = batch] {
        auto state = weak.lock();
        if (state && state->running && state->batch == expected)
            state->deliver();
    });
}

InotifyFileEventStream::InotifyFileEventStream(RunLoop& runLoop, std::vector<std::string> paths, double latencySeconds,
    Callback callback, ReadableSourceHooks hooks)
    : state_(std::make_shared<State>(runLoop, std::move(paths), latencySeconds, std::move(callback)))
    , hooks_(std::move(hooks))
{
    if (state_->fileDescriptor >= 0 && hooks_.add) {
        hooks_.add(state_->fileDescriptor, [weak = std::weak_ptr<State>(state_)] {
            if (auto state = weak.lock())
                state->readAvailable();
        });
    }
}

InotifyFileEventStream::~InotifyFileEventStream()
{
    if (state_->fileDescriptor >= 0 && hooks_.remove)
        hooks_.remove(state_->fileDescriptor);
}

int InotifyFileEventStream::fileDescriptor() const
{
    return state_->fileDescriptor;
}

void InotifyFileEventStream::readAvailableEvents()
{
    // The callback may destroy this stream; the state lives until the reading is over.
    auto state = state_;
    state->readAvailable();
}

bool InotifyFileEventStream::start()
{
    if (state_->fileDescriptor < 0 || state_->running)
        return false;
    state_->running = true;
    bool watching = false;
    for (const auto& root : state_->roots)
        watching = state_->addWatchTree(root, true) || watching;
    return watching;
}

void InotifyFileEventStream::stop()
{
    state_->running = false;
    state_->removeAllWatches();
    state_->dropPending();
}

void InotifyFileEventStream::flushSync()
{
    auto state = state_;
    state->readAvailable();
    if (state->running)
        state->deliver();
}

void InotifyFileEventStream::flushAsync()
{
    if (!state_->running)
        return;
    ++state_->batch;
    state_->scheduleDelivery(0);
}

std::string InotifyFileEventStream::description() const
{
    std::ostringstream text;
    text << "InotifyFileEventStream { paths = (";
    for (size_t index = 0; index < state_->roots.size(); ++index)
        text << (index ? ", " : "") << '"' << state_->roots[index] << '"';
    text << "), latency = " << state_->latencySeconds << ", since = now, " << (state_->running ? "running" : "stopped")
         << ", watched folders = " << state_->watches.size() << ", pending = " << state_->pendingOrder.size() << " }";
    return text.str();
}

} // namespace vardel::linux_desktop
