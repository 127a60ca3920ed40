#include "Qbase/QbaseImplInternal.h"
#include "Qbase/SchemaInternal.h"
#include "Qbase/SchemaPagesInternal.h"
#include "Qbase/StoreFileInternal.h"

using qbase::Connection;
using qbase::LockKind;
using qbase::LockRegistry;
using qbase::SqlFailure;
using qbase::StoreFileKind;

namespace {

QbaseError ErrorOf(StoreFileKind kind, bool create) {
    switch (kind) {
    case StoreFileKind::Missing:
    case StoreFileKind::Empty:
        return create ? QbaseError::None : QbaseError::NotFound;
    case StoreFileKind::Newer:
        return QbaseError::NewerVersion;
    case StoreFileKind::Foreign:
        return QbaseError::NotAStore;
    case StoreFileKind::Store:
    case StoreFileKind::Unsettled:
        break;
    }
    return QbaseError::None;
}

bool WouldWaitForItself(const std::string& path, const void* owner) {
    const auto identity = qbase::IdentityOf(path);
    return identity && LockRegistry::WouldWaitForItself(*identity, LockKind::Read, owner);
}

} // namespace

CQbase::Impl::~Impl() {
    Close();
}

// --- opening -------------------------------------------------------------------------------------------------------

QbaseError CQbase::Impl::Prepare(const std::wstring& definitionPath, const std::wstring& filePath) {
    if (IsOpen())
        return QbaseError::WrongState;
    if (!qbase::IsPath(definitionPath) || !qbase::IsPath(filePath))
        return QbaseError::BadArgument;
    m_definition = qbase::Definition::Load(definitionPath);
    m_path = qbase::WholePath(filePath);
    return m_definition ? QbaseError::None : QbaseError::BadDefinition;
}

QbaseError CQbase::Impl::Open(const std::wstring& definitionPath, const std::wstring& filePath, bool create) {
    if (const auto error = Prepare(definitionPath, filePath); error != QbaseError::None)
        return error;
    m_create = create;
    return OpenConnection();
}

/// Leaves the handle closed where it fails.
QbaseError CQbase::Impl::OpenConnection() {
    qbase::Waiter waiter;
    try {
        bool again = false;
        QbaseError error = QbaseError::None;
        do {
            again = false;
            error = TryOpen(waiter, again);
        } while (again && waiter.Wait());
        if (error != QbaseError::None)
            Forget();
        return error;
    } catch (const SqlFailure&) {
        Forget();
        throw;
    }
}

/// `again` tells that another process took the file away meanwhile.
QbaseError CQbase::Impl::TryOpen(qbase::Waiter& waiter, bool& again) {
    Forget();
    if (WouldWaitForItself(m_path, nullptr))
        return QbaseError::Locked;
    ++m_openings;
    m_connection = Connection::OpenStore(m_path);
    if (m_connection != nullptr) {
        m_file = &m_connection->Main();
        return QbaseError::None;
    }
    const auto kind = qbase::Examine(m_path, waiter);
    if (const auto error = ErrorOf(kind, m_create); error != QbaseError::None)
        return error;
    m_connection = std::make_shared<Connection>(m_path, m_create);
    m_file = &m_connection->Main();
    if (kind == StoreFileKind::Store && qbase::IsOpenOnStore(m_connection->Get()))
        return QbaseError::None;
    if (qbase::IsBlank(*m_connection, m_file->schema))
        return m_create ? CreateContent(again) : QbaseError::NotFound;
    return qbase::CheckMark(*m_connection, m_file->schema);
}

QbaseError CQbase::Impl::CreateContent(bool& again) {
    m_connection->Begin(LockKind::Update);
    again = m_connection->AnyMoved();
    if (again)
        return QbaseError::NotFound;
    if (qbase::IsBlank(*m_connection, m_file->schema)) // nobody was faster
        qbase::WriteSchema(*m_connection, m_file->schema, *m_definition);
    m_connection->Commit();
    return qbase::CheckMark(*m_connection, m_file->schema);
}

/// Nothing of an open file stays in the handle.
void CQbase::Impl::Forget() noexcept {
    m_member = nullptr;
    m_fileWalk.clear();
    m_memberCursors.clear();
    m_fileCursors.clear();
    m_tables.clear();
    m_absent = {};
    m_left = {};
    m_record.state = qbase::Record::State::None;
    m_lastNumber.reset();
    if (m_isCompanion && m_connection)
        m_connection->Leave(*m_file);
    m_file = nullptr;
    m_isCompanion = false;
    m_connection.reset();
}

// --- companions ----------------------------------------------------------------------------------------------------

QbaseError CQbase::Impl::OpenBeside(Impl& primary, const std::wstring& definitionPath, const std::wstring& filePath,
                                    bool create) {
    if (!primary.IsOpen() || primary.m_connection->IsDoomed())
        return primary.IsOpen() ? QbaseError::Doomed : QbaseError::WrongState;
    if (const auto error = Prepare(definitionPath, filePath); error != QbaseError::None)
        return error;
    m_create = create;
    const auto connection = primary.m_connection;
    connection->Waiting().Start();
    const auto identity = qbase::IdentityOf(m_path);
    if ((identity && connection->Uses(*identity)) || WouldWaitForItself(m_path, connection.get()))
        return QbaseError::Locked;
    if (connection->HasLeft(m_path))
        return Join(connection);
    return JoinExamined(connection, definitionPath, filePath);
}

