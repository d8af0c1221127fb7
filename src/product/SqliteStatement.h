#pragma once

#include "product/DatabaseError.h"
#include "product/DatabaseResult.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

struct sqlite3_stmt;

namespace vardel {

// A prepared SQLite statement. Parameters are numbered from 1 and columns from 0, as in SQLite.
class SqliteStatement {
public:
    explicit SqliteStatement(sqlite3_stmt*);

    void bind(int index, double);
    void bind(int index, int64_t);
    void bind(int index, std::string_view text);
    void bind(int index, const std::optional<std::string>& text);
    void bindNull(int index);

    // True when a row is ready, false when the statement has finished.
    DatabaseResult<bool> step();
    // Steps through the remaining rows, calling takeRow(*this) at each; nothing once all were read,
    // else the error that stopped it.
    template<typename TakeRow> std::optional<DatabaseError> forEachRow(TakeRow takeRow)
    {
        while (true) {
            auto row = step();
            if (!row.ok())
                return row.error();
            if (!row.value())
                return std::nullopt;
            takeRow(*this);
        }
    }

    int64_t integerColumn(int index) const;
    double realColumn(int index) const;
    std::string textColumn(int index) const;
    // Nothing for SQL NULL.
    std::optional<std::string> optionalTextColumn(int index) const;

private:
    void remember(int bindingCode);

    struct Finalizer {
        void operator()(sqlite3_stmt*) const;
    };
    std::unique_ptr<sqlite3_stmt, Finalizer> statement_;
    // The first binding that failed; step() reports it instead of running with a missing value.
    int bindingCode_ = 0;
};

} // namespace vardel
