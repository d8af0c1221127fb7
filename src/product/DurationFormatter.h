#pragma once

#include <string>

// The product's duration formatter.
namespace vardel::DurationFormatter {

// Whole hours, minutes and seconds, such as "1h 2m 5s" or "45m"; parts that are zero are left out
// and no time at all is "0s". Fractions of a second are dropped; a negative duration counts as
// none.
std::string format(double seconds);

// The same parts, at most maxComponents of them, counted from the largest that is not zero, such
// as "2h 5m" for 7,530 s with two components. With alwaysShowMinutes, seconds are left out and
// minutes always appear: "0m" under a minute, "2h 0m" on the hour.
std::string shortString(double seconds, int maxComponents, bool alwaysShowMinutes);

} // namespace vardel::DurationFormatter
