#pragma once

#include "calls/CallTimeEntryOffers.h"
#include "platform/InfoLoggerExtractor.h"
#include "platform/InfoLoggerPresenter.h"
#include "platform/ScriptingCommands.h"
#include "platform/StatusBar.h"
#include "product/InfoLogger.h"
#include "product/MASShortcutBinder.h"
#include "product/MyLilTimer.h"
#include "product/StatusItemInfoProvider.h"
#include "shell/SelfRelauncher.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vardel {

// The tracker application: starts up, connects itself to the recording service as its source of
// activities, runs the status item and its menu, pauses and resumes tracking, and quits.
class VDHelperAppDelegate final : public InfoLoggerExtractor,
                                  public InfoLoggerPresenter,
                                  public MenuDelegate,
                                  public StatusItemPresenter {
public:
    explicit VDHelperAppDelegate(InfoLogger& infoLogger);
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
    const StatusItemAppearance& statusItem() const { return statusItem_; }

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
    MASShortcutBinder* editTaskShortcutBinder() { return editTaskShortcutBinder_.get(); }

    // Quitting.
    void askToQuit();
    void logQuitEvent();
    // The end of the process, however it was asked for: the recording service may finish its
    // work first, for at most a few seconds.
    void applicationShouldTerminate(const std::string& reason);

private:
    // Runs the dump mode that the arguments select, if any, and gives its exit status.
    static std::optional<int> runDumpMode(const std::vector<std::string>& arguments);
    // True when the crash-recovery start ends the process.
    bool recoverFromCrash();
    void askToLaunchAtLogin();
    void askForAccessibility();
    void setUpStatusItem();
    void connectRecordingService();
    void startUpdateWatcher();
    void scheduleDeferredWork();
    void prepareRecordingForShutdown(bool isRelaunch);
    void prepareDatabase();
    void receiveScriptingCommand(const ScriptingCommandRequest&);

    void startTask();
    void stopTask();
    void startMainApplication();
    void quitNow();
    void replyToApplicationShouldTerminate();
    void applicationWillTerminate();

    MenuItem* menuEntry(std::string_view action);
    std::optional<double> secondsLeftInPause() const;

    InfoLogger& infoLogger_;
    CallTimeEntryOffers callTimeEntryOffers_;
    Menu statusMenu_;
    StatusItemAppearance statusItem_;
    std::unique_ptr<MyLilTimer> resumeTrackingTimer_;
    std::optional<Date> lastEffectiveAppearanceChangeDispatched_;
    std::optional<std::string> terminationReason_;
    bool terminating_ = false;
    std::unique_ptr<MASShortcutBinder> editTaskShortcutBinder_;
    std::unique_ptr<SelfRelauncher> relauncher_;
};

} // namespace vardel
