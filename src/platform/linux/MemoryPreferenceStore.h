#pragma once

#include "platform/EventTrace.h"
#include "platform/PreferenceStore.h"

#include <map>
#include <memory>
#include <string>

namespace vardel::linux_desktop {

// A preference store held in memory for the process's lifetime; every write is traced under the
// store's name. It stands in until the stores are kept in files.
class MemoryPreferenceStore final : public PreferenceStore {
public:
    MemoryPreferenceStore(std::string name, EventTrace& trace)
        : name_(std::move(name))
        , trace_(trace)
    {
    }

    std::optional<Value> object(std::string_view key) const override;
    void setObject(std::string_view key, std::optional<Value> value) override;

private:
    std::string name_;
    EventTrace& trace_;
    Value::Dictionary values_;
};

// Other applications' defaults domains, in memory: writing to a domain creates it.
class MemoryDefaultsDomains final : public DefaultsDomains {
public:
    explicit MemoryDefaultsDomains(EventTrace& trace)
        : trace_(trace)
    {
    }

    PreferenceStore* open(std::string_view domain) override;

private:
    EventTrace& trace_;
    std::map<std::string, std::unique_ptr<MemoryPreferenceStore>, std::less<>> domains_;
};

} // namespace vardel::linux_desktop
