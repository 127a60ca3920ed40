#include "Qbase/ConnectionInternal.h"

#include "Qbase/StoreFileInternal.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace qbase {
namespace {

constexpr int kSynchronousFull = 2;

/// A whole path as an address that tells whether the file may come into being.
std::string UriOf(const std::string& path, bool create) {
    constexpr std::string_view hex = "0123456789ABCDEF";
    std::string uri = "file://";
    for (const char c : path) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '%' || c == '?' || c == '#') {
            uri += '%';
            uri += hex[byte >> 4];
            uri += hex[byte & 0xf];
        } else {
            uri += c;
        }
    }
    return uri + (create ? "?mode=rwc" : "?mode=rw");
}

void ResetAll(sqlite3* database) noexcept {
    for (sqlite3_stmt* statement = sqlite3_next_stmt(database, nullptr); statement != nullptr;
         statement = sqlite3_next_stmt(database, statement))
        sqlite3_reset(statement);
}

} // namespace

void Connection::Closer::operator()(sqlite3* database) const {
    sqlite3_close_v2(database);
}

Connection::Connection(const std::string& path, bool create) {
    Open(path, create);
    ReadMain(path);
}

std::shared_ptr<Connection> Connection::OpenStore(const std::string& path) {
    if (!IsFilledFile(path))
        return nullptr;
    const auto connection = std::make_shared<Connection>(Unopened{});
    connection->Open(path, false);
    if (!IsOpenOnStore(connection->Get()))
        return nullptr;
    connection->ReadMain(path);
    return IsOpenOnStore(connection->Get()) ? connection : nullptr; // what a crash left has been rolled back
}

void Connection::ReadMain(const std::string& path) {
    Configure(path);
    AddFile("main", path).inUse = true; // reads the schema
}

Connection::~Connection() {
    Rollback();
}

void Connection::Open(const std::string& path, bool create) {
    sqlite3* database = nullptr;
    // May create: else no companion could come into being on this connection; the address says what this file may.
    const int code =
        sqlite3_open_v2(UriOf(path, create).c_str(), &database,
                        SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_URI | SQLITE_OPEN_NOMUTEX, nullptr);
    m_database.reset(database);
    if (code != SQLITE_OK)
        throw SqlFailure{code};
}

