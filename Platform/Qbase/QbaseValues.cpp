#include "Qbase/QbaseImplInternal.h"

#include "Vorn/Text.h"

using qbase::Attribute;
using qbase::AttributeType;
using qbase::Cell;

QbaseError CQbase::Impl::ObjectId(CWsz& id) const {
    if (!m_record.HasValues())
        return QbaseError::WrongState;
    id = CWsz(vorn::StringUtil::ToWString(m_record.id));
    return QbaseError::None;
}

QbaseError CQbase::Impl::FindPosition(short attributeId, std::size_t& position) const {
    if (!m_record.HasValues())
        return QbaseError::WrongState;
    const int found = m_record.table->Definition().Find(attributeId);
    if (found < 0)
        return QbaseError::BadArgument;
    position = static_cast<std::size_t>(found);
    return QbaseError::None;
}

QbaseError CQbase::Impl::FindPosition(short attributeId, AttributeType type, std::size_t& position) const {
    if (const auto error = FindPosition(attributeId, position); error != QbaseError::None)
        return error;
    const Attribute& attribute = m_record.table->Definition().attributes[position];
    return attribute.type == type ? QbaseError::None : QbaseError::BadArgument;
}

QbaseError CQbase::Impl::Get(short attributeId, AttributeType type, Value& value) const {
    std::size_t position = 0;
    if (const auto error = FindPosition(attributeId, type, position); error != QbaseError::None)
        return error;
    value.cell = &m_record.cells[position];
    value.entrySize = static_cast<std::size_t>(m_record.table->Definition().attributes[position].entrySize);
    return value.cell->kind == Cell::Kind::Missing ? QbaseError::NotFound : QbaseError::None;
}

QbaseError CQbase::Impl::Change(short attributeId, AttributeType type, NewValue& value) {
    std::size_t position = 0;
    if (const auto error = FindPosition(attributeId, type, position); error != QbaseError::None)
        return error;
    m_record.changed[position] = true;
    value.cell = &m_record.cells[position];
    value.entrySize = static_cast<std::size_t>(m_record.table->Definition().attributes[position].entrySize);
    return QbaseError::None;
}

QbaseError CQbase::Impl::RemoveAttribute(short attributeId) {
    std::size_t position = 0;
    if (const auto error = FindPosition(attributeId, position); error != QbaseError::None)
        return error;
    Cell& cell = m_record.cells[position];
    if (cell.kind != Cell::Kind::Missing) {
        cell.Clear();
        m_record.changed[position] = true;
    }
    return QbaseError::None;
}
