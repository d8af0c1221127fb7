#include "platform/linux/MemoryPreferenceStore.h"

#include "platform/ValueJson.h"

namespace vardel::linux_desktop {

std::optional<Value> MemoryPreferenceStore::object(std::string_view key) const
{
    auto found = values_.find(key);
    return found == values_.end() ? std::nullopt : std::optional(found->second);
}

void MemoryPreferenceStore::setObject(std::string_view key, std::optional<Value> value)
{
    if (value)
        values_.insert_or_assign(std::string(key), *value);
    else if (auto found = values_.find(key); found != values_.end())
        values_.erase(found);
    trace_.write("defaults", { { "store", name_ }, { "key", key }, { "value", ValueJson::encode(value) } });
}

PreferenceStore* MemoryDefaultsDomains::open(std::string_view domain)
{
    auto found = domains_.find(domain);
    if (found == domains_.end())
        found = domains_
                    .emplace(std::string(domain), std::make_unique<MemoryPreferenceStore>(std::string(domain), trace_))
                    .first;
    return found->second.get();
}

} // namespace vardel::linux_desktop
