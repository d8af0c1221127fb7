#include "platform/UserDirectories.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <string>
#include <string_view>

namespace vardel {

namespace {

constexpr std::string_view documentsKey = "XDG_DOCUMENTS_DIR=";
constexpr std::string_view homeVariable = "$HOME";

std::optional<std::filesystem::path> environmentPath(const char* name)
{
    const char* value = std::getenv(name);
    if (!value || *value == '\0')
        return std::nullopt;
    return std::filesystem::path(value);
}

std::filesystem::path configurationFolder(const std::filesystem::path& home)
{
    // Desktop sessions ignore a relative XDG_CONFIG_HOME; so do we.
    auto configured = environmentPath("XDG_CONFIG_HOME");
    return configured && configured->is_absolute() ? *configured : home / ".config";
}

// The text between the double quotes, with backslash escapes undone, as the shell would read it.
std::optional<std::string> quotedText(std::string_view text)
{
    if (text.empty() || text.front() != '"')
        return std::nullopt;
    std::string unquoted;
    for (size_t index = 1; index < text.size(); ++index) {
        char character = text[index];
        if (character == '"')
            return unquoted;
        if (character == '\\' && index + 1 < text.size())
            character = text[++index];
        unquoted += character;
    }
    return std::nullopt;
}

// A value is "$HOME/…" or an absolute path; the file format allows nothing else.
std::optional<std::filesystem::path> documentsFolderFromLine(std::string_view line, const std::filesystem::path& home)
{
    line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
    if (!line.starts_with(documentsKey))
        return std::nullopt;
    auto value = quotedText(line.substr(documentsKey.size()));
    if (!value)
        return std::nullopt;
    if (value->starts_with(homeVariable))
        return std::filesystem::path(home.native() + value->substr(homeVariable.size()));
    if (value->starts_with('/'))
        return std::filesystem::path(*value);
    return std::nullopt;
}

} // namespace

std::optional<std::filesystem::path> UserDirectories::documentsFolder()
{
    auto home = environmentPath("HOME");
    if (!home)
        return std::nullopt;
    std::optional<std::filesystem::path> documents;
    std::ifstream file(configurationFolder(*home) / "user-dirs.dirs");
    // The last assignment wins, as when the shell sources the file.
    for (std::string line; std::getline(file, line);) {
        if (auto folder = documentsFolderFromLine(line, *home))
            documents = folder;
    }
    return documents.value_or(*home / "Documents");
}

} // namespace vardel
