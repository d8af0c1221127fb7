#include "platform/linux/WaylandConnection.h"

#include "platform/linux/WaylandProxy.h"

#include <algorithm>
#include <cerrno>
#include <map>
#include <poll.h>
#include <wayland-client.h>
#include <wlr-foreign-toplevel-management-unstable-v1-client-protocol.h>

namespace vardel::linux_desktop {

namespace {

// Versions this client knows: the toplevels' full-screen state came with 2 and their parent with 3;
// outputs announce their scale from 2 and are released from 3.
constexpr uint32_t toplevelManagerVersion = 3;
constexpr uint32_t outputVersion = 3;

using Display = WaylandProxy<wl_display, wl_display_disconnect>;
using Registry = WaylandProxy<wl_registry, wl_registry_destroy>;
using Callback = WaylandProxy<wl_callback, wl_callback_destroy>;
using ToplevelManager = WaylandProxy<zwlr_foreign_toplevel_manager_v1, zwlr_foreign_toplevel_manager_v1_destroy>;
using ToplevelHandle = WaylandProxy<zwlr_foreign_toplevel_handle_v1, zwlr_foreign_toplevel_handle_v1_destroy>;

void releaseOutput(wl_output* output)
{
    if (wl_output_get_version(output) >= WL_OUTPUT_RELEASE_SINCE_VERSION)
        wl_output_release(output);
    else
        wl_output_destroy(output);
}
using Output = WaylandProxy<wl_output, releaseOutput>;

struct OutputEntry {
    Output proxy;
    uint32_t globalName = 0;
    WaylandOutput description;
    int scale = 1;
    int modeWidth = 0;
    int modeHeight = 0;
};

} // namespace

struct WaylandConnection::State {
    Display display;
    Registry registry;
    ToplevelManager manager;
    std::map<uint32_t, OutputEntry> outputs;
    std::map<zwlr_foreign_toplevel_handle_v1*, std::pair<uint32_t, ToplevelHandle>> handles;
    WaylandToplevels toplevels;
    uint32_t nextId = 1;
    bool connected = true;

    uint32_t toplevelId(zwlr_foreign_toplevel_handle_v1* handle) const
    {
        auto found = handles.find(handle);
        return found == handles.end() ? 0 : found->second.first;
    }

    uint32_t outputId(wl_output* output) const
    {
        for (const auto& [id, entry] : outputs) {
            if (entry.proxy.get() == output)
                return id;
        }
        return 0;
    }

    OutputEntry* outputOf(wl_output* output)
    {
        auto found = outputs.find(outputId(output));
        return found == outputs.end() ? nullptr : &found->second;
    }

    void lose()
    {
        connected = false;
        toplevels.clear();
        handles.clear();
        outputs.clear();
        manager.reset();
    }

    static const wl_registry_listener registryListener;
    static const wl_output_listener outputListener;
    static const zwlr_foreign_toplevel_manager_v1_listener managerListener;
    static const zwlr_foreign_toplevel_handle_v1_listener handleListener;

    static State& of(void* data) { return *static_cast<State*>(data); }

    static void global(void* data, wl_registry* registry, uint32_t name, const char* interface, uint32_t version)
    {
        State& state = of(data);
        std::string_view announced(interface);
        if (announced == zwlr_foreign_toplevel_manager_v1_interface.name && !state.manager) {
            state.manager.reset(static_cast<zwlr_foreign_toplevel_manager_v1*>(wl_registry_bind(registry, name,
                &zwlr_foreign_toplevel_manager_v1_interface, std::min(version, toplevelManagerVersion))));
            zwlr_foreign_toplevel_manager_v1_add_listener(state.manager.get(), &managerListener, &state);
        } else if (announced == wl_output_interface.name) {
            Output output(static_cast<wl_output*>(
                wl_registry_bind(registry, name, &wl_output_interface, std::min(version, outputVersion))));
            wl_output_add_listener(output.get(), &outputListener, &state);
            uint32_t id = state.nextId++;
            OutputEntry entry { std::move(output), name, {}, 1, 0, 0 };
            entry.description.id = id;
            state.outputs.emplace(id, std::move(entry));
        }
    }

