#pragma once

#include "platform/ScheduledTimer.h"
#include "product/InfoLogger.h"

#include <optional>
#include <string>
#include <vector>

namespace vardel {

// The end of the process, however it comes: the menu's quit (asked once, then remembered), a
// termination request from outside, or a relaunch. The recording service gets its chance to store
// what it holds first.
class TerminationHandler {
public:
    explicit TerminationHandler(InfoLogger&);
    ~TerminationHandler();
    TerminationHandler(const TerminationHandler&) = delete;
    TerminationHandler& operator=(const TerminationHandler&) = delete;

    void askToQuit();
    // Keeps the date among the last manual quits.
    void logQuitEvent();
    // The recording service may finish its work first, for at most a few seconds; later requests
    // change nothing.
    void applicationShouldTerminate(const std::string& reason);
    // Before a relaunch: the recording service stores what it holds, on the run loop.
    void prepareRecordingForShutdown(bool isRelaunch);

private:
    void quitNow();
    void replyToApplicationShouldTerminate();
    void applicationWillTerminate();

    InfoLogger& infoLogger_;
    std::optional<std::string> terminationReason_;
    bool terminating_ = false;
    ScheduledTimer flushDeadline_;
    std::vector<ScheduledTimer> shutdownPreparations_;
};

} // namespace vardel
