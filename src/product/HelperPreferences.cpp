#include "product/HelperPreferences.h"

#include "platform/Platform.h"

namespace vardel {

namespace {

bool productSetting(std::string_view key, bool fallback)
{
    return platform().productPreferences().getBool(key).value_or(fallback);
}

} // namespace

bool HelperPreferences::statusItemVisible()
{
    return productSetting("statusItemVisible", true);
}

bool HelperPreferences::shouldAskForTaskAfterIdle()
{
    return productSetting("shouldAskForTaskAfterIdle", false);
}

void HelperPreferences::setShouldAskForTaskAfterIdle(bool ask)
{
    platform().productPreferences().setObject("shouldAskForTaskAfterIdle", Value(ask));
}

bool HelperPreferences::shouldSuspendTrackingUponIdle()
{
    return productSetting("shouldSuspendTrackingUponIdle", false);
}

std::optional<Shortcut> HelperPreferences::startTaskShortcut()
{
    auto stored = platform().productPreferences().object(startTaskShortcutKey);
    const Value::Dictionary* fields = stored ? stored->asDictionary() : nullptr;
    if (!fields)
        return std::nullopt;
    auto key = fields->find("key");
    auto flags = fields->find("modifierFlags");
    if (key == fields->end() || flags == fields->end() || !key->second.asText() || !flags->second.asInteger()
        || key->second.asText()->empty() || *flags->second.asInteger() < 0)
        return std::nullopt;
    return Shortcut { *key->second.asText(), static_cast<uint64_t>(*flags->second.asInteger()) };
}

} // namespace vardel
