#include "product/ActivitySpan.h"

#include "platform/ValueJson.h"

#include <algorithm>

namespace vardel {

double ActivitySpan::secondsWithin(Date from, Date to) const
{
    double clippedStart = std::max(start.secondsSince1970, from.secondsSince1970);
    double clippedEnd = std::min(end.secondsSince1970, to.secondsSince1970);
    return std::max(0.0, clippedEnd - clippedStart);
}

std::ostream& operator<<(std::ostream& stream, const ActivitySpan& span)
{
    if (span.id)
        stream << "#" << *span.id << " ";
    return stream << ValueJson::formatIso8601(span.start) << ".." << ValueJson::formatIso8601(span.end) << " "
                  << span.activity;
}

} // namespace vardel
