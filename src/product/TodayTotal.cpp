#include "product/TodayTotal.h"

#include "product/DatabaseWrapper.h"
#include "product/DurationFormatter.h"
#include "product/LocalCalendar.h"

namespace vardel::TodayTotal {

std::optional<double> secondsUntil(Date now)
{
    Database* database = DatabaseWrapper::sharedInstance().database();
    if (!database)
        return std::nullopt;
    auto total = database->totalActivitySecondsBetween(LocalCalendar::startOfDay(now), now);
    if (!total.ok())
        return std::nullopt;
    return total.value();
}

std::optional<std::string> title(Date now)
{
    auto seconds = secondsUntil(now);
    if (!seconds)
        return std::nullopt;
    return DurationFormatter::shortString(*seconds, 2, true);
}

} // namespace vardel::TodayTotal
