#include "platform/scripted/ScriptedPreferenceStore.h"

#include "platform/ValueJson.h"

namespace vardel::scripted {

std::optional<Value> ScriptedPreferenceStore::object(std::string_view key) const
{
    auto found = values_.find(key);
    return found == values_.end() ? std::nullopt : std::optional(found->second);
}

void ScriptedPreferenceStore::setObject(std::string_view key, std::optional<Value> value)
{
    applyScenarioChange(std::string(key), value);
    trace_.write("defaults", { { "store", name_ }, { "key", key }, { "value", ValueJson::encode(value) } });
}

void ScriptedPreferenceStore::applyScenarioChange(const std::string& key, const std::optional<Value>& value)
{
    if (value)
        values_.insert_or_assign(key, *value);
    else
        values_.erase(key);
}

} // namespace vardel::scripted
