#pragma once

#include "platform/Workspace.h"
#include "platform/linux/ApplicationIdentifierTable.h"
#include "platform/linux/DesktopEntries.h"
#include "platform/linux/X11WindowFacts.h"

#include <map>
#include <optional>
#include <string>

namespace vardel::linux_desktop {

// Who a process is to the rest of the system: its desktop entry, and from it the bundle identifier,
// name and paths of a running application.
class ApplicationIdentity {
public:
    ApplicationIdentity(DesktopEntries& entries, ApplicationIdentifierTable table)
        : entries_(entries)
        , table_(std::move(table))
    {
    }

    // The window, when given, is one of the process's client windows (WM_CLASS, _GTK_APPLICATION_ID).
    // Without a pid (0) the window alone identifies the application, which then has no pid either.
    RunningApplication identify(ProcessIdentifier, const X11Window* window);

    // The desktop entry of a process, found in this order: Flatpak metadata, the snap's name, the
    // launcher's GIO_LAUNCHED_DESKTOP_FILE, the window's _GTK_APPLICATION_ID, its WM_CLASS against
    // StartupWMClass and entry ids, the executable against the entries' Exec programs.
    std::optional<DesktopEntry> desktopEntryOf(ProcessIdentifier, const X11Window* window);

    // Mapped through the table; an unmapped entry keeps its id.
    std::string bundleIdentifierOf(const DesktopEntry&) const;
    // The installed entry an identifier stands for: one the table maps to it, else the entry with
    // that id.
    std::optional<DesktopEntry> entryForBundleIdentifier(std::string_view identifier) const;

    static std::optional<std::string> executableOf(ProcessIdentifier);

    // Desktop entries were installed, changed or removed: every process is identified again.
    void desktopEntriesChanged();

private:
    // Drops the answers for processes that have ended, so that the memory follows the processes
    // that run.
    void forgetEndedProcesses();

    struct Known {
        std::string executable;
        RunningApplication application;
    };

    DesktopEntries& entries_;
    ApplicationIdentifierTable table_;
    // The answers for processes already met, kept while their executable stays the same and until
    // the desktop entries change.
    std::map<ProcessIdentifier, Known> known_;
};

} // namespace vardel::linux_desktop
