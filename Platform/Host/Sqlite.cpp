#include "Host/SqliteInternal.h"

#include "Vorn/Files.h"
#include "Vorn/Text.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace tolm::sql {
namespace {

constexpr int kBusyTimeout = 5000; // milliseconds

sqlite3_stmt* Prepare(sqlite3* database, std::string_view text) {
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(database, text.data(), static_cast<int>(text.size()), &statement, nullptr);
    return statement;
}

double Finite(double number) {
    if (std::isnan(number))
        return 0.0;
    return std::clamp(number, std::numeric_limits<double>::lowest(), std::numeric_limits<double>::max());
}

/// SQLite gives names such as ":memory:" a meaning of their own; behind a folder none has any.
std::string FileName(const std::wstring& path) {
    const std::string native = vorn::FileSystem::ToNative(path);
    return native.starts_with('/') ? native : "./" + native;
}

sqlite3* OpenFile(const std::wstring& path, bool create) {
    sqlite3* database = nullptr;
    if (path.empty() || path.find(L'\0') != std::wstring::npos)
        return nullptr;
    const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX | (create ? SQLITE_OPEN_CREATE : 0);
    if (sqlite3_open_v2(FileName(path).c_str(), &database, flags, nullptr) == SQLITE_OK)
        return database;
    sqlite3_close(database);
    return nullptr;
}

} // namespace

Statement::Statement(sqlite3* database, std::string_view text)
    : m_statement(tolm::sql::Prepare(database, text), &sqlite3_finalize), m_failed(m_statement == nullptr) {}

Statement& Statement::Bind(int parameter, const std::wstring& text) {
    const std::string utf8 = vorn::StringUtil::ToString(text);
    Note(sqlite3_bind_text64(m_statement.get(), parameter, utf8.data(), utf8.size(), SQLITE_TRANSIENT, SQLITE_UTF8));
    return *this;
}

Statement& Statement::Bind(int parameter, __int64 number) {
    Note(sqlite3_bind_int64(m_statement.get(), parameter, number));
    return *this;
}

Statement& Statement::Bind(int parameter, double number) {
    Note(sqlite3_bind_double(m_statement.get(), parameter, Finite(number)));
    return *this;
}

bool Statement::Next() {
    if (m_failed)
        return false;
    const int result = sqlite3_step(m_statement.get());
    m_failed = result != SQLITE_ROW && result != SQLITE_DONE;
    return result == SQLITE_ROW;
}

bool Statement::Run() {
    while (Next()) {
    }
    if (!m_failed)
        Note(sqlite3_reset(m_statement.get()));
    return !m_failed;
}

std::wstring Statement::Text(int column) const {
    const unsigned char* const text = sqlite3_column_text(m_statement.get(), column);
    const int size = sqlite3_column_bytes(m_statement.get(), column);
    if (text == nullptr)
        return {};
    return vorn::StringUtil::ToWString({reinterpret_cast<const char*>(text), static_cast<std::size_t>(size)});
}

int Statement::SmallInteger(int column) const {
    return static_cast<int>(
        std::clamp<__int64>(Integer(column), std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

Connection::Connection(const std::wstring& path, bool create)
    : m_database(OpenFile(path, create), &sqlite3_close), m_open(m_database != nullptr) {
    if (m_open)
        m_open = sqlite3_busy_timeout(m_database.get(), kBusyTimeout) == SQLITE_OK &&
                 Execute("PRAGMA foreign_keys=ON; PRAGMA temp_store=MEMORY; PRAGMA synchronous=EXTRA");
}

bool Connection::Execute(const char* statements) {
    return sqlite3_exec(m_database.get(), statements, nullptr, nullptr, nullptr) == SQLITE_OK;
}

bool Connection::HasMoved() const {
    int moved = 0;
    return sqlite3_file_control(m_database.get(), "main", SQLITE_FCNTL_HAS_MOVED, &moved) != SQLITE_OK || moved != 0;
}

bool Connection::ReadNumber(std::string_view query, __int64& number) {
    Statement statement = Prepare(query);
    if (!statement.Next())
        return false;
    number = statement.Integer(0);
    return true;
}

} // namespace tolm::sql
