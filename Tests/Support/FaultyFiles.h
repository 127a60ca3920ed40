#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <set>
#include <string>

namespace tolmtest {

/// Stands between SQLite and the file system for all files under one folder, and lets their calls fail, or the power
/// be cut, where a test wants it. Files elsewhere are left alone. Only one may live at a time, and it must outlive
/// every store that was opened under it; calls for files of the folder come from one thread at a time.
class FaultyFiles {
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

    explicit FaultyFiles(const std::wstring& folder);
    ~FaultyFiles();
    FaultyFiles(const FaultyFiles&) = delete;
    FaultyFiles& operator=(const FaultyFiles&) = delete;

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
    void BeforeDeletions(std::function<void(const std::string& path)> action);

    /// Calls of any kind, and changing ones alone, since the last of those above.
    long Calls() const;
    long Changes() const;
    /// The functions of the system, by name, that changed files past SQLite since then: in a program that
    /// `Crash/SystemCalls.cpp` is part of.
    std::set<std::string> FunctionsPastSqlite() const;
    /// True when a call failed since then.
    bool HasFailed() const;
    /// The file whose call failed first since then, and what that was to do: "read", "write", "sync", "truncate",
    /// "open", "create", "delete", "size", "lock" or "access".
    std::string FailedPath() const;
    std::string FailedCall() const;

    class State;

private:
    std::unique_ptr<State> m_state;
};

} // namespace tolmtest
