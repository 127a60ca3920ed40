#include "Qbase/ConnectionInternal.h"
#include "Qbase/HiddenInternal.h"
#include "Qbase/Qbase.h"
#include "Qbase/RawFileInternal.h"
#include "Qbase/SchemaInternal.h"
#include "Qbase/StoreFileInternal.h"
#include "Qbase/StoreReplaceInternal.h"
#include "Vorn/Files.h"
#include "Vorn/Text.h"

#include <array>
#include <memory>
#include <optional>
#include <utility>

using qbase::Connection;
using qbase::LockKind;
using qbase::LockRegistry;
using qbase::SqlFailure;
using qbase::StoreFileKind;

namespace {

using Pair = CQbaseWorkingCopies::Pair;

struct Paths {
    std::string store;
    std::string copy;
};

bool IsStore(StoreFileKind kind) {
    return kind == StoreFileKind::Store || kind == StoreFileKind::Unsettled;
}

/// Copies a file that may be a store or not.
bool CopyAnyway(const Pair& pair) {
    return CQbase::copyStore(pair.store, pair.copy) || vorn::FileUtility::Copy(pair.store, pair.copy);
}

bool AreDifferent(const std::array<Paths, 2>& paths) {
    const std::string* const all[] = {&paths[0].store, &paths[0].copy, &paths[1].store, &paths[1].copy};
    for (std::size_t i = 0; i < std::size(all); ++i) {
        for (std::size_t k = i + 1; k < std::size(all); ++k) {
            const auto identity = qbase::IdentityOf(*all[i]);
            if (*all[i] == *all[k] || (identity && identity == qbase::IdentityOf(*all[k])))
                return false;
        }
    }
    return true;
}

} // namespace

/// One connection has the first store open from the copying to the end: it is told by SQLite when the file changed. The
/// second one may be removed meanwhile and come into being anew, and SQLite would take the journal of the new file for
/// that of the old one: the connection has it open only while it holds a lock on the first, which whoever removes or
/// makes the second holds too.
class QBASE_INTERNAL CQbaseWorkingCopies::Impl {
public:
    QbaseError Make(const Pair& first, const Pair& second);
    QbaseError PutBack();

    /// Runs an operation and lets go of the stores where it fails.
    template <class Operation> bool Run(Operation operation) noexcept {
        try {
            m_lastError = operation();
        } catch (const SqlFailure& failure) {
            m_lastError = qbase::ErrorOf(failure.code);
        } catch (const std::exception&) { // memory ran out
            m_lastError = QbaseError::Disk;
        }
        if (m_lastError != QbaseError::None)
            LetGo();
        return m_lastError == QbaseError::None;
    }
    short LastError() const { return static_cast<short>(m_lastError); }

    ~Impl() { ForgetCopies(); }
    /// What stands at the copies' paths from now on is a file like others.
    void ForgetCopies() noexcept { qbase::WorkingCopyRegistry::Remove(this); }

private:
    struct Store {
        Paths paths;
        Connection::File* file = nullptr; ///< of the connection
        sqlite3_int64 version = 0;        ///< of its content when it was copied
        qbase::FileIdentity identity;     ///< then
        std::unique_ptr<Connection> copy; ///< without a lock: as long as it is open, no other file is taken for this
        std::shared_ptr<qbase::CopyRecord> record; ///< of what was changed in the copy
    };

    void LetGo() noexcept;
    bool AnyHeldByThisThread() const;
    bool AreStores();
    bool OpenBoth();
    QbaseError CopyAsTheyAre(const std::array<Pair, 2>& pairs, const std::array<Paths, 2>& paths);
    QbaseError CopyBoth();
    bool HaveChanged();
    QbaseError Replace(const Store& store);

    QbaseError m_lastError = QbaseError::None;
    std::optional<Connection> m_connection;
    std::array<Store, 2> m_stores;
    std::unique_ptr<qbase::RawFile> m_second; ///< as long as it is open no other file has the same identity
};

void CQbaseWorkingCopies::Impl::LetGo() noexcept {
    m_connection.reset();
    ForgetCopies();
    m_stores = {};
    m_second.reset();
}

QbaseError CQbaseWorkingCopies::Impl::Make(const Pair& first, const Pair& second) {
    LetGo();
    for (const auto* path : {&first.store, &first.copy, &second.store, &second.copy}) {
        if (!qbase::IsPath(*path))
            return QbaseError::BadArgument;
    }
    const std::array<Paths, 2> paths{{{qbase::WholePath(first.store), qbase::WholePath(first.copy)},
                                      {qbase::WholePath(second.store), qbase::WholePath(second.copy)}}};
    if (!AreDifferent(paths))
        return QbaseError::BadArgument;
    for (std::size_t i = 0; i < m_stores.size(); ++i)
        m_stores[i].paths = paths[i];
    if (AnyHeldByThisThread())
        return QbaseError::Locked;
    if (AreStores() && OpenBoth())
        return CopyBoth();
    LetGo();
    return CopyAsTheyAre({first, second}, paths);
}

/// Nothing will be put back; all the same no other file is to be taken for one of the copies.
QbaseError CQbaseWorkingCopies::Impl::CopyAsTheyAre(const std::array<Pair, 2>& pairs,
                                                    const std::array<Paths, 2>& paths) {
    qbase::WorkingCopyRegistry::Add(this, {paths[0].copy, paths[1].copy});
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        const auto copy = CopyAnyway(pairs[i]) ? qbase::IdentityOf(paths[i].copy) : std::nullopt;
        if (!copy)
            return QbaseError::Disk;
        qbase::WorkingCopyRegistry::Fix(this, paths[i].copy, *copy, nullptr);
    }
    return QbaseError::None;
}

