#pragma once

#include <cstdint>

namespace vardel {

// Pseudo-random fractions that spread the work of many machines apart, such as their first syncs.
// One generator for the process, seeded once from the system's entropy; tests seed it to get a
// known sequence, and resetting the process-wide state seeds it afresh.
class RandomFraction {
public:
    // In [0, 1).
    static double next();
    static void seed(uint32_t seed);
};

} // namespace vardel
