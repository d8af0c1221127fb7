#include "platform/PowerManagement.h"

namespace vardel {

Value::Dictionary mergedAssertions(Value::Dictionary assertions, const Value::Dictionary& more)
{
    for (const auto& [pid, records] : more) {
        auto [entry, added] = assertions.try_emplace(pid, records);
        if (added || !entry->second.asList() || !records.asList())
            continue;
        Value::List both = *entry->second.asList();
        both.insert(both.end(), records.asList()->begin(), records.asList()->end());
        entry->second = Value(std::move(both));
    }
    return assertions;
}

} // namespace vardel
