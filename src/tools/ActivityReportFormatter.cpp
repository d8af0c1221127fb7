#include "tools/ActivityReportFormatter.h"

#include "platform/ValueJson.h"
#include "product/DurationFormatter.h"
#include "product/LocalCalendar.h"
#include "tools/ReportText.h"

#include <sstream>

namespace vardel {

namespace {

using nlohmann::ordered_json;

ordered_json optionalText(const std::optional<std::string>& text)
{
    return text ? ordered_json(*text) : ordered_json(nullptr);
}

std::optional<std::string> shownTitle(const RecordedActivity& activity)
{
    if (activity.documentTitle && !activity.documentTitle->empty())
        return activity.documentTitle;
    if (activity.windowTitle && !activity.windowTitle->empty())
        return activity.windowTitle;
    return activity.documentPath;
}

struct TimelineLine {
    Date start;
    Date end;
    std::string description;
};

// Spans that follow each other without a gap and read the same make one line.
std::vector<TimelineLine> timelineLines(const std::vector<ActivitySpan>& timeline)
{
    std::vector<TimelineLine> lines;
    for (const ActivitySpan& span : timeline) {
        std::string description = ActivityReportFormatter::describe(span.activity);
        if (!lines.empty() && lines.back().end == span.start && lines.back().description == description) {
            lines.back().end = span.end;
            continue;
        }
        lines.push_back({ span.start, span.end, std::move(description) });
    }
    return lines;
}

ordered_json spanJson(const ActivitySpan& span)
{
    const RecordedActivity& activity = span.activity;
    return { { "start", ValueJson::formatIso8601(span.start) }, { "end", ValueJson::formatIso8601(span.end) },
        { "seconds", span.durationSeconds() }, { "bundleIdentifier", optionalText(activity.bundleIdentifier) },
        { "application", ActivitySummary::applicationName(activity) },
        { "windowTitle", optionalText(activity.windowTitle) }, { "documentPath", optionalText(activity.documentPath) },
        { "documentTitle", optionalText(activity.documentTitle) },
        { "contextPath", activity.contextPath ? ordered_json(*activity.contextPath) : ordered_json(nullptr) },
        { "isPrivate", activity.isPrivate }, { "isFullscreen", activity.isFullscreen } };
}

} // namespace

std::string ActivityReportFormatter::describe(const RecordedActivity& activity)
{
    std::string description = ActivitySummary::applicationName(activity);
    if (activity.isPrivate)
        return description + " — private window";
    if (auto title = shownTitle(activity))
        description += " — " + *title;
    return ReportText::shortened(description, longestShownText);
}

std::string ActivityReportFormatter::text(const ActivitySummary& summary, const std::string& day)
{
    if (summary.timeline.empty())
        return "No activity recorded on " + day + ".\n";
    std::ostringstream text;
    text << "Activity on " << day << "\n\nTimeline\n";
    for (const TimelineLine& line : timelineLines(summary.timeline)) {
        text << "  " << LocalCalendar::formatTime(line.start) << "-" << LocalCalendar::formatTime(line.end) << "  "
             << ReportText::durationColumn(line.end.secondsSince1970 - line.start.secondsSince1970) << "  "
             << line.description << "\n";
    }
    text << "\nApplications\n";
    for (const auto& application : summary.applications)
        text << "  " << ReportText::durationColumn(application.seconds) << "  "
             << ReportText::shortened(application.name, longestShownText) << "\n";
    if (!summary.documents.empty()) {
        text << "\nDocuments and pages\n";
        for (const auto& document : summary.documents) {
            std::string name = document.documentTitle && !document.documentTitle->empty()
                ? *document.documentTitle + " <" + document.documentPath + ">"
                : document.documentPath;
            text << "  " << ReportText::durationColumn(document.seconds) << "  "
                 << ReportText::shortened(name, longestShownText) << " (" << document.applicationName << ")\n";
        }
    }
    text << "\nTotal  " << DurationFormatter::format(summary.totalSeconds) << "\n";
    return text.str();
}

ordered_json ActivityReportFormatter::json(const ActivitySummary& summary, const std::string& day)
{
    ordered_json timeline = ordered_json::array();
    for (const ActivitySpan& span : summary.timeline)
        timeline.push_back(spanJson(span));
    ordered_json applications = ordered_json::array();
    for (const auto& application : summary.applications)
        applications.push_back({ { "bundleIdentifier", optionalText(application.bundleIdentifier) },
            { "application", application.name }, { "seconds", application.seconds } });
    ordered_json documents = ordered_json::array();
    for (const auto& document : summary.documents)
        documents.push_back(
            { { "documentPath", document.documentPath }, { "documentTitle", optionalText(document.documentTitle) },
                { "application", document.applicationName }, { "seconds", document.seconds } });
    return { { "date", day }, { "from", ValueJson::formatIso8601(summary.from) },
        { "to", ValueJson::formatIso8601(summary.to) }, { "totalSeconds", summary.totalSeconds },
        { "timeline", std::move(timeline) }, { "applications", std::move(applications) },
        { "documents", std::move(documents) } };
}

} // namespace vardel
