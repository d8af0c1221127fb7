#pragma once

#include "platform/Value.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vardel {

// A key-value preference store: the standard user defaults, another application's defaults domain
// or the product's own preference store. The typed getters yield nothing for an absent key or a
// value of another type, so that the caller applies its default.
class PreferenceStore {
public:
    virtual ~PreferenceStore() = default;

    virtual std::optional<Value> object(std::string_view key) const = 0;
    // Writes the value; nothing removes the key.
    virtual void setObject(std::string_view key, std::optional<Value> value) = 0;
    virtual void synchronize() { }

    std::optional<bool> getBool(std::string_view key) const;
    std::optional<int64_t> getInt(std::string_view key) const;
    std::optional<double> getDouble(std::string_view key) const;
    std::optional<std::string> getString(std::string_view key) const;
    std::optional<std::vector<std::string>> getStringList(std::string_view key) const;
};

// Other applications' defaults domains.
class DefaultsDomains {
public:
    virtual ~DefaultsDomains() = default;

    // The domain, or nullptr when it does not exist.
    virtual PreferenceStore* open(std::string_view domain) = 0;
};

} // namespace vardel
