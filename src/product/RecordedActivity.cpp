#include "product/RecordedActivity.h"

namespace vardel {

RecordedActivity RecordedActivity::from(const VDActivity& activity)
{
    const VDActivityDetails& details = activity.details;
    RecordedActivity recorded { activity.applicationBundleIdentifier, activity.application.localizedName,
        details.windowTitle, details.documentPath, details.documentTitle, details.contextPath, details.isPrivate,
        activity.isFullscreen };
    if (recorded.isPrivate) {
        recorded.windowTitle.reset();
        recorded.documentPath.reset();
        recorded.documentTitle.reset();
    }
    return recorded;
}

std::ostream& operator<<(std::ostream& stream, const RecordedActivity& activity)
{
    auto text = [](const std::optional<std::string>& value) { return value ? "\"" + *value + "\"" : "null"; };
    stream << "{" << text(activity.bundleIdentifier) << " " << text(activity.applicationName)
           << " window=" << text(activity.windowTitle) << " document=" << text(activity.documentPath)
           << " documentTitle=" << text(activity.documentTitle) << " context=";
    if (activity.contextPath) {
        for (const std::string& part : *activity.contextPath)
            stream << "/" << part;
    } else {
        stream << "null";
    }
    return stream << (activity.isPrivate ? " private" : "") << (activity.isFullscreen ? " fullscreen" : "") << "}";
}

} // namespace vardel
