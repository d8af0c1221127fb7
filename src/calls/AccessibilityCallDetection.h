#pragma once

#include "calls/CallProperties.h"
#include "calls/ExcludedApplications.h"
#include "calls/PowerManagementAssertions.h"
#include "platform/VDActivity.h"
#include "platform/Workspace.h"

#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace vardel {

// What the power-management assertions cannot tell about a call, read from the call applications'
// windows and accessibility trees: meeting titles and calls held in browsers. Pure reads.
class AccessibilityCallDetection {
public:
    // The meeting title of a Slack huddle or a Teams meeting; nothing for other applications.
    static std::optional<std::string> meetingTitle(std::string_view bundleIdentifier, const VDActivity*);
    // The title of a FaceTime window that names a call.
    static std::optional<std::string> faceTimeTitle();
    // The title of the FaceTime call shown in the notification centre's call controls.
    static std::optional<std::string> notificationCenterCallTitle(const RunningApplication& notificationCenter);
    // A call held in a browser process, keyed by the process's bundle identifier; the service and
    // meeting title are known only for a few sites.
    static std::optional<ApplicationAndMetadata> browserCall(const PowerManagementAssertions::PIDAndRunningApplication&,
        const VDActivity*, const ExcludedApplications& excludedApplications);
};

} // namespace vardel
