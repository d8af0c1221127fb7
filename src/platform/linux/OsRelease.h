#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace vardel::linux_desktop::OsRelease {

// PRETTY_NAME of an os-release file's text, its shell quoting undone.
std::optional<std::string> prettyName(std::string_view text);
// The distribution (/etc/os-release, else /usr/lib/os-release) and the kernel, as one line:
// "Linux Distribution: Debian GNU/Linux 12 (bookworm), Kernel: Linux 6.1.0-18-amd64".
std::string systemLine(const std::filesystem::path& osRelease = "/etc/os-release",
    const std::filesystem::path& fallback = "/usr/lib/os-release");

} // namespace vardel::linux_desktop::OsRelease
