#pragma once

#include <filesystem>
#include <functional>
#include <optional>

namespace vardel::linux_desktop {

// A file holding the running tracker's process id, removed when the tracker ends by itself; one left
// behind by a process that is gone tells the next start that the last run crashed (a fatal signal,
// SIGKILL). It lives in the session's runtime folder, which the session's end empties.
class RunMarker {
public:
    using EnvironmentLookup = std::function<const char*(const char* name)>;

    // $XDG_RUNTIME_DIR/vardel/tracker.running; nothing without XDG_RUNTIME_DIR.
    static std::optional<std::filesystem::path> defaultPath(const EnvironmentLookup&);

    // Reads what an earlier run left, then marks this process as running.
    explicit RunMarker(std::filesystem::path file);
    ~RunMarker();
    RunMarker(const RunMarker&) = delete;
    RunMarker& operator=(const RunMarker&) = delete;

    // The file named a process that no longer runs.
    bool previousRunCrashed() const { return previousRunCrashed_; }

private:
    std::filesystem::path file_;
    bool previousRunCrashed_ = false;
};

} // namespace vardel::linux_desktop
