#pragma once

#include "platform/Value.h"

#include <optional>
#include <string>
#include <string_view>

// Days and clock times in the process's time zone (TZ; UTC when unset), as the user reads them.
namespace vardel::LocalCalendar {

// The local midnight that begins the day holding the moment.
Date startOfDay(Date);
// The local midnight that ends the day holding the moment (23 or 25 hours after the day's start on
// the days the clocks change).
Date startOfNextDay(Date);
// The start of the day written "YYYY-MM-DD"; nothing for anything else, such as "2026-02-30".
std::optional<Date> parseDay(std::string_view);
// "YYYY-MM-DD" of the day holding the moment.
std::string formatDay(Date);
// "HH:MM:SS", seconds rounded down.
std::string formatTime(Date);

} // namespace vardel::LocalCalendar
