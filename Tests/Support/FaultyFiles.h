#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace tolmtest {

/// Stands between SQLite and the file system for all files under one folder, and lets their calls fail, or the power
/// be cut, where a test wants it. Files elsewhere are left alone. Only one may live at a time, and it must outlive
/// every store that was opened under it; calls for files of the folder come from one thread at a time.
class FaultyFiles {
public:
    /// Whether the calls after the one that failed fail too.
    enum class Lasts { Once, ForGood };
    /// What of the writes that were not synced is on disk after a power cut.
    enum class Unsynced {
        Kept,    ///< all of them, as after the end of a process
        Dropped, ///< none of them
        Torn,    ///< of each, by chance, all or none of its sectors or some of them, whatever came before or after
    };

    /// By its name: "kept", "dropped" or "torn".
    static Unsynced UnsyncedOf(const std::string& name);

    explicit FaultyFiles(const std::wstring& folder);
    ~FaultyFiles();
    FaultyFiles(const FaultyFiles&) = delete;
    FaultyFiles& operator=(const FaultyFiles&) = delete;

    /// The call of this number from now on fails: a read, write, sync, truncation, opening or deletion of a file.
    void FailAt(long number, Lasts lasts);
    /// Writes beyond so many bytes from now on, and every later one, find the disk full.
    void FillDiskAfter(std::int64_t bytes);
    /// Before the changing call of this number from now on (a write, sync, truncation, creation or deletion) the
    /// process ends at once, as by a power cut.
    void CutPowerAt(long number, Unsynced unsynced, std::uint64_t seed);
    /// Nothing fails any more.
    void Rest();
    /// Before a file of the folder is deleted, the thread that does so calls this with its path.
    void BeforeDeletions(std::function<void(const std::string& path)> action);

    /// Calls of any kind, and changing ones alone, since the last of the four above.
    long Calls() const;
    long Changes() const;
    /// True when a call failed since then.
    bool HasFailed() const;
    /// The file whose call failed first since then.
    std::string FailedPath() const;

    class State;

private:
    std::unique_ptr<State> m_state;
};

} // namespace tolmtest
