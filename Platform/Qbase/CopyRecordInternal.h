#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>

namespace qbase {

/// Numbers of rows by table, as SQLite knows both.
using ChangedRows = std::map<std::string, std::set<std::int64_t>, std::less<>>;

/// Which rows of a working copy were changed since it was made, told by each connection of this process that has it
/// open. Any thread may call it.
class CopyRecord {
public:
    /// Takes the rows of one commit, which raised the file's change counter by one.
    void Add(ChangedRows rows) noexcept;

    /// The changed rows of a copy with this change counter; nothing when somebody committed to it unseen.
    std::optional<ChangedRows> RowsAt(std::uint32_t changeCounter) const;

private:
    mutable std::mutex m_mutex;
    std::uint32_t m_changeCounter = 1; // SQLite counts from a file's first commit on, which is the copying
    ChangedRows m_rows;
};

} // namespace qbase
