#include "platform/linux/X11Keys.h"

#include "platform/StatusBar.h"

#include <utility>

namespace vardel::linux_desktop {

namespace {

// Keysyms for characters beyond Latin-1 are the code point with this bit.
constexpr uint32_t unicodeKeysym = 0x01000000;
constexpr uint32_t lastUnicode = 0x10FFFF;

constexpr std::pair<uint16_t, uint64_t> modifiers[]
    = { { X11Keys::shiftMask, ModifierFlag::shift }, { X11Keys::controlMask, ModifierFlag::control },
          { X11Keys::mod1Mask, ModifierFlag::option }, { X11Keys::mod4Mask, ModifierFlag::command } };

// The one code point of UTF-8 text, or none when the text is empty, longer or malformed.
std::optional<uint32_t> singleCodePoint(std::string_view text)
{
    if (text.empty())
        return std::nullopt;
    auto lead = static_cast<unsigned char>(text[0]);
    size_t length = lead < 0x80 ? 1 : (lead >> 5) == 0x6 ? 2 : (lead >> 4) == 0xE ? 3 : (lead >> 3) == 0x1E ? 4 : 0;
    if (length == 0 || text.size() != length)
        return std::nullopt;
    uint32_t codePoint = length == 1 ? lead : lead & (0x7F >> length);
    for (size_t index = 1; index < length; ++index) {
        auto continuation = static_cast<unsigned char>(text[index]);
        if ((continuation >> 6) != 0x2)
            return std::nullopt;
        codePoint = (codePoint << 6) | (continuation & 0x3F);
    }
    return codePoint;
}

std::string utf8(uint32_t codePoint)
{
    std::string text;
    if (codePoint < 0x80) {
        text += static_cast<char>(codePoint);
    } else if (codePoint < 0x800) {
        text += static_cast<char>(0xC0 | (codePoint >> 6));
        text += static_cast<char>(0x80 | (codePoint & 0x3F));
    } else if (codePoint < 0x10000) {
        text += static_cast<char>(0xE0 | (codePoint >> 12));
        text += static_cast<char>(0x80 | ((codePoint >> 6) & 0x3F));
        text += static_cast<char>(0x80 | (codePoint & 0x3F));
    } else {
        text += static_cast<char>(0xF0 | (codePoint >> 18));
        text += static_cast<char>(0x80 | ((codePoint >> 12) & 0x3F));
        text += static_cast<char>(0x80 | ((codePoint >> 6) & 0x3F));
        text += static_cast<char>(0x80 | (codePoint & 0x3F));
    }
    return text;
}

} // namespace

uint64_t X11Keys::modifierFlags(uint16_t state)
{
    uint64_t flags = 0;
    for (const auto& [mask, flag] : modifiers) {
        if (state & mask)
            flags |= flag;
    }
    return flags;
}

uint16_t X11Keys::modifierMask(uint64_t flags)
{
    uint16_t mask = 0;
    for (const auto& [modifierMask, flag] : modifiers) {
        if (flags & flag)
            mask |= modifierMask;
    }
    return mask;
}

std::optional<uint32_t> X11Keys::keysym(std::string_view key)
{
    auto codePoint = singleCodePoint(key);
    // Control characters are not keys one stores by their character.
    if (!codePoint || *codePoint < 0x20 || (*codePoint >= 0x7F && *codePoint < 0xA0) || *codePoint > lastUnicode)
        return std::nullopt;
    if (*codePoint >= 'A' && *codePoint <= 'Z')
        *codePoint += 'a' - 'A';
    return *codePoint < 0x100 ? *codePoint : unicodeKeysym | *codePoint;
}

std::string X11Keys::key(uint32_t keysym)
{
    uint32_t codePoint = 0;
    if ((keysym >= 0x20 && keysym < 0x7F) || (keysym >= 0xA0 && keysym < 0x100))
        codePoint = keysym;
    else if ((keysym & 0xFF000000) == unicodeKeysym && (keysym & ~unicodeKeysym) >= 0xA0
        && (keysym & ~unicodeKeysym) <= lastUnicode)
        codePoint = keysym & ~unicodeKeysym;
    else
        return "";
    if (codePoint >= 'A' && codePoint <= 'Z')
        codePoint += 'a' - 'A';
    return utf8(codePoint);
}

std::vector<uint16_t> X11Keys::lockVariants(uint16_t numLockMask)
{
    if (numLockMask == 0)
        return { 0, lockMask };
    return { 0, lockMask, numLockMask, static_cast<uint16_t>(lockMask | numLockMask) };
}

} // namespace vardel::linux_desktop
