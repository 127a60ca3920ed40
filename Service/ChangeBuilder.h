#pragma once

#include "Service/ProjectStore.h"

#include <nlohmann/json_fwd.hpp>

#include <cstddef>
#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <utility>

namespace tolm::service {

/// Gathers a change out of JSON: rows and ids, each id of an id space once. What is not as it has to be leaves as a
/// `Refusal` (BadRow) that names table and row.
class ChangeBuilder {
public:
    /// Brings a row into shape before it is checked.
    using Prepare = std::function<void(std::size_t table, nlohmann::json& row)>;

    explicit ChangeBuilder(Prepare prepare) : m_prepare(std::move(prepare)) {}

    /// Takes {table: [row, ...], ...}.
    void TakeRows(const nlohmann::json& tables);
    void TakeRows(std::size_t table, const nlohmann::json& rows);
    /// Takes {table: [id, ...], ...}.
    void TakeRemovals(const nlohmann::json& tables);
    void TakeRemovals(std::size_t table, const nlohmann::json& ids);

    SettingChange Take() { return std::move(m_change); }

private:
    void TakeRow(std::size_t table, nlohmann::json row);
    void TakeRemoval(std::size_t table, const nlohmann::json& id);
    void NoteId(std::size_t table, const std::string& id);

    Prepare m_prepare;
    SettingChange m_change;
    std::set<std::pair<int, std::string>> m_ids;
};

/// Index of the table of this name, or a `Refusal` (BadRow).
std::size_t TableNamed(std::string_view name);

} // namespace tolm::service
