#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace vardel {

// A key with the modifier flags (ModifierFlag in StatusBar.h) held with it. The key is the character
// it types without modifiers, in lower case ("t").
struct KeyShortcut {
    std::string key;
    uint64_t modifierFlags = 0;
    bool operator==(const KeyShortcut&) const = default;
};

// Keys the tracker hears wherever the keyboard focus is.
class GlobalShortcuts {
public:
    using Handler = std::function<void(const KeyShortcut&)>;

    virtual ~GlobalShortcuts() = default;

    // Listens for these shortcuts from now on, in place of the earlier ones, and calls the handler on
    // the run loop with the one pressed. An empty list (or no handler) listens for none. A shortcut
    // the desktop cannot give the tracker (another program holds it) is logged once, not reported.
    virtual void listen(std::vector<KeyShortcut>, Handler) = 0;
};

} // namespace vardel
