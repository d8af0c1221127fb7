#pragma once

#include "product/DatabaseError.h"
#include "product/DatabaseResult.h"
#include "product/SqliteStatement.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string_view>

struct sqlite3;

namespace vardel {

// One open connection to an SQLite file.
class SqliteConnection {
public:
    // Opens the file for reading and writing, creating it when absent.
    static DatabaseResult<SqliteConnection> open(const std::filesystem::path& file);

    // Runs one or more statements that take no parameters.
    std::optional<DatabaseError> execute(std::string_view sql);
    DatabaseResult<SqliteStatement> prepare(std::string_view sql);
    // Runs the body inside a transaction that holds the write lock from the start. The transaction
    // commits when the body returns no error, and rolls back on an error or an exception.
    std::optional<DatabaseError> writeTransaction(const std::function<std::optional<DatabaseError>()>& body);
    int64_t lastInsertRowIdentifier() const;
    // The rows that the last statement changed.
    int changes() const;
    // Copies the whole database, as of one consistent moment, into a new file (replaced when it
    // exists). Writers may go on meanwhile; the copy waits for a busy lock like any reader.
    std::optional<DatabaseError> backUpInto(const std::filesystem::path& file);
    // A connection's last error, for its statements too.
    static DatabaseError failureOf(sqlite3*);

private:
    struct Closer {
        void operator()(sqlite3*) const;
    };

    explicit SqliteConnection(sqlite3*);
    DatabaseError failure() const;

    std::unique_ptr<sqlite3, Closer> connection_;
};

} // namespace vardel
