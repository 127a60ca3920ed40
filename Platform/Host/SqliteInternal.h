#pragma once

#include "Vorn/Integers.h"

#include <sqlite3.h>

#include <memory>
#include <string>
#include <string_view>

namespace tolm::sql {

/// One prepared statement. Parameters and columns count from 1 and 0, as SQLite counts them. After the first failure
/// every further step fails.
class Statement {
public:
    Statement(sqlite3* database, std::string_view text);

    Statement& Bind(int parameter, const std::wstring& text);
    Statement& Bind(int parameter, __int64 number);
    /// A number that is not finite is clamped; one that is none becomes 0.
    Statement& Bind(int parameter, double number);

    /// Goes to the next row. False at the end and after a failure.
    bool Next();
    /// Runs to the end and makes the statement ready for other parameters.
    bool Run();
    bool Failed() const { return m_failed; }
    /// Makes a statement that did not fail ready for other parameters.
    void Reset() { sqlite3_reset(m_statement.get()); }

    std::wstring Text(int column) const;
    __int64 Integer(int column) const { return sqlite3_column_int64(m_statement.get(), column); }
    /// The number, clamped to the range.
    int SmallInteger(int column) const;
    double Real(int column) const { return sqlite3_column_double(m_statement.get(), column); }
    bool IsNull(int column) const { return sqlite3_column_type(m_statement.get(), column) == SQLITE_NULL; }

private:
    void Note(int result) { m_failed = m_failed || result != SQLITE_OK; }

    std::unique_ptr<sqlite3_stmt, decltype(&sqlite3_finalize)> m_statement;
    bool m_failed = false;
};

/// One connection to a database file.
class Connection {
public:
    /// Opens the file, which is made if `create` is set. A file that is write-protected can still be read.
    Connection(const std::wstring& path, bool create);

    bool IsOpen() const { return m_open; }
    /// Runs statements that return no rows.
    bool Execute(const char* statements);
    Statement Prepare(std::string_view text) { return Statement(m_database.get(), text); }
    /// True when another file stands at the path by now, or none.
    bool HasMoved() const;
    /// The single number that the query gives; false when it gives none.
    bool ReadNumber(std::string_view query, __int64& number);

private:
    std::unique_ptr<sqlite3, decltype(&sqlite3_close)> m_database;
    bool m_open = false;
};

} // namespace tolm::sql
