#include "product/DamagedStores.h"

#include "product/Database.h"
#include "product/DatabaseBackups.h"

#include <algorithm>

namespace vardel {

namespace {

constexpr std::string_view marker = ".damaged-";
// The files SQLite keeps beside the store.
constexpr std::string_view companions[] = { "-wal", "-shm" };

// "vardel.sqlite3.damaged-20261125T101500Z" → "20261125T101500Z".
std::string stampOf(const std::filesystem::path& setAsideFile)
{
    std::string name = setAsideFile.filename().string();
    size_t start = name.find(marker);
    return start == std::string::npos ? std::string() : name.substr(start + marker.size());
}

// Backups are named with the same kind of stamp, so names compare as times.
std::optional<std::filesystem::path> lastBackupBefore(const std::filesystem::path& dataFolder, const std::string& stamp)
{
    std::optional<std::filesystem::path> last;
    for (const auto& backup : DatabaseBackups::list(dataFolder / DatabaseBackups::folderName)) {
        if (backup.filename().string() <= DatabaseBackups::fileNameWithStamp(stamp))
            last = backup;
    }
    return last;
}

} // namespace

std::optional<std::filesystem::path> DamagedStores::setAside(const std::filesystem::path& dataFolder, Date now)
{
    std::filesystem::path store = dataFolder / Database::fileName;
    std::filesystem::path kept = store;
    kept += std::string(marker) + DatabaseBackups::timeStamp(now);
    std::error_code error;
    std::filesystem::rename(store, kept, error);
    if (error)
        return std::nullopt;
    for (std::string_view companion : companions) {
        std::filesystem::path file = store;
        file += companion;
        std::filesystem::path keptCompanion = kept;
        keptCompanion += companion;
        std::filesystem::rename(file, keptCompanion, error);
    }
    return kept;
}

std::vector<std::filesystem::path> DamagedStores::list(const std::filesystem::path& dataFolder)
{
    std::vector<std::filesystem::path> kept;
    std::string prefix = std::string(Database::fileName) + std::string(marker);
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(dataFolder, error)) {
        std::string name = entry.path().filename().string();
        bool isCompanion = std::any_of(std::begin(companions), std::end(companions),
            [&](std::string_view companion) { return name.ends_with(companion); });
        if (entry.is_regular_file() && name.starts_with(prefix) && !isCompanion)
            kept.push_back(entry.path());
    }
    std::sort(kept.begin(), kept.end());
    return kept;
}

std::string DamagedStores::describe(const std::filesystem::path& dataFolder, const std::filesystem::path& setAsideFile)
{
    std::string text = "The activity store was found damaged and set aside as " + setAsideFile.string()
        + "; a fresh store was started.";
    if (auto backup = lastBackupBefore(dataFolder, stampOf(setAsideFile)))
        return text + " The last backup before it is " + backup->string() + ".";
    return text + " There was no backup before it.";
}

} // namespace vardel
