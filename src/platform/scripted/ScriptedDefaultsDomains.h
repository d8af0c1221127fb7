#pragma once

#include "platform/PreferenceStore.h"
#include "platform/scripted/ScriptedPreferenceStore.h"
#include "platform/scripted/TraceWriter.h"

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vardel::scripted {

// Other applications' defaults domains: those the scenario lists, and those written since.
class ScriptedDefaultsDomains final : public DefaultsDomains {
public:
    ScriptedDefaultsDomains(const std::vector<std::pair<std::string, Value::Dictionary>>& domains, TraceWriter&);

    PreferenceStore* open(std::string_view domain) override;
    // Writing to a domain creates it, as the defaults tool does.
    PreferenceStore& openForWriting(std::string_view domain);

private:
    TraceWriter& trace_;
    std::map<std::string, std::unique_ptr<ScriptedPreferenceStore>, std::less<>> domains_;
};

} // namespace vardel::scripted
