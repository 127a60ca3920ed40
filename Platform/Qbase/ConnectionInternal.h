#pragma once

#include "Qbase/CopyRecordInternal.h"
#include "Qbase/LockRegistryInternal.h"
#include "Qbase/SqlInternal.h"
#include "Qbase/WaiterInternal.h"

#include <list>
#include <memory>
#include <string>

namespace qbase {

/// One open SQLite connection with the store's file and those that were opened beside it. Every operation throws
/// `SqlFailure` where SQLite reports one, unless it is noexcept.
class Connection {
    struct Unopened {};

public:
    /// One file of the connection.
    struct File {
        std::string schema; ///< its name in SQL
        std::string path;
        FileIdentity identity;
        Statement look;                     ///< reads the file's first page
        bool inUse = false;                 ///< a handle works on it
        std::shared_ptr<CopyRecord> record; ///< of a working copy
        ChangedRows changed;                ///< of a working copy, in this transaction
    };

    /// Opens the file at the path; `create` lets it come into being, without a byte.
    Connection(const std::string& path, bool create);
    /// Opens the file where a first look says that it is a settled store; null where it does not. The look goes
    /// through the connection, so that the file is opened once.
    static std::shared_ptr<Connection> OpenStore(const std::string& path);
    explicit Connection(Unopened) {}
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    sqlite3* Get() const { return m_database.get(); }
    File& Main() { return m_files.front(); }
    LockKind Held() const { return m_held; }

    /// Bounds the waiting for locks.
    Waiter& Waiting() { return m_waiter; }

    /// Begins a transaction with its lock on all files.
    void Begin(LockKind kind);
    /// The same, unless one of the files is no longer the one at its path: then it does nothing and returns false. The
    /// journal at the path of such a file is another one's. SQLite would take it for this one's, and so for what a
    /// crash left.
    bool BeginUnmoved(LockKind kind);
    void Commit();
    /// Gives up the transaction, if there is one.
    void Rollback() noexcept;
    /// Gives up the transaction and lets nothing more be done.
    void Doom() noexcept;
    bool IsDoomed() const { return m_doomed; }
    /// Grows whenever statements lose their place.
    unsigned Epoch() const { return m_epoch; }

    /// Adds the file at the path. In a transaction it is locked as the others are. A file that was left by its
    /// handle in this transaction is taken up again.
    File& Attach(const std::string& path, bool create);
    /// Ends the work on an added file; outside a transaction the connection lets go of it.
    void Leave(File& file) noexcept;
    bool HasCompanions() const { return m_files.size() > 1; }
    /// True when one of the files is in use and is the one at the path.
    bool Uses(const FileIdentity& file) const;
    /// True when a handle left the file at the path in this transaction.
    bool HasLeft(const std::string& path) { return FindLeft(path) != nullptr; }
    /// True when the failure cost the transaction that was begun: SQLite gave it up, or lets it write no more.
    bool HasLostTransaction(const SqlFailure& failure) const;

    /// True when one of the files is no longer the one at its path.
    bool AnyMoved();
    /// True when this thread holds a lock through another connection that makes waiting for `wanted` vain.
    bool WouldWaitForItself(LockKind wanted);
    /// Makes the locks that are held known to the thread's other handles.
    void Register();

    void Execute(const std::string& sql);
    /// The number that the statement yields.
    sqlite3_int64 Query(const std::string& sql);

private:
    struct Closer {
        void operator()(sqlite3* database) const;
    };

    static int OnBusy(void* self, int);
    static void OnChange(void* self, sqlite3*, int operation, const char* schema, const char* table,
                         sqlite3_int64 before, sqlite3_int64 after) noexcept;
    void Open(const std::string& path, bool create);
    void Configure(const std::string& path);
    void ReadMain(const std::string& path);
    File& AddFile(const std::string& schema, const std::string& path);
    File* FindLeft(const std::string& path);
    void AttachFile(const std::string& schema, const std::string& path, bool create);
    void LockAdded(File& file);
    void ForgetAdded(const std::string& schema) noexcept;
    void Detach(const std::string& schema) noexcept;
    void RaiseLock(File& file);
    void CheckSynchronous(const File& file);
    bool HasMoved(const File& file);
    void RaiseChangeCounter(const File& file);
    void EndTransaction() noexcept;

    std::unique_ptr<sqlite3, Closer> m_database;
    std::list<File> m_files; // the main file first; elements keep their place
    LockKind m_held = LockKind::None;
    bool m_doomed = false;
    unsigned m_epoch = 0;
    unsigned m_schemaCount = 0;
    Waiter m_waiter;
};

/// Number of a file's content as SQLite counts it for this connection: another one once somebody else committed.
sqlite3_int64 DataVersion(Connection& connection, const std::string& schema);

} // namespace qbase
