#pragma once

namespace vardel {

// Whether the tracker is registered to start when the user logs in; the desktop keeps the
// registration.
class VDStartupManager {
public:
    static bool shouldStartAtLogin();
    static void setShouldStartAtLogin(bool);
};

} // namespace vardel
