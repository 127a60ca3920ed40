#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace qbase {

/// Which rows of a working copy were changed since it was made, told by each connection of this process that has it
/// open. What was given up again may be among them. Any thread may call it.
class CopyRecord {
public:
    /// Numbers of rows by table, as SQLite knows both.
    using Rows = std::map<std::string, std::set<std::int64_t>, std::less<>>;

    /// `changeCounter` is that of the copy as it was made.
    explicit CopyRecord(std::uint32_t changeCounter) : m_changeCounter(changeCounter) {}

    /// A row came, went or changed. What cannot be noted makes the record useless.
    void Note(std::string_view table, std::int64_t row) noexcept;
    /// Noted rows were committed, which raises the file's change counter by one.
    void CountCommit() noexcept;

    /// The changed rows of a copy with this change counter; nothing when somebody committed to it unseen.
    std::optional<Rows> RowsAt(std::uint32_t changeCounter) const;

private:
    mutable std::mutex m_mutex;
    std::uint32_t m_changeCounter;
    bool m_isWhole = true;
    Rows m_rows;
};

} // namespace qbase
