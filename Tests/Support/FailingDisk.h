#pragma once

#include <sqlite3.h>

#include <csignal>
#include <map>

namespace tolmtest {

/// Stands before SQLite's file layer and lets the n-th write, sync or deletion from now on fail, and all after it. A
/// write that fails has written a half.
class FailingDisk {
public:
    FailingDisk() : m_real(*sqlite3_vfs_find(nullptr)), m_shim(m_real) {
        s_disk = this;
        m_shim.zName = "failing-disk";
        m_shim.pNext = nullptr;
        m_shim.xOpen = Open;
        m_shim.xDelete = Delete;
        sqlite3_vfs_register(&m_shim, 1);
    }
    ~FailingDisk() {
        sqlite3_vfs_unregister(&m_shim);
        s_disk = nullptr;
    }
    FailingDisk(const FailingDisk&) = delete;
    FailingDisk& operator=(const FailingDisk&) = delete;

    /// `code` is what the failing operations report.
    void FailAfter(int operations, int code) {
        m_left = operations;
        m_code = code;
    }
    /// The process dies at the n-th operation from now on, before it is done.
    void DieAfter(int operations) {
        m_left = operations;
        m_dies = true;
    }
    void Heal() { m_left = -1; }
    bool HasFailed() const { return m_left == 0; }

private:
    bool Fails() {
        if (m_left > 0)
            --m_left;
        if (m_left == 0 && m_dies)
            std::raise(SIGKILL);
        return m_left == 0;
    }

    static int Open(sqlite3_vfs*, const char* name, sqlite3_file* file, int flags, int* out) {
        const int code = s_disk->m_real.xOpen(&s_disk->m_real, name, file, flags, out);
        if (code == SQLITE_OK && file->pMethods != nullptr) {
            s_disk->m_methods = *file->pMethods;
            static std::map<const sqlite3_io_methods*, sqlite3_io_methods> shims;
            sqlite3_io_methods& shim = shims[file->pMethods];
            shim = *file->pMethods;
            shim.xWrite = Write;
            shim.xSync = Sync;
            shim.xTruncate = Truncate;
            file->pMethods = &shim;
        }
        return code;
    }
    static int Delete(sqlite3_vfs*, const char* name, int sync) {
        return s_disk->Fails() ? SQLITE_IOERR_DELETE : s_disk->m_real.xDelete(&s_disk->m_real, name, sync);
    }
    static int Write(sqlite3_file* file, const void* bytes, int count, sqlite3_int64 at) {
        const bool fails = s_disk->Fails();
        const int code = s_disk->m_methods.xWrite(file, bytes, fails ? count / 2 : count, at);
        return fails ? s_disk->m_code : code;
    }
    static int Sync(sqlite3_file* file, int flags) {
        return s_disk->Fails() ? SQLITE_IOERR_FSYNC : s_disk->m_methods.xSync(file, flags);
    }
    static int Truncate(sqlite3_file* file, sqlite3_int64 size) {
        return s_disk->Fails() ? SQLITE_IOERR_TRUNCATE : s_disk->m_methods.xTruncate(file, size);
    }

    static inline FailingDisk* s_disk = nullptr;
    sqlite3_vfs m_real;
    sqlite3_vfs m_shim;
    sqlite3_io_methods m_methods{};
    int m_left = -1;
    bool m_dies = false;
    int m_code = SQLITE_IOERR_WRITE;
};

} // namespace tolmtest
