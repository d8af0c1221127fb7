#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vardel::linux_desktop {

// How keys and modifiers are named on X11 and in the tracker. Modifiers: Shift is Shift, Control is
// Control, Option is Alt (Mod1) and Command is the Super key (Mod4), so that every stored shortcut
// has one X11 combination and back.
class X11Keys {
public:
    static constexpr uint16_t shiftMask = 1;
    static constexpr uint16_t lockMask = 2;
    static constexpr uint16_t controlMask = 4;
    static constexpr uint16_t mod1Mask = 8;
    static constexpr uint16_t mod2Mask = 16;
    static constexpr uint16_t mod4Mask = 64;

    // The tracker's modifier flags held in an X11 key or pointer state; locks and other modifiers
    // are left out.
    static uint64_t modifierFlags(uint16_t state);
    static uint16_t modifierMask(uint64_t flags);
    // The keysym of a one-character key ("t", "ä"); none for anything else.
    static std::optional<uint32_t> keysym(std::string_view key);
    // The key a keysym types, in lower case; empty for keysyms that type no character.
    static std::string key(uint32_t keysym);
    // The lock combinations a grab must also cover, so that a shortcut works with Caps Lock or
    // Num Lock on (0: Num Lock is on no modifier).
    static std::vector<uint16_t> lockVariants(uint16_t numLockMask);
};

} // namespace vardel::linux_desktop
