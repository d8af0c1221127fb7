#pragma once

#include "calls/CallEndReaction.h"
#include "calls/CallProperties.h"
#include "calls/ExcludedApplications.h"
#include "calls/PowerManagementAssertions.h"
#include "product/InfoLoggerCallDetector.h"

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace vardel {

// Decides on every sample which applications are in a call, follows each call from its first to
// its last sighting and reacts when one ends.
class RunningCallDetector final : public InfoLoggerCallDetector {
public:
    static RunningCallDetector& sharedInstance();

    void updateCallStatusForActivity(const VDActivity* activity, bool isTracking) override;
    bool hasRunningCall() const override;
    std::optional<std::string> descriptionOfRunningCalls() const override;

    static bool isQualifyingCall(const CallMetadata&);
    static std::optional<std::string> callTitle(const CallMetadata&);
    // The name a qualifying call is shown under.
    static std::optional<std::string> displayName(const CallMetadata&);

    // The applications never taken for calls, as the preferences make them now.
    static ExcludedApplications effectiveExcludedApplications();

    // One sample's candidates from the snapshot alone (meeting-related processes, TeamViewer,
    // FaceTime), without browser calls; changes no state, so the diagnostic dump can show them.
    std::vector<ApplicationAndMetadata> assertionBasedCandidates(
        const PowerManagementAssertions&, const VDActivity*) const;

    void setCallEndReaction(CallEndReaction* reaction) { reaction_ = reaction; }
    const std::map<std::string, CallProperties, std::less<>>& runningCallsByBundleIdentifier() const
    {
        return runningCalls_;
    }

private:
    std::vector<ApplicationAndMetadata> candidates(const PowerManagementAssertions&, const VDActivity*) const;
    std::vector<ApplicationAndMetadata> assertionBasedCandidates(
        const PowerManagementAssertions&, const VDActivity*, const ExcludedApplications&) const;
    std::optional<ApplicationAndMetadata> candidateForApplication(
        const PowerManagementAssertions::PIDAndRunningApplication&, const VDActivity*,
        const ExcludedApplications&) const;
    void reportMeetingAssertions(const PowerManagementAssertions&);
    void recordSighting(const ApplicationAndMetadata&, Date now);
    void reportParallelCalls(const std::vector<ApplicationAndMetadata>&);
    bool isStillRunning(const std::string& key, const CallProperties&, Date now);
    std::string reactToEndedCall(const std::string& key, const CallProperties&);

    std::map<std::string, CallProperties, std::less<>> runningCalls_;
    std::set<std::string, std::less<>> analyticsEventsSentForMeetingPMAssertionsWithBundleIdentifiers_;
    bool hasSentAnalyticsEventForMultipleParallelPMAssertions_ = false;
    CallEndReaction* reaction_ = nullptr;
};

} // namespace vardel
