#include "product/MASShortcutBinder.h"

#include "platform/ProcessWide.h"
#include "platform/StatusBar.h"

namespace vardel {

namespace {
ProcessWide<MASShortcutBinder> sharedShortcutBinder([] { return MASShortcutBinder(); });
}

MASShortcutBinder& MASShortcutBinder::sharedBinder()
{
    return sharedShortcutBinder.get();
}

void MASShortcutBinder::bindShortcutWithDefaultsKey(const std::string& defaultsKey, std::function<void()> action)
{
    bindings_.insert_or_assign(defaultsKey, std::move(action));
}

void MASShortcutBinder::breakBindingWithDefaultsKey(const std::string& defaultsKey)
{
    bindings_.erase(defaultsKey);
}

// Only the start-task shortcut is stored by the product; its key is read afresh on every press.
std::optional<Shortcut> MASShortcutBinder::listenedShortcut(const std::string& defaultsKey) const
{
    if (defaultsKey != HelperPreferences::startTaskShortcutKey)
        return std::nullopt;
    auto stored = HelperPreferences::startTaskShortcut();
    return stored ? transformer_(*stored) : std::nullopt;
}

bool MASShortcutBinder::performShortcut(const Shortcut& pressed) const
{
    for (const auto& [defaultsKey, action] : bindings_) {
        if (listenedShortcut(defaultsKey) == pressed) {
            action();
            return true;
        }
    }
    return false;
}

std::optional<Shortcut> MASShortcutBinder::fakeShortcutTransformer(const Shortcut& stored)
{
    return stored;
}

std::optional<Shortcut> MASShortcutBinder::fakeShortcutWithExtraShiftTransformer(const Shortcut& stored)
{
    return Shortcut { stored.key, stored.modifierFlags | ModifierFlag::shift };
}

} // namespace vardel
