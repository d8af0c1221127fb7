#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace vardel::linux_desktop {

// What the compositor tells about one toplevel window.
struct WaylandToplevel {
    // Ours, never reused while the connection lives.
    uint32_t id = 0;
    std::string appId;
    std::string title;
    bool activated = false;
    bool fullScreen = false;
    bool minimized = false;
    // The outputs it shows on, by WaylandOutput::id.
    std::vector<uint32_t> outputs;

    bool operator==(const WaylandToplevel&) const = default;
};

// The toplevels of wlr-foreign-toplevel-management: each change arrives as events and takes effect
// with the toplevel's `done`, so that a sample never sees half an update. The compositor keeps no
// stacking order here: front to back is the order of last activation.
class WaylandToplevels {
public:
    // The protocol's state values.
    static constexpr uint32_t maximizedState = 0;
    static constexpr uint32_t minimizedState = 1;
    static constexpr uint32_t activatedState = 2;
    static constexpr uint32_t fullScreenState = 3;

    void add(uint32_t id);
    void setTitle(uint32_t id, std::string title);
    void setAppId(uint32_t id, std::string appId);
    void setStates(uint32_t id, std::span<const uint32_t> states);
    void enterOutput(uint32_t id, uint32_t output);
    void leaveOutput(uint32_t id, uint32_t output);
    void done(uint32_t id);
    void close(uint32_t id);
    void clear();

    // The activated toplevel (the last one activated when a compositor reports several).
    std::optional<WaylandToplevel> active() const;
    // Every toplevel announced complete, the last activated first; those never activated last,
    // newest first.
    std::vector<WaylandToplevel> frontToBack() const;

private:
    struct Entry {
        WaylandToplevel pending;
        std::optional<WaylandToplevel> current;
        // When it last became activated; 0 for never.
        uint64_t activation = 0;
    };

    std::map<uint32_t, Entry> entries_;
    uint64_t activations_ = 0;
};

} // namespace vardel::linux_desktop
