#include "product/SupportRequests.h"

#include "platform/Platform.h"
#include "platform/ProcessWide.h"

#include <cctype>
#include <cmath>
#include <ctime>
#include <fstream>
#include <system_error>
#include <utility>

namespace vardel {

namespace {

ProcessWideVariable<SupportRequests> sharedRequests;

constexpr const char* bodyFileName = "body.txt";
// Well below the 255 bytes that common file systems allow, leaving room for a " (2)" suffix.
constexpr size_t maximumFileNameBytes = 200;

bool isUtf8Continuation(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

std::string truncatedAtCharacterBoundary(std::string name)
{
    if (name.size() <= maximumFileNameBytes)
        return name;
    size_t end = maximumFileNameBytes;
    while (end > 0 && isUtf8Continuation(name[end]))
        --end;
    name.resize(end);
    return name;
}

// Separators and control characters (NUL included) become "_"; names made only of dots ("." and "..")
// are replaced, so that no name reaches outside the request's folder.
std::string safeFileName(const std::string& requested)
{
    std::string safe;
    for (char character : requested) {
        bool unsafe = character == '/' || character == '\\' || std::iscntrl(static_cast<unsigned char>(character));
        safe += unsafe ? '_' : character;
    }
    safe = truncatedAtCharacterBoundary(std::move(safe));
    if (safe.find_first_not_of('.') == std::string::npos)
        return "attachment";
    return safe;
}

// Names compare without case, since the folder may be copied to a file system that ignores it.
std::string comparisonKey(const std::string& name)
{
    std::string key = name;
    for (char& character : key)
        character = static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
    return key;
}

std::string uniqueFileName(const std::string& requested, std::set<std::string>& taken)
{
    std::string name = safeFileName(requested);
    std::filesystem::path asPath(name);
    for (int copy = 2; taken.contains(comparisonKey(name)); ++copy)
        name = asPath.stem().string() + " (" + std::to_string(copy) + ")" + asPath.extension().string();
    taken.insert(comparisonKey(name));
    return name;
}

std::vector<std::pair<std::string, std::string>> storedAttachments(const std::vector<SupportAttachment>& attachments)
{
    std::set<std::string> taken = { bodyFileName };
    std::vector<std::pair<std::string, std::string>> stored;
    stored.reserve(attachments.size());
    for (const SupportAttachment& attachment : attachments)
        stored.emplace_back(uniqueFileName(attachment.fileName, taken), attachment.text);
    return stored;
}

std::string compactTimestamp(Date date)
{
    std::time_t seconds = static_cast<std::time_t>(std::floor(date.secondsSince1970));
    std::tm parts {};
    gmtime_r(&seconds, &parts);
    char text[32];
    std::strftime(text, sizeof text, "%Y%m%dT%H%M%SZ", &parts);
    return text;
}

bool writeFile(const std::filesystem::path& file, const std::string& text)
{
    std::ofstream stream(file, std::ios::binary | std::ios::trunc);
    stream << text;
    stream.close();
    return !stream.fail();
}

void traceRequest(const std::string& body, const std::vector<std::pair<std::string, std::string>>& attachments)
{
    nlohmann::ordered_json files = nlohmann::ordered_json::object();
    for (const auto& [name, text] : attachments)
        files[name] = text;
    platform().trace().write("supportRequest", { { "body", body }, { "attachments", std::move(files) } });
}

void logUnsaved(const std::string& reason)
{
    platform().log().warning("[SupportRequests] The support request could not be saved: " + reason);
}

} // namespace

SupportRequests& SupportRequests::sharedInstance()
{
    return sharedRequests.get();
}

std::optional<std::filesystem::path> SupportRequests::createRequest(
    const std::string& body, const std::vector<SupportAttachment>& attachments)
{
    auto stored = storedAttachments(attachments);
    traceRequest(body, stored);
    auto folder = createRequestFolder();
    if (!folder)
        return std::nullopt;
    bool written = writeFile(*folder / bodyFileName, body);
    for (const auto& [name, text] : stored)
        written = writeFile(*folder / name, text) && written;
    if (!written) {
        logUnsaved("a file in " + folder->string() + " could not be written");
        return std::nullopt;
    }
    return folder;
}

std::optional<std::filesystem::path> SupportRequests::createRequestFolder()
{
    if (!dataFolder_) {
        logUnsaved("no data folder is configured");
        return std::nullopt;
    }
    std::filesystem::path parent = *dataFolder_ / "support";
    std::error_code error;
    std::filesystem::create_directories(parent, error);
    std::string stamp = compactTimestamp(platform().clock().now());
    // The counter keeps requests of the same second apart; a name left by an earlier run is skipped.
    while (!error) {
        std::filesystem::path folder = parent / (stamp + "-" + std::to_string(++requestsCreated_));
        if (std::filesystem::create_directory(folder, error))
            return folder;
    }
    logUnsaved("the folder cannot be created in " + parent.string() + ": " + error.message());
    return std::nullopt;
}

} // namespace vardel
