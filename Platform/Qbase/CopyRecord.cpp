#include "Qbase/CopyRecordInternal.h"

namespace qbase {

/// Merging moves what is there and takes no memory.
void CopyRecord::Add(ChangedRows rows) noexcept {
    const std::lock_guard lock(m_mutex);
    m_rows.merge(rows);
    for (auto& [table, numbers] : rows)
        m_rows.find(table)->second.merge(numbers);
    ++m_changeCounter;
}

std::optional<ChangedRows> CopyRecord::RowsAt(std::uint32_t changeCounter) const {
    const std::lock_guard lock(m_mutex);
    return changeCounter == m_changeCounter ? std::optional(m_rows) : std::nullopt;
}

} // namespace qbase
