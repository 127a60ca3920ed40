#pragma once

#include "Host/Components.h"
#include "Host/SqliteInternal.h"

#include <string>
#include <string_view>
#include <vector>

namespace tolm {

/// A component database, open for one operation in one transaction. What was not committed when the object goes is
/// undone.
class ComponentFile {
public:
    enum class Purpose {
        Read,   ///< reads what is there
        Update, ///< changes what is there
        Create, ///< writes, and makes the file and its tables if need be
    };

    ComponentFile(const std::wstring& path, Purpose purpose);
    ~ComponentFile();
    ComponentFile(const ComponentFile&) = delete;
    ComponentFile& operator=(const ComponentFile&) = delete;

    /// True when there is no database, or an empty one: nothing to be found, nothing to be changed.
    bool IsAbsent() const { return m_state == State::Absent; }
    bool IsReady() const { return m_state == State::Ready; }

    /// Ends the transaction and keeps the file open.
    void Pause() { m_connection.Execute("ROLLBACK"); }
    /// Begins another transaction to read in. False when the file is no longer the one at the path.
    bool Resume();

    sql::Connection& Sql() { return m_connection; }
    bool Commit();

private:
    enum class State { Absent, Ready, Failed };
    State Begin(Purpose purpose);
    State Identify(Purpose purpose);
    bool CreateTables();

    sql::Connection m_connection;
    State m_state;
};

/// Puts the texts into a temporary table `name` with the one column Value.
bool FillTextSet(sql::Connection& sql, const std::string& name, const std::vector<std::wstring>& texts);

/// "a, b, c" of the rows' names, with something in front of each and behind it.
template <class Rows> std::string JoinNames(const Rows& rows, std::string_view prefix, std::string_view suffix) {
    std::string joined;
    for (const auto& row : rows) {
        joined += joined.empty() ? "" : ", ";
        joined.append(prefix).append(row.name).append(suffix);
    }
    return joined;
}

/// The plain content of disciplines and categories, in their order. False when they cannot be read or when there is
/// no database.
bool ReadCatalogue(const std::wstring& path, std::vector<TolmDisciplineData>& disciplines,
                   std::vector<TolmCategoryData>& categories);

} // namespace tolm
