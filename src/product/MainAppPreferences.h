#pragma once

namespace vardel {

// The main application's settings that the tracker reads.
class MainAppPreferences {
public:
    // Whether the user has finished the first-run guide.
    static bool onboardingHasCompleted();
};

} // namespace vardel
