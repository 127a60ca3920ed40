#include "Qbase/RawFileInternal.h"

namespace qbase {
namespace {

int FlagsOf(RawFile::Mode mode) {
    switch (mode) {
    case RawFile::Mode::Read:
        return SQLITE_OPEN_MAIN_DB | SQLITE_OPEN_READONLY;
    case RawFile::Mode::Change:
        return SQLITE_OPEN_MAIN_DB | SQLITE_OPEN_READWRITE;
    case RawFile::Mode::CreateNew:
        break;
    }
    return SQLITE_OPEN_MAIN_DB | SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_EXCLUSIVE;
}

void Check(int code) {
    if (code != SQLITE_OK)
        throw SqlFailure{code};
}

} // namespace

RawFile::RawFile(const std::string& path, Mode mode)
    : m_vfs(sqlite3_vfs_find(nullptr)),
      m_name(sqlite3_create_filename(path.c_str(), (path + "-journal").c_str(), (path + "-wal").c_str(), 0, nullptr)),
      m_file(static_cast<sqlite3_file*>(sqlite3_malloc(m_vfs->szOsFile))) {
    if (m_name == nullptr || m_file == nullptr) {
        Release();
        throw SqlFailure{SQLITE_NOMEM};
    }
    *m_file = {};
    int opened = 0;
    int code = m_vfs->xOpen(m_vfs, m_name, m_file, FlagsOf(mode), &opened);
    if (code == SQLITE_OK && mode == Mode::CreateNew && (opened & SQLITE_OPEN_READONLY) != 0)
        code = SQLITE_CANTOPEN; // one stands there, and was opened for want of a new one
    if (code != SQLITE_OK) {
        Release();
        throw SqlFailure{code};
    }
}

void RawFile::Release() noexcept {
    if (m_file != nullptr && m_file->pMethods != nullptr) {
        m_file->pMethods->xUnlock(m_file, SQLITE_LOCK_NONE);
        m_file->pMethods->xClose(m_file);
    }
    sqlite3_free(m_file);
    sqlite3_free_filename(m_name);
}

void RawFile::Lock(int level, Waiter& waiter) {
    int code = SQLITE_BUSY;
    do {
        code = m_file->pMethods->xLock(m_file, level);
    } while (code == SQLITE_BUSY && waiter.Wait());
    Check(code);
}

void RawFile::LockShared(Waiter& waiter) {
    Lock(SQLITE_LOCK_SHARED, waiter);
}

void RawFile::LockExclusive(Waiter& waiter) {
    for (const int level : {SQLITE_LOCK_SHARED, SQLITE_LOCK_RESERVED, SQLITE_LOCK_EXCLUSIVE})
        Lock(level, waiter);
}

sqlite3_file& FileOf(sqlite3* database, const std::string& schema) {
    sqlite3_file* file = nullptr;
    Check(sqlite3_file_control(database, schema.c_str(), SQLITE_FCNTL_FILE_POINTER, &file));
    if (file == nullptr || file->pMethods == nullptr)
        throw SqlFailure{SQLITE_CANTOPEN};
    return *file;
}

sqlite3_int64 SizeOf(sqlite3_file& file) {
    sqlite3_int64 size = 0;
    Check(file.pMethods->xFileSize(&file, &size));
    return size;
}

bool ReadAt(sqlite3_file& file, std::span<unsigned char> bytes, sqlite3_int64 at) {
    const int code = file.pMethods->xRead(&file, bytes.data(), static_cast<int>(bytes.size()), at);
    if (code != SQLITE_IOERR_SHORT_READ)
        Check(code);
    return code == SQLITE_OK;
}

void WriteAt(sqlite3_file& file, std::span<const unsigned char> bytes, sqlite3_int64 at) {
    Check(file.pMethods->xWrite(&file, bytes.data(), static_cast<int>(bytes.size()), at));
}

} // namespace qbase
