#pragma once

#include "platform/linux/InotifyFileEventStream.h"

namespace vardel::linux_desktop {

// Makes inotify streams whose descriptors go to the loop through the hooks.
class InotifyFileEventStreams final : public FileEventStreams {
public:
    InotifyFileEventStreams(RunLoop& runLoop, ReadableSourceHooks hooks)
        : runLoop_(runLoop)
        , hooks_(std::move(hooks))
    {
    }

    std::unique_ptr<FileEventStream> create(
        std::vector<std::string> paths, double latencySeconds, FileEventStream::Callback callback) override
    {
        return std::make_unique<InotifyFileEventStream>(
            runLoop_, std::move(paths), latencySeconds, std::move(callback), hooks_);
    }

private:
    RunLoop& runLoop_;
    ReadableSourceHooks hooks_;
};

} // namespace vardel::linux_desktop
