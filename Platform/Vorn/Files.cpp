#include "Vorn/Files.h"

#include "Vorn/Guid.h"
#include "Vorn/Text.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace vorn {
namespace {

namespace fs = std::filesystem;

constexpr mode_t kNewFileMode = 0666;

/// The path for the operating system; none for a path that can name no file. A zero in it would cut it short and
/// name another file.
std::optional<fs::path> ToPath(const std::wstring& path) {
    if (path.empty() || path.find(L'\0') != std::wstring::npos)
        return std::nullopt;
    return fs::path(FileSystem::ToNative(path));
}

/// True when neither file, folder nor link stands at the path, as far as can be seen.
bool NothingAt(const fs::path& path) {
    std::error_code error;
    const fs::file_status status = fs::symlink_status(path, error);
    return status.type() == fs::file_type::not_found || error == std::errc::filename_too_long;
}

/// An open file descriptor.
class Descriptor {
public:
    Descriptor(const fs::path& path, int flags, mode_t mode)
        : m_handle(::open(path.c_str(), flags | O_CLOEXEC, mode)) {}
    ~Descriptor() { Close(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    bool IsOpen() const { return m_handle >= 0; }
    int Handle() const { return m_handle; }

    bool Write(const void* bytes, std::size_t size) {
        const char* next = static_cast<const char*>(bytes);
        while (size > 0) {
            const ssize_t written = ::write(m_handle, next, size);
            if (written < 0 && errno == EINTR)
                continue;
            if (written <= 0)
                return false;
            next += written;
            size -= static_cast<std::size_t>(written);
        }
        return true;
    }

    bool Flush() { return ::fsync(m_handle) == 0; }
    bool Close() { return m_handle < 0 || ::close(std::exchange(m_handle, -1)) == 0; }

private:
    int m_handle;
};

/// Brings the folder's entries to disk. A file system that cannot do so has nothing to be asked for.
void Flush(const fs::path& folder) {
    Descriptor descriptor(folder, O_RDONLY | O_DIRECTORY, 0);
    if (descriptor.IsOpen())
        descriptor.Flush();
}

void FlushFolderOf(const fs::path& file) {
    Flush(file.has_parent_path() ? file.parent_path() : fs::path("."));
}

/// The folders that get a new entry when this one is made with all above it.
std::vector<fs::path> ParentsOfMissing(const fs::path& folder) {
    std::vector<fs::path> parents;
    std::error_code error;
    for (fs::path at = folder; !at.empty() && !fs::exists(at, error); at = at.parent_path())
        parents.push_back(at.has_parent_path() ? at.parent_path() : fs::path("."));
    return parents;
}

/// A file beside the target that takes its place when it is complete and vanishes otherwise.
class Replacement {
public:
    explicit Replacement(const fs::path& target)
        : m_target(target),
          m_path(target.parent_path() /
                 (".tolm-" + StringUtil::ToString(GuidUtils::ToString(GuidUtils::Generate(), false, false)))) {}
    ~Replacement() {
        if (!m_done)
            ::unlink(m_path.c_str());
    }
    Replacement(const Replacement&) = delete;
    Replacement& operator=(const Replacement&) = delete;

    const fs::path& Path() const { return m_path; }

    bool TakePlace() {
        m_done = ::rename(m_path.c_str(), m_target.c_str()) == 0;
        return m_done;
    }

private:
    fs::path m_target;
    fs::path m_path;
    bool m_done = false;
};

/// Where the content goes: a link's file, or the path itself. None when something other than a file stands there.
std::optional<fs::path> FindTarget(const fs::path& path) {
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (fs::exists(status) && !fs::is_regular_file(status))
        return std::nullopt;
    const fs::path real = fs::canonical(path, error);
    return error ? path : real;
}

/// The mode of the file that stands at the path, or that of a new one.
bool CopyMode(const fs::path& from, int handle) {
    struct stat status {};
    return ::stat(from.c_str(), &status) != 0 || ::fchmod(handle, status.st_mode & 07777) == 0;
}

bool ReplaceContent(const fs::path& target, const void* bytes, std::size_t size) {
    Replacement replacement(target);
    Descriptor file(replacement.Path(), O_WRONLY | O_CREAT | O_EXCL, kNewFileMode);
    return file.IsOpen() && CopyMode(target, file.Handle()) && file.Write(bytes, size) && file.Flush() &&
           file.Close() && replacement.TakePlace();
}

/// Tells where a content for the path goes; false where it can go nowhere.
bool FindPlace(const std::wstring& path, const void* bytes, std::size_t size, fs::path& place) {
    const auto native = ToPath(path);
    if (!native || (bytes == nullptr && size > 0))
        return false;
    const auto target = FindTarget(*native);
    if (target)
        place = *target;
    return target.has_value();
}

/// Bytes that did not all reach the file are taken off again.
bool AppendContent(const fs::path& target, const void* bytes, std::size_t size) {
    Descriptor file(target, O_WRONLY | O_CREAT | O_APPEND, kNewFileMode);
    struct stat before {};
    if (!file.IsOpen() || ::fstat(file.Handle(), &before) != 0)
        return false;
    if (!file.Write(bytes, size) || !file.Flush()) {
        [[maybe_unused]] const int ignored = ::ftruncate(file.Handle(), before.st_size);
        return false;
    }
    FlushFolderOf(target);
    return file.Close();
}

bool CopyContent(const fs::path& source, const fs::path& target) {
    Replacement replacement(target);
    std::error_code error;
    if (!fs::copy_file(source, replacement.Path(), error))
        return false;
    Descriptor file(replacement.Path(), O_RDONLY, 0);
    const bool isDone = file.IsOpen() && file.Flush() && file.Close() && replacement.TakePlace();
    if (isDone)
        FlushFolderOf(target);
    return isDone;
}

} // namespace

FileInfo::FileInfo(const std::wstring& path) {
    const auto native = ToPath(path);
    if (!native)
        return;
    std::error_code error;
    const fs::file_status status = fs::status(*native, error);
    m_exists = fs::exists(status);
    m_regular = fs::is_regular_file(status);
    m_folder = fs::is_directory(status);
    const std::uintmax_t size = m_regular ? fs::file_size(*native, error) : 0;
    m_size = error ? 0 : size;
}

bool FileSystem::CreateDirectories(const std::wstring& path) {
    const auto native = ToPath(path);
    if (!native)
        return false;
    std::error_code error;
    const auto parents = ParentsOfMissing(*native);
    if (fs::create_directories(*native, error))
        std::ranges::for_each(parents, Flush);
    return fs::is_directory(*native, error);
}

bool FileSystem::RemoveFile(const std::wstring& path) {
    const auto native = ToPath(path);
    if (!native)
        return true;
    std::error_code error;
    if (!fs::is_directory(fs::symlink_status(*native, error)))
        fs::remove(*native, error);
    return NothingAt(*native);
}

std::string FileSystem::ToNative(const std::wstring& path) {
    std::string native = StringUtil::ToString(path);
    std::ranges::replace(native, '\\', '/');
    return native;
}

std::wstring FileSystem::FolderOf(const std::wstring& path) {
    const std::size_t separator = path.find_last_of(L"/\\");
    return separator == std::wstring::npos ? std::wstring() : path.substr(0, separator);
}

bool FileUtility::RemoveAll(const std::wstring& path) {
    const auto native = ToPath(path);
    if (!native)
        return true;
    std::error_code error;
    fs::remove_all(*native, error);
    return NothingAt(*native);
}

bool FileUtility::Copy(const std::wstring& source, const std::wstring& target) {
    const auto from = ToPath(source);
    const auto to = ToPath(target);
    std::error_code error;
    if (!from || !to || !fs::is_regular_file(*from, error))
        return false;
    const auto place = FindTarget(*to);
    return place && CopyContent(*from, *place);
}

bool FileUtility::SaveInBinaryMode(const std::wstring& path, const void* bytes, std::size_t size, bool append) {
    fs::path place;
    if (!FindPlace(path, bytes, size, place))
        return false;
    if (append)
        return AppendContent(place, bytes, size);
    const bool isSaved = ReplaceContent(place, bytes, size);
    if (isSaved)
        FlushFolderOf(place);
    return isSaved;
}

bool FileUtility::SaveOneOfMany(const std::wstring& path, const void* bytes, std::size_t size) {
    fs::path place;
    return FindPlace(path, bytes, size, place) && ReplaceContent(place, bytes, size);
}

void FileUtility::FlushFolder(const std::wstring& folder) {
    if (const auto native = ToPath(folder))
        Flush(*native);
}

} // namespace vorn
