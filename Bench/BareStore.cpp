#include "Bench/BareStore.h"

#include "Bench/Measure.h"
#include "Vorn/Text.h"

#include <map>
#include <stdexcept>

namespace tolm::bench {
namespace {

BareValue ValueOf(sqlite3_stmt* row, int column) {
    const auto bytes = [&] {
        const auto* first = static_cast<const char*>(sqlite3_column_blob(row, column));
        const auto size = static_cast<std::size_t>(sqlite3_column_bytes(row, column));
        return size > 0 ? std::string(first, size) : std::string();
    };
    switch (sqlite3_column_type(row, column)) {
    case SQLITE_INTEGER:
        return std::int64_t{sqlite3_column_int64(row, column)};
    case SQLITE_FLOAT:
        return sqlite3_column_double(row, column);
    case SQLITE_TEXT:
        return bytes();
    case SQLITE_BLOB:
        return BareBlob{bytes()};
    default:
        return {};
    }
}

struct Binder {
    sqlite3_stmt* statement;
    int index;
    void operator()(std::monostate) const { sqlite3_bind_null(statement, index); }
    void operator()(std::int64_t value) const { sqlite3_bind_int64(statement, index, value); }
    void operator()(double value) const { sqlite3_bind_double(statement, index, value); }
    void operator()(const std::string& text) const { BindText(statement, index, text); }
    void operator()(const BareBlob& blob) const {
        sqlite3_bind_blob64(statement, index, blob.bytes.data(), blob.bytes.size(), SQLITE_STATIC);
    }
};

void Insert(sqlite3_stmt* insert, const BareRow& row) {
    for (std::size_t i = 0; i < row.size(); ++i)
        std::visit(Binder{insert, static_cast<int>(i) + 1}, row[i]);
    RunOnce(insert);
}

std::string InsertSql(const std::string& table, std::size_t columns) {
    std::string sql = "INSERT INTO \"" + table + "\" VALUES(?";
    for (std::size_t i = 1; i < columns; ++i)
        sql += ",?";
    return sql + ")";
}

BareTable ReadTable(sqlite3* database, const std::string& name) {
    BareTable table{name, 0, 0, {}};
    const auto select = PrepareBare(database, "SELECT * FROM \"" + name + "\"");
    table.columns = static_cast<std::size_t>(sqlite3_column_count(select.get()));
    for (std::size_t i = 0; i < table.columns; ++i) {
        if (std::string(sqlite3_column_name(select.get(), static_cast<int>(i))) == "id")
            table.keyColumn = static_cast<int>(i);
    }
    while (sqlite3_step(select.get()) == SQLITE_ROW) {
        BareRow row;
        for (std::size_t i = 0; i < table.columns; ++i)
            row.push_back(ValueOf(select.get(), static_cast<int>(i)));
        table.rows.push_back(std::move(row));
    }
    return table;
}

std::string KeyName(const std::string& path, const BareTable& table) {
    const auto database = OpenBare(path);
    const auto select = PrepareBare(database.get(), "SELECT * FROM \"" + table.name + "\"");
    return sqlite3_column_name(select.get(), table.keyColumn);
}

using RowsByKey = std::map<BareValue, std::vector<BareRow>>;

RowsByKey Grouped(const BareTable& table) {
    RowsByKey groups;
    for (const auto& row : table.rows)
        groups[row[static_cast<std::size_t>(table.keyColumn)]].push_back(row);
    return groups;
}

BareChange::Table DifferenceOf(const BareTable& from, const BareTable& to, std::string key) {
    BareChange::Table change{to.name, std::move(key), {}, {}, to.columns};
    auto before = Grouped(from);
    for (const auto& [id, rows] : Grouped(to)) {
        const auto found = before.find(id);
        if (found != before.end() && found->second == rows)
            before.erase(found);
        else
            change.come.insert(change.come.end(), rows.begin(), rows.end());
    }
    for (const auto& [id, rows] : before)
        change.gone.push_back(id);
    return change;
}

} // namespace

void Require(bool done, const char* what) {
    if (!done)
        throw std::runtime_error(what);
}

BareDatabase OpenBare(const std::string& path, int flags) {
    sqlite3* database = nullptr;
    const int code = sqlite3_open_v2(path.c_str(), &database, flags | SQLITE_OPEN_NOMUTEX, nullptr);
    BareDatabase owner(database, &sqlite3_close);
    Require(code == SQLITE_OK, "a database does not open");
    return owner;
}

void ExecuteBare(sqlite3* database, const std::string& sql) {
    Require(sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK, "a statement fails");
}

BareStatement PrepareBare(sqlite3* database, const std::string& sql) {
    sqlite3_stmt* statement = nullptr;
    const int code = sqlite3_prepare_v2(database, sql.c_str(), -1, &statement, nullptr);
    Require(code == SQLITE_OK, sqlite3_errmsg(database));
    return {statement, &sqlite3_finalize};
}

std::wstring WideColumn(sqlite3_stmt* row, int column) {
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(row, column));
    const auto size = static_cast<std::size_t>(sqlite3_column_bytes(row, column));
    return text == nullptr ? std::wstring() : vorn::StringUtil::ToWString(std::string_view(text, size));
}

