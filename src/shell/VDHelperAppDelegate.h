#pragma once

#include "calls/CallTimeEntryOffers.h"
#include "platform/ScriptingCommands.h"
#include "platform/StatusBar.h"
#include "product/InfoLogger.h"
#include "product/InfoLoggerExtractor.h"
#include "product/InfoLoggerPresenter.h"
#include "product/MASShortcutBinder.h"
#include "product/StatusItemInfoProvider.h"
#include "shell/DeferredStartupWork.h"
#include "shell/SelfRelauncher.h"
#include "shell/StatusItemController.h"
#include "shell/StatusMenuActions.h"
#include "shell/TaskActions.h"
#include "shell/TerminationHandler.h"
#include "shell/TrackingController.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vardel {

// The tracker application: starts up, connects itself to the recording service as its source of
// activities, and hands the status item, the menu, tracking, the timer's actions and quitting to
// its parts, forwarding to them.
class VDHelperAppDelegate final : public InfoLoggerExtractor,
                                  public InfoLoggerPresenter,
                                  public MenuDelegate,
                                  public StatusItemPresenter {
public:
    explicit VDHelperAppDelegate(InfoLogger& infoLogger);
    // Also after the platform was uninstalled: a platform other than the one it started on is not
    // called.
    ~VDHelperAppDelegate() override;
    VDHelperAppDelegate(const VDHelperAppDelegate&) = delete;
    VDHelperAppDelegate& operator=(const VDHelperAppDelegate&) = delete;

    // Start-up, given the process arguments (the program path first). A dump mode prints its dump
    // and stops the run loop with the dump's exit status instead of starting the tracker.
    void awakeFromNib(const std::vector<std::string>& arguments);
    // Passes the URLs given on the command line (arguments with a scheme) to the URL handler.
    static void applicationDidFinishLaunching(const std::vector<std::string>& arguments);

    // The recording service's questions.
    std::optional<VDActivity> getCurrentActivity() override;
    void callInfoExtractorFor(VDActivity&) override;
    const std::set<std::string, std::less<>>& noAccessibilityApplicationBundleIdentifiers() override;
    void checkForAccessibilitySuccess();

    // The status item.
    void updateStatusItemTransparency() override;
    void updateStatusItemProperties() override;
    void updateSyncStatusItemWithTitle(const std::optional<std::string>& title) override;
    void updateStatusItemVisibility();
    bool shouldShowSyncStatusItem() const;
    void effectiveAppearanceChanged();
    const StatusItemAppearance& statusItem() const { return statusItem_.statusItem(); }

    // Relaunching; none before start-up.
    SelfRelauncher* relauncher() { return relauncher_.get(); }

    // The menu.
    void menuWillOpen(Menu&) override;
    bool validateMenuItem(MenuItem&) override;
    void menuDidClose(Menu&) override;
    void performAction(const MenuItem&) override;

    // Tracking.
    void setShouldTrack(bool shouldTrack);
    void pauseTrackingForTime(double seconds);
    void resumeTracking();
    void toggleTracking();

    // (Re)binds the start-task shortcut: as stored it starts or stops a timer, with Shift it edits.
    void updateStartTaskShortcut();
    MASShortcutBinder* editTaskShortcutBinder() { return tasks_.editTaskShortcutBinder(); }

    // Quitting.
    void askToQuit();
    void logQuitEvent();
    // The end of the process, however it was asked for: the recording service may finish its
    // work first, for at most a few seconds.
    void applicationShouldTerminate(const std::string& reason);

private:
    void connectRecordingService();
    void startUpdateWatcher();
    void prepareDatabase();
    void receiveScriptingCommand(const ScriptingCommandRequest&);

    InfoLogger& infoLogger_;
    // The platform this delegate started on.
    uint64_t installation_;
    CallTimeEntryOffers callTimeEntryOffers_;
    StatusItemController statusItem_;
    TrackingController tracking_;
    TaskActions tasks_;
    TerminationHandler termination_;
    StatusMenuActions menu_;
    std::unique_ptr<SelfRelauncher> relauncher_;
    // Declared after the relauncher, which its relaunch calls, so that it goes first.
    DeferredStartupWork deferredWork_;
};

} // namespace vardel
