#include "platform/linux/XdgAutostartLoginItems.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <string_view>

namespace vardel::linux_desktop {

namespace {

// Characters after which an Exec argument must be quoted (the desktop entry rules' reserved set).
constexpr std::string_view reservedInExec = " \t\n\"'\\><~|&;$*?#()`";

std::optional<std::filesystem::path> absoluteVariable(
    const XdgAutostartLoginItems::EnvironmentLookup& environment, const char* name)
{
    const char* value = environment(name);
    if (!value || !*value || value[0] != '/')
        return std::nullopt;
    return std::filesystem::path(value);
}

// Inside the double quotes of an Exec argument, a backslash makes " ` $ and \ literal.
std::string quotedArgument(const std::string& argument)
{
    if (argument.find_first_of(reservedInExec) == std::string::npos && !argument.empty())
        return argument;
    std::string quoted = "\"";
    for (char character : argument) {
        if (character == '"' || character == '`' || character == '$' || character == '\\')
            quoted += '\\';
        quoted += character;
    }
    return quoted + "\"";
}

// A string value escapes backslashes and control characters; % starts a field code in Exec.
std::string escapedValue(const std::string& text)
{
    std::string escaped;
    for (char character : text) {
        switch (character) {
        case '\\':
            escaped += "\\\\";
            break;
        case '\n':
            escaped += "\\n";
            break;
        case '\t':
            escaped += "\\t";
            break;
        case '\r':
            escaped += "\\r";
            break;
        case '%':
            escaped += "%%";
            break;
        default:
            escaped += character;
        }
    }
    return escaped;
}

} // namespace

XdgAutostartLoginItems::XdgAutostartLoginItems(const std::filesystem::path& autostartFolder, std::string executablePath)
    : entryPath_(autostartFolder / entryFileName)
    , executablePath_(std::move(executablePath))
{
}

std::optional<std::filesystem::path> XdgAutostartLoginItems::autostartFolder(const EnvironmentLookup& environment)
{
    // The base-directory rules ignore a relative XDG_CONFIG_HOME.
    if (auto configHome = absoluteVariable(environment, "XDG_CONFIG_HOME"))
        return *configHome / "autostart";
    if (auto home = absoluteVariable(environment, "HOME"))
        return *home / ".config" / "autostart";
    return std::nullopt;
}

std::string XdgAutostartLoginItems::execValue(const std::string& program)
{
    return escapedValue(quotedArgument(program));
}

std::string XdgAutostartLoginItems::entryText(const std::string& executablePath)
{
    return "[Desktop Entry]\n"
           "Type=Application\n"
           "Name=Vardel Tracker\n"
           "Comment=Records the applications, documents and pages you work in, for your time entries\n"
           "Exec="
        + execValue(executablePath)
        + "\n"
          "Icon=vardel-tracker\n"
          "Terminal=false\n"
          "X-GNOME-Autostart-enabled=true\n";
}

bool XdgAutostartLoginItems::startsAtLogin()
{
    std::error_code error;
    return std::filesystem::exists(entryPath_, error);
}

std::optional<std::string> XdgAutostartLoginItems::setStartsAtLogin(bool start)
{
    std::error_code error;
    if (!start) {
        std::filesystem::remove(entryPath_, error);
        if (error)
            return "cannot remove " + entryPath_.string() + ": " + error.message();
        return std::nullopt;
    }
    std::filesystem::create_directories(entryPath_.parent_path(), error);
    if (error)
        return "cannot create " + entryPath_.parent_path().string() + ": " + error.message();
    // Written beside the entry and renamed over it, so that a desktop never reads half an entry.
    auto partial = entryPath_;
    partial += ".partial";
    {
        std::ofstream file(partial, std::ios::out | std::ios::trunc);
        file << entryText(executablePath_);
        if (!file.flush())
            return "cannot write " + partial.string() + ": " + std::strerror(errno);
    }
    std::filesystem::rename(partial, entryPath_, error);
    if (error)
        return "cannot write " + entryPath_.string() + ": " + error.message();
    return std::nullopt;
}

} // namespace vardel::linux_desktop
