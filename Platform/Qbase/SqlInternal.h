#pragma once

#include "Qbase/Qbase.h"

#include <memory>
#include <sqlite3.h>
#include <string>
#include <string_view>

namespace qbase {

/// A call of SQLite that failed; never leaves the library.
struct SqlFailure {
    int code = SQLITE_ERROR;
};

/// The error of the store that a code of SQLite stands for.
QbaseError ErrorOf(int sqliteCode);

/// A name as SQL takes it.
std::string Quoted(std::string_view name);

/// One prepared statement. Every operation throws `SqlFailure` where SQLite reports one.
class Statement {
public:
    Statement() = default;
    Statement(sqlite3* database, const std::string& sql);

    explicit operator bool() const { return m_statement != nullptr; }

    void Bind(int index, sqlite3_int64 value);
    void Bind(int index, double value);
    /// The text must live until the statement is reset.
    void BindText(int index, std::string_view text);
    void BindBlob(int index, std::string_view bytes);
    void BindNull(int index);

    /// True when it stands on a row, false at the end.
    bool Step();
    void Reset() noexcept;
    /// Steps once and resets; true when there was a row.
    bool Run();

    int ColumnType(int column) const { return sqlite3_column_type(m_statement.get(), column); }
    sqlite3_int64 Integer(int column) const { return sqlite3_column_int64(m_statement.get(), column); }
    double Real(int column) const { return sqlite3_column_double(m_statement.get(), column); }
    /// The bytes of a text or blob, until the next step.
    std::string_view Bytes(int column) const;

private:
    void Check(int code) const;

    struct Finalizer {
        void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
    };
    std::unique_ptr<sqlite3_stmt, Finalizer> m_statement;
};

/// Resets a statement at the end of a block, also where the block throws.
class ResetGuard {
public:
    explicit ResetGuard(Statement& statement) : m_statement(statement) {}
    ~ResetGuard() { m_statement.Reset(); }
    ResetGuard(const ResetGuard&) = delete;
    ResetGuard& operator=(const ResetGuard&) = delete;

private:
    Statement& m_statement;
};

} // namespace qbase
