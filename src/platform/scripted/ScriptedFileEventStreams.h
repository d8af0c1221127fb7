#pragma once

#include "platform/FileEventStream.h"
#include "platform/RunLoop.h"
#include "platform/scripted/Scenario.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace vardel::scripted {

// The scenario's fileEvent steps as file-event streams. Each event of a step gets the next
// identifier and goes to every running stream that watches its path (the path itself or a folder
// above it). A stream delivers its batch latency seconds after the first event that it holds, with
// every event whose step is in effect by then; events are delivered as given, never merged.
class ScriptedFileEventStreams final : public FileEventStreams {
public:
    explicit ScriptedFileEventStreams(RunLoop& runLoop)
        : runLoop_(runLoop)
    {
    }

    std::unique_ptr<FileEventStream> create(
        std::vector<std::string> paths, double latencySeconds, FileEventStream::Callback callback) override;

    // The events of a timeline step, at the step's time.
    void report(const std::vector<FileEvent>& events);

    struct StreamState;

private:
    RunLoop& runLoop_;
    uint64_t lastEventId_ = 0;
    // Streams hold their state; a destroyed stream's entry expires and is dropped on the next report.
    std::vector<std::weak_ptr<StreamState>> streams_;
};

} // namespace vardel::scripted
