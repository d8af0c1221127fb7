#pragma once

#include "platform/Accessibility.h"
#include "platform/Alerts.h"
#include "platform/AnalyticsSink.h"
#include "platform/Clock.h"
#include "platform/CurrentProcess.h"
#include "platform/DesktopTexts.h"
#include "platform/EventTrace.h"
#include "platform/FileEventStream.h"
#include "platform/GlobalShortcuts.h"
#include "platform/Log.h"
#include "platform/LoginItems.h"
#include "platform/PowerManagement.h"
#include "platform/PreferenceStore.h"
#include "platform/ProcessLauncher.h"
#include "platform/PropertyListFiles.h"
#include "platform/RunLoop.h"
#include "platform/RunningTaskSource.h"
#include "platform/ScriptingCommands.h"
#include "platform/StandardStreams.h"
#include "platform/StatusBar.h"
#include "platform/TimeEntryEditor.h"
#include "platform/UserNotificationCenter.h"
#include "platform/WindowServer.h"
#include "platform/Workspace.h"

#include <cstdint>
#include <string>
#include <vector>

namespace vardel {

// Everything the system reaches outside itself. One platform is installed for the process; the
// logic reaches it through Platform::current().
class Platform {
public:
    virtual ~Platform() = default;

    virtual Accessibility& accessibility() = 0;
    virtual Workspace& workspace() = 0;
    virtual WindowServer& windowServer() = 0;
    virtual PreferenceStore& standardUserDefaults() = 0;
    virtual PreferenceStore& productPreferences() = 0;
    virtual DefaultsDomains& defaultsDomains() = 0;
    virtual Clock& clock() = 0;
    virtual RunLoop& runLoop() = 0;
    virtual ProcessLauncher& processLauncher() = 0;
    virtual AnalyticsSink& analytics() = 0;
    virtual Log& log() = 0;
    virtual EventTrace& trace() = 0;
    virtual PropertyListFiles& propertyListFiles() = 0;
    virtual StandardStreams& standardStreams() = 0;
    virtual PowerManagement& powerManagement() = 0;
    virtual UserNotificationCenter& userNotificationCenter() = 0;
    virtual TimeEntryEditor& timeEntryEditor() = 0;
    virtual RunningTaskSource& runningTasks() = 0;
    virtual Alerts& alerts() = 0;
    virtual StatusBar& statusBar() = 0;
    virtual ScriptingCommands& scriptingCommands() = 0;
    virtual FileEventStreams& fileEventStreams() = 0;
    virtual GlobalShortcuts& globalShortcuts() = 0;
    virtual CurrentProcess currentProcess() = 0;
    // Whether the tracker starts at login, as this desktop registers it.
    virtual LoginItems& loginItems() = 0;
    // The build installed now where this process was started from; compared with the main bundle's
    // "CFBundleVersion" to tell an update.
    virtual InstalledBuild installedBuild() = 0;
    // The shell script (for /bin/sh -c) that, after the delay, ends the process and starts the
    // installed program again.
    virtual std::string relaunchScript(double delaySeconds, const CurrentProcess&) = 0;
    virtual DesktopTexts desktopTexts() = 0;
    // The user's languages, most preferred first ("en", "de-CH").
    virtual std::vector<std::string> preferredLanguages() = 0;

    static Platform& current();
    // Installs the platform (not owned); nullptr uninstalls.
    static void install(Platform*);
    // A number new with every install, 0 while none is installed: an object that outlives the
    // platform it used compares it with the number it saw, so as never to call a platform that is gone.
    static uint64_t installation();
};

inline Platform& platform()
{
    return Platform::current();
}

} // namespace vardel
