#pragma once

#include <compare>
#include <cstdint>
#include <memory>
#include <sqlite3.h>
#include <string>
#include <variant>
#include <vector>

/// Bare code against SQLite, without the library: what every floor is made of.
namespace tolm::bench {

using BareDatabase = std::unique_ptr<sqlite3, decltype(&sqlite3_close)>;
using BareStatement = std::unique_ptr<sqlite3_stmt, decltype(&sqlite3_finalize)>;

BareDatabase OpenBare(const std::string& path, int flags = SQLITE_OPEN_READWRITE);
void ExecuteBare(sqlite3* database, const std::string& sql);
BareStatement PrepareBare(sqlite3* database, const std::string& sql);
/// The text of a column as a wide string.
std::wstring WideColumn(sqlite3_stmt* row, int column);
void BindText(sqlite3_stmt* statement, int index, const std::string& text);
/// Steps once and resets; true when there was a row.
bool RunOnce(sqlite3_stmt* statement);

/// The first column of all rows that the query gives.
std::vector<std::string> TextsOf(const std::string& path, const std::string& sql);

struct BareBlob {
    std::string bytes;
    friend auto operator<=>(const BareBlob&, const BareBlob&) = default;
};
using BareValue = std::variant<std::monostate, std::int64_t, double, std::string, BareBlob>;
using BareRow = std::vector<BareValue>;

/// A table with all its rows.
struct BareTable {
    std::string name;
    int keyColumn = 0; ///< where the id stands
    std::size_t columns = 0;
    std::vector<BareRow> rows;
};

/// A whole file: what it says of itself, its tables and indexes, and all rows.
struct BareFile {
    std::vector<std::string> sql; ///< makes tables and indexes, and sets the marks of the file
    std::vector<BareTable> tables;
};

BareFile ReadBareFile(const std::string& path);
/// Makes the file and inserts all rows in one transaction.
void WriteBareFile(const std::string& path, const BareFile& file);

/// What turns one file into another: ids that go, rows that come.
struct BareChange {
    struct Table {
        std::string name;
        std::string key; ///< name of the column with the id
        std::vector<BareValue> gone;
        std::vector<BareRow> come;
        std::size_t columns = 0;
    };
    std::vector<Table> tables;
};

BareChange DifferenceOf(const std::string& from, const std::string& to);
/// Deletes and inserts in one transaction.
void ApplyBareChange(const std::string& path, const BareChange& change);

/// Copies with SQLite's backup, under a read lock.
void BackUpBare(const std::string& source, const std::string& target);

} // namespace tolm::bench
