#pragma once

#include "Support/FaultyFiles.h"
#include "Support/UnsyncedWrites.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <utility>

struct sqlite3_vfs;

namespace tolmtest {

/// What is to fail, and what was counted; and the writes that are not on disk yet. For those who stand between a
/// program and its files.
class FaultyFiles::State {
public:
    State(std::string folder, sqlite3_vfs* real) : m_folder(std::move(folder)), m_real(real) {}

    /// That of the `FaultyFiles` that lives; null when none does.
    static State* Living();

    sqlite3_vfs* Real() const { return m_real; }
    bool Watches(const char* path) const;

    void Reset();
    void FailAt(long number, Lasts lasts);
    void FillDiskAfter(std::int64_t bytes);
    void RefuseChanges();
    void OpenForReadingOnly(std::string part);
    void CutPowerAt(long number, Unsynced unsynced, std::uint64_t seed);
    [[noreturn]] void CutPower();

    /// True when this call is to fail; `call` is what it does.
    bool Look(const char* path, const char* call) { return Count(path, call); }
    bool Change(const char* path, const char* call);
    /// The same of a file that is none of SQLite's, by a function of the system's.
    void ChangePastSqlite(const char* path, const char* call, const char* function);
    /// How many of the bytes of a write the disk still takes.
    int Room(const char* path, int bytes);
    bool OpensForReadingOnly(const char* path);

    void BeforeDeletions(std::function<void(const std::string&)> action) { m_beforeDeletion = std::move(action); }
    void TellOfDeletion(const char* path) const {
        if (m_beforeDeletion)
            m_beforeDeletion(path);
    }

    bool CutsPower() const { return m_cutAt != 0; }
    UnsyncedWrites& Log() { return m_unsynced; }
    long Calls() const { return m_calls; }
    long Changes() const { return m_changes; }
    const std::set<std::string>& FunctionsPastSqlite() const { return m_functions; }
    bool HasFailed() const { return m_hasFailed; }
    const std::string& FailedPath() const { return m_failedPath; }
    const std::string& FailedCall() const { return m_failedCall; }

private:
    bool Count(const char* path, const char* call);
    bool NoteFailure(const char* path, const char* call);

    std::string m_folder;
    sqlite3_vfs* m_real;
    long m_calls = 0;
    long m_changes = 0;
    std::set<std::string> m_functions;
    long m_failAt = 0;
    Lasts m_lasts = Lasts::Once;
    std::int64_t m_diskLeft = -1;
    bool m_refusesChanges = false;
    std::string m_readOnlyPart;
    long m_cutAt = 0;
    Unsynced m_kept = Unsynced::Kept;
    std::uint64_t m_seed = 0;
    bool m_isOut = false; ///< the power
    bool m_hasFailed = false;
    std::string m_failedPath;
    std::string m_failedCall;
    UnsyncedWrites m_unsynced;
    std::function<void(const std::string&)> m_beforeDeletion;
};

} // namespace tolmtest
