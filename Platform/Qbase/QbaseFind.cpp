#include "Qbase/QbaseImplInternal.h"

#include "Vorn/Text.h"

#include <algorithm>
#include <limits>

using qbase::AttributeType;
using qbase::ClassTable;
using qbase::Record;
using qbase::Statement;

namespace {

constexpr sqlite3_int64 kBeforeAll = std::numeric_limits<sqlite3_int64>::min();

bool IsNumberType(AttributeType type) {
    return type == AttributeType::Byte || type == AttributeType::Short || type == AttributeType::Long;
}

} // namespace

QbaseError CQbase::Impl::FindTable(const char* classCode, ClassTable*& table) {
    const int position = classCode != nullptr ? m_definition->Find(classCode) : -1;
    if (position < 0)
        return QbaseError::BadArgument;
    CheckMayRead();
    table = &TableAt(static_cast<std::size_t>(position));
    return QbaseError::None;
}

ClassTable& CQbase::Impl::TableAt(std::size_t position) {
    const auto& classes = m_definition->Classes();
    m_tables.resize(classes.size());
    auto& table = m_tables[position];
    if (!table)
        table = std::make_unique<ClassTable>(*m_connection, m_file->schema, classes[position]);
    return *table;
}

/// A read without a lock takes one for a moment.
void CQbase::Impl::CheckMayRead() {
    if (!IsLocked() && m_connection->WouldWaitForItself(qbase::LockKind::Read))
        throw qbase::SqlFailure{SQLITE_BUSY};
}

/// A row for each table of the file, and one with 0. Of all ways to ask many tables it is the cheapest to prepare.
Statement CQbase::Impl::SelectOfEachTable(const std::string& expression) {
    std::string sql = "SELECT 0";
    for (std::size_t i = 0; i < m_definition->Classes().size(); ++i) {
        if (TableAt(i).Exists())
            sql += " UNION ALL SELECT " + expression + " FROM " + TableAt(i).Name();
    }
    return Statement(m_connection->Get(), sql);
}

QbaseError CQbase::Impl::Count(long& count) {
    CheckMayRead();
    Statement counts = SelectOfEachTable("count(*)");
    sqlite3_int64 sum = 0;
    while (counts.Step())
        sum += counts.Integer(0);
    count = static_cast<long>(sum);
    return QbaseError::None;
}

QbaseError CQbase::Impl::Exists(const char* classCode, const wchar_t* id) {
    ClassTable* table = nullptr;
    if (const auto error = FindTable(classCode, table); error != QbaseError::None || id == nullptr)
        return QbaseError::BadArgument;
    return HasRecord(*table, vorn::StringUtil::ToString(id)) ? QbaseError::None : QbaseError::NotFound;
}

bool CQbase::Impl::HasRecord(ClassTable& table, const std::string& id) {
    if (!table.Exists() || IsKnownAbsent(table, id))
        return false;
    Statement& statement = table.HasId();
    statement.BindText(1, id);
    const bool has = statement.Run();
    if (!has && IsLocked())
        m_absent = {&table, id, Place()};
    return has;
}

/// Whoever makes a record asks for it several times over.
bool CQbase::Impl::IsKnownAbsent(const ClassTable& table, const std::string& id) const {
    return IsLocked() && m_absent.table == &table && m_absent.place == Place() && m_absent.id == id;
}

QbaseError CQbase::Impl::FetchEqual(const char* classCode, const wchar_t* id) {
    ClassTable* table = nullptr;
    if (const auto error = FindTable(classCode, table); error != QbaseError::None || id == nullptr)
        return QbaseError::BadArgument;
    if (!table->Exists())
        return QbaseError::NotFound;
    const std::string text = vorn::StringUtil::ToString(id);
    if (ReturnTo(*table, text))
        return QbaseError::None;
    Statement& row = table->RowOfId();
    const qbase::ResetGuard guard(row);
    row.BindText(1, text);
    if (!row.Step())
        return QbaseError::NotFound;
    LeaveCurrent();
    Load(*table, row);
    return QbaseError::None;
}

// --- records that were left ----------------------------------------------------------------------------------------

void CQbase::Impl::Load(ClassTable& table, const Statement& row) {
    m_record.Load(table, row);
    m_record.epoch = IsLocked() ? std::optional(m_connection->Epoch()) : std::nullopt;
}

