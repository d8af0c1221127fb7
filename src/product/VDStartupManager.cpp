#include "product/VDStartupManager.h"

#include "platform/Platform.h"

namespace vardel {

namespace {
constexpr const char* preferenceKey = "shouldStartAtLogin";
}

bool VDStartupManager::shouldStartAtLogin()
{
    return platform().productPreferences().getBool(preferenceKey).value_or(false);
}

void VDStartupManager::setShouldStartAtLogin(bool start)
{
    platform().productPreferences().setObject(preferenceKey, Value(start));
}

} // namespace vardel
