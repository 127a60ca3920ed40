#pragma once

#include "Qbase/SqlInternal.h"
#include "Qbase/WaiterInternal.h"

#include <cstddef>
#include <span>
#include <string>

namespace qbase {

/// A file opened through SQLite's own file layer, which knows of the locks that this process holds on it. Every
/// operation throws `SqlFailure` where the file layer reports one.
class RawFile {
public:
    enum class Mode { Read, Change, CreateNew };

    RawFile(const std::string& path, Mode mode);
    ~RawFile() { Release(); }
    RawFile(const RawFile&) = delete;
    RawFile& operator=(const RawFile&) = delete;

    sqlite3_file& Get() { return *m_file; }
    void LockShared(Waiter& waiter);
    void LockExclusive(Waiter& waiter);

private:
    void Lock(int level, Waiter& waiter);
    void Release() noexcept;

    sqlite3_vfs* m_vfs;
    sqlite3_filename m_name;
    sqlite3_file* m_file;
};

/// The file that a connection has open under a name of SQL. It must have been used.
sqlite3_file& FileOf(sqlite3* database, const std::string& schema);

sqlite3_int64 SizeOf(sqlite3_file& file);

/// False when the file is shorter.
bool ReadAt(sqlite3_file& file, std::span<unsigned char> bytes, sqlite3_int64 at);

void WriteAt(sqlite3_file& file, std::span<const unsigned char> bytes, sqlite3_int64 at);

} // namespace qbase
