#pragma once

#include "product/DatabaseError.h"
#include "product/SqliteConnection.h"

#include <cstdint>
#include <optional>

namespace vardel {

// The layout of the time-entry database. The meta table records the schema version the file has and
// the oldest version that may still change it; opening brings an older file forward one migration
// at a time.
class DatabaseSchema {
public:
    static constexpr int currentVersion = 3;

    // Brings the file to the current version in one transaction. A file from a newer version that
    // this one cannot safely change is refused and left untouched.
    static std::optional<DatabaseError> migrate(SqliteConnection&);

private:
    struct StoredVersion {
        int64_t version = 0;
        int64_t lastCompatibleVersion = 0;
    };

    static DatabaseResult<StoredVersion> readVersion(SqliteConnection&);
    static std::optional<DatabaseError> migrateWithinTransaction(SqliteConnection&);
    static std::optional<DatabaseError> writeVersion(SqliteConnection&);
};

} // namespace vardel
