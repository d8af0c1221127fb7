#pragma once

#include <filesystem>
#include <sqlite3.h>
#include <string>

namespace vardel::testing {

// Runs SQL on the file through a connection of its own, as another program would, and gives the
// first column of the last row ("NULL" for a null), or "error: " and SQLite's message.
inline std::string querySql(const std::filesystem::path& file, const std::string& sql)
{
    sqlite3* connection = nullptr;
    sqlite3_open(file.c_str(), &connection);
    std::string result;
    char* error = nullptr;
    sqlite3_exec(
        connection, sql.c_str(),
        [](void* into, int, char** values, char**) {
            *static_cast<std::string*>(into) = values[0] ? values[0] : "NULL";
            return 0;
        },
        &result, &error);
    if (error) {
        result = std::string("error: ") + error;
        sqlite3_free(error);
    }
    sqlite3_close(connection);
    return result;
}

} // namespace vardel::testing
