#pragma once

#include "platform/AnalyticsSink.h"
#include "platform/Value.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace vardel {

enum class AnalyticsFrequency { always, medium };
enum class AnalyticsFlag { sensitive };

// Analytics events go to the platform's analytics sink and are appended, one JSON object per line,
// to analytics.jsonl in the data folder. Nothing is sent anywhere else.
class AnalyticsWrapper {
public:
    static constexpr const char* fileName = "analytics.jsonl";

    static AnalyticsWrapper& sharedInstance();

    // Without a configured folder, events only reach the platform's sink.
    void configure(std::filesystem::path dataFolder) { dataFolder_ = std::move(dataFolder); }

    // Records an event through the shared instance. Frequency and critical are left out (null) by
    // callers that do not sample or rank the event.
    static void logEvent(std::string name, Value::Dictionary attributes = {},
        std::optional<AnalyticsFrequency> frequency = std::nullopt, const std::vector<AnalyticsFlag>& flags = {},
        std::optional<bool> critical = std::nullopt);

    void record(const AnalyticsEvent&);

private:
    void append(const AnalyticsEvent&);
    void reportFailure(const std::filesystem::path& file);

    std::optional<std::filesystem::path> dataFolder_;
    // Set while the file cannot be written, so that a lasting problem is logged once, not per event.
    bool failing_ = false;
};

} // namespace vardel
