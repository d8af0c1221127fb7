#include "product/AnalyticsWrapper.h"

#include "platform/Platform.h"
#include "platform/ProcessWide.h"
#include "platform/ValueJson.h"

#include <fstream>
#include <system_error>

namespace vardel {

namespace {

ProcessWideVariable<AnalyticsWrapper> sharedAnalytics;

const char* frequencyName(AnalyticsFrequency frequency)
{
    switch (frequency) {
    case AnalyticsFrequency::always:
        return "always";
    case AnalyticsFrequency::medium:
        return "medium";
    }
    return "always";
}

const char* flagName(AnalyticsFlag flag)
{
    switch (flag) {
    case AnalyticsFlag::sensitive:
        return "sensitive";
    }
    return "sensitive";
}

std::string encodedLine(const AnalyticsEvent& event)
{
    nlohmann::ordered_json line = {
        { "date", ValueJson::formatIso8601(platform().clock().now()) },
        { "name", event.name },
        { "attributes", ValueJson::encode(Value(event.attributes)) },
        { "frequency", event.frequency ? nlohmann::ordered_json(*event.frequency) : nullptr },
        { "flags", event.flags },
        { "critical", event.critical ? nlohmann::ordered_json(*event.critical) : nullptr },
    };
    // Invalid UTF-8 in an attribute (a window title cut mid-character) is replaced, not fatal.
    return line.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

} // namespace

AnalyticsWrapper& AnalyticsWrapper::sharedInstance()
{
    return sharedAnalytics.get();
}

void AnalyticsWrapper::logEvent(std::string name, Value::Dictionary attributes,
    std::optional<AnalyticsFrequency> frequency, const std::vector<AnalyticsFlag>& flags, std::optional<bool> critical)
{
    AnalyticsEvent event { std::move(name), std::move(attributes), std::nullopt, {}, critical };
    if (frequency)
        event.frequency = frequencyName(*frequency);
    for (AnalyticsFlag flag : flags)
        event.flags.emplace_back(flagName(flag));
    sharedInstance().record(event);
}

void AnalyticsWrapper::record(const AnalyticsEvent& event)
{
    platform().analytics().logEvent(event);
    if (dataFolder_)
        append(event);
}

void AnalyticsWrapper::append(const AnalyticsEvent& event)
{
    std::filesystem::path file = *dataFolder_ / fileName;
    std::error_code ignored;
    std::filesystem::create_directories(*dataFolder_, ignored);
    // Opened for each event, so that a file moved away or deleted meanwhile is simply started anew.
    std::ofstream stream(file, std::ios::binary | std::ios::app);
    stream << encodedLine(event);
    stream.close();
    if (stream.fail()) {
        reportFailure(file);
        return;
    }
    failing_ = false;
}

void AnalyticsWrapper::reportFailure(const std::filesystem::path& file)
{
    if (failing_)
        return;
    failing_ = true;
    platform().log().warning("[AnalyticsWrapper] Cannot write analytics events to " + file.string()
        + "; events are not kept on file until it can be written again.");
}

} // namespace vardel
