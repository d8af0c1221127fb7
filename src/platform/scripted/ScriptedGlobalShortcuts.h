#pragma once

#include "platform/GlobalShortcuts.h"

#include <algorithm>

namespace vardel::scripted {

// Scenarios press no keys; tests press the shortcuts listened for.
class ScriptedGlobalShortcuts final : public GlobalShortcuts {
public:
    void listen(std::vector<KeyShortcut> shortcuts, Handler handler) override
    {
        shortcuts_ = std::move(shortcuts);
        handler_ = std::move(handler);
    }

    const std::vector<KeyShortcut>& listenedShortcuts() const { return shortcuts_; }

    // A press reaches the handler when the shortcut is listened for; true when it did.
    bool press(const KeyShortcut& shortcut) const
    {
        if (!handler_ || std::ranges::find(shortcuts_, shortcut) == shortcuts_.end())
            return false;
        handler_(shortcut);
        return true;
    }

private:
    std::vector<KeyShortcut> shortcuts_;
    Handler handler_;
};

} // namespace vardel::scripted
