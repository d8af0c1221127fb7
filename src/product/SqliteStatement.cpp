#include "product/SqliteStatement.h"

#include "product/SqliteConnection.h"

#include <sqlite3.h>

namespace vardel {

void SqliteStatement::Finalizer::operator()(sqlite3_stmt* statement) const
{
    sqlite3_finalize(statement);
}

SqliteStatement::SqliteStatement(sqlite3_stmt* statement)
    : statement_(statement)
{
}

void SqliteStatement::remember(int bindingCode)
{
    if (bindingCode_ == SQLITE_OK)
        bindingCode_ = bindingCode;
}

void SqliteStatement::bind(int index, double value)
{
    remember(sqlite3_bind_double(statement_.get(), index, value));
}

void SqliteStatement::bind(int index, int64_t value)
{
    remember(sqlite3_bind_int64(statement_.get(), index, value));
}

void SqliteStatement::bind(int index, std::string_view text)
{
    // With an explicit length, text holding NUL characters is stored whole.
    remember(sqlite3_bind_text64(
        statement_.get(), index, text.data(), static_cast<sqlite3_uint64>(text.size()), SQLITE_TRANSIENT, SQLITE_UTF8));
}

void SqliteStatement::bind(int index, const std::optional<std::string>& text)
{
    if (text)
        bind(index, std::string_view(*text));
    else
        bindNull(index);
}

void SqliteStatement::bindNull(int index)
{
    remember(sqlite3_bind_null(statement_.get(), index));
}

DatabaseResult<bool> SqliteStatement::step()
{
    if (bindingCode_ != SQLITE_OK)
        return DatabaseError::statementFailure(sqlite3_errstr(bindingCode_));
    int code = sqlite3_step(statement_.get());
    if (code == SQLITE_ROW)
        return true;
    if (code == SQLITE_DONE)
        return false;
    return SqliteConnection::failureOf(sqlite3_db_handle(statement_.get()));
}

int64_t SqliteStatement::integerColumn(int index) const
{
    return sqlite3_column_int64(statement_.get(), index);
}

double SqliteStatement::realColumn(int index) const
{
    return sqlite3_column_double(statement_.get(), index);
}

std::string SqliteStatement::textColumn(int index) const
{
    const unsigned char* text = sqlite3_column_text(statement_.get(), index);
    if (!text)
        return {};
    // The length is read after the text so that it counts the UTF-8 form just produced.
    return std::string(
        reinterpret_cast<const char*>(text), static_cast<size_t>(sqlite3_column_bytes(statement_.get(), index)));
}

std::optional<std::string> SqliteStatement::optionalTextColumn(int index) const
{
    if (sqlite3_column_type(statement_.get(), index) == SQLITE_NULL)
        return std::nullopt;
    return textColumn(index);
}

} // namespace vardel
