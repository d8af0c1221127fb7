#pragma once

#include "platform/Accessibility.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vardel {

struct RunningApplication {
    ProcessIdentifier processIdentifier = 0;
    std::optional<std::string> bundleIdentifier;
    std::optional<std::string> localizedName;
    std::optional<std::string> executablePath;
    std::optional<std::string> bundlePath;

    bool operator==(const RunningApplication&) const = default;
};

// An installed application's bundle, as opening it by its path shows it.
struct ApplicationBundle {
    std::string path;
    std::optional<std::string> bundleIdentifier;
    std::optional<std::string> localizedName;
    // The bundle's information dictionary; empty when it has none.
    Value::Dictionary info;
    // The folder that holds the bundle's resources, among them the icon file its information names;
    // empty when the platform knows of none.
    std::string resourcesPath;
    // The format of the bundle's icon files, given as the extension an icon name without it gets.
    std::string iconExtension = ".icns";
};

class Workspace {
public:
    virtual ~Workspace() = default;

    virtual std::optional<RunningApplication> frontmostApplication() = 0;
    virtual std::vector<RunningApplication> runningApplications() = 0;
    // The bundle of the installed application with that identifier, running or not.
    virtual std::optional<ApplicationBundle> applicationBundle(std::string_view bundleIdentifier) = 0;
    // The application bundle at that path (a folder ending in ".app"), running or not.
    virtual std::optional<ApplicationBundle> applicationBundleAtPath(const std::string& path) = 0;

    // Opens the application at that bundle path, or the URL with its default application, without
    // waiting for it; false when the request could not be made.
    virtual bool openApplication(const std::string& bundlePath) = 0;
    virtual bool openURL(const std::string& url) = 0;
};

} // namespace vardel
