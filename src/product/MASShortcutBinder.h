#pragma once

#include "product/HelperPreferences.h"

#include <functional>
#include <map>
#include <optional>
#include <string>

namespace vardel {

// Binds global shortcuts stored in the preferences to actions. A binder's value transformer turns
// the stored shortcut into the one it listens for, so that one stored shortcut can serve several
// actions (the plain one, and the same with Shift).
class MASShortcutBinder {
public:
    using ValueTransformer = std::function<std::optional<Shortcut>(const Shortcut&)>;

    static MASShortcutBinder& sharedBinder();

    void setBindingOptions(ValueTransformer transformer) { transformer_ = std::move(transformer); }
    // Replaces an earlier binding of the key.
    void bindShortcutWithDefaultsKey(const std::string& defaultsKey, std::function<void()> action);
    void breakBindingWithDefaultsKey(const std::string& defaultsKey);
    bool isBound(const std::string& defaultsKey) const { return bindings_.contains(defaultsKey); }

    // Runs the action bound to the pressed shortcut, if any; true when one ran.
    bool performShortcut(const Shortcut& pressed) const;

    // The transformers of the product: the stored shortcut as it is, and with Shift added.
    static std::optional<Shortcut> fakeShortcutTransformer(const Shortcut&);
    static std::optional<Shortcut> fakeShortcutWithExtraShiftTransformer(const Shortcut&);

private:
    std::optional<Shortcut> listenedShortcut(const std::string& defaultsKey) const;

    ValueTransformer transformer_ = fakeShortcutTransformer;
    std::map<std::string, std::function<void()>> bindings_;
};

} // namespace vardel
