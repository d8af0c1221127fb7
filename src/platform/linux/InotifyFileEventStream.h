#pragma once

#include "platform/FileEventStream.h"
#include "platform/RunLoop.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace vardel::linux_desktop {

// How a stream's descriptor reaches the loop that waits for it to become readable: add is called
// once when the stream is made, remove when it goes.
struct ReadableSourceHooks {
    std::function<void(int fileDescriptor, std::function<void()> onReadable)> add;
    std::function<void(int fileDescriptor)> remove;
};

// A file-event stream over inotify. It watches each given folder and every folder below it (new
// ones as they appear; symbolic links below a watched folder are not followed) and reports the
// folder in which something was created, removed, renamed, written or had its attributes changed.
// A folder is reported once per batch, with the flags of all its changes together:
// - none: an entry of the folder changed;
// - mustScanSubDirs: a folder appeared in it (its contents may have changed before they were
//   watched), or, with kernelDropped, the kernel's queue overflowed (reported for every watched
//   folder);
// - rootChanged: a watched folder itself was removed or moved away; if a folder stands at that path
//   again when the batch is delivered, it is watched from then on;
// - unmount: the file system of the folder was unmounted.
// Identifiers count up from 1 per stream, one per reported folder and batch.
//
// It needs no particular run loop: when fileDescriptor() is readable, call readAvailableEvents()
// (the hooks do so when given). The latency timer runs on the given run loop.
class InotifyFileEventStream final : public FileEventStream {
public:
    InotifyFileEventStream(RunLoop& runLoop, std::vector<std::string> paths, double latencySeconds, Callback callback,
        ReadableSourceHooks hooks = {});
    ~InotifyFileEventStream() override;
    InotifyFileEventStream(const InotifyFileEventStream&) = delete;
    InotifyFileEventStream& operator=(const InotifyFileEventStream&) = delete;

    // The inotify descriptor (non-blocking), or -1 when the system would not give one.
    int fileDescriptor() const;
    // Reads whatever the descriptor holds without blocking.
    void readAvailableEvents();

    bool start() override;
    void stop() override;
    void flushSync() override;
    void flushAsync() override;
    std::string description() const override;

    struct State;

private:
    std::shared_ptr<State> state_;
    ReadableSourceHooks hooks_;
};

} // namespace vardel::linux_desktop
