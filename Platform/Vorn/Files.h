#pragma once

#include "Vorn/Export.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace vorn {

/// What stands at a path. The answer is taken when the object is made.
class TOLM_PLATFORM_API FileInfo {
public:
    explicit FileInfo(const std::wstring& path);
    /// True when a file of any kind, a folder included, stands at the path.
    bool Exists() const noexcept { return m_exists; }
    /// True when it is a regular file.
    bool IsRegularFile() const noexcept { return m_regular; }
    bool IsFolder() const noexcept { return m_folder; }
    /// Size in bytes; 0 for anything but a regular file.
    std::uint64_t Size() const noexcept { return m_size; }

private:
    bool m_exists = false;
    bool m_regular = false;
    bool m_folder = false;
    std::uint64_t m_size = 0;
};

/// Operations on folders and names. Paths take both separators and use the platform's own. Nothing throws; false
/// tells of a failure.
class TOLM_PLATFORM_API FileSystem {
public:
    /// Makes the folder and those above it. True when it stands afterwards.
    static bool CreateDirectories(const std::wstring& path);
    /// Removes one file. True when none stands there afterwards.
    static bool RemoveFile(const std::wstring& path);
    /// The path as the operating system takes it: UTF-8, with the platform's separators.
    static std::string ToNative(const std::wstring& path);
    /// The part up to the last separator, without it; empty when the path has none.
    static std::wstring FolderOf(const std::wstring& path);
};

/// Operations on whole files. Nothing throws; false tells of a failure.
class TOLM_PLATFORM_API FileUtility {
public:
    /// Removes a file, or a folder with all in it. True when nothing stands there afterwards.
    static bool RemoveAll(const std::wstring& path);
    /// Copies a file's bytes over `target`.
    static bool Copy(const std::wstring& source, const std::wstring& target);
    /// Writes `size` bytes to the file, at its end if `append`, else as its whole content. The content is on disk
    /// when true comes back; an existing file is replaced whole or not at all.
    static bool SaveInBinaryMode(const std::wstring& path, const void* bytes, std::size_t size, bool append);
    /// The same for the whole content of one of several files of a folder: a crash may still leave what stood at the
    /// path before, until `FlushFolder` was called after the last of them.
    static bool SaveOneOfMany(const std::wstring& path, const void* bytes, std::size_t size);
    /// Brings to disk which files stand in the folder, as far as its file system can.
    static void FlushFolder(const std::wstring& folder);
};

} // namespace vorn