    static void globalRemove(void* data, wl_registry*, uint32_t name)
    {
        std::erase_if(of(data).outputs, [&](const auto& entry) { return entry.second.globalName == name; });
    }

    static void outputGeometry(void* data, wl_output* output, int32_t x, int32_t y, int32_t, int32_t, int32_t,
        const char*, const char*, int32_t)
    {
        if (OutputEntry* entry = of(data).outputOf(output))
            entry->description.frame.origin = { double(x), double(y) };
    }

    static void outputMode(void* data, wl_output* output, uint32_t flags, int32_t width, int32_t height, int32_t)
    {
        OutputEntry* entry = of(data).outputOf(output);
        if (!entry || !(flags & WL_OUTPUT_MODE_CURRENT))
            return;
        entry->modeWidth = width;
        entry->modeHeight = height;
    }

    static void outputDone(void* data, wl_output* output)
    {
        OutputEntry* entry = of(data).outputOf(output);
        if (!entry)
            return;
        int scale = std::max(entry->scale, 1);
        entry->description.frame.size = { double(entry->modeWidth) / scale, double(entry->modeHeight) / scale };
    }

    static void outputScale(void* data, wl_output* output, int32_t factor)
    {
        if (OutputEntry* entry = of(data).outputOf(output))
            entry->scale = factor;
    }

    static void toplevel(void* data, zwlr_foreign_toplevel_manager_v1*, zwlr_foreign_toplevel_handle_v1* handle)
    {
        State& state = of(data);
        uint32_t id = state.nextId++;
        state.handles.emplace(handle, std::make_pair(id, ToplevelHandle(handle)));
        state.toplevels.add(id);
        zwlr_foreign_toplevel_handle_v1_add_listener(handle, &handleListener, &state);
    }

    static void finished(void* data, zwlr_foreign_toplevel_manager_v1*)
    {
        State& state = of(data);
        state.toplevels.clear();
        state.handles.clear();
        state.manager.reset();
    }

    static void title(void* data, zwlr_foreign_toplevel_handle_v1* handle, const char* text)
    {
        State& state = of(data);
        state.toplevels.setTitle(state.toplevelId(handle), text ? text : "");
    }

    static void appId(void* data, zwlr_foreign_toplevel_handle_v1* handle, const char* text)
    {
        State& state = of(data);
        state.toplevels.setAppId(state.toplevelId(handle), text ? text : "");
    }

    static void outputEnter(void* data, zwlr_foreign_toplevel_handle_v1* handle, wl_output* output)
    {
        State& state = of(data);
        state.toplevels.enterOutput(state.toplevelId(handle), state.outputId(output));
    }

    static void outputLeave(void* data, zwlr_foreign_toplevel_handle_v1* handle, wl_output* output)
    {
        State& state = of(data);
        state.toplevels.leaveOutput(state.toplevelId(handle), state.outputId(output));
    }

    static void states(void* data, zwlr_foreign_toplevel_handle_v1* handle, wl_array* array)
    {
        State& state = of(data);
        std::span<const uint32_t> values(static_cast<const uint32_t*>(array->data), array->size / sizeof(uint32_t));
        state.toplevels.setStates(state.toplevelId(handle), values);
    }

    static void done(void* data, zwlr_foreign_toplevel_handle_v1* handle)
    {
        State& state = of(data);
        state.toplevels.done(state.toplevelId(handle));
    }

    static void closed(void* data, zwlr_foreign_toplevel_handle_v1* handle)
    {
        State& state = of(data);
        state.toplevels.close(state.toplevelId(handle));
        state.handles.erase(handle);
    }

    static void parent(void*, zwlr_foreign_toplevel_handle_v1*, zwlr_foreign_toplevel_handle_v1*) { }

    static void callbackDone(void* data, wl_callback*, uint32_t) { *static_cast<bool*>(data) = true; }
    static const wl_callback_listener callbackListener;

