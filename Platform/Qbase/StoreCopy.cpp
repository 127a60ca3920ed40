#include "Qbase/ConnectionInternal.h"
#include "Qbase/SchemaInternal.h"
#include "Qbase/StoreFileInternal.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace qbase {
namespace {

struct BackupEnd {
    void operator()(sqlite3_backup* backup) const { sqlite3_backup_finish(backup); }
};

void CopyPages(sqlite3* source, const std::string& schema, Connection& target) {
    std::unique_ptr<sqlite3_backup, BackupEnd> backup(
        sqlite3_backup_init(target.Get(), "main", source, schema.c_str()));
    if (!backup)
        throw SqlFailure{sqlite3_extended_errcode(target.Get())};
    int code = SQLITE_BUSY;
    do {
        code = sqlite3_backup_step(backup.get(), -1);
    } while ((code == SQLITE_BUSY || code == SQLITE_LOCKED) && target.Waiting().Wait());
    const int end = sqlite3_backup_finish(backup.release());
    if (code != SQLITE_DONE || end != SQLITE_OK)
        throw SqlFailure{code != SQLITE_DONE ? code : end};
}

bool DeleteFile(const std::string& path, bool syncFolder) {
    sqlite3_vfs* vfs = sqlite3_vfs_find(nullptr);
    const int code = vfs->xDelete(vfs, path.c_str(), syncFolder ? 1 : 0);
    return code == SQLITE_OK || code == SQLITE_IOERR_DELETE_NOENT;
}

/// The file goes first: a journal without its file is nothing, a file without its journal may be half written.
bool DeleteFiles(const std::string& path) {
    return DeleteFile(path, true) && DeleteFile(path + "-journal", true);
}

/// A new and empty file; another process's work ends it here, before anything of that is touched. As long as this is
/// open no other file has the same identity.
class NewFile {
public:
    explicit NewFile(const std::string& path)
        : m_file(::open(path.c_str(), O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC, 0644)) {
        if (m_file < 0)
            throw SqlFailure{errno == EEXIST ? SQLITE_BUSY : SQLITE_CANTOPEN};
    }
    /// The system takes all locks away that this process has on the file: it must have none.
    ~NewFile() { ::close(m_file); }
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    bool Is(const FileIdentity& identity) const {
        struct stat status {};
        return ::fstat(m_file, &status) == 0 && identity == FileIdentity{status.st_dev, status.st_ino};
    }

private:
    int m_file;
};

} // namespace

void CopyFile(sqlite3* source, const std::string& schema, const std::string& target) {
    const auto identity = IdentityOf(target);
    if (identity && LockRegistry::WouldWaitForItself(*identity, LockKind::Update, nullptr))
        throw SqlFailure{SQLITE_BUSY};
    std::optional<Connection> connection;
    try {
        connection.emplace(target, true);
    } catch (const SqlFailure& failure) {
        if (ErrorOf(failure.code) != QbaseError::NotAStore || !RemoveFiles(target))
            throw;
        connection.emplace(target, true); // what stood there was nothing that could be overwritten page by page
    }
    CopyPages(source, schema, *connection);
}

std::unique_ptr<Connection> MakeCopy(sqlite3* source, const std::string& schema, const std::string& target) {
    if (!RemoveFiles(target))
        throw SqlFailure{SQLITE_BUSY};
    const NewFile made(target);
    auto copy = std::make_unique<Connection>(target, false);
    if (!made.Is(copy->Main().identity))
        throw SqlFailure{SQLITE_BUSY};
    copy->Execute("PRAGMA journal_mode=MEMORY"); // a file could be taken for the journal of another process's copy
    CopyPages(source, schema, *copy);
    return copy;
}

bool CopyStore(const std::string& source, const std::string& target) {
    const auto identity = IdentityOf(source);
    if (!identity || identity == IdentityOf(target) ||
        LockRegistry::WouldWaitForItself(*identity, LockKind::Read, nullptr))
        return false;
    Waiter waiter;
    const auto kind = Examine(source, waiter);
    if (kind != StoreFileKind::Store && kind != StoreFileKind::Unsettled)
        return false;
    Connection connection(source, false);
    connection.Begin(LockKind::Read);
    if (CheckMark(connection, "main") != QbaseError::None)
        return false;
    CopyFile(connection.Get(), "main", target);
    return true;
}

bool RemoveFiles(const std::string& path) {
    const auto identity = IdentityOf(path);
    if (!identity)
        return DeleteFile(path + "-journal", true); // somebody may put a file here at this moment
    if (LockRegistry::IsHeldForUpdate(*identity))
        return DeleteFiles(path);
    if (LockRegistry::WouldWaitForItself(*identity, LockKind::Update, nullptr))
        return false;
    try {
        Connection connection(path, false);
        connection.Begin(LockKind::Update);
        return connection.AnyMoved() ? RemoveFiles(path) : DeleteFiles(path); // what is locked, and nothing else
    } catch (const SqlFailure& failure) {
        return ErrorOf(failure.code) != QbaseError::Locked && DeleteFiles(path);
    }
}

} // namespace qbase
