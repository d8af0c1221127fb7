#include "product/DatabaseBackups.h"

#include <algorithm>
#include <cmath>
#include <ctime>
#include <system_error>

namespace vardel {

namespace {

constexpr std::string_view namePrefix = "vardel-";
constexpr std::string_view nameSuffix = ".sqlite3";

DatabaseError backupFailure(const std::string& reason)
{
    return { DatabaseError::Kind::statementFailed, "The automatic backup cannot be written: " + reason };
}

} // namespace

std::string DatabaseBackups::timeStamp(Date date)
{
    // UTC and fixed width, so that names sort in the order the backups were taken.
    std::time_t seconds = static_cast<std::time_t>(std::floor(date.secondsSince1970));
    std::tm parts {};
    gmtime_r(&seconds, &parts);
    char stamp[32];
    std::strftime(stamp, sizeof stamp, "%Y%m%dT%H%M%SZ", &parts);
    return stamp;
}

std::string DatabaseBackups::fileNameWithStamp(std::string_view stamp)
{
    return std::string(namePrefix) + std::string(stamp) + std::string(nameSuffix);
}

std::string DatabaseBackups::fileName(Date date)
{
    return fileNameWithStamp(timeStamp(date));
}

DatabaseResult<std::filesystem::path> DatabaseBackups::create(
    Database& database, const std::filesystem::path& dataFolder, Date now)
{
    std::filesystem::path folder = dataFolder / folderName;
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error)
        return backupFailure("the folder " + folder.string() + " cannot be created: " + error.message() + ".");
    std::filesystem::path file = folder / fileName(now);
    std::filesystem::path partial = file;
    partial += ".partial";
    if (auto failure = database.backUpInto(partial)) {
        std::filesystem::remove(partial, error);
        return backupFailure(failure->message);
    }
    std::filesystem::rename(partial, file, error);
    if (error)
        return backupFailure(error.message());
    removeOldest(folder);
    return file;
}

std::vector<std::filesystem::path> DatabaseBackups::list(const std::filesystem::path& backupsFolder)
{
    std::vector<std::filesystem::path> backups;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(backupsFolder, error)) {
        std::string name = entry.path().filename().string();
        if (entry.is_regular_file() && name.starts_with(namePrefix) && name.ends_with(nameSuffix))
            backups.push_back(entry.path());
    }
    std::sort(backups.begin(), backups.end());
    return backups;
}

void DatabaseBackups::removeOldest(const std::filesystem::path& backupsFolder)
{
    auto backups = list(backupsFolder);
    std::error_code ignored;
    for (size_t index = 0; index + keptBackups < backups.size(); ++index)
        std::filesystem::remove(backups[index], ignored);
}

} // namespace vardel
