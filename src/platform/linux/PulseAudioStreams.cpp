#include "platform/linux/PulseAudioStreams.h"

#include "platform/linux/AudioStreamList.h"
#include "platform/linux/ProcessAncestry.h"
#include "platform/linux/RetryDelays.h"

#include <charconv>
#include <cstring>
#include <pulse/pulseaudio.h>
#include <set>
#include <thread>

namespace vardel::linux_desktop {

namespace {

// A lost server is tried again soon; one that is not there at all, less and less often.
constexpr auto firstReconnectDelay = std::chrono::seconds(2);
constexpr auto longestReconnectDelay = std::chrono::seconds(30);
constexpr const char* clientName = "Vardel Tracker";

struct MainloopDeleter {
    void operator()(pa_threaded_mainloop* mainloop) const
    {
        pa_threaded_mainloop_stop(mainloop);
        pa_threaded_mainloop_free(mainloop);
    }
};
struct ContextDeleter {
    void operator()(pa_context* context) const
    {
        pa_context_set_state_callback(context, nullptr, nullptr);
        pa_context_set_subscribe_callback(context, nullptr, nullptr);
        pa_context_disconnect(context);
        pa_context_unref(context);
    }
};
using MainloopHandle = std::unique_ptr<pa_threaded_mainloop, MainloopDeleter>;
using ContextHandle = std::unique_ptr<pa_context, ContextDeleter>;

// Requests whose answers arrive through callbacks: the operation itself is not kept.
void release(pa_operation* operation)
{
    if (operation)
        pa_operation_unref(operation);
}

// Holds the threaded main loop's lock for a scope on another thread.
class MainloopLock {
public:
    explicit MainloopLock(pa_threaded_mainloop* mainloop)
        : mainloop_(mainloop)
    {
        pa_threaded_mainloop_lock(mainloop_);
    }
    ~MainloopLock() { pa_threaded_mainloop_unlock(mainloop_); }
    MainloopLock(const MainloopLock&) = delete;
    MainloopLock& operator=(const MainloopLock&) = delete;

private:
    pa_threaded_mainloop* mainloop_;
};

std::optional<ProcessIdentifier> processOf(const pa_proplist* properties)
{
    const char* text = pa_proplist_gets(properties, PA_PROP_APPLICATION_PROCESS_ID);
    if (!text)
        return std::nullopt;
    ProcessIdentifier pid = 0;
    auto [end, error] = std::from_chars(text, text + std::strlen(text), pid);
    if (error != std::errc() || *end != '\0' || pid <= 0)
        return std::nullopt;
    return pid;
}

std::string textOf(const pa_proplist* properties, const char* key)
{
    const char* text = pa_proplist_gets(properties, key);
    return text ? text : "";
}

// Level meters open their streams with peak detection, which the server shows as "peaks"
// resampling.
bool resamplesToPeaks(const char* resampleMethod)
{
    return resampleMethod && std::strcmp(resampleMethod, "peaks") == 0;
}

} // namespace

struct PulseAudioStreams::Client {
    Now now;
    ProcessAncestry ancestry;
    MainloopHandle mainloop { pa_threaded_mainloop_new() };
    // Everything below is touched on the main loop's thread, or under its lock.
    ContextHandle context;
    pa_time_event* reconnectTimer = nullptr;
    RetryDelays reconnectDelays { firstReconnectDelay, longestReconnectDelay };
    AudioStreamList streams;
    uint64_t generation = 0;
    std::set<uint32_t> monitorSources;
    bool connected = false;
    // The first answer is in: the server's streams were listed, or it could not be reached.
    bool settled = false;
    bool unreachableReported = false;
    std::vector<std::string> notices;

    explicit Client(Now clock)
        : now(std::move(clock))
    {
    }

    pa_mainloop_api* api() { return pa_threaded_mainloop_get_api(mainloop.get()); }

