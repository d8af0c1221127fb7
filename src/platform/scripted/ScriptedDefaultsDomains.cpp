#include "platform/scripted/ScriptedDefaultsDomains.h"

namespace vardel::scripted {

ScriptedDefaultsDomains::ScriptedDefaultsDomains(
    const std::vector<std::pair<std::string, Value::Dictionary>>& domains, TraceWriter& trace)
    : trace_(trace)
{
    for (const auto& [name, values] : domains)
        domains_.insert_or_assign(name, std::make_unique<ScriptedPreferenceStore>(name, values, trace_));
}

PreferenceStore* ScriptedDefaultsDomains::open(std::string_view domain)
{
    auto found = domains_.find(domain);
    return found == domains_.end() ? nullptr : found->second.get();
}

PreferenceStore& ScriptedDefaultsDomains::openForWriting(std::string_view domain)
{
    auto found = domains_.find(domain);
    if (found == domains_.end()) {
        std::string name(domain);
        found = domains_.emplace(name, std::make_unique<ScriptedPreferenceStore>(name, Value::Dictionary {}, trace_))
                    .first;
    }
    return *found->second;
}

} // namespace vardel::scripted
