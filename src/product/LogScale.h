#pragma once

#include <cstdint>

namespace vardel {

// The number rounded down to the series 0, 1, 2, 5, 10, 20, 50, 100, … (1, 2 and 5 times a power of
// ten), so that analytics carry an order of magnitude rather than an exact, identifying value.
// Anything below 1, negative numbers included, gives 0.
int64_t roundNumberToLogScale(double number);

} // namespace vardel
