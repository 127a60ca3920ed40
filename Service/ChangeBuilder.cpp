#include "Service/ChangeBuilder.h"

#include "Service/Answer.h"
#include "Service/RowCheck.h"
#include "Service/SettingTables.h"

#include <nlohmann/json.hpp>

namespace tolm::service {

using nlohmann::json;

std::size_t TableNamed(std::string_view name) {
    const auto table = FindSettingTable(name);
    if (!table)
        throw Refusal(Answer::BadRow, "there is no table \"" + std::string(name) + "\"");
    return *table;
}

void ChangeBuilder::TakeRows(const json& tables) {
    for (std::size_t table = 0; table < kSettingTables.size(); ++table) {
        const auto found = tables.find(kSettingTables[table].name);
        if (found != tables.end())
            TakeRows(table, *found);
    }
    for (const auto& [name, rows] : tables.items())
        TableNamed(name);
}

void ChangeBuilder::TakeRows(std::size_t table, const json& rows) {
    if (!rows.is_array())
        throw Refusal(Answer::BadRow, std::string(kSettingTables[table].name) + ": the rows are no array");
    for (const auto& row : rows)
        TakeRow(table, row);
}

void ChangeBuilder::TakeRow(std::size_t table, json row) {
    m_prepare(table, row);
    m_change.put.push_back(MakeSettingRow(table, std::move(row)));
    NoteId(table, m_change.put.back().id);
}

void ChangeBuilder::TakeRemovals(const json& tables) {
    for (const auto& [name, ids] : tables.items())
        TakeRemovals(TableNamed(name), ids);
}

void ChangeBuilder::TakeRemovals(std::size_t table, const json& ids) {
    if (!ids.is_array())
        throw Refusal(Answer::BadRow, std::string(kSettingTables[table].name) + ": the ids are no array");
    for (const auto& id : ids)
        TakeRemoval(table, id);
}

void ChangeBuilder::TakeRemoval(std::size_t table, const json& id) {
    if (!id.is_string())
        RefuseRow(table, id.dump(), "the id is no text");
    CheckRowId(table, id.get<std::string>());
    m_change.removed.emplace_back(table, id.get<std::string>());
    NoteId(table, m_change.removed.back().second);
}

void ChangeBuilder::NoteId(std::size_t table, const std::string& id) {
    if (!m_ids.emplace(kSettingTables[table].idSpace, id).second)
        RefuseRow(table, id, "the id stands twice");
}

} // namespace tolm::service
