#include "platform/linux/OsRelease.h"

#include "platform/OperatingSystem.h"

#include <fstream>
#include <sstream>

namespace vardel::linux_desktop::OsRelease {

namespace {

// The value as the shell reads it: inside double quotes a backslash makes \ " $ ` literal, single
// quotes keep everything, and outside quotes a backslash escapes the next character.
std::string unquoted(std::string_view value)
{
    std::string text;
    char quote = '\0';
    for (size_t index = 0; index < value.size(); ++index) {
        char character = value[index];
        if (quote == '\'') {
            if (character == '\'')
                quote = '\0';
            else
                text += character;
        } else if (character == '\\' && index + 1 < value.size()
            && (quote == '\0' || std::string_view("\\\"$`").find(value[index + 1]) != std::string_view::npos)) {
            text += value[++index];
        } else if (character == '"' || (character == '\'' && quote == '\0')) {
            quote = quote == character ? '\0' : character;
        } else {
            text += character;
        }
    }
    return text;
}

std::optional<std::string> prettyNameInFile(const std::filesystem::path& path)
{
    std::ifstream file(path);
    if (!file)
        return std::nullopt;
    std::stringstream text;
    text << file.rdbuf();
    return prettyName(text.str());
}

} // namespace

std::optional<std::string> prettyName(std::string_view text)
{
    constexpr std::string_view key = "PRETTY_NAME=";
    std::istringstream lines { std::string(text) };
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with(key)) {
            std::string name = unquoted(std::string_view(line).substr(key.size()));
            return name.empty() ? std::nullopt : std::optional(name);
        }
    }
    return std::nullopt;
}

std::string systemLine(const std::filesystem::path& osRelease, const std::filesystem::path& fallback)
{
    auto name = prettyNameInFile(osRelease);
    if (!name)
        name = prettyNameInFile(fallback);
    return "Linux Distribution: " + name.value_or("(unknown)") + ", Kernel: " + OperatingSystem::versionString();
}

} // namespace vardel::linux_desktop::OsRelease