/// Readers go back to their own record once they have been at those that it refers to. Under a lock nobody else
/// changes what was left, and this handle forgets what it changes itself.
bool CQbase::Impl::ReturnTo(const ClassTable& table, const std::string& id) {
    const auto found = std::ranges::find_if(
        m_left, [&](const Record& left) { return left.table == &table && left.id == id && IsAsStored(left); });
    if (found == m_left.end())
        return false;
    std::swap(m_record, *found);
    return true;
}

void CQbase::Impl::LeaveCurrent() {
    if (!IsAsStored(m_record))
        return;
    std::swap(m_record, m_left[m_nextLeft]);
    m_nextLeft = (m_nextLeft + 1) % m_left.size();
}

/// Unchanged since it was read in the transaction that is under way.
bool CQbase::Impl::IsAsStored(const Record& record) const {
    return record.state == Record::State::Stored && record.epoch == m_connection->Epoch() && !record.HasChanges();
}

void CQbase::Impl::ForgetLeft(const ClassTable& table, const std::string& id) noexcept {
    for (Record& left : m_left) {
        if (left.table == &table && left.id == id)
            left.epoch.reset();
    }
}

// --- walks ---------------------------------------------------------------------------------------------------------

QbaseError CQbase::Impl::FetchFirst(const char* classCode) {
    ClassTable* table = nullptr;
    if (const auto error = FindTable(classCode, table); error != QbaseError::None)
        return error;
    if (!CanPass(*table))
        return QbaseError::NotFound;
    m_member = &CursorOf(m_memberCursors, *table);
    if (!Seek(*m_member, kBeforeAll))
        return QbaseError::NotFound;
    Take(*m_member);
    return QbaseError::None;
}

QbaseError CQbase::Impl::FetchNextMember() {
    if (m_record.state == Record::State::None)
        return QbaseError::WrongState;
    CheckMayRead();
    if (m_member == nullptr || m_member->table != m_record.table) {
        if (!CanPass(*m_record.table))
            return QbaseError::NotFound;
        m_member = &CursorOf(m_memberCursors, *m_record.table);
    }
    if (!GoOn(*m_member, m_record.number))
        return QbaseError::NotFound;
    Take(*m_member);
    return QbaseError::None;
}

QbaseError CQbase::Impl::FetchNextRecord() {
    if (m_record.state == Record::State::None)
        return QbaseError::WrongState;
    CheckMayRead();
    if (m_fileWalk.empty())
        StartFileWalk();
    GoOnInFile();
    const auto isBefore = [](const Cursor* a, const Cursor* b) {
        return a->live && (!b->live || a->number < b->number);
    };
    const auto next = std::ranges::min_element(m_fileWalk, isBefore);
    if (next == m_fileWalk.end() || !(*next)->live)
        return QbaseError::NotFound;
    m_fileTaken = *next;
    Take(**next);
    if (!IsLocked())
        std::ranges::for_each(m_fileWalk, [](Cursor* cursor) { Halt(*cursor); });
    return QbaseError::None;
}

void CQbase::Impl::StartFileWalk() {
    m_fileTaken = nullptr;
    for (std::size_t i = 0; i < m_definition->Classes().size(); ++i) {
        if (ClassTable& table = TableAt(i); CanPass(table))
            m_fileWalk.push_back(&CursorOf(m_fileCursors, table));
    }
}

/// Where the walk stands on the current record, one cursor moves; the others stand on what comes later already.
void CQbase::Impl::GoOnInFile() {
    if (m_fileTaken != nullptr && m_fileTaken->table == m_record.table && StandsOn(*m_fileTaken, m_record.number)) {
        StepFrom(*m_fileTaken);
        return;
    }
    for (Cursor* cursor : m_fileWalk)
        Seek(*cursor, m_record.number);
}

CQbase::Impl::Cursor& CQbase::Impl::CursorOf(Cursors& cursors, ClassTable& table) {
    const std::string sql = table.SelectSql(ConditionOf(table.Definition()));
    Cursor& cursor = cursors[sql];
    if (!cursor.select) {
        cursor.table = &table;
        cursor.select = Statement(m_connection->Get(), sql);
    }
    return cursor;
}

