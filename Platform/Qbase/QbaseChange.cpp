#include "Qbase/QbaseImplInternal.h"

#include "Vorn/Text.h"

#include <algorithm>
#include <limits>

using qbase::ClassTable;
using qbase::LockKind;
using qbase::Record;
using qbase::SqlFailure;
using qbase::Statement;

QbaseError CQbase::Impl::CheckMayChange() const {
    return m_connection->Held() == LockKind::Read ? QbaseError::NotLockedForUpdate : QbaseError::None;
}

QbaseError CQbase::Impl::Create(const char* classCode, const std::string& id) {
    if (const auto error = CheckMayChange(); error != QbaseError::None)
        return error;
    ClassTable* table = nullptr;
    if (const auto error = FindTable(classCode, table); error != QbaseError::None || id.empty())
        return QbaseError::BadArgument;
    if (HasRecord(*table, id))
        return QbaseError::BadArgument;
    m_record.Start(*table, id);
    return QbaseError::None;
}

QbaseError CQbase::Impl::Save() {
    if (const auto error = CheckMayChange(); error != QbaseError::None)
        return error;
    switch (m_record.state) {
    case Record::State::None:
        return QbaseError::WrongState;
    case Record::State::Removed:
        return QbaseError::NotFound;
    case Record::State::New:
        return InTransaction([this] { return Insert(); });
    case Record::State::Stored:
        break;
    }
    return m_record.HasChanges() ? InTransaction([this] { return Update(); }) : QbaseError::None;
}

QbaseError CQbase::Impl::InTransaction(const std::function<QbaseError()>& change) {
    if (IsLocked())
        return change();
    if (m_connection->WouldWaitForItself(LockKind::Update))
        throw SqlFailure{SQLITE_BUSY};
    m_connection->Begin(LockKind::Update);
    if (m_connection->AnyMoved())
        throw SqlFailure{SQLITE_READONLY_DBMOVED};
    const auto error = change();
    if (error == QbaseError::None)
        m_connection->Commit();
    else
        m_connection->Rollback();
    return error;
}

QbaseError CQbase::Impl::Insert() {
    ClassTable& table = *m_record.table;
    Complete(table);
    if (HasRecord(table, m_record.id))
        return QbaseError::BadArgument;
    const sqlite3_int64 number = NextNumber();
    Statement& insert = table.Insert();
    insert.Bind(1, number);
    insert.BindText(2, m_record.id);
    for (std::size_t i = 0; i < m_record.cells.size(); ++i)
        m_record.Bind(insert, static_cast<int>(i) + 3, i);
    insert.Run();
    m_record.number = number;
    Saved();
    return QbaseError::None;
}

QbaseError CQbase::Impl::Update() {
    ClassTable& table = *m_record.table;
    Complete(table);
    Statement& update = table.Update(m_record.changed);
    int index = 0;
    for (std::size_t i = 0; i < m_record.cells.size(); ++i) {
        if (m_record.changed[i])
            m_record.Bind(update, ++index, i);
    }
    update.Bind(++index, m_record.number);
    update.Run();
    if (sqlite3_changes(m_connection->Get()) == 0) {
        m_record.state = Record::State::Removed; // another handle did
        return QbaseError::NotFound;
    }
    Saved();
    return QbaseError::None;
}

void CQbase::Impl::Saved() {
    ForgetLeft(*m_record.table, m_record.id);
    m_record.state = Record::State::Stored;
    m_record.epoch.reset();
    m_record.changed.assign(m_record.cells.size(), false);
    ++m_changes;
}

void CQbase::Impl::Complete(ClassTable& table) {
    if (table.Complete())
        ForgetCursors();
}

/// One more than the highest number of the file. Within a handle no number is given twice.
sqlite3_int64 CQbase::Impl::NextNumber() {
    if (!m_lastNumber || m_numberEpoch != m_connection->Epoch()) {
        m_lastNumber = std::max(m_lastNumber.value_or(0), HighestNumber());
        m_numberEpoch = m_connection->Epoch();
    }
    if (*m_lastNumber == std::numeric_limits<sqlite3_int64>::max())
        throw SqlFailure{SQLITE_FULL};
    return ++*m_lastNumber;
}

sqlite3_int64 CQbase::Impl::HighestNumber() {
    Statement numbers = SelectOfEachTable("max(seq)");
    sqlite3_int64 highest = 0;
    while (numbers.Step())
        highest = std::max(highest, numbers.Integer(0));
    return highest;
}

QbaseError CQbase::Impl::Delete(const char* classCode, const wchar_t* id) {
    if (const auto error = CheckMayChange(); error != QbaseError::None)
        return error;
    ClassTable* table = nullptr;
    if (const auto error = FindTable(classCode, table); error != QbaseError::None || id == nullptr)
        return QbaseError::BadArgument;
    const std::string text = vorn::StringUtil::ToString(id);
    return table->Exists() ? InTransaction([&] { return Remove(*table, text); }) : QbaseError::NotFound;
}

QbaseError CQbase::Impl::Remove(ClassTable& table, const std::string& id) {
    Statement& remove = table.Remove();
    remove.BindText(1, id);
    remove.Run();
    if (sqlite3_changes(m_connection->Get()) == 0)
        return QbaseError::NotFound;
    ForgetLeft(table, id);
    ++m_changes;
    if (m_record.state == Record::State::Stored && m_record.table == &table && m_record.id == id)
        m_record.state = Record::State::Removed;
    return QbaseError::None;
}
