#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace tolmtest {

/// What was written to files since they were last synced, and what stood there before: enough to bring a file into any
/// state that a power cut may leave it in.
class UnsyncedWrites {
public:
    /// Before the write or the truncation is done.
    void AddWrite(const std::string& path, std::int64_t at, const void* bytes, std::size_t count);
    void AddTruncation(const std::string& path, std::int64_t size);
    /// All that was written to the file is on disk.
    void Sync(const std::string& path) { m_files.erase(path); }
    /// The file is gone.
    void Forget(const std::string& path) { m_files.erase(path); }
    void Forget() { m_files.clear(); }

    /// Brings all files into a state in which the writes are lost: all of them, or with `torn` by chance single
    /// sectors of them.
    void Lose(bool torn, std::uint64_t seed) const;

private:
    struct Change {
        bool truncates = false;
        std::int64_t at = 0; ///< place of the bytes, or the new size
        std::vector<char> bytes;
    };
    struct File {
        std::vector<char> synced; ///< content at the last sync
        std::vector<Change> changes;
    };
    File& FileAt(const std::string& path);

    std::map<std::string, File> m_files;
};

} // namespace tolmtest
