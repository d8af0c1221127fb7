#pragma once

#include "platform/Accessibility.h"

#include <glib.h>

namespace vardel::linux_desktop {

// libatspi's own error domain. Its header is private, so the domain is named by its quark's string.
GQuark atspiErrorDomain();
enum class AtspiErrorCode : int {
    applicationGone = 0,
    ipc = 1,
};

// The accessibility error a failed call stands for: a peer that did not answer in time cannot
// complete, one that has gone leaves an invalid element, anything else is a failure.
//
// libatspi talks to applications over libdbus and reports its failures in its own domain: a vanished
// application as applicationGone, a failed or timed-out call as ipc (the D-Bus error's name is not
// kept, and a timed-out property read reports nothing at all). Time-outs are therefore told by the
// clock (AtspiCallGuard); the D-Bus and GIO domains are read for errors of calls made over GDBus.
AXError axErrorFor(const GError&);

} // namespace vardel::linux_desktop