    void connect()
    {
        context.reset(pa_context_new(api(), clientName));
        if (!context)
            return armReconnect();
        pa_context_set_state_callback(context.get(), onState, this);
        pa_context_set_subscribe_callback(context.get(), onEvent, this);
        if (pa_context_connect(context.get(), nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0)
            lost();
    }

    void lost()
    {
        streams.clear();
        ++generation;
        monitorSources.clear();
        if (connected)
            notices.emplace_back("Lost the audio server: calls are recognised again once it is back");
        else if (!unreachableReported)
            notices.emplace_back("No audio server is reachable: microphones and speakers in use are not seen");
        unreachableReported = true;
        connected = false;
        settled = true;
        armReconnect();
    }

    void armReconnect()
    {
        if (reconnectTimer)
            return;
        auto delay = reconnectDelays.failed(RetryDelays::Clock::now());
        timeval due {};
        pa_timeval_add(pa_gettimeofday(&due),
            static_cast<pa_usec_t>(std::chrono::duration_cast<std::chrono::microseconds>(delay).count()));
        reconnectTimer = api()->time_new(api(), &due, onReconnectDue, this);
    }

    void ready()
    {
        connected = true;
        unreachableReported = false;
        reconnectDelays.succeeded();
        notices.emplace_back("Watching the audio server's streams for calls");
        auto mask = static_cast<pa_subscription_mask_t>(
            PA_SUBSCRIPTION_MASK_SINK_INPUT | PA_SUBSCRIPTION_MASK_SOURCE_OUTPUT | PA_SUBSCRIPTION_MASK_SOURCE);
        release(pa_context_subscribe(context.get(), mask, nullptr, nullptr));
        // The server answers in order: the sources, which tell monitors apart, come first.
        release(pa_context_get_source_info_list(context.get(), onSource, this));
        release(pa_context_get_sink_input_info_list(context.get(), onSinkInput, this));
        release(pa_context_get_source_output_info_list(context.get(), onSourceOutput, this));
        // Answered after the lists above.
        release(pa_context_get_server_info(context.get(), onListed, this));
    }

    void take(AudioStream stream)
    {
        if (stream.pid && !streams.knowsAncestryOf(stream.direction, stream.index))
            stream.ancestry = ancestry.lineOf(*stream.pid);
        streams.update(std::move(stream), now());
        ++generation;
    }

    void removed(AudioStream::Direction direction, uint32_t index)
    {
        streams.remove(direction, index);
        ++generation;
    }

    static void onListed(pa_context*, const pa_server_info*, void* client)
    {
        static_cast<Client*>(client)->settled = true;
    }

    static void onState(pa_context* context, void* client)
    {
        auto* self = static_cast<Client*>(client);
        switch (pa_context_get_state(context)) {
        case PA_CONTEXT_READY:
            self->ready();
            break;
        case PA_CONTEXT_FAILED:
        case PA_CONTEXT_TERMINATED:
            self->lost();
            break;
        default:
            break;
        }
    }

    static void onReconnectDue(pa_mainloop_api* api, pa_time_event* timer, const timeval*, void* client)
    {
        auto* self = static_cast<Client*>(client);
        api->time_free(timer);
        self->reconnectTimer = nullptr;
        self->connect();
    }

    static void onEvent(pa_context* context, pa_subscription_event_type_t event, uint32_t index, void* client)
    {
        auto* self = static_cast<Client*>(client);
        auto facility = event & PA_SUBSCRIPTION_EVENT_FACILITY_MASK;
        bool removed = (event & PA_SUBSCRIPTION_EVENT_TYPE_MASK) == PA_SUBSCRIPTION_EVENT_REMOVE;
        if (facility == PA_SUBSCRIPTION_EVENT_SINK_INPUT) {
            if (removed)
                self->removed(AudioStream::Direction::playback, index);
            else
                release(pa_context_get_sink_input_info(context, index, onSinkInput, client));
        } else if (facility == PA_SUBSCRIPTION_EVENT_SOURCE_OUTPUT) {
            if (removed)
                self->removed(AudioStream::Direction::capture, index);
            else
                release(pa_context_get_source_output_info(context, index, onSourceOutput, client));
        } else if (facility == PA_SUBSCRIPTION_EVENT_SOURCE) {
            if (removed)
                self->monitorSources.erase(index);
            else
                release(pa_context_get_source_info_by_index(context, index, onSource, client));
        }
    }

    static void onSource(pa_context*, const pa_source_info* source, int endOfList, void* client)
    {
        if (endOfList || !source)
            return;
        auto* self = static_cast<Client*>(client);
        if (source->monitor_of_sink != PA_INVALID_INDEX)
            self->monitorSources.insert(source->index);
        else
            self->monitorSources.erase(source->index);
    }

    static void onSinkInput(pa_context*, const pa_sink_input_info* input, int endOfList, void* client)
    {
        if (endOfList || !input)
            return;
        static_cast<Client*>(client)->take(AudioStream { .index = input->index,
            .direction = AudioStream::Direction::playback,
            .pid = processOf(input->proplist),
            .applicationName = textOf(input->proplist, PA_PROP_APPLICATION_NAME),
            .mediaName = textOf(input->proplist, PA_PROP_MEDIA_NAME),
            .corked = input->corked != 0,
            .readsLevelsOnly = resamplesToPeaks(input->resample_method),
            .ancestry = {},
            .firstSeenRunning = std::nullopt });
    }

    static void onSourceOutput(pa_context*, const pa_source_output_info* output, int endOfList, void* client)
    {
        if (endOfList || !output)
            return;
        auto* self = static_cast<Client*>(client);
        self->take(AudioStream { .index = output->index,
            .direction = AudioStream::Direction::capture,
            .pid = processOf(output->proplist),
            .applicationName = textOf(output->proplist, PA_PROP_APPLICATION_NAME),
            .mediaName = textOf(output->proplist, PA_PROP_MEDIA_NAME),
            .corked = output->corked != 0,
            .readsLevelsOnly
            = resamplesToPeaks(output->resample_method) || self->monitorSources.contains(output->source),
            .ancestry = {},
            .firstSeenRunning = std::nullopt });
    }
};

PulseAudioStreams::PulseAudioStreams(Now now)
    : client_(std::make_unique<Client>(std::move(now)))
{
    if (!client_->mainloop)
        return;
    MainloopLock lock(client_->mainloop.get());
    if (pa_threaded_mainloop_start(client_->mainloop.get()) < 0)
        return;
    client_->connect();
}

PulseAudioStreams::~PulseAudioStreams()
{
    if (!client_->mainloop)
        return;
    {
        MainloopLock lock(client_->mainloop.get());
        if (client_->reconnectTimer)
            client_->api()->time_free(client_->reconnectTimer);
        client_->context.reset();
    }
    client_->mainloop.reset();
}

bool PulseAudioStreams::waitUntilSettled(std::chrono::milliseconds timeout) const
{
    auto deadline = std::chrono::steady_clock::now() + timeout;
    while (client_->mainloop) {
        {
            MainloopLock lock(client_->mainloop.get());
            if (client_->settled)
                return true;
        }
        if (std::chrono::steady_clock::now() >= deadline)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return false;
}

std::vector<AudioStream> PulseAudioStreams::evidence() const
{
    if (!client_->mainloop)
        return {};
    MainloopLock lock(client_->mainloop.get());
    return client_->streams.evidence();
}

uint64_t PulseAudioStreams::generation() const
{
    if (!client_->mainloop)
        return 0;
    MainloopLock lock(client_->mainloop.get());
    return client_->generation;
}

bool PulseAudioStreams::isConnected() const
{
    if (!client_->mainloop)
        return false;
    MainloopLock lock(client_->mainloop.get());
    return client_->connected;
}

std::vector<std::string> PulseAudioStreams::takeNotices()
{
    if (!client_->mainloop)
        return {};
    MainloopLock lock(client_->mainloop.get());
    return std::exchange(client_->notices, {});
}

} // namespace vardel::linux_desktop
