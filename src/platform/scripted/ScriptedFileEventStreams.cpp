#include "platform/scripted/ScriptedFileEventStreams.h"

#include <sstream>

namespace vardel::scripted {

namespace {

std::string_view withoutTrailingSlashes(std::string_view path)
{
    while (path.size() > 1 && path.back() == '/')
        path.remove_suffix(1);
    return path;
}

// The path itself or anything below it; "/a" does not watch "/ab".
bool isAtOrBelow(std::string_view path, std::string_view watched)
{
    path = withoutTrailingSlashes(path);
    watched = withoutTrailingSlashes(watched);
    if (watched == "/")
        return path.starts_with('/');
    return path == watched || (path.starts_with(watched) && path[watched.size()] == '/');
}

} // namespace

// Shared between the stream and its pending deliveries on the run loop, which must find out whether
// the stream still exists and whether the batch they were scheduled for was flushed meanwhile.
struct ScriptedFileEventStreams::StreamState {
    StreamState(RunLoop& loop, std::vector<std::string> watched, double latency, FileEventStream::Callback report)
        : runLoop(loop)
        , paths(std::move(watched))
        , latencySeconds(latency)
        , callback(std::move(report))
    {
    }

    RunLoop& runLoop;
    std::vector<std::string> paths;
    double latencySeconds;
    FileEventStream::Callback callback;
    bool running = false;
    std::vector<FileSystemEvent> pending;
    // Counts batches, so that a scheduled delivery of a batch already flushed does nothing.
    uint64_t batch = 0;
    bool deliveryScheduled = false;

    bool watches(const std::string& path) const
    {
        for (const auto& watched : paths) {
            if (isAtOrBelow(path, watched))
                return true;
        }
        return false;
    }

    void deliver()
    {
        ++batch;
        deliveryScheduled = false;
        if (pending.empty())
            return;
        auto events = std::move(pending);
        pending.clear();
        callback(events);
    }

    static void scheduleDelivery(const std::shared_ptr<StreamState>& state, double delaySeconds)
    {
        state->deliveryScheduled = true;
        std::weak_ptr<StreamState> weak = state;
        state->runLoop.schedule(delaySeconds, [weak, batch = state->batch] {
            auto alive = weak.lock();
            if (alive && alive->running && alive->batch == batch)
                alive->deliver();
        });
    }
};

namespace {

class ScriptedFileEventStream final : public FileEventStream {
public:
    explicit ScriptedFileEventStream(std::shared_ptr<ScriptedFileEventStreams::StreamState> state)
        : state_(std::move(state))
    {
    }

    bool start() override
    {
        state_->running = true;
        return true;
    }

    void stop() override
    {
        state_->running = false;
        state_->pending.clear();
        ++state_->batch;
        state_->deliveryScheduled = false;
    }

    void flushSync() override
    {
        // The callback may destroy this stream; the state lives until the delivery is over.
        auto state = state_;
        if (state->running)
            state->deliver();
    }

    void flushAsync() override
    {
        if (!state_->running || state_->pending.empty())
            return;
        ++state_->batch;
        ScriptedFileEventStreams::StreamState::scheduleDelivery(state_, 0);
    }

    std::string description() const override
    {
        std::ostringstream text;
        text << "ScriptedFileEventStream { paths = (";
        for (size_t index = 0; index < state_->paths.size(); ++index)
            text << (index ? ", " : "") << '"' << state_->paths[index] << '"';
        text << "), latency = " << state_->latencySeconds << ", since = now, "
             << (state_->running ? "running" : "stopped") << ", pending = " << state_->pending.size() << " }";
        return text.str();
    }

private:
    std::shared_ptr<ScriptedFileEventStreams::StreamState> state_;
};

} // namespace

std::unique_ptr<FileEventStream> ScriptedFileEventStreams::create(
    std::vector<std::string> paths, double latencySeconds, FileEventStream::Callback callback)
{
    auto state = std::make_shared<StreamState>(runLoop_, std::move(paths), latencySeconds, std::move(callback));
    streams_.push_back(state);
    return std::make_unique<ScriptedFileEventStream>(std::move(state));
}

void ScriptedFileEventStreams::report(const std::vector<FileEvent>& events)
{
    std::erase_if(streams_, [](const auto& stream) { return stream.expired(); });
    for (const auto& event : events) {
        uint64_t eventId = ++lastEventId_;
        for (const auto& weak : streams_) {
            auto stream = weak.lock();
            if (!stream || !stream->running || !stream->watches(event.path))
                continue;
            stream->pending.push_back({ eventId, event.path, event.flags });
            if (!stream->deliveryScheduled)
                StreamState::scheduleDelivery(stream, stream->latencySeconds);
        }
    }
}

} // namespace vardel::scripted
