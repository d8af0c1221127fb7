#pragma once

#include <string>

// The product's duration formatter.
namespace vardel::DurationFormatter {

// Whole hours, minutes and seconds, such as "1h 2m 5s" or "45m"; parts that are zero are left out
// and no time at all is "0s". Fractions of a second are dropped; a negative duration counts as
// none.
std::string format(double seconds);

} // namespace vardel::DurationFormatter
