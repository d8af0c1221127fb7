#pragma once

#include "platform/LoginItems.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace vardel::linux_desktop {

// Starting at login through an XDG autostart entry, which every desktop that follows the freedesktop
// rules reads: the entry's presence is the registration.
class XdgAutostartLoginItems final : public LoginItems {
public:
    using EnvironmentLookup = std::function<const char*(const char* name)>;
    static constexpr const char* entryFileName = "vardel-tracker.desktop";

    // The entry starts the executable at that path.
    XdgAutostartLoginItems(const std::filesystem::path& autostartFolder, std::string executablePath);

    // $XDG_CONFIG_HOME/autostart, else ~/.config/autostart; nothing without either.
    static std::optional<std::filesystem::path> autostartFolder(const EnvironmentLookup&);
    // The entry's text for that executable.
    static std::string entryText(const std::string& executablePath);
    // The program path as a desktop entry's Exec value: quoted where the rules ask for it, then
    // escaped as a string value.
    static std::string execValue(const std::string& program);

    bool startsAtLogin() override;
    std::optional<std::string> setStartsAtLogin(bool start) override;

    const std::filesystem::path& entryPath() const { return entryPath_; }

private:
    std::filesystem::path entryPath_;
    std::string executablePath_;
};

} // namespace vardel::linux_desktop
