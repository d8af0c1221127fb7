#include "product/LogScale.h"

#include <array>

namespace vardel {

namespace {

// The largest power of ten whose multiples in the series still fit in 64 bits.
constexpr int64_t largestPowerOfTen = 1'000'000'000'000'000'000;

} // namespace

int64_t roundNumberToLogScale(double number)
{
    if (!(number >= 1))
        return 0;
    int64_t powerOfTen = 1;
    while (powerOfTen < largestPowerOfTen && number >= 10.0 * static_cast<double>(powerOfTen))
        powerOfTen *= 10;
    for (int64_t multiple : std::array<int64_t, 2> { 5, 2 }) {
        if (number >= static_cast<double>(multiple * powerOfTen))
            return multiple * powerOfTen;
    }
    return powerOfTen;
}

} // namespace vardel
