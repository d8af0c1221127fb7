// Key and modifier names between X11 and the stored shortcuts, and the status item's look.

#include "platform/linux/X11Keys.h"

#include "platform/linux/StatusNotifierLook.h"

#include <gtest/gtest.h>

#include <set>

namespace vardel::linux_desktop {

namespace {

TEST(X11KeysTest, EveryModifierCombinationGoesThereAndBack)
{
    constexpr uint64_t all[]
        = { ModifierFlag::shift, ModifierFlag::control, ModifierFlag::option, ModifierFlag::command };
    std::set<uint16_t> masks;
    for (unsigned combination = 0; combination < 16; ++combination) {
        uint64_t flags = 0;
        for (unsigned bit = 0; bit < 4; ++bit) {
            if (combination & (1U << bit))
                flags |= all[bit];
        }
        uint16_t mask = X11Keys::modifierMask(flags);
        masks.insert(mask);
        EXPECT_EQ(X11Keys::modifierFlags(mask), flags) << combination;
    }
    EXPECT_EQ(masks.size(), 16u);
    EXPECT_EQ(X11Keys::modifierMask(ModifierFlag::command), X11Keys::mod4Mask);
    EXPECT_EQ(X11Keys::modifierMask(ModifierFlag::option), X11Keys::mod1Mask);
    // Caps Lock and Num Lock are not modifiers of a shortcut.
    EXPECT_EQ(X11Keys::modifierFlags(X11Keys::shiftMask | X11Keys::lockMask | X11Keys::mod2Mask), ModifierFlag::shift);
}

TEST(X11KeysTest, OneCharacterKeysHaveKeysymsAndBack)
{
    EXPECT_EQ(X11Keys::keysym("t"), 0x74u);
    EXPECT_EQ(X11Keys::keysym("T"), 0x74u);
    EXPECT_EQ(X11Keys::keysym("ä"), 0xE4u);
    EXPECT_EQ(X11Keys::keysym("€"), 0x010020ACu);
    for (const char* notAKey : { "", "tt", "\n", "\x7F", "\xC3", "\xE2\x82" })
        EXPECT_EQ(X11Keys::keysym(notAKey), std::nullopt) << notAKey;

    EXPECT_EQ(X11Keys::key(0x54), "t");
    EXPECT_EQ(X11Keys::key(0xE4), "ä");
    EXPECT_EQ(X11Keys::key(0x010020AC), "€");
    // Return and Super_L type no character.
    EXPECT_EQ(X11Keys::key(0xFF0D), "");
    EXPECT_EQ(X11Keys::key(0xFFEB), "");
}

TEST(X11KeysTest, GrabsCoverTheLocks)
{
    auto variants = X11Keys::lockVariants(X11Keys::mod2Mask);
    EXPECT_EQ(std::set<uint16_t>(variants.begin(), variants.end()),
        (std::set<uint16_t> { 0, X11Keys::lockMask, X11Keys::mod2Mask, X11Keys::lockMask | X11Keys::mod2Mask }));
    EXPECT_EQ(X11Keys::lockVariants(0), (std::vector<uint16_t> { 0, X11Keys::lockMask }));
}

TEST(StatusNotifierLookTest, PausedItemsAreGreyAndHiddenOnesPassive)
{
    StatusItemAppearance appearance;
    appearance.title = "2h 5m";
    EXPECT_EQ(StatusNotifierLook::of(appearance),
        (StatusNotifierLook { "Active", "vardel-tracker-status", "2h 5m", "2h 5m" }));
    appearance.appearsDisabled = true;
    appearance.visible = false;
    appearance.title.clear();
    EXPECT_EQ(StatusNotifierLook::of(appearance),
        (StatusNotifierLook { "Passive", "vardel-tracker-status-paused", "Vardel Tracker", "" }));
}

} // namespace

} // namespace vardel::linux_desktop
