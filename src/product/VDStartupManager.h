#pragma once

namespace vardel {

// Whether the tracker is registered to start when the user logs in.
class VDStartupManager {
public:
    static bool shouldStartAtLogin();
    static void setShouldStartAtLogin(bool);
};

} // namespace vardel
