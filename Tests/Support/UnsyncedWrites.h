#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace tolmtest {

/// What was written to files since they were last synced, what was done to folders since they were, and what stood
/// there before: enough to bring a file into any state that a power cut may leave it in.
class UnsyncedWrites {
public:
    /// Before the write or the truncation is done.
    void AddWrite(const std::string& path, std::int64_t at, const void* bytes, std::size_t count);
    void AddTruncation(const std::string& path, std::int64_t size);
    /// When the file or folder has come into being.
    void AddCreation(const std::string& path) { m_steps.push_back({Step::Kind::Creation, path, {}, {}, false}); }
    /// Before the file is deleted.
    void AddDeletion(const std::string& path);
    /// Before a file takes the name of another one, or a new one.
    void AddRename(const std::string& from, const std::string& to);
    /// All that was written to the file is on disk; that it is there need not be.
    void Sync(const std::string& path) { m_files.erase(path); }
    /// Which files there are beside this one is on disk.
    void SyncFolderOf(const std::string& path);
    void SyncFolder(const std::string& folder);
    void Forget() {
        m_files.clear();
        m_steps.clear();
    }

    /// Brings all files into a state in which the writes are lost: all of them, or with `torn` by chance single
    /// sectors of them. What was done to folders is lost too, with `torn` by chance single steps, in no order but that
    /// of one name: what was done to it after a step that is lost is lost with that.
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
    /// What was done to a folder.
    struct Step {
        enum class Kind { Creation, Deletion, Rename };
        Kind kind;
        std::string path;          ///< of the file then
        std::string to;            ///< its new name
        std::vector<char> content; ///< of what was deleted, or stood under the new name
        bool stood;                ///< whether something did

        /// Whether it could not have been done without the other one, which came before it.
        bool DependsOn(const Step& other) const;
    };
    File& FileAt(const std::string& path);
    std::vector<char> SyncedContentOf(const std::string& path) const;
    void LoseWrites(bool torn, std::mt19937_64& chance) const;
    void LoseSteps(bool torn, std::mt19937_64& chance) const;
    static void Undo(const Step& step);

    std::map<std::string, File> m_files;
    std::vector<Step> m_steps;
};

} // namespace tolmtest