/// Nothing that a file brings along is run or trusted. A working copy is worth nothing after a crash: it may reach the
/// disk when the system likes. Elsewhere a commit is on disk when it says so: the folder is synced too, when the
/// journal is gone from it, or a power cut could bring that back and undo the commit.
void Connection::Configure(const std::string& path) {
    sqlite3_extended_result_codes(Get(), 1);
    sqlite3_busy_handler(Get(), OnBusy, this);
    sqlite3_db_config(Get(), SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(Get(), SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    sqlite3_db_config(Get(), SQLITE_DBCONFIG_ENABLE_TRIGGER, 0, nullptr);
    sqlite3_db_config(Get(), SQLITE_DBCONFIG_ENABLE_VIEW, 0, nullptr);
    const bool isCopy = WorkingCopyRegistry::Has(path);
    Execute("PRAGMA cell_size_check=ON;PRAGMA synchronous=" + std::string(isCopy ? "OFF" : "EXTRA"));
}

Connection::File& Connection::AddFile(const std::string& schema, const std::string& path) {
    Statement look(Get(), "SELECT 1 FROM " + Quoted(schema) + ".sqlite_schema");
    const auto identity = IdentityOf(path);
    if (!identity)
        throw SqlFailure{SQLITE_CANTOPEN};
    if (!WorkingCopyRegistry::Admits(path, *identity))
        throw SqlFailure{SQLITE_BUSY}; // neither to be worked on here nor to be removed
    File& file = m_files.emplace_back(File{schema, path, *identity, std::move(look), false, nullptr, {}});
    file.record = WorkingCopyRegistry::RecordOf(*identity);
    if (file.record)
        sqlite3_preupdate_hook(Get(), OnChange, this);
    return file;
}

/// SQLite tells of each row, those that make room for others too, and empties no table at one stroke while it tells.
/// Where memory runs out the commit goes unrecorded, so that the record is worth nothing any more.
void Connection::OnChange(void* self, sqlite3*, int operation, const char* schema, const char* table,
                          sqlite3_int64 before, sqlite3_int64 after) noexcept {
    for (File& file : static_cast<Connection*>(self)->m_files) {
        if (!file.record || file.schema != schema)
            continue;
        try {
            auto& rows = file.changed[table];
            rows.insert(operation == SQLITE_INSERT ? after : before);
            rows.insert(operation == SQLITE_DELETE ? before : after);
        } catch (const std::exception&) {
            file.record.reset();
        }
    }
}

/// It is looked at the files after each pause: whoever held the lock may have removed one.
int Connection::OnBusy(void* self, int) {
    auto& connection = *static_cast<Connection*>(self);
    return connection.m_waiter.Wait() && !connection.AnyMoved() ? 1 : 0;
}

void Connection::Begin(LockKind kind) {
    if (kind == LockKind::Update && sqlite3_db_readonly(Get(), "main") != 0)
        throw SqlFailure{SQLITE_READONLY};
    Execute(kind == LockKind::Update ? "BEGIN EXCLUSIVE" : "BEGIN");
    m_held = kind;
    try {
        for (auto& file : m_files)
            file.look.Run();
    } catch (const SqlFailure&) {
        Rollback();
        throw;
    }
}

bool Connection::BeginUnmoved(LockKind kind) {
    if (AnyMoved())
        return false;
    try {
        Begin(kind);
    } catch (const SqlFailure&) {
        if (!AnyMoved())
            throw;
        return false;
    }
    if (AnyMoved())
        Rollback();
    return m_held == kind;
}

void Connection::Commit() {
    ResetAll(Get());
    const auto isRecorded = [](const File& file) { return file.record && !file.changed.empty(); };
    for (const File& file : m_files)
        if (isRecorded(file))
            RaiseChangeCounter(file);
    Execute("COMMIT");
    for (File& file : m_files)
        if (isRecorded(file))
            file.record->Add(std::exchange(file.changed, {}));
    EndTransaction();
}

/// SQLite counts no commit that writes no page, as when rows are given the content that they have. A mark that is
/// written again is always a page.
void Connection::RaiseChangeCounter(const File& file) {
    Execute("PRAGMA " + Quoted(file.schema) + ".application_id=" + std::to_string(kApplicationId));
}

void Connection::Rollback() noexcept {
    if (m_held == LockKind::None)
        return;
    ResetAll(Get());
    if (sqlite3_get_autocommit(Get()) == 0)
        sqlite3_exec(Get(), "ROLLBACK", nullptr, nullptr, nullptr);
    EndTransaction();
}

void Connection::EndTransaction() noexcept {
    LockRegistry::Remove(this);
    m_held = LockKind::None;
    for (File& file : m_files)
        file.changed.clear();
    ++m_epoch;
}

void Connection::Doom() noexcept {
    Rollback();
    ResetAll(Get());
    m_doomed = true;
}

bool Connection::HasLostTransaction(const SqlFailure& failure) const {
    const bool givenUp = m_held != LockKind::None && sqlite3_get_autocommit(Get()) != 0;
    return givenUp || (m_held == LockKind::Update && failure.code == SQLITE_CORRUPT);
}

bool Connection::HasMoved(const File& file) {
    int moved = 0;
    const int code = sqlite3_file_control(Get(), file.schema.c_str(), SQLITE_FCNTL_HAS_MOVED, &moved);
    return code == SQLITE_OK && moved != 0;
}

bool Connection::AnyMoved() {
    return std::ranges::any_of(m_files, [&](const File& file) { return HasMoved(file); });
}

bool Connection::Uses(const FileIdentity& identity) const {
    return std::ranges::any_of(m_files, [&](const File& file) { return file.inUse && file.identity == identity; });
}

bool Connection::WouldWaitForItself(LockKind wanted) {
    return std::ranges::any_of(
        m_files, [&](const File& file) { return LockRegistry::WouldWaitForItself(file.identity, wanted, this); });
}

void Connection::Register() {
    for (auto& file : m_files) {
        file.identity = IdentityOf(file.path).value_or(file.identity);
        LockRegistry::Add(file.identity, m_held, this);
    }
}

void Connection::Execute(const std::string& sql) {
    if (const int code = sqlite3_exec(Get(), sql.c_str(), nullptr, nullptr, nullptr); code != SQLITE_OK)
        throw SqlFailure{code};
}

sqlite3_int64 Connection::Query(const std::string& sql) {
    Statement statement(Get(), sql);
    return statement.Step() ? statement.Integer(0) : 0;
}

sqlite3_int64 DataVersion(Connection& connection, const std::string& schema) {
    return connection.Query("PRAGMA " + Quoted(schema) + ".data_version");
}

// --- companions --------------------------------------------------------------------------------------------------

Connection::File& Connection::Attach(const std::string& path, bool create) {
    if (File* left = FindLeft(path)) {
        LockAdded(*left);
        left->inUse = true;
        return *left;
    }
    const std::string schema = "beside" + std::to_string(++m_schemaCount);
    AttachFile(schema, path, create);
    ++m_epoch;
    try {
        File& file = AddFile(schema, path);
        CheckSynchronous(file);
        LockAdded(file);
        file.inUse = true;
        return file;
    } catch (const SqlFailure&) {
        ForgetAdded(schema);
        throw;
    }
}

/// Lets go of a file that could not be used. Where the transaction keeps it, it stays and may be taken up again.
void Connection::ForgetAdded(const std::string& schema) noexcept {
    if (m_files.back().schema == schema)
        Leave(m_files.back());
    else
        Detach(schema);
}

Connection::File* Connection::FindLeft(const std::string& path) {
    const auto identity = IdentityOf(path);
    const auto isLeft = [&](const File& file) { return !file.inUse && identity == file.identity && !HasMoved(file); };
    const auto found = std::ranges::find_if(m_files, isLeft);
    return found == m_files.end() ? nullptr : &*found;
}

void Connection::AttachFile(const std::string& schema, const std::string& path, bool create) {
    const std::string uri = UriOf(path, create);
    Statement attach(Get(), "ATTACH ? AS " + Quoted(schema));
    attach.BindText(1, uri);
    attach.Run();
}

/// A transaction does not allow to set it; the build's default is what an added file has.
void Connection::CheckSynchronous(const File& file) {
    if (Query("PRAGMA " + Quoted(file.schema) + ".synchronous") < kSynchronousFull)
        throw SqlFailure{SQLITE_MISUSE};
}

void Connection::LockAdded(File& file) {
    if (m_held == LockKind::None)
        return;
    file.look.Run(); // takes the shared lock, and rolls back what a crash left
    if (m_held == LockKind::Update)
        RaiseLock(file);
    if (HasMoved(file))
        throw SqlFailure{SQLITE_CANTOPEN};
    LockRegistry::Add(file.identity, m_held, this);
}

/// Takes the exclusive lock at once on a file that joined a transaction that has begun, so that the commit cannot
/// fail for a reader of it. SQL has no statement for this. The shared lock, which the transaction holds, keeps the
/// file's content and journal as they were found; a lock that is had already is not asked for again by SQLite, and
/// the end of the transaction gives back all of them.
void Connection::RaiseLock(File& file) {
    if (sqlite3_db_readonly(Get(), file.schema.c_str()) != 0)
        throw SqlFailure{SQLITE_READONLY};
    sqlite3_file* handle = nullptr;
    if (sqlite3_file_control(Get(), file.schema.c_str(), SQLITE_FCNTL_FILE_POINTER, &handle) != SQLITE_OK)
        throw SqlFailure{SQLITE_ERROR};
    for (const int level : {SQLITE_LOCK_RESERVED, SQLITE_LOCK_EXCLUSIVE}) {
        int code = SQLITE_BUSY;
        do {
            code = handle->pMethods->xLock(handle, level);
        } while (code == SQLITE_BUSY && m_waiter.Wait());
        if (code != SQLITE_OK) {
            handle->pMethods->xUnlock(handle, SQLITE_LOCK_SHARED);
            throw SqlFailure{code};
        }
    }
}

void Connection::Leave(File& file) noexcept {
    file.inUse = false;
    if (m_held != LockKind::None)
        return;
    const std::string schema = file.schema;
    m_files.remove_if([&](const File& each) { return &each == &file; });
    Detach(schema);
}

void Connection::Detach(const std::string& schema) noexcept {
    sqlite3_exec(Get(), ("DETACH " + Quoted(schema)).c_str(), nullptr, nullptr, nullptr);
}

} // namespace qbase
