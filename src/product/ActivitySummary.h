#pragma once

#include "product/ActivitySpan.h"

#include <optional>
#include <string>
#include <vector>

namespace vardel {

// What the recorded spans of a period add up to: the timeline, the total, and the time per
// application and per document or web page.
struct ActivitySummary {
    struct ApplicationTotal {
        std::optional<std::string> bundleIdentifier;
        std::string name;
        double seconds = 0;
        bool operator==(const ApplicationTotal&) const = default;
    };
    struct DocumentTotal {
        // A file path or a page address.
        std::string documentPath;
        std::optional<std::string> documentTitle;
        std::string applicationName;
        double seconds = 0;
        bool operator==(const DocumentTotal&) const = default;
    };

    // The spans cut to [from, to), earliest first; the totals sorted by time, most first, then by
    // name. Spans without a document count for their application only.
    static ActivitySummary of(const std::vector<ActivitySpan>& spans, Date from, Date to);

    // The name an application is shown by: its name, else its bundle identifier.
    static std::string applicationName(const RecordedActivity&);

    Date from;
    Date to;
    std::vector<ActivitySpan> timeline;
    double totalSeconds = 0;
    std::vector<ApplicationTotal> applications;
    std::vector<DocumentTotal> documents;
};

} // namespace vardel