void BindText(sqlite3_stmt* statement, int index, const std::string& text) {
    sqlite3_bind_text64(statement, index, text.data(), text.size(), SQLITE_STATIC, SQLITE_UTF8);
}

bool RunOnce(sqlite3_stmt* statement) {
    const int code = sqlite3_step(statement);
    sqlite3_reset(statement);
    Require(code == SQLITE_ROW || code == SQLITE_DONE, "a step fails");
    return code == SQLITE_ROW;
}

std::vector<std::string> TextsOf(const std::string& path, const std::string& sql) {
    const auto database = OpenBare(path);
    const auto select = PrepareBare(database.get(), sql);
    std::vector<std::string> texts;
    while (sqlite3_step(select.get()) == SQLITE_ROW)
        texts.emplace_back(reinterpret_cast<const char*>(sqlite3_column_text(select.get(), 0)));
    return texts;
}

BareFile ReadBareFile(const std::string& path) {
    BareFile file;
    for (const char* mark : {"application_id", "user_version"})
        file.sql.push_back("PRAGMA " + std::string(mark) + "=" + TextsOf(path, "PRAGMA " + std::string(mark)).at(0));
    for (auto& sql : TextsOf(path, "SELECT sql FROM sqlite_schema WHERE sql NOT NULL"))
        file.sql.push_back(std::move(sql));
    const auto database = OpenBare(path);
    for (const auto& name :
         TextsOf(path, "SELECT name FROM sqlite_schema WHERE type='table' AND name NOT LIKE 'sqlite%'"))
        file.tables.push_back(ReadTable(database.get(), name));
    return file;
}

void WriteBareFile(const std::string& path, const BareFile& file) {
    const auto database = OpenBare(path, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
    ExecuteBare(database.get(), "BEGIN EXCLUSIVE");
    for (const auto& sql : file.sql)
        ExecuteBare(database.get(), sql);
    for (const auto& table : file.tables) {
        const auto insert = PrepareBare(database.get(), InsertSql(table.name, table.columns));
        for (const auto& row : table.rows)
            Insert(insert.get(), row);
    }
    ExecuteBare(database.get(), "COMMIT");
}

BareChange DifferenceOf(const std::string& from, const std::string& to) {
    const BareFile before = ReadBareFile(from);
    const BareFile after = ReadBareFile(to);
    Require(before.tables.size() == after.tables.size(), "two versions of a file have other tables");
    BareChange change;
    for (std::size_t i = 0; i < after.tables.size(); ++i)
        change.tables.push_back(DifferenceOf(before.tables[i], after.tables[i], KeyName(to, after.tables[i])));
    return change;
}

void ApplyBareChange(const std::string& path, const BareChange& change) {
    const auto database = OpenBare(path);
    ExecuteBare(database.get(), "BEGIN EXCLUSIVE");
    for (const auto& table : change.tables) {
        if (table.gone.empty() && table.come.empty())
            continue;
        const auto remove =
            PrepareBare(database.get(), "DELETE FROM \"" + table.name + "\" WHERE \"" + table.key + "\"=?");
        const auto insert = PrepareBare(database.get(), InsertSql(table.name, table.columns));
        for (const auto& id : table.gone)
            Insert(remove.get(), {id});
        for (const auto& row : table.come)
            Insert(insert.get(), row);
    }
    ExecuteBare(database.get(), "COMMIT");
}

void BackUpBare(const std::string& source, const std::string& target) {
    const auto from = OpenBare(source);
    const auto to = OpenBare(target, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
    sqlite3_backup* backup = sqlite3_backup_init(to.get(), "main", from.get(), "main");
    Require(backup != nullptr, "a backup does not begin");
    sqlite3_backup_step(backup, -1);
    Require(sqlite3_backup_finish(backup) == SQLITE_OK, "a backup fails");
}

} // namespace tolm::bench
