#include "product/VDHelper.h"

#include "platform/Platform.h"

namespace vardel {

bool VDHelper::accessibilityAvailable()
{
    return platform().accessibility().isProcessTrusted();
}

void VDHelper::openAccessibilityPreferencePane()
{
    platform().workspace().openURL(accessibilitySettingsURL);
}

} // namespace vardel
