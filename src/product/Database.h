#pragma once

#include "platform/Value.h"
#include "product/ActivitySpan.h"
#include "product/DatabaseErrorPresenter.h"
#include "product/DatabaseResult.h"
#include "product/DatabaseTransaction.h"
#include "product/SqliteConnection.h"
#include "product/TaskActivity.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace vardel {

// The product's store of time entries: an SQLite file in write-ahead-log mode in the data folder.
class Database {
public:
    static constexpr const char* fileName = "vardel.sqlite3";

    // Opens (creating when needed) the database in the folder and brings its schema up to date. A
    // file that cannot be read as this product's database is refused and never replaced.
    static DatabaseResult<std::unique_ptr<Database>> open(const std::filesystem::path& dataFolder);

    void setErrorPresenter(DatabaseErrorPresenter presenter) { presenter_ = std::move(presenter); }

    // Runs the operation in one transaction. The operation takes the DatabaseTransaction and
    // returns a DatabaseResult; an error it returns, or one in committing, rolls every change back
    // and is presented (log warning and alert), naming fileLabel and line. The operation's value on
    // success, nothing on failure.
    template<typename Operation>
    auto mutateOrPresentError(std::string_view fileLabel, int line, Operation&& operation)
        -> std::optional<typename std::invoke_result_t<Operation&, DatabaseTransaction&>::Value>;

    // The entries that overlap [from, to), earliest first.
    DatabaseResult<std::vector<TaskActivity>> entriesInRange(Date from, Date to);
    // The entry with exactly this title that started last, if any.
    DatabaseResult<std::optional<TaskActivity>> mostRecentEntry(std::string_view title);

    // Writes the spans in one transaction: new ones are inserted and get their id, the others
    // replace their rows. On an error nothing is written and no span changes.
    std::optional<DatabaseError> saveActivitySpans(std::vector<ActivitySpan>& spans);
    // The spans that overlap [from, to), earliest first, as stored (not clipped to the range).
    DatabaseResult<std::vector<ActivitySpan>> activitySpansInRange(Date from, Date to);
    // The seconds of recorded activity inside [from, to).
    DatabaseResult<double> totalActivitySecondsBetween(Date from, Date to);

    // A copy of the whole database in a new file.
    std::optional<DatabaseError> backUpInto(const std::filesystem::path& file);

    // For the product's other stores that keep their tables in this file (integrations).
    SqliteConnection& connection() { return connection_; }

    // When the file was removed or replaced behind the store's back (the data folder deleted), opens
    // the file at the store's path afresh, creating it, and says true: what was written into the
    // removed file went with it, but nothing written from now on does.
    DatabaseResult<bool> reopenIfGone();

private:
    // Which file the connection has open, to tell when the path leads elsewhere.
    struct FileIdentity {
        uintmax_t device = 0;
        uintmax_t inode = 0;
        bool operator==(const FileIdentity&) const = default;
    };
    static std::optional<FileIdentity> identityOf(const std::filesystem::path&);

    Database(SqliteConnection, std::filesystem::path dataFolder);

    std::optional<DatabaseError> runMutation(const std::function<std::optional<DatabaseError>(DatabaseTransaction&)>&);
    void present(std::string_view fileLabel, int line, const DatabaseError&) const;

    SqliteConnection connection_;
    std::filesystem::path dataFolder_;
    std::optional<FileIdentity> fileIdentity_;
    DatabaseErrorPresenter presenter_;
};

template<typename Operation>
auto Database::mutateOrPresentError(std::string_view fileLabel, int line, Operation&& operation)
    -> std::optional<typename std::invoke_result_t<Operation&, DatabaseTransaction&>::Value>
{
    std::optional<typename std::invoke_result_t<Operation&, DatabaseTransaction&>::Value> outcome;
    auto failure = runMutation([&](DatabaseTransaction& transaction) -> std::optional<DatabaseError> {
        auto result = operation(transaction);
        if (!result.ok())
            return result.error();
        outcome.emplace(std::move(result).value());
        return std::nullopt;
    });
    if (failure) {
        present(fileLabel, line, *failure);
        return std::nullopt;
    }
    return outcome;
}

} // namespace vardel
