#include "product/VDHelper.h"

#include "platform/Platform.h"

namespace vardel {

bool VDHelper::accessibilityAvailable()
{
    return platform().accessibility().isProcessTrusted();
}

void VDHelper::openAccessibilityPreferencePane(const std::string& settingsURL)
{
    if (!settingsURL.empty())
        platform().workspace().openURL(settingsURL);
}

} // namespace vardel
