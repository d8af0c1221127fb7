#include "product/ActivitySpanTable.h"

#include "platform/JsonText.h"

#include <nlohmann/json.hpp>

#include <cmath>
#include <string>

namespace vardel {

namespace {

std::optional<std::string> encodeContextPath(const std::optional<std::vector<std::string>>& contextPath)
{
    if (!contextPath)
        return std::nullopt;
    return jsonText(nlohmann::json(*contextPath));
}

// A context path that is not a list of texts (written by hand, or damaged) reads as none.
std::optional<std::vector<std::string>> decodeContextPath(const std::optional<std::string>& text)
{
    if (!text)
        return std::nullopt;
    auto parsed = nlohmann::json::parse(*text, nullptr, false);
    if (!parsed.is_array())
        return std::nullopt;
    std::vector<std::string> parts;
    for (const auto& part : parsed) {
        if (!part.is_string())
            return std::nullopt;
        parts.push_back(part.get<std::string>());
    }
    return parts;
}

ActivitySpan spanAtRow(const SqliteStatement& row)
{
    RecordedActivity activity { row.optionalTextColumn(3), row.optionalTextColumn(4), row.optionalTextColumn(5),
        row.optionalTextColumn(6), row.optionalTextColumn(7), decodeContextPath(row.optionalTextColumn(8)),
        row.integerColumn(9) != 0, row.integerColumn(10) != 0 };
    return { row.integerColumn(0), Date { row.realColumn(1) }, Date { row.realColumn(2) }, std::move(activity) };
}

// Keeps the longest span's length, rounded up to whole seconds, in the meta table.
std::optional<DatabaseError> noteLength(SqliteConnection& connection, const ActivitySpan& span)
{
    auto prepared = connection.prepare("INSERT INTO meta (key, value) VALUES ('longest_span_seconds', ?1) "
                                       "ON CONFLICT (key) DO UPDATE SET value = max(value, excluded.value)");
    if (!prepared.ok())
        return prepared.error();
    SqliteStatement update = std::move(prepared).value();
    update.bind(1, static_cast<int64_t>(std::ceil(span.end.secondsSince1970 - span.start.secondsSince1970)));
    auto done = update.step();
    if (!done.ok())
        return done.error();
    return std::nullopt;
}

} // namespace

DatabaseResult<int64_t> ActivitySpanTable::save(SqliteConnection& connection, const ActivitySpan& span)
{
    auto prepared = connection.prepare(
        "INSERT OR REPLACE INTO activity_spans (id, started_at, ended_at, bundle_identifier, application_name, "
        "window_title, document_path, document_title, context_path, is_private, is_fullscreen) "
        "VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11)");
    if (!prepared.ok())
        return prepared.error();
    SqliteStatement insert = std::move(prepared).value();
    const RecordedActivity& activity = span.activity;
    if (span.id)
        insert.bind(1, *span.id);
    else
        insert.bindNull(1);
    insert.bind(2, span.start.secondsSince1970);
    insert.bind(3, span.end.secondsSince1970);
    insert.bind(4, activity.bundleIdentifier);
    insert.bind(5, activity.applicationName);
    insert.bind(6, activity.windowTitle);
    insert.bind(7, activity.documentPath);
    insert.bind(8, activity.documentTitle);
    insert.bind(9, encodeContextPath(activity.contextPath));
    insert.bind(10, int64_t { activity.isPrivate });
    insert.bind(11, int64_t { activity.isFullscreen });
    auto done = insert.step();
    if (!done.ok())
        return done.error();
    int64_t identifier = span.id.value_or(connection.lastInsertRowIdentifier());
    if (auto failed = noteLength(connection, span))
        return *failed;
    return identifier;
}

DatabaseResult<std::vector<ActivitySpan>> ActivitySpanTable::overlapping(
    SqliteConnection& connection, Date from, Date to)
{
    auto prepared = connection.prepare(
        "SELECT id, started_at, ended_at, bundle_identifier, application_name, window_title, document_path, "
        "document_title, context_path, is_private, is_fullscreen FROM activity_spans WHERE "
        + std::string(ActivitySpanTable::overlapsRange) + " ORDER BY started_at, id");
    if (!prepared.ok())
        return prepared.error();
    SqliteStatement query = std::move(prepared).value();
    query.bind(1, from.secondsSince1970);
    query.bind(2, to.secondsSince1970);
    std::vector<ActivitySpan> spans;
    if (auto failed = query.forEachRow([&](const SqliteStatement& row) { spans.push_back(spanAtRow(row)); }))
        return *failed;
    return spans;
}

DatabaseResult<double> ActivitySpanTable::totalSecondsBetween(SqliteConnection& connection, Date from, Date to)
{
    auto prepared
        = connection.prepare("SELECT total(min(ended_at, ?2) - max(started_at, ?1)) FROM activity_spans WHERE "
            + std::string(ActivitySpanTable::overlapsRange));
    if (!prepared.ok())
        return prepared.error();
    SqliteStatement query = std::move(prepared).value();
    query.bind(1, from.secondsSince1970);
    query.bind(2, to.secondsSince1970);
    auto row = query.step();
    if (!row.ok())
        return row.error();
    return row.value() ? query.realColumn(0) : 0.0;
}

} // namespace vardel
