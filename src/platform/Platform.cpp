#include "platform/Platform.h"

#include <cassert>

namespace vardel {

namespace {
Platform* installedPlatform = nullptr;
}

Platform& Platform::current()
{
    assert(installedPlatform && "no platform installed");
    return *installedPlatform;
}

void Platform::install(Platform* platform)
{
    installedPlatform = platform;
}

} // namespace vardel
