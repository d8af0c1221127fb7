#pragma once

#include "platform/Value.h"
#include "product/Database.h"

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace vardel {

// Automatic copies of the database in the backups folder beside it, named after the moment they
// were taken; only the newest keptBackups stay.
class DatabaseBackups {
public:
    static constexpr size_t keptBackups = 7;
    static constexpr const char* folderName = "backups";

    // Writes a backup of the database as it is at `now` and removes the oldest beyond keptBackups.
    // Gives the new file. A half-written copy never carries a backup's name.
    static DatabaseResult<std::filesystem::path> create(Database&, const std::filesystem::path& dataFolder, Date now);

    // The backups in the folder, oldest first; files of other names are not backups.
    static std::vector<std::filesystem::path> list(const std::filesystem::path& backupsFolder);

    // "20261125T101500Z": UTC, fixed width, sorting in time order.
    static std::string timeStamp(Date);
    // "vardel-20261125T101500Z.sqlite3".
    static std::string fileNameWithStamp(std::string_view stamp);
    static std::string fileName(Date);

private:
    static void removeOldest(const std::filesystem::path& backupsFolder);
};

} // namespace vardel
