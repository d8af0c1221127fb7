#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

namespace vardel {

// One change that a file-event stream reports: the folder in which something changed.
struct FileSystemEvent {
    // Increasing in the order the platform saw the changes.
    uint64_t eventId = 0;
    std::string path;
    uint32_t flags = 0;

    bool operator==(const FileSystemEvent&) const = default;
};

inline std::ostream& operator<<(std::ostream& stream, const FileSystemEvent& event)
{
    return stream << "{ " << event.eventId << ", \"" << event.path << "\", " << event.flags << " }";
}

// The flags a stream may set. The values are those of the desktop platform's own event stream, so
// that a flag in a scenario or a log means the same everywhere; a backend sets the ones it can tell.
namespace FileSystemEventFlag {
inline constexpr uint32_t none = 0x00;
// Changes below the path were merged or lost: everything below it must be looked at again.
inline constexpr uint32_t mustScanSubDirs = 0x01;
// Events were dropped because this process or the system fell behind.
inline constexpr uint32_t userDropped = 0x02;
inline constexpr uint32_t kernelDropped = 0x04;
// A watched folder itself was moved or removed.
inline constexpr uint32_t rootChanged = 0x20;
// A volume under a watched folder was unmounted.
inline constexpr uint32_t unmount = 0x80;
} // namespace FileSystemEventFlag

// Reports changes below a list of folders (the folders themselves and everything under them), from
// the moment it starts. The latency coalesces bursts: after a quiet period, the first change starts
// a timer of that many seconds, and everything reported until it fires is delivered as one batch.
// Batches reach the callback on the main run loop, never while another callback runs.
class FileEventStream {
public:
    using Callback = std::function<void(const std::vector<FileSystemEvent>&)>;

    virtual ~FileEventStream() = default;

    // False when the platform could not watch any of the paths; the stream then reports nothing.
    virtual bool start() = 0;
    // Drops whatever is pending; nothing is delivered after it.
    virtual void stop() = 0;
    // Delivers the pending batch now, before returning (sync) or as soon as the run loop is free
    // (async), instead of waiting for the latency.
    virtual void flushSync() = 0;
    virtual void flushAsync() = 0;
    // A text that describes the stream for logs and support.
    virtual std::string description() const = 0;
};

class FileEventStreams {
public:
    virtual ~FileEventStreams() = default;

    // A stream that is not started yet. Destroy it while the platform's run loop still exists (the
    // scripted desktop's streams are safe to destroy later too).
    virtual std::unique_ptr<FileEventStream> create(
        std::vector<std::string> paths, double latencySeconds, FileEventStream::Callback callback)
        = 0;
};

} // namespace vardel
