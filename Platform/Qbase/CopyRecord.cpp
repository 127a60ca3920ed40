#include "Qbase/CopyRecordInternal.h"

#include <exception>

namespace qbase {

void CopyRecord::Note(std::string_view table, std::int64_t row) noexcept {
    const std::lock_guard lock(m_mutex);
    try {
        auto rows = m_rows.find(table);
        if (rows == m_rows.end())
            rows = m_rows.try_emplace(std::string(table)).first;
        rows->second.insert(row);
    } catch (const std::exception&) { // memory ran out
        m_isWhole = false;
    }
}

void CopyRecord::CountCommit() noexcept {
    const std::lock_guard lock(m_mutex);
    ++m_changeCounter;
}

std::optional<CopyRecord::Rows> CopyRecord::RowsAt(std::uint32_t changeCounter) const {
    const std::lock_guard lock(m_mutex);
    if (!m_isWhole || changeCounter != m_changeCounter)
        return std::nullopt;
    return m_rows;
}

} // namespace qbase
