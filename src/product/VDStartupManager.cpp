#include "product/VDStartupManager.h"

#include "platform/Platform.h"

namespace vardel {

bool VDStartupManager::shouldStartAtLogin()
{
    return platform().loginItems().startsAtLogin();
}

void VDStartupManager::setShouldStartAtLogin(bool start)
{
    if (auto error = platform().loginItems().setStartsAtLogin(start))
        platform().log().warning("Launch at login not changed: " + *error);
}

} // namespace vardel
