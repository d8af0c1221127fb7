#include "shell/TrackingController.h"

#include "platform/Platform.h"
#include "product/HelperHelper.h"

#include <cmath>

namespace vardel {

TrackingController::TrackingController(InfoLogger& infoLogger, StatusItemController& statusItem)
    : infoLogger_(infoLogger)
    , statusItem_(statusItem)
{
}

void TrackingController::setShouldTrack(bool shouldTrack)
{
    resumeTrackingTimer_.reset();
    infoLogger_.setShouldTrack(shouldTrack);
    statusItem_.updateStatusItemTransparency();
}

void TrackingController::pauseTrackingForTime(double seconds)
{
    setShouldTrack(false);
    if (seconds > 0 && std::isfinite(seconds))
        resumeTrackingTimer_.emplace(seconds, [this] { resumeTracking(); });
}

void TrackingController::resumeTracking()
{
    setShouldTrack(true);
}

void TrackingController::toggleTracking()
{
    if (!infoLogger_.shouldTrack())
        setShouldTrack(true);
    else
        pauseTrackingForTime(HelperHelper::secondsUntilTomorrow());
}

std::optional<double> TrackingController::secondsLeftInPause() const
{
    if (infoLogger_.shouldTrack() || !resumeTrackingTimer_ || !resumeTrackingTimer_->isValid())
        return std::nullopt;
    double left = resumeTrackingTimer_->fireDate().secondsSince1970 - platform().clock().now().secondsSince1970;
    return left > 0 ? std::optional(left) : std::nullopt;
}

} // namespace vardel
