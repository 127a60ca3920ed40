#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace qbase {

/// A file as the file system knows it, whatever path leads to it.
struct FileIdentity {
    std::uint64_t device = 0;
    std::uint64_t number = 0;
    friend auto operator<=>(const FileIdentity&, const FileIdentity&) = default;
};

enum class LockKind { None, Read, Update };

/// Who holds which lock in this process, so that a thread that would wait for itself is refused at once. Any thread
/// may call it.
class LockRegistry {
public:
    /// Notes that this thread holds a lock on the file through `owner`.
    static void Add(const FileIdentity& file, LockKind kind, const void* owner);
    /// Forgets all locks of the owner.
    static void Remove(const void* owner) noexcept;
    /// True when this thread, through another owner, holds a lock that keeps `wanted` from ever being had.
    static bool WouldWaitForItself(const FileIdentity& file, LockKind wanted, const void* owner);
    /// True when this thread holds a lock of any kind on the file.
    static bool IsHeld(const FileIdentity& file);
    /// True when this thread holds the file's update lock.
    static bool IsHeldForUpdate(const FileIdentity& file);
};

class CopyRecord;

/// Which files of this process are working copies, by their whole paths. Any thread may call it.
class WorkingCopyRegistry {
public:
    /// Notes the owner's copies, in place of those that it had.
    static void Add(const void* owner, const std::vector<std::string>& paths);
    static void Remove(const void* owner) noexcept;
    static bool Has(const std::string& path);
    /// Notes which file the owner's copy at the path is, once it has been made, and where its changes are recorded.
    static void Fix(const void* owner, const std::string& path, const FileIdentity& file,
                    std::shared_ptr<CopyRecord> record);
    /// False for a file that took the place of a copy: another process works on the same stores.
    static bool Admits(const std::string& path, const FileIdentity& file);
    /// Null for a file that is no copy, whatever path leads to it.
    static std::shared_ptr<CopyRecord> RecordOf(const FileIdentity& file);
};

} // namespace qbase