bool CQbaseWorkingCopies::Impl::AnyHeldByThisThread() const {
    for (const auto& store : m_stores) {
        const auto identity = qbase::IdentityOf(store.paths.store);
        if (identity && LockRegistry::WouldWaitForItself(*identity, LockKind::Read, nullptr))
            return true;
    }
    return false;
}

bool CQbaseWorkingCopies::Impl::AreStores() {
    qbase::Waiter waiter;
    return IsStore(qbase::Examine(m_stores[0].paths.store, waiter)) &&
           IsStore(qbase::Examine(m_stores[1].paths.store, waiter));
}

/// False when one of them turns out to be no store. Both are locked for reading otherwise.
bool CQbaseWorkingCopies::Impl::OpenBoth() {
    try {
        m_connection.emplace(m_stores[0].paths.store, false);
        m_stores[0].file = &m_connection->Main();
        m_connection->Begin(LockKind::Read);
        m_stores[1].file = &m_connection->Attach(m_stores[1].paths.store, false);
        for (const auto& store : m_stores) {
            if (qbase::CheckMark(*m_connection, store.file->schema) != QbaseError::None)
                return false;
        }
        return true;
    } catch (const SqlFailure& failure) {
        if (qbase::ErrorOf(failure.code) != QbaseError::NotAStore)
            throw;
        return false;
    }
}

QbaseError CQbaseWorkingCopies::Impl::CopyBoth() {
    if (m_connection->AnyMoved())
        return QbaseError::NotFound;
    qbase::WorkingCopyRegistry::Add(this, {m_stores[0].paths.copy, m_stores[1].paths.copy});
    for (auto& store : m_stores) {
        store.copy = qbase::MakeCopy(m_connection->Get(), store.file->schema, store.paths.copy);
        store.record = std::make_shared<qbase::CopyRecord>();
        qbase::WorkingCopyRegistry::Fix(this, store.paths.copy, store.copy->Main().identity, store.record);
        store.identity = store.file->identity;
    }
    m_stores[0].version = qbase::DataVersion(*m_connection, m_stores[0].file->schema);
    m_stores[1].version = qbase::ChangeCounterOf(m_connection->Get(), m_stores[1].file->schema);
    m_second = std::make_unique<qbase::RawFile>(m_stores[1].paths.store);
    m_connection->Rollback();
    m_connection->Leave(*std::exchange(m_stores[1].file, nullptr));
    return QbaseError::None;
}

QbaseError CQbaseWorkingCopies::Impl::PutBack() {
    if (!m_connection)
        return QbaseError::WrongState;
    m_connection->Waiting().Start();
    if (m_connection->WouldWaitForItself(LockKind::Update) ||
        LockRegistry::WouldWaitForItself(m_stores[1].identity, LockKind::Update, &*m_connection))
        return QbaseError::Locked;
    if (m_connection->AnyMoved())
        return QbaseError::Changed;
    m_connection->Begin(LockKind::Update);
    if (HaveChanged())
        return QbaseError::Changed;
    m_connection->Register();
    for (const auto& store : m_stores) {
        if (const auto error = Replace(store); error != QbaseError::None)
            return error;
    }
    m_connection->Commit();
    LetGo();
    return QbaseError::None;
}

bool CQbaseWorkingCopies::Impl::HaveChanged() {
    Store& second = m_stores[1];
    if (m_connection->AnyMoved() || qbase::IdentityOf(second.paths.store) != second.identity ||
        qbase::DataVersion(*m_connection, m_stores[0].file->schema) != m_stores[0].version)
        return true;
    second.file = &m_connection->Attach(second.paths.store, false);
    return second.file->identity != second.identity ||
           qbase::ChangeCounterOf(m_connection->Get(), second.file->schema) != second.version;
}

QbaseError CQbaseWorkingCopies::Impl::Replace(const Store& store) {
    const auto identity = qbase::IdentityOf(store.paths.copy);
    if (!identity)
        return QbaseError::NotFound;
    if (!store.copy->Uses(*identity))
        return QbaseError::Changed; // somebody else's, who works on the same stores
    if (LockRegistry::WouldWaitForItself(*identity, LockKind::Update, &*m_connection))
        return QbaseError::Locked;
    const Connection::File& copy = m_connection->Attach(store.paths.copy, false);
    if (!store.copy->Uses(copy.identity))
        return QbaseError::Changed;
    if (const auto error = qbase::CheckMark(*m_connection, copy.schema); error != QbaseError::None)
        return error;
    const auto counter = qbase::ChangeCounterOf(m_connection->Get(), copy.schema);
    if (const auto changed = store.record->RowsAt(counter))
        qbase::ReplaceChanged(*m_connection, store.file->schema, copy.schema, *changed);
    else
        qbase::ReplaceContent(*m_connection, store.file->schema, copy.schema);
    return QbaseError::None;
}

CQbaseWorkingCopies::CQbaseWorkingCopies() : m_impl(std::make_unique<Impl>()) {}
CQbaseWorkingCopies::~CQbaseWorkingCopies() = default;

bool CQbaseWorkingCopies::make(const Pair& first, const Pair& second) {
    return m_impl->Run([&] { return m_impl->Make(first, second); });
}

bool CQbaseWorkingCopies::putBack() {
    return m_impl->Run([&] { return m_impl->PutBack(); });
}

short CQbaseWorkingCopies::getLastError() const {
    return m_impl->LastError();
}