bool CQbase::Impl::StandsOn(const Cursor& cursor, sqlite3_int64 number) const {
    return cursor.live && cursor.number == number && cursor.place == Place();
}

bool CQbase::Impl::GoOn(Cursor& cursor, sqlite3_int64 from) {
    return StandsOn(cursor, from) ? StepFrom(cursor) : Seek(cursor, from);
}

bool CQbase::Impl::Seek(Cursor& cursor, sqlite3_int64 after) {
    Halt(cursor);
    int index = 1;
    cursor.select.Bind(index, after);
    for (const auto& filter : m_filters) {
        if (const auto* text = std::get_if<std::string>(&filter.value))
            cursor.select.BindText(++index, *text);
        else
            cursor.select.Bind(++index, sqlite3_int64{std::get<std::int64_t>(filter.value)});
    }
    return StepFrom(cursor);
}

bool CQbase::Impl::StepFrom(Cursor& cursor) {
    cursor.live = cursor.select.Step();
    if (cursor.live) {
        cursor.number = cursor.select.Integer(0);
        cursor.place = Place();
    } else {
        cursor.select.Reset();
    }
    return cursor.live;
}

/// Without a lock nothing may go on standing on a row: it would hold one.
void CQbase::Impl::Take(Cursor& cursor) {
    Load(*cursor.table, cursor.select);
    if (!IsLocked())
        Halt(cursor);
}

void CQbase::Impl::Halt(Cursor& cursor) noexcept {
    cursor.select.Reset();
    cursor.live = false;
}

void CQbase::Impl::ForgetCursors() noexcept {
    m_member = nullptr;
    m_fileWalk.clear();
    m_memberCursors.clear();
    m_fileCursors.clear();
}

// --- filters -------------------------------------------------------------------------------------------------------

QbaseError CQbase::Impl::AddFilter(short attributeId, const char* op, Filter filter) {
    const qbase::Attribute* attribute = m_definition->FindAttribute(attributeId);
    if (attribute == nullptr || op == nullptr || std::string_view(op) != "=")
        return QbaseError::BadArgument;
    const bool isText = std::holds_alternative<std::string>(filter.value);
    if (isText ? attribute->type != AttributeType::Text : !IsNumberType(attribute->type))
        return QbaseError::BadArgument;
    m_filters.push_back(std::move(filter));
    FiltersChanged();
    return QbaseError::None;
}

QbaseError CQbase::Impl::SetFilter(short attributeId, const char* op, short value) {
    return AddFilter(attributeId, op, {attributeId, std::int64_t{value}});
}

QbaseError CQbase::Impl::SetFilter(short attributeId, const char* op, const wchar_t* value) {
    if (value == nullptr)
        return QbaseError::BadArgument;
    return AddFilter(attributeId, op, {attributeId, vorn::StringUtil::ToString(value)});
}

void CQbase::Impl::ResetFilters() noexcept {
    m_filters.clear();
    FiltersChanged();
}

void CQbase::Impl::FiltersChanged() noexcept {
    m_member = nullptr;
    m_fileWalk.clear();
    ++m_changes;
}

bool CQbase::Impl::CanPass(const ClassTable& table) const {
    return table.Exists() && std::ranges::all_of(m_filters, [&](const Filter& filter) {
               const int position = table.Definition().Find(filter.attributeId);
               return position >= 0 && table.HasAttribute(position);
           });
}

/// The filters of the index that is to be used stand bare. A plus keeps SQLite from using another one.
std::string CQbase::Impl::ConditionOf(const qbase::ClassDefinition& definition) const {
    std::vector<int> filtered;
    for (const auto& filter : m_filters)
        filtered.push_back(definition.Find(filter.attributeId));
    const auto isFiltered = [&](int position) { return std::ranges::find(filtered, position) != filtered.end(); };
    const auto index = std::ranges::find_if(
        definition.indexes, [&](const std::vector<int>& columns) { return std::ranges::all_of(columns, isFiltered); });
    std::string sql = " WHERE seq>?";
    for (const int position : filtered) {
        const bool bare = index != definition.indexes.end() && std::ranges::find(*index, position) != index->end();
        sql += (bare ? " AND " : " AND +") +
               qbase::Quoted(definition.attributes[static_cast<std::size_t>(position)].name) + "=?";
    }
    return sql + " ORDER BY seq";
}
