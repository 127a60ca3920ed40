#include "Qbase/StoreFileInternal.h"

#include "Qbase/RawFileInternal.h"

#include "Vorn/Files.h"

#include <array>
#include <cstddef>
#include <string_view>
#include <sys/stat.h>
#include <vector>

namespace qbase {
namespace {

using HeaderBytes = std::array<unsigned char, 100>;

// Positions in the header of an SQLite file.
constexpr std::string_view kMagic("SQLite format 3", 16);
constexpr std::size_t kWriteVersionAt = 18;
constexpr std::size_t kReadVersionAt = 19;
constexpr std::size_t kChangeCounterAt = 24;
constexpr std::size_t kUserVersionAt = 60;
constexpr std::size_t kApplicationIdAt = 68;
constexpr unsigned char kRollbackJournal = 1;

int BigEndian(const HeaderBytes& bytes, std::size_t at) {
    unsigned value = 0;
    for (std::size_t i = 0; i < 4; ++i)
        value = (value << 8) | bytes[at + i];
    return static_cast<int>(value);
}

/// False when the file is shorter.
bool ReadHeader(sqlite3_file& file, HeaderBytes& bytes) {
    const int code = file.pMethods->xRead(&file, bytes.data(), static_cast<int>(bytes.size()), 0);
    if (code != SQLITE_OK && code != SQLITE_IOERR_SHORT_READ)
        throw SqlFailure{code};
    return code == SQLITE_OK;
}

StoreFileKind Judge(sqlite3_file& file) {
    HeaderBytes bytes{};
    if (!ReadHeader(file, bytes))
        return StoreFileKind::Foreign;
    const std::string_view magic(reinterpret_cast<const char*>(bytes.data()), kMagic.size());
    if (magic != kMagic || BigEndian(bytes, kApplicationIdAt) != kApplicationId)
        return StoreFileKind::Foreign;
    const int version = BigEndian(bytes, kUserVersionAt);
    if (version > kFormatVersion)
        return StoreFileKind::Newer;
    const bool hasJournal = bytes[kWriteVersionAt] == kRollbackJournal && bytes[kReadVersionAt] == kRollbackJournal;
    return version > 0 && hasJournal ? StoreFileKind::Store : StoreFileKind::Foreign;
}

/// Null where the connection has none open.
sqlite3_file* FileOf(sqlite3* database, const std::string& schema) {
    sqlite3_file* file = nullptr;
    const int code = sqlite3_file_control(database, schema.c_str(), SQLITE_FCNTL_FILE_POINTER, &file);
    return code == SQLITE_OK && file != nullptr && file->pMethods != nullptr ? file : nullptr;
}

} // namespace

bool IsPath(const std::wstring& path) {
    return !path.empty() && path.find(L'\0') == std::wstring::npos;
}

std::string WholePath(const std::wstring& path) {
    sqlite3_vfs* vfs = sqlite3_vfs_find(nullptr);
    std::vector<char> whole(static_cast<std::size_t>(vfs->mxPathname) + 1);
    const std::string native = vorn::FileSystem::ToNative(path);
    const int code = vfs->xFullPathname(vfs, native.c_str(), static_cast<int>(whole.size()), whole.data());
    if (code != SQLITE_OK && code != SQLITE_OK_SYMLINK)
        throw SqlFailure{code};
    return whole.data();
}

std::optional<FileIdentity> IdentityOf(const std::string& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0)
        return std::nullopt;
    return FileIdentity{status.st_dev, status.st_ino};
}

bool IsFilledFile(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) && status.st_size > 0;
}

bool IsOpenOnStore(sqlite3* database, const std::string& schema) {
    sqlite3_file* file = FileOf(database, schema);
    return file != nullptr && Judge(*file) == StoreFileKind::Store;
}

std::uint32_t ChangeCounterOf(sqlite3* database, const std::string& schema) {
    sqlite3_file* file = FileOf(database, schema);
    HeaderBytes bytes{};
    if (file == nullptr || !ReadHeader(*file, bytes))
        throw SqlFailure{SQLITE_NOTADB};
    return static_cast<std::uint32_t>(BigEndian(bytes, kChangeCounterAt));
}

StoreFileKind Examine(const std::string& path, Waiter& waiter) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0)
        return StoreFileKind::Missing;
    if (!S_ISREG(status.st_mode))
        return StoreFileKind::Foreign;
    if (status.st_size == 0)
        return StoreFileKind::Empty;
    RawFile file(path);
    if (const auto kind = Judge(file.Get()); kind == StoreFileKind::Store)
        return kind;
    file.LockShared(waiter); // what a writer leaves half done for a moment is not to be judged
    const auto kind = Judge(file.Get());
    if (kind != StoreFileKind::Store && IdentityOf(path + "-journal"))
        return StoreFileKind::Unsettled;
    return kind;
}

} // namespace qbase
