#pragma once

#include "platform/PreferenceStore.h"

#include <optional>
#include <string>

namespace vardel {

// Whether the desktop starts the tracker when the user logs in.
class LoginItems {
public:
    virtual ~LoginItems() = default;
    virtual bool startsAtLogin() = 0;
    // Nothing when done, else why the registration could not be changed.
    virtual std::optional<std::string> setStartsAtLogin(bool) = 0;
};

// A registration that is only remembered in a preference, for desktops that start nothing
// themselves.
class PreferenceLoginItems final : public LoginItems {
public:
    PreferenceLoginItems(PreferenceStore& store, std::string key)
        : store_(store)
        , key_(std::move(key))
    {
    }

    bool startsAtLogin() override { return store_.getBool(key_).value_or(false); }
    std::optional<std::string> setStartsAtLogin(bool start) override
    {
        store_.setObject(key_, Value(start));
        return std::nullopt;
    }

private:
    PreferenceStore& store_;
    std::string key_;
};

} // namespace vardel
