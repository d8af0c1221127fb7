#pragma once

#include "platform/Value.h"

#include <optional>
#include <string>

// Today's recorded time, for the status item's title and menu line.
namespace vardel::TodayTotal {

// The seconds recorded from the local midnight before `now` up to `now`, as stored; nothing
// without a database or when it cannot be read.
std::optional<double> secondsUntil(Date now);
// Compact hours and minutes, such as "2h 5m" or "0m"; nothing without a database.
std::optional<std::string> title(Date now);

} // namespace vardel::TodayTotal
