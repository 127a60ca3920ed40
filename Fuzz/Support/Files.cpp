#include "Fuzz/Support/Files.h"

#include "Vorn/Files.h"

#include <sqlite3.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>

namespace tolmfuzz {
namespace {

using vorn::FileSystem;

struct CloseConnection {
    void operator()(sqlite3* connection) const { sqlite3_close(connection); }
};
struct Finalize {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};

/// One statement on a connection of its own.
class OneStatement {
public:
    OneStatement(const std::wstring& path, const std::string& sql) {
        sqlite3* connection = nullptr;
        sqlite3_open_v2(FileSystem::ToNative(path).c_str(), &connection, SQLITE_OPEN_READWRITE, nullptr);
        m_connection.reset(connection);
        sqlite3_stmt* statement = nullptr;
        sqlite3_prepare_v2(connection, sql.c_str(), -1, &statement, nullptr);
        m_statement.reset(statement);
    }

    sqlite3_stmt* Get() const { return m_statement.get(); }
    std::string Error() const { return sqlite3_errmsg(m_connection.get()); }

private:
    std::unique_ptr<sqlite3, CloseConnection> m_connection;
    std::unique_ptr<sqlite3_stmt, Finalize> m_statement;
};

void Bind(sqlite3_stmt* statement, const SqlBinding& binding) {
    const int size = static_cast<int>(binding.bytes.size());
    switch (binding.kind) {
    case SqlBinding::Kind::Null:
        break;
    case SqlBinding::Kind::Integer:
        sqlite3_bind_int64(statement, 1, binding.integer);
        break;
    case SqlBinding::Kind::Real:
        sqlite3_bind_double(statement, 1, binding.real);
        break;
    case SqlBinding::Kind::Text:
        sqlite3_bind_text(statement, 1, binding.bytes.data(), size, SQLITE_TRANSIENT);
        break;
    case SqlBinding::Kind::Blob:
        sqlite3_bind_blob(statement, 1, binding.bytes.data(), size, SQLITE_TRANSIENT);
        break;
    }
}

} // namespace

std::string ReadBytes(const std::wstring& path) {
    std::ifstream file(FileSystem::ToNative(path), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void WriteBytes(const std::wstring& path, const std::string& bytes) {
    std::ofstream(FileSystem::ToNative(path), std::ios::binary | std::ios::trunc) << bytes;
}

std::vector<std::string> NamesIn(const std::wstring& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(FileSystem::ToNative(folder)))
        names.push_back(entry.path().filename().string());
    std::ranges::sort(names);
    return names;
}

void RemoveAll(const std::wstring& path) {
    std::filesystem::remove_all(FileSystem::ToNative(path));
}

std::string SqlValue(const std::wstring& path, const std::string& query) {
    const OneStatement statement(path, query);
    const int code = statement.Get() == nullptr ? SQLITE_ERROR : sqlite3_step(statement.Get());
    if (code == SQLITE_DONE)
        return {};
    if (code != SQLITE_ROW)
        return statement.Error();
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement.Get(), 0));
    return text == nullptr ? std::string() : std::string(text);
}

bool RunSql(const std::wstring& path, const std::string& sql, const SqlBinding& binding) {
    const OneStatement statement(path, sql);
    if (statement.Get() == nullptr)
        return false;
    Bind(statement.Get(), binding);
    return sqlite3_step(statement.Get()) == SQLITE_DONE;
}

} // namespace tolmfuzz
