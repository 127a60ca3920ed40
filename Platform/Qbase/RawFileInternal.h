#pragma once

#include "Qbase/SqlInternal.h"
#include "Qbase/WaiterInternal.h"

#include <string>

namespace qbase {

/// A file opened through SQLite's own file layer, which knows of the locks that this process holds on it.
class RawFile {
public:
    explicit RawFile(const std::string& path)
        : m_vfs(sqlite3_vfs_find(nullptr)), m_name(sqlite3_create_filename(path.c_str(), (path + "-journal").c_str(),
                                                                           (path + "-wal").c_str(), 0, nullptr)),
          m_file(static_cast<sqlite3_file*>(sqlite3_malloc(m_vfs->szOsFile))) {
        if (m_name == nullptr || m_file == nullptr) {
            Release();
            throw SqlFailure{SQLITE_NOMEM};
        }
        *m_file = {};
        const int code = m_vfs->xOpen(m_vfs, m_name, m_file, SQLITE_OPEN_READONLY | SQLITE_OPEN_MAIN_DB, nullptr);
        if (code != SQLITE_OK) {
            Release();
            throw SqlFailure{code};
        }
    }
    ~RawFile() { Release(); }
    RawFile(const RawFile&) = delete;
    RawFile& operator=(const RawFile&) = delete;

    sqlite3_file& Get() { return *m_file; }

    void LockShared(Waiter& waiter) {
        int code = SQLITE_BUSY;
        do {
            code = m_file->pMethods->xLock(m_file, SQLITE_LOCK_SHARED);
        } while (code == SQLITE_BUSY && waiter.Wait());
        if (code != SQLITE_OK)
            throw SqlFailure{code};
    }

private:
    void Release() noexcept {
        if (m_file != nullptr && m_file->pMethods != nullptr) {
            m_file->pMethods->xUnlock(m_file, SQLITE_LOCK_NONE);
            m_file->pMethods->xClose(m_file);
        }
        sqlite3_free(m_file);
        sqlite3_free_filename(m_name);
    }

    sqlite3_vfs* m_vfs;
    sqlite3_filename m_name;
    sqlite3_file* m_file;
};

} // namespace qbase
