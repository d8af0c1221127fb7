#include "platform/linux/StatusNotifierLook.h"

namespace vardel::linux_desktop {

namespace {
constexpr const char* programName = "Vardel Tracker";
constexpr const char* trackingIcon = "vardel-tracker-status";
constexpr const char* pausedIcon = "vardel-tracker-status-paused";
} // namespace

StatusNotifierLook StatusNotifierLook::of(const StatusItemAppearance& appearance)
{
    return { appearance.visible ? "Active" : "Passive", appearance.appearsDisabled ? pausedIcon : trackingIcon,
        appearance.title.empty() ? programName : appearance.title, appearance.title };
}

} // namespace vardel::linux_desktop
