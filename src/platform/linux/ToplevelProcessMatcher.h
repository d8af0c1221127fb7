#pragma once

#include "platform/Accessibility.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vardel::linux_desktop {

// What the accessibility bus tells about one application, for finding the process behind a Wayland
// toplevel when the compositor does not say it.
struct AccessibleApplication {
    ProcessIdentifier pid = 0;
    // The application's accessible name (GTK: the program name; Firefox: "Firefox").
    std::string name;
    // The file name of /proc/PID/exe.
    std::string executableName;
    // Its windows' accessible names.
    std::vector<std::string> windowTitles;
};

// Pairs a toplevel (app id, title) with the application that shows it: the one application with a
// window of that title; among several, or when no window has the title (some header-bar windows
// leave their name empty), the one whose name or executable is the app id's.
class ToplevelProcessMatcher {
public:
    static std::optional<ProcessIdentifier> match(
        std::string_view appId, std::string_view title, const std::vector<AccessibleApplication>& applications);

    // Whether an application name or an executable name stands for the app id: the same up to case,
    // or the last part of a reverse-domain app id ("org.gnome.TextEditor" and "texteditor"), or one
    // the start of the other at a word boundary ("firefox-esr" and "Firefox").
    static bool namesAppId(std::string_view name, std::string_view appId);
};

} // namespace vardel::linux_desktop
