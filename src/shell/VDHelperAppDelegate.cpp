#include "shell/VDHelperAppDelegate.h"

#include "activity/VDInfoExtractor.h"

namespace vardel {

void VDHelperAppDelegate::awakeFromNib(const std::vector<std::string>&)
{
    infoLogger_.setInfoExtractor(this);
    infoLogger_.setShouldTrack(true);
    infoLogger_.startSampling();
}

std::optional<VDActivity> VDHelperAppDelegate::getCurrentActivity()
{
    return VDInfoExtractor::currentActivity();
}

void VDHelperAppDelegate::callInfoExtractorFor(VDActivity& activity)
{
    VDInfoExtractor::callInfoExtractorForActivity(activity);
}

const std::set<std::string, std::less<>>& VDHelperAppDelegate::noAccessibilityApplicationBundleIdentifiers()
{
    return VDInfoExtractor::noAccessibilityApplicationBundleIdentifiers();
}

} // namespace vardel
