#include "platform/Platform.h"

#include <cassert>

namespace vardel {

namespace {
Platform* installedPlatform = nullptr;
uint64_t installationCount = 0;
uint64_t currentInstallation = 0;
} // namespace

Platform& Platform::current()
{
    assert(installedPlatform && "no platform installed");
    return *installedPlatform;
}

void Platform::install(Platform* platform)
{
    installedPlatform = platform;
    currentInstallation = platform ? ++installationCount : 0;
}

uint64_t Platform::installation()
{
    return currentInstallation;
}

} // namespace vardel
