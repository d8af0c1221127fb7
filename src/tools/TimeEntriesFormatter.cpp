#include "tools/TimeEntriesFormatter.h"

#include "platform/ValueJson.h"
#include "product/LocalCalendar.h"
#include "tools/ReportText.h"

#include <sstream>

namespace vardel {

namespace {

constexpr size_t longestShownTitle = 80;

} // namespace

std::string TimeEntriesFormatter::text(const std::vector<TaskActivity>& entries, const std::string& day)
{
    if (entries.empty())
        return "No time entries on " + day + ".\n";
    std::ostringstream text;
    text << "Time entries on " << day << "\n\n";
    for (const TaskActivity& entry : entries) {
        const TaskActivityDescriptor& descriptor = entry.descriptor;
        text << "  " << LocalCalendar::formatTime(descriptor.start) << "-" << LocalCalendar::formatTime(descriptor.end)
             << "  " << ReportText::durationColumn(descriptor.durationSeconds()) << "  "
             << ReportText::shortened(descriptor.title, longestShownTitle);
        if (descriptor.project)
            text << " [" << ReportText::shortened(*descriptor.project, longestShownTitle) << "]";
        text << "\n";
    }
    return text.str();
}

nlohmann::ordered_json TimeEntriesFormatter::json(const std::vector<TaskActivity>& entries, const std::string& day)
{
    nlohmann::ordered_json listed = nlohmann::ordered_json::array();
    for (const TaskActivity& entry : entries) {
        const TaskActivityDescriptor& descriptor = entry.descriptor;
        listed.push_back({ { "id", entry.identifier }, { "start", ValueJson::formatIso8601(descriptor.start) },
            { "end", ValueJson::formatIso8601(descriptor.end) }, { "seconds", descriptor.durationSeconds() },
            { "title", descriptor.title },
            { "project", descriptor.project ? nlohmann::ordered_json(*descriptor.project) : nullptr } });
    }
    return { { "date", day }, { "entries", std::move(listed) } };
}

} // namespace vardel
