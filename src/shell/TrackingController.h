#pragma once

#include "product/InfoLogger.h"
#include "product/MyLilTimer.h"
#include "shell/StatusItemController.h"

#include <optional>

namespace vardel {

// Whether the recording service tracks, and the pauses: for a time, until tomorrow, or until
// resumed. A timed pause ends by itself; setting the tracking state drops it.
class TrackingController {
public:
    TrackingController(InfoLogger&, StatusItemController&);
    TrackingController(const TrackingController&) = delete;
    TrackingController& operator=(const TrackingController&) = delete;

    void setShouldTrack(bool shouldTrack);
    // Zero, a negative or a meaningless duration pauses until tracking is resumed by hand.
    void pauseTrackingForTime(double seconds);
    void resumeTracking();
    // Resumes a pause, or pauses until tomorrow.
    void toggleTracking();

    bool shouldTrack() const { return infoLogger_.shouldTrack(); }
    // While a timed pause has time left: how much.
    std::optional<double> secondsLeftInPause() const;

private:
    InfoLogger& infoLogger_;
    StatusItemController& statusItem_;
    std::optional<MyLilTimer> resumeTrackingTimer_;
};

} // namespace vardel
