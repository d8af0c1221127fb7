#pragma once

#include "platform/EventTrace.h"
#include "platform/ProcessLauncher.h"

namespace vardel::linux_desktop {

// Starts programs for real; every start is traced as a `process` event.
class SpawnProcessLauncher final : public ProcessLauncher {
public:
    explicit SpawnProcessLauncher(EventTrace& trace)
        : trace_(trace)
    {
    }

    // posix_spawn and waitpid; 127 when the program cannot be started, 128 + the signal when a
    // signal ended it.
    int runAndWait(const std::string& path, const std::vector<std::string>& arguments) override;
    // The program runs in a session of its own, as an orphan that init reaps, so that it neither
    // dies with the tracker nor stays behind as a zombie.
    std::optional<std::string> launch(const std::string& path, const std::vector<std::string>& arguments) override;

private:
    EventTrace& trace_;
};

} // namespace vardel::linux_desktop
