#pragma once

namespace vardel {

// The questions of the normal start, each asked only after the first-run guide, and only until its
// "do not ask again" box was ticked once.
class StartupQuestions {
public:
    // The reason the tracker gives whenever it asks to keep running.
    static constexpr const char* trackerMustRunText
        = "Vardel can only track your activities while the tracker app is running.";

    static void askToLaunchAtLogin();
    static void askForAccessibility();
};

} // namespace vardel
