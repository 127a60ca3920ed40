#pragma once

#include "Support/UnsyncedWrites.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <utility>

namespace tolmtest {

/// What is to fail at the files of one folder, and what was counted; and the writes that are not on disk yet. A test
/// says the former, those who stand between a program and its files ask for it.
class FileFaults {
public:
    /// Whether the calls after the one that failed fail too.
    enum class Lasts { Once, ForGood };
    /// What of the writes that were not synced is on disk after a power cut; and of the files that were created,
    /// deleted or renamed since their folder was.
    enum class Unsynced {
        Kept,    ///< all of them, as after the end of a process
        Dropped, ///< none of them
        Torn,    ///< of each, by chance, all or none of its sectors or some of them, whatever came before or after; of
                 ///< what was done to the folder some steps, in no order but that of one name
    };

    /// By its name: "kept", "dropped" or "torn".
    static Unsynced UnsyncedOf(const std::string& name);

    explicit FileFaults(std::string folder) : m_folder(std::move(folder)) {}
    FileFaults(const FileFaults&) = delete;
    FileFaults& operator=(const FileFaults&) = delete;

    /// The call of this number from now on fails: a read, write, sync, truncation, opening or deletion of a file, a
    /// look at its size or whether it is there, or a lock. A read or write that fails has done a half of it.
    void FailAt(long number, Lasts lasts);
    /// Writes beyond so many bytes from now on, and every later one, find the disk full; what still fits is written.
    void FillDiskAfter(std::int64_t bytes);
    /// Every changing call fails from now on, as in a folder that may not be written.
    void RefuseChanges();
    /// Files whose path has this part open for reading only from now on, and stay.
    void OpenForReadingOnly(std::string part);
    /// Before the changing call of this number from now on (a write, sync, truncation, creation or deletion) the
    /// process ends at once, as by a power cut.
    void CutPowerAt(long number, Unsynced unsynced, std::uint64_t seed);
    /// The process ends here and now, with what was told to `CutPowerAt`.
    [[noreturn]] void CutPower();
    /// Nothing fails any more.
    void Rest();
    /// Before a file of the folder is deleted, the thread that does so calls this with its path.
    void BeforeDeletions(std::function<void(const std::string& path)> action) { m_beforeDeletion = std::move(action); }

    /// Calls of any kind, and changing ones alone, since the last of those above.
    long Calls() const { return m_calls; }
    long Changes() const { return m_changes; }
    /// The functions of the system, by name, that changed files past SQLite since then: in a program that
    /// `Crash/SystemCalls.cpp` is part of.
    const std::set<std::string>& FunctionsPastSqlite() const { return m_functions; }
    /// True when a call failed since then.
    bool HasFailed() const { return m_hasFailed; }
    /// The file whose call failed first since then, and what that was to do: "read", "write", "sync", "truncate",
    /// "open", "create", "delete", "size", "lock" or "access".
    const std::string& FailedPath() const { return m_failedPath; }
    const std::string& FailedCall() const { return m_failedCall; }

    // For those who stand between.

    bool Watches(const char* path) const;
    /// True when this call is to fail; `call` is what it does.
    bool Look(const char* path, const char* call) { return Count(path, call); }
    bool Change(const char* path, const char* call);
    /// The same of a file that is none of SQLite's, by a function of the system's.
    void ChangePastSqlite(const char* path, const char* call, const char* function);
    /// How many of the bytes of a write the disk still takes.
    int Room(const char* path, int bytes);
    bool OpensForReadingOnly(const char* path);
    void TellOfDeletion(const char* path) const {
        if (m_beforeDeletion)
            m_beforeDeletion(path);
    }
    bool CutsPower() const { return m_cutAt != 0; }
    UnsyncedWrites& Log() { return m_unsynced; }

private:
    bool Count(const char* path, const char* call);
    bool NoteFailure(const char* path, const char* call);

    std::string m_folder;
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
