#pragma once

#include <sqlite3.h>

#include <atomic>
#include <functional>
#include <thread>
#include <utility>

namespace tolmtest {

/// Stands before SQLite's file layer and lets something happen in another thread just before the n-th lock that this
/// thread takes from now on, in each of its steps. The thread waits for it. Only one may live at a time, and it must
/// outlive the stores that were opened under it.
class LockMoments {
public:
    LockMoments() : m_real(*sqlite3_vfs_find(nullptr)), m_shim(m_real), m_watched(std::this_thread::get_id()) {
        s_moments = this;
        m_shim.zName = "lock-moments";
        m_shim.pNext = nullptr;
        m_shim.xOpen = Open;
        sqlite3_vfs_register(&m_shim, 1);
    }
    ~LockMoments() {
        sqlite3_vfs_unregister(&m_shim);
        s_moments = nullptr;
    }
    LockMoments(const LockMoments&) = delete;
    LockMoments& operator=(const LockMoments&) = delete;

    void Before(int number, std::function<void()> action) {
        m_left = number;
        m_action = std::move(action);
    }
    /// Nothing happens any more. True when fewer locks were taken than that.
    bool Rest() { return m_left.exchange(0) > 0; }

private:
    static int Open(sqlite3_vfs*, const char* name, sqlite3_file* file, int flags, int* out) {
        const int code = s_moments->m_real.xOpen(&s_moments->m_real, name, file, flags, out);
        if (code == SQLITE_OK && file->pMethods != nullptr && (flags & SQLITE_OPEN_MAIN_DB) != 0) {
            s_moments->m_methods = *file->pMethods;
            static sqlite3_io_methods shim;
            shim = *file->pMethods;
            shim.xLock = Lock;
            file->pMethods = &shim;
        }
        return code;
    }
    static int Lock(sqlite3_file* file, int lock) {
        s_moments->Pass();
        return s_moments->m_methods.xLock(file, lock);
    }
    void Pass() {
        if (std::this_thread::get_id() == m_watched && m_left > 0 && --m_left == 0)
            std::thread(m_action).join();
    }

    static inline LockMoments* s_moments = nullptr;
    sqlite3_vfs m_real;
    sqlite3_vfs m_shim;
    sqlite3_io_methods m_methods{};
    std::thread::id m_watched;
    std::atomic<int> m_left = 0;
    std::function<void()> m_action;
};

} // namespace tolmtest
