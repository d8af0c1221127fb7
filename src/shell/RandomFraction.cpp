#include "shell/RandomFraction.h"

#include "platform/ProcessWide.h"

#include <random>

namespace vardel {

namespace {

ProcessWide<std::mt19937> generator([] { return std::mt19937(std::random_device {}()); });

} // namespace

double RandomFraction::next()
{
    return std::uniform_real_distribution<double>(0, 1)(generator.get());
}

void RandomFraction::seed(uint32_t seed)
{
    generator.get().seed(seed);
}

} // namespace vardel
