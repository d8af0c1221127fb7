#pragma once

#include "platform/AXUIElement.h"
#include "platform/Workspace.h"

#include <optional>
#include <string>
#include <vector>

namespace vardel {

struct VDActivityDetails {
    std::optional<std::string> windowTitle;
    std::optional<std::string> documentPath; // a file path or a page address
    std::optional<std::string> documentTitle;
    std::optional<std::vector<std::string>> contextPath; // most general first
    bool isPrivate = false; // only ever set to true

    bool operator==(const VDActivityDetails&) const = default;
};

// The activity record of one sample: the frontmost application and what it shows.
struct VDActivity {
    VDActivity(RunningApplication runningApplication, VDActivityDetails activityDetails)
        : application(std::move(runningApplication))
        , applicationBundleIdentifier(application.bundleIdentifier)
        , applicationProcessIdentifier(application.processIdentifier)
        , applicationExecutableURL(application.executablePath)
        , details(std::move(activityDetails))
    {
    }

    RunningApplication application;
    std::optional<std::string> applicationBundleIdentifier;
    ProcessIdentifier applicationProcessIdentifier;
    std::optional<std::string> applicationExecutableURL; // the executable's file path
    VDActivityDetails details;
    bool isFullscreen = false;
    bool isShowingSaveSheet = false;
    // Unset when the accessibility branch did not run.
    std::optional<std::vector<AXUIElement>> accessibilityWindows;
};

} // namespace vardel
