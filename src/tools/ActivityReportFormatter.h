#pragma once

#include "product/ActivitySummary.h"

#include <nlohmann/json.hpp>

#include <string>

namespace vardel {

// How `vardel report` shows a day's activity: as text for a person, or as JSON for a program.
class ActivityReportFormatter {
public:
    // Longer titles and addresses are shortened so that each line stays one line.
    static constexpr size_t longestShownText = 80;

    // The day's timeline (consecutive spans showing the same thing as one line), the time per
    // application and per document or page, and the total.
    static std::string text(const ActivitySummary&, const std::string& day);
    // Every span, unmerged, with each total.
    static nlohmann::ordered_json json(const ActivitySummary&, const std::string& day);

    // What a span showed, as the timeline names it: the application and its title or page.
    static std::string describe(const RecordedActivity&);
};

} // namespace vardel