QbaseError CQbase::Impl::JoinExamined(const std::shared_ptr<Connection>& connection, const std::wstring& definitionPath,
                                      const std::wstring& filePath) {
    const auto kind = qbase::Examine(m_path, connection->Waiting());
    if (const auto error = ErrorOf(kind, m_create); error != QbaseError::None)
        return error;
    if (kind != StoreFileKind::Store && connection->Held() != LockKind::Update) {
        Impl apart; // settles the file, which the transaction, if there is one, must not change
        const auto error = apart.Open(definitionPath, filePath, m_create);
        if (error != QbaseError::None)
            return error;
    }
    if (kind != StoreFileKind::Empty && kind != StoreFileKind::Missing && connection->Held() == LockKind::Update)
        LookForDamage(*connection);
    return Join(connection);
}

/// A damage that is met in the transaction would forbid it to write: it is looked for on another connection. That is
/// spared where the schema is the one that the transaction's own file has.
void CQbase::Impl::LookForDamage(Connection& connection) {
    if (!qbase::HasSchemaOfMain(connection, m_path))
        Connection(m_path, false);
}

/// Only the connection is shared: where this fails the primary is as it was, unless its transaction is lost. What
/// looked like a store may have been what a crash left, which has been rolled back when the file is open.
QbaseError CQbase::Impl::Join(const std::shared_ptr<Connection>& connection) {
    try {
        m_file = &connection->Attach(m_path, m_create);
        m_connection = connection;
        m_isCompanion = true;
        const bool isSettled = qbase::IsOpenOnStore(connection->Get(), m_file->schema);
        const auto error = isSettled ? QbaseError::None : Settle();
        if (error != QbaseError::None)
            Forget();
        return error;
    } catch (const SqlFailure& failure) {
        Forget();
        if (connection->HasLostTransaction(failure))
            connection->Doom();
        throw;
    }
}

/// Gives a file that has just come into being its content, or makes sure that what was found is a store.
QbaseError CQbase::Impl::Settle() {
    if (!qbase::IsBlank(*m_connection, m_file->schema))
        return qbase::CheckMark(*m_connection, m_file->schema);
    if (!m_create)
        return QbaseError::NotFound;
    m_connection->Execute("SAVEPOINT content");
    try {
        qbase::WriteSchema(*m_connection, m_file->schema, *m_definition);
        m_connection->Execute("RELEASE content");
    } catch (const SqlFailure& failure) {
        if (!m_connection->HasLostTransaction(failure))
            m_connection->Execute("ROLLBACK TO content;RELEASE content");
        throw;
    }
    return QbaseError::None;
}

// --- locks, transactions, closing ----------------------------------------------------------------------------------

QbaseError CQbase::Impl::Lock(LockKind kind) {
    if (!IsOpen() || m_connection->IsDoomed())
        return IsOpen() ? QbaseError::Doomed : QbaseError::WrongState;
    const LockKind held = m_connection->Held();
    if (held == kind || held == LockKind::Update)
        return QbaseError::None;
    if (held == LockKind::Read)
        return QbaseError::NotLockedForUpdate;
    m_connection->Waiting().Start();
    if (m_connection->WouldWaitForItself(kind))
        return QbaseError::Locked;
    return BeginOnTheFileAtThePath(kind);
}

QbaseError CQbase::Impl::BeginOnTheFileAtThePath(LockKind kind) {
    qbase::Waiter waiter;
    do {
        if (m_connection->BeginUnmoved(kind)) {
            m_connection->Register();
            RefreshTables();
            return QbaseError::None;
        }
        if (m_isCompanion || m_connection->HasCompanions())
            return QbaseError::NotFound;
        if (const auto error = OpenConnection(); error != QbaseError::None)
            return error;
    } while (waiter.Wait());
    return QbaseError::Locked;
}

/// What was looked at before the lock may have more by now.
void CQbase::Impl::RefreshTables() {
    try {
        for (auto& table : m_tables) {
            if (table && table->Refresh())
                ForgetCursors();
        }
    } catch (const SqlFailure&) {
        m_connection->Doom();
        throw;
    }
}

QbaseError CQbase::Impl::Close() noexcept {
    if (!IsOpen())
        return QbaseError::None;
    auto error = m_connection->IsDoomed() ? QbaseError::Doomed : QbaseError::None;
    if (error == QbaseError::None && !m_isCompanion)
        error = CommitAndEnd();
    Forget();
    return error;
}

QbaseError CQbase::Impl::CommitAndEnd() noexcept {
    auto error = QbaseError::None;
    try {
        if (IsLocked())
            m_connection->Commit();
    } catch (const SqlFailure& failure) {
        error = qbase::ErrorOf(failure.code);
    }
    m_connection->Doom(); // a companion that is still open has nothing to work on any more
    return error;
}

/// A companion shares its transaction: giving it up gives up that of the primary too.
void CQbase::Impl::Abandon() noexcept {
    if (IsOpen())
        m_connection->Doom();
    Forget();
}

QbaseError CQbase::Impl::CopyTo(const std::wstring& target) {
    if (!qbase::IsPath(target))
        return QbaseError::BadArgument;
    const std::string path = qbase::WholePath(target);
    const auto identity = qbase::IdentityOf(path);
    if (identity && m_connection->Uses(*identity))
        return QbaseError::BadArgument;
    if (!IsLocked() && m_connection->WouldWaitForItself(LockKind::Read))
        return QbaseError::Locked;
    try {
        qbase::CopyFile(m_connection->Get(), m_file->schema, path);
    } catch (const SqlFailure& failure) {
        return qbase::ErrorOf(failure.code); // nothing of the transaction is touched
    }
    return QbaseError::None;
}

/// SQLite counts for each connection; another connection is told apart by its number.
QbaseError CQbase::Impl::ContentVersion(long& version) {
    constexpr int kCountBits = 32;
    version = static_cast<long>(qbase::DataVersion(*m_connection, m_file->schema)) + (m_openings << kCountBits);
    return QbaseError::None;
}
