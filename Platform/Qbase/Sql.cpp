#include "Qbase/SqlInternal.h"

namespace qbase {
namespace {

constexpr int kPrimaryCode = 0xff; // the low byte of an extended result code

} // namespace

QbaseError ErrorOf(int sqliteCode) {
    switch (sqliteCode & kPrimaryCode) {
    case SQLITE_OK:
    case SQLITE_ROW:
    case SQLITE_DONE:
        return QbaseError::None;
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
    case SQLITE_PROTOCOL:
        return QbaseError::Locked;
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
    case SQLITE_ERROR: // our own statements are well formed: the file has another shape than they expect
    case SQLITE_CONSTRAINT:
    case SQLITE_MISMATCH:
        return QbaseError::NotAStore;
    default:
        return QbaseError::Disk;
    }
}

std::string Quoted(std::string_view name) {
    std::string quoted;
    quoted.reserve(name.size() + 2);
    quoted += '"';
    quoted += name;
    quoted += '"';
    return quoted;
}

Statement::Statement(sqlite3* database, const std::string& sql) {
    sqlite3_stmt* statement = nullptr;
    const int code = sqlite3_prepare_v3(database, sql.c_str(), static_cast<int>(sql.size()) + 1,
                                        SQLITE_PREPARE_PERSISTENT, &statement, nullptr);
    m_statement.reset(statement);
    Check(code);
}

void Statement::Check(int code) const {
    if (code != SQLITE_OK)
        throw SqlFailure{code};
}

void Statement::Bind(int index, sqlite3_int64 value) {
    Check(sqlite3_bind_int64(m_statement.get(), index, value));
}

void Statement::Bind(int index, double value) {
    Check(sqlite3_bind_double(m_statement.get(), index, value));
}

void Statement::BindText(int index, std::string_view text) {
    const char* bytes = text.empty() ? "" : text.data();
    Check(sqlite3_bind_text64(m_statement.get(), index, bytes, text.size(), SQLITE_STATIC, SQLITE_UTF8));
}

void Statement::BindBlob(int index, std::string_view bytes) {
    const char* first = bytes.empty() ? "" : bytes.data();
    Check(sqlite3_bind_blob64(m_statement.get(), index, first, bytes.size(), SQLITE_STATIC));
}

void Statement::BindNull(int index) {
    Check(sqlite3_bind_null(m_statement.get(), index));
}

bool Statement::Step() {
    const int code = sqlite3_step(m_statement.get());
    if (code == SQLITE_ROW)
        return true;
    if (code == SQLITE_DONE)
        return false;
    const int extended = sqlite3_extended_errcode(sqlite3_db_handle(m_statement.get()));
    throw SqlFailure{extended == SQLITE_OK ? code : extended};
}

void Statement::Reset() noexcept {
    if (m_statement)
        sqlite3_reset(m_statement.get());
}

bool Statement::Run() {
    const ResetGuard guard(*this);
    return Step();
}

std::string_view Statement::Bytes(int column) const {
    const void* bytes = sqlite3_column_blob(m_statement.get(), column);
    const int size = sqlite3_column_bytes(m_statement.get(), column);
    return bytes == nullptr ? std::string_view()
                            : std::string_view(static_cast<const char*>(bytes), static_cast<std::size_t>(size));
}

} // namespace qbase
