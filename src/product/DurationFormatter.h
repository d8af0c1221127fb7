#pragma once

#include <string>

// The product's duration formatter.
namespace vardel::DurationFormatter {

// Whole hours, minutes and seconds, such as "1h 2m 5s" or "45m"; parts that are zero are left out
// and no time at all is "0s". Fractions of a second are dropped; a negative duration counts as
// none.
std::string format(double seconds);

// The same parts, but only the largest maxComponents units from the first one that is not zero
// ("1h 2m" for 3,725 seconds with two components). With alwaysShowMinutes a zero minute part
// within those units is written as "0m" rather than left out.
std::string shortStringFor(double seconds, int maxComponents, bool alwaysShowMinutes);

} // namespace vardel::DurationFormatter