    // Waits for the compositor to answer everything sent so far; false when it does not within the
    // time-out or the connection fails.
    bool roundTrip(std::chrono::milliseconds timeout)
    {
        wl_display* connection = display.get();
        bool answered = false;
        Callback callback(wl_display_sync(connection));
        wl_callback_add_listener(callback.get(), &callbackListener, &answered);
        auto deadline = std::chrono::steady_clock::now() + timeout;
        while (!answered) {
            if (wl_display_dispatch_pending(connection) < 0)
                return false;
            if (answered)
                break;
            wl_display_flush(connection);
            if (wl_display_prepare_read(connection) != 0)
                continue;
            auto remaining
                = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
            pollfd waiting { wl_display_get_fd(connection), POLLIN, 0 };
            if (remaining.count() <= 0 || ::poll(&waiting, 1, static_cast<int>(remaining.count())) <= 0) {
                wl_display_cancel_read(connection);
                return false;
            }
            if (wl_display_read_events(connection) < 0)
                return false;
        }
        return true;
    }
};

const wl_registry_listener WaylandConnection::State::registryListener = { &State::global, &State::globalRemove };
const wl_output_listener WaylandConnection::State::outputListener
    = { &State::outputGeometry, &State::outputMode, &State::outputDone, &State::outputScale, nullptr, nullptr };
const zwlr_foreign_toplevel_manager_v1_listener WaylandConnection::State::managerListener
    = { &State::toplevel, &State::finished };
const zwlr_foreign_toplevel_handle_v1_listener WaylandConnection::State::handleListener
    = { &State::title, &State::appId, &State::outputEnter, &State::outputLeave, &State::states, &State::done,
          &State::closed, &State::parent };
const wl_callback_listener WaylandConnection::State::callbackListener = { &State::callbackDone };

std::unique_ptr<WaylandConnection> WaylandConnection::open(const char* display, std::chrono::milliseconds timeout)
{
    auto state = std::make_unique<State>();
    state->display.reset(wl_display_connect(display));
    if (!state->display)
        return nullptr;
    state->registry.reset(wl_display_get_registry(state->display.get()));
    wl_registry_add_listener(state->registry.get(), &State::registryListener, state.get());
    // The first answer lists the globals; the second the outputs' and the toplevels' first states.
    if (!state->roundTrip(timeout) || !state->roundTrip(timeout))
        return nullptr;
    return std::unique_ptr<WaylandConnection>(new WaylandConnection(std::move(state)));
}

WaylandConnection::WaylandConnection(std::unique_ptr<State> state)
    : state_(std::move(state))
{
}

WaylandConnection::~WaylandConnection() = default;

bool WaylandConnection::listsToplevels() const
{
    return state_->manager != nullptr;
}

bool WaylandConnection::isConnected() const
{
    return state_->connected;
}

const WaylandToplevels& WaylandConnection::toplevels() const
{
    return state_->toplevels;
}

std::vector<WaylandOutput> WaylandConnection::outputs() const
{
    std::vector<WaylandOutput> described;
    for (const auto& [id, entry] : state_->outputs) {
        if (entry.description.frame.size.width > 0 && entry.description.frame.size.height > 0)
            described.push_back(entry.description);
    }
    return described;
}

int WaylandConnection::fileDescriptor() const
{
    return state_->connected ? wl_display_get_fd(state_->display.get()) : -1;
}

bool WaylandConnection::readEvents()
{
    if (!state_->connected)
        return false;
    wl_display* connection = state_->display.get();
    bool read = true;
    while (wl_display_prepare_read(connection) != 0) {
        if (wl_display_dispatch_pending(connection) < 0) {
            read = false;
            break;
        }
    }
    // The socket is readable and libwayland reads without blocking: this never waits.
    if (read && (wl_display_read_events(connection) < 0 || wl_display_dispatch_pending(connection) < 0))
        read = false;
    if (read && wl_display_flush(connection) < 0 && errno != EAGAIN)
        read = false;
    if (!read)
        state_->lose();
    return read;
}

} // namespace vardel::linux_desktop
