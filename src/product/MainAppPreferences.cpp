#include "product/MainAppPreferences.h"

#include "platform/Platform.h"

namespace vardel {

bool MainAppPreferences::onboardingHasCompleted()
{
    return platform().productPreferences().getBool("onboardingHasCompleted").value_or(false);
}

} // namespace vardel
