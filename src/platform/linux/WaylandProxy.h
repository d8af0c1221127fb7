#pragma once

#include <memory>

namespace vardel::linux_desktop {

// Owns one libwayland-client object and releases it with the function its interface gives for that
// (wl_output_release, zwlr_foreign_toplevel_handle_v1_destroy, wl_display_disconnect, ...).
template<auto release> struct WaylandRelease {
    template<typename Object> void operator()(Object* object) const
    {
        if (object)
            release(object);
    }
};

template<typename Object, auto release> using WaylandProxy = std::unique_ptr<Object, WaylandRelease<release>>;

} // namespace vardel::linux_desktop
