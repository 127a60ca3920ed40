#include "Qbase/StoreReplaceInternal.h"

#include <algorithm>
#include <map>
#include <vector>

namespace qbase {
namespace {

constexpr std::string_view kNumberColumn = "seq";
constexpr sqlite3_int64 kSchemaOfCopy = 1; // SQLite counts the changes of a file's schema: the copying is the first

/// Name and SQL of each table or index of a file. What SQLite makes by itself has no SQL.
using Elements = std::map<std::string, std::string>;

Elements ElementsOf(Connection& connection, const std::string& schema, std::string_view type) {
    Statement select(connection.Get(), "SELECT name,sql FROM " + Quoted(schema) +
                                           ".sqlite_schema WHERE type=? AND sql IS NOT NULL AND "
                                           "name NOT LIKE 'sqlite\\_%' ESCAPE '\\'");
    select.BindText(1, type);
    Elements elements;
    while (select.Step())
        elements.emplace(select.Bytes(0), select.Bytes(1));
    return elements;
}

bool Has(const Elements& elements, const Elements::value_type& element) {
    const auto found = elements.find(element.first);
    return found != elements.end() && found->second == element.second;
}

/// A file's content is not to be trusted: no more than one statement is run, and a quote in a name stays in the name.
void RunOne(Connection& connection, const std::string& sql) {
    Statement(connection.Get(), sql).Run();
}

std::string QuotedAnyName(std::string_view name) {
    std::string doubled;
    for (const char c : name)
        doubled.append(c == '"' ? 2 : 1, c);
    return Quoted(doubled);
}

std::string FullName(const std::string& schema, std::string_view name) {
    return Quoted(schema) + "." + QuotedAnyName(name);
}

void DropOthers(Connection& connection, const std::string& schema, std::string_view type, const Elements& kept) {
    for (const auto& element : ElementsOf(connection, schema, type)) {
        if (!Has(kept, element))
            RunOne(connection, "DROP " + std::string(type) + " " + FullName(schema, element.first));
    }
}

/// SQLite keeps the text of what made a table or an index with the file's name taken out and the words before the
/// name in this form.
void CreateIn(Connection& connection, const std::string& schema, const std::string& sql) {
    for (const std::string_view words : {"CREATE TABLE ", "CREATE INDEX ", "CREATE UNIQUE INDEX "}) {
        if (sql.starts_with(words)) {
            RunOne(connection, std::string(words) + Quoted(schema) + "." + sql.substr(words.size()));
            return;
        }
    }
    throw SqlFailure{SQLITE_CORRUPT};
}

void CreateMissing(Connection& connection, const std::string& schema, std::string_view type, const Elements& wanted) {
    const Elements present = ElementsOf(connection, schema, type);
    for (const auto& [name, sql] : wanted) {
        if (!present.contains(name))
            CreateIn(connection, schema, sql);
    }
}

std::vector<std::string> ColumnsOf(Connection& connection, const std::string& schema, const std::string& table) {
    Statement select(connection.Get(), "SELECT name FROM pragma_table_info(?,?)");
    select.BindText(1, table);
    select.BindText(2, schema);
    std::vector<std::string> columns;
    while (select.Step())
        columns.emplace_back(select.Bytes(0));
    return columns;
}

/// True where no number stands twice.
bool IsNumbered(Connection& connection, const std::string& schema, const std::string& table) {
    Statement select(connection.Get(), "SELECT name,upper(type) FROM pragma_table_info(?,?) WHERE pk>0");
    select.BindText(1, table);
    select.BindText(2, schema);
    return select.Step() && select.Bytes(0) == kNumberColumn && select.Bytes(1) == "INTEGER" && !select.Step();
}

/// The condition under which the row of `s` is that of `t`. Without a number there is no telling. The plus keeps
/// SQLite from weighing each index against the number.
std::string SameRow(const std::vector<std::string>& columns) {
    if (std::ranges::find(columns, kNumberColumn) == columns.end())
        return "0";
    std::string condition = "s.seq=t.seq";
    for (const auto& column : columns) // an attribute may be missing in both
        condition += " AND +s." + QuotedAnyName(column) + " IS +t." + QuotedAnyName(column);
    return condition;
}

std::string Joined(const std::vector<std::string>& columns) {
    std::string list;
    for (const auto& column : columns)
        list += (list.empty() ? "" : ",") + QuotedAnyName(column);
    return list;
}

/// Rows that differ go first, so that no id stands twice in between. What is left then is the same under each number.
void ReplaceRows(Connection& connection, const std::string& target, const std::string& source,
                 const std::string& table) {
    const auto columns = ColumnsOf(connection, source, table);
    const std::string to = FullName(target, table);
    const std::string from = FullName(source, table);
    const std::string same = SameRow(columns);
    const std::string left = IsNumbered(connection, source, table) ? "s.seq=t.seq" : same;
    RunOne(connection,
           "DELETE FROM " + to + " AS t WHERE NOT EXISTS(SELECT 1 FROM " + from + " AS s WHERE " + same + ")");
    RunOne(connection, "INSERT INTO " + to + "(" + Joined(columns) + ")SELECT " + Joined(columns) + " FROM " + from +
                           " AS s WHERE NOT EXISTS(SELECT 1 FROM " + to + " AS t WHERE " + left + ")");
}

/// True for a table as the library makes it: SQLite knows each row by its number, and nothing is computed.
bool IsRecordTable(const std::string& name, const std::string& sql) {
    const std::string begin = "CREATE TABLE " + QuotedAnyName(name) + "(seq INTEGER PRIMARY KEY,";
    return sql.starts_with(begin) && sql.find_first_of("()", begin.size()) == sql.size() - 1;
}

void RunForEach(Connection& connection, const std::string& sql, const std::set<std::int64_t>& numbers) {
    Statement statement(connection.Get(), sql);
    for (const sqlite3_int64 number : numbers) {
        statement.Bind(1, number);
        statement.Run();
    }
}

/// All go before one comes, so that no id stands twice in between.
void ReplaceNumbered(Connection& connection, const std::string& to, const std::string& from,
                     const std::set<std::int64_t>& numbers) {
    RunForEach(connection, "DELETE FROM " + to + " WHERE seq=?", numbers);
    RunForEach(connection, "INSERT INTO " + to + " SELECT * FROM " + from + " WHERE seq=?", numbers);
}

void ReplaceMark(Connection& connection, const std::string& target, const std::string& source,
                 const std::string& field) {
    const auto value = connection.Query("PRAGMA " + Quoted(source) + "." + field);
    if (connection.Query("PRAGMA " + Quoted(target) + "." + field) != value)
        connection.Execute("PRAGMA " + Quoted(target) + "." + field + "=" + std::to_string(value));
}

void ReplaceMarks(Connection& connection, const std::string& target, const std::string& source) {
    ReplaceMark(connection, target, source, "application_id");
    ReplaceMark(connection, target, source, "user_version");
}

} // namespace

void ReplaceContent(Connection& connection, const std::string& target, const std::string& source) {
    const Elements tables = ElementsOf(connection, source, "table");
    const Elements indexes = ElementsOf(connection, source, "index");
    DropOthers(connection, target, "index", indexes);
    DropOthers(connection, target, "table", tables);
    CreateMissing(connection, target, "table", tables);
    for (const auto& [name, sql] : tables)
        ReplaceRows(connection, target, source, name);
    CreateMissing(connection, target, "index", indexes);
    ReplaceMarks(connection, target, source);
}

void ReplaceChanged(Connection& connection, const std::string& target, const std::string& source,
                    const ChangedRows& changed) {
    if (connection.Query("PRAGMA " + Quoted(source) + ".schema_version") != kSchemaOfCopy)
        return ReplaceContent(connection, target, source);
    for (const auto& [name, sql] : ElementsOf(connection, source, "table")) {
        const auto rows = changed.find(name);
        if (rows == changed.end())
            continue;
        if (IsRecordTable(name, sql))
            ReplaceNumbered(connection, FullName(target, name), FullName(source, name), rows->second);
        else
            ReplaceRows(connection, target, source, name);
    }
    ReplaceMarks(connection, target, source);
}

} // namespace qbase
