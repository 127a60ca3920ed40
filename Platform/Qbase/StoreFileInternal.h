#pragma once

#include "Qbase/LockRegistryInternal.h"
#include "Qbase/SqlInternal.h"
#include "Qbase/WaiterInternal.h"

#include <memory>
#include <optional>
#include <string>

namespace qbase {

class Connection;

/// Marks a file as a store ("TOLM"), in the field that SQLite keeps for this.
constexpr int kApplicationId = 0x544F4C4D;
/// Version of the file format. A file of a later version is not opened.
constexpr int kFormatVersion = 1;

/// What stands at a path, as far as a look at the first bytes tells. The look changes nothing.
enum class StoreFileKind {
    Missing,   ///< nothing
    Empty,     ///< a regular file without a byte, which is as good as none
    Store,     ///< a store of this format version
    Newer,     ///< a store of a later version
    Foreign,   ///< anything else
    Unsettled, ///< a crash or a writer left it half written, with a journal that will make it whole
};

/// True for a text that can name a file. A zero in it would cut it short and name another one.
bool IsPath(const std::wstring& path);

/// The whole path of the file that a path leads to, links followed: the journal stands beside that one. Throws
/// `SqlFailure` where there can be none.
std::string WholePath(const std::wstring& path);

/// The file at the path; nothing where none stands.
std::optional<FileIdentity> IdentityOf(const std::string& path);

/// True for a regular file that is not empty.
bool IsFilledFile(const std::string& path);

/// What `Examine` calls a store at first sight, looked at through a connection. The bytes may be what a crash left,
/// until the connection has read the file.
bool IsOpenOnStore(sqlite3* database, const std::string& schema = "main");

/// What SQLite raises by one with each commit that writes to the file. Needs a lock on it.
std::uint32_t ChangeCounterOf(sqlite3* database, const std::string& schema);

/// Looks at the file, and waits while another process writes it. Throws `SqlFailure` when it cannot be read.
StoreFileKind Examine(const std::string& path, Waiter& waiter);

/// Copies what a connection sees of one of its files over the file at `target`, which comes into being if it must.
void CopyFile(sqlite3* source, const std::string& schema, const std::string& target);

/// The same into a file that nobody else made, in place of what stands at `target`. Returns the copy's connection,
/// which holds no lock: as long as it stands, no other file is taken for the copy.
std::unique_ptr<Connection> MakeCopy(sqlite3* source, const std::string& schema, const std::string& target);

/// Copies the store at `source` under a read lock; false when it is none or a file cannot be had.
bool CopyStore(const std::string& source, const std::string& target);

/// Removes the file and its journal while nobody works on it; true when nothing stands there afterwards.
bool RemoveFiles(const std::string& path);

} // namespace qbase
