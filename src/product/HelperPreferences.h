#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace vardel {

// A global keyboard shortcut as the preferences store it: a key and the platform's modifier flags.
struct Shortcut {
    std::string key;
    uint64_t modifierFlags = 0;
    bool operator==(const Shortcut&) const = default;
};

// The tracker's settings in the product's preference store, with the product's defaults.
class HelperPreferences {
public:
    // The defaults key under which the start-task shortcut is stored.
    static constexpr const char* startTaskShortcutKey = "startTaskShortcut";

    static bool statusItemVisible();
    static bool shouldAskForTaskAfterIdle();
    static void setShouldAskForTaskAfterIdle(bool);
    static bool shouldSuspendTrackingUponIdle();
    // None when no shortcut is stored or the stored value is not a key with modifier flags.
    static std::optional<Shortcut> startTaskShortcut();
};

} // namespace vardel
