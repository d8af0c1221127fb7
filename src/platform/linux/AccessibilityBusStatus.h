#pragma once

#include <optional>

namespace vardel::linux_desktop {

// org.a11y.Status on the session bus: whether assistive technology is on. Firefox and GTK expose
// their trees once it is; Chromium reads it only when it starts.
namespace AccessibilityBusStatus {

std::optional<bool> isEnabled();
// False when the session bus or the accessibility bus service is missing.
bool enable();

} // namespace AccessibilityBusStatus

} // namespace vardel::linux_desktop
