#pragma once

#include "platform/Accessibility.h"

#include <filesystem>
#include <optional>
#include <string_view>
#include <vector>

namespace vardel::linux_desktop {

// Parent processes, read from /proc.
class ProcessAncestry {
public:
    // procFolder: /proc, or a test's stand-in.
    explicit ProcessAncestry(std::filesystem::path procFolder = "/proc");

    // The process's parent; nothing for a process that is gone or for the first process.
    std::optional<ProcessIdentifier> parentOf(ProcessIdentifier) const;
    // The process and its parents, nearest first, up to (and without) the first process; at most
    // maximumDepth entries, so that a cycle read from a racing /proc ends.
    std::vector<ProcessIdentifier> lineOf(ProcessIdentifier, size_t maximumDepth = 32) const;

    // The parent pid in the text of /proc/PID/stat: the fourth field, counted after the command
    // name's closing parenthesis (the name itself may hold spaces and parentheses).
    static std::optional<ProcessIdentifier> parentInStat(std::string_view stat);

private:
    std::filesystem::path procFolder_;
};

} // namespace vardel::linux_desktop
