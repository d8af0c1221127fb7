#pragma once

#include "platform/PreferenceStore.h"
#include "platform/scripted/TraceWriter.h"

#include <optional>
#include <string>
#include <string_view>

namespace vardel::scripted {

// A preference store held in memory. The program's writes are traced under the store's name; the
// scenario's own changes are not, since nobody made them.
class ScriptedPreferenceStore final : public PreferenceStore {
public:
    ScriptedPreferenceStore(std::string name, Value::Dictionary values, TraceWriter& trace)
        : name_(std::move(name))
        , values_(std::move(values))
        , trace_(trace)
    {
    }

    std::optional<Value> object(std::string_view key) const override;
    void setObject(std::string_view key, std::optional<Value> value) override;

    // A change the scenario's timeline makes.
    void applyScenarioChange(const std::string& key, const std::optional<Value>& value);

private:
    std::string name_;
    Value::Dictionary values_;
    TraceWriter& trace_;
};

} // namespace vardel::scripted
