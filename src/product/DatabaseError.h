#pragma once

#include <ostream>
#include <string>
#include <string_view>

namespace vardel {

// Why the database refused or failed an operation, with a message fit to show the user.
struct DatabaseError {
    enum class Kind {
        // The file cannot be opened or read as a database (unwritable folder, corrupt file).
        cannotOpen,
        // The file was written by a newer version of the product that this one cannot safely change.
        newerSchema,
        // A time entry shorter than the minimum while short entries are prevented.
        tooShort,
        // A time entry that ends before it starts.
        endsBeforeStart,
        // A time entry to change that is not stored (any more).
        notFound,
        // SQLite failed a statement (disk full, locked, I/O error).
        statementFailed,
        // The file is not a database, or its contents are damaged.
        damaged,
    };

    Kind kind;
    std::string message;

    // SQLite's reason for a failed statement, worded for the user; damaged when SQLite found the file
    // not to be a database or its contents malformed.
    static DatabaseError statementFailure(std::string_view reason, bool damaged = false);

    bool operator==(const DatabaseError&) const = default;
};

const char* kindName(DatabaseError::Kind);
std::ostream& operator<<(std::ostream&, const DatabaseError&);

} // namespace vardel
