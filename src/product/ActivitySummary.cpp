#include "product/ActivitySummary.h"

#include <algorithm>
#include <map>
#include <tuple>

namespace vardel {

namespace {

// Applications are told apart by bundle identifier when they have one, else by name.
std::string applicationKey(const RecordedActivity& activity)
{
    return activity.bundleIdentifier ? "id:" + *activity.bundleIdentifier
                                     : "name:" + ActivitySummary::applicationName(activity);
}

template<typename Total> void sortMostTimeFirst(std::vector<Total>& totals, auto name)
{
    std::stable_sort(totals.begin(), totals.end(), [&](const Total& first, const Total& second) {
        return std::make_tuple(-first.seconds, name(first)) < std::make_tuple(-second.seconds, name(second));
    });
}

ActivitySpan clipped(ActivitySpan span, Date from, Date to)
{
    span.start = std::max(span.start, from);
    span.end = std::min(span.end, to);
    return span;
}

} // namespace

std::string ActivitySummary::applicationName(const RecordedActivity& activity)
{
    if (activity.applicationName && !activity.applicationName->empty())
        return *activity.applicationName;
    return activity.bundleIdentifier.value_or("Unknown application");
}

ActivitySummary ActivitySummary::of(const std::vector<ActivitySpan>& spans, Date from, Date to)
{
    ActivitySummary summary;
    summary.from = from;
    summary.to = to;
    std::map<std::string, ApplicationTotal> applications;
    std::map<std::pair<std::string, std::string>, DocumentTotal> documents;
    for (const ActivitySpan& span : spans) {
        double seconds = span.secondsWithin(from, to);
        if (seconds <= 0)
            continue;
        const RecordedActivity& activity = span.activity;
        summary.timeline.push_back(clipped(span, from, to));
        summary.totalSeconds += seconds;
        std::string key = applicationKey(activity);
        auto [application, added] = applications.try_emplace(
            key, ApplicationTotal { activity.bundleIdentifier, applicationName(activity), 0 });
        application->second.seconds += seconds;
        if (activity.documentPath) {
            auto [document, _] = documents.try_emplace(std::make_pair(key, *activity.documentPath),
                DocumentTotal { *activity.documentPath, activity.documentTitle, applicationName(activity), 0 });
            document->second.seconds += seconds;
            // The latest title a page or document had is the one worth showing.
            if (activity.documentTitle)
                document->second.documentTitle = activity.documentTitle;
        }
    }
    std::sort(summary.timeline.begin(), summary.timeline.end(),
        [](const ActivitySpan& first, const ActivitySpan& second) { return first.start < second.start; });
    for (auto& [key, total] : applications)
        summary.applications.push_back(std::move(total));
    for (auto& [key, total] : documents)
        summary.documents.push_back(std::move(total));
    sortMostTimeFirst(summary.applications, [](const ApplicationTotal& total) { return total.name; });
    sortMostTimeFirst(summary.documents, [](const DocumentTotal& total) { return total.documentPath; });
    return summary;
}

} // namespace vardel
