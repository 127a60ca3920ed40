#pragma once

#include <nlohmann/json_fwd.hpp>

#include <cstddef>
#include <string>

namespace tolm::service {

/// One row as it is kept: checked, as compact JSON text, with what the rules need to know of it beside.
struct SettingRow {
    std::size_t table = 0; ///< index in kSettingTables
    std::string id;
    std::string group;     ///< "groupName" in "ConfigTree", else empty
    std::string nameScope; ///< rows with one scope bear different names; empty when the name is free
    std::string name;      ///< as JSON text
    std::string stub;      ///< what stands for the row in "del" of a tracked table
    std::string body;
};

/// Checks a row and brings it into the form in which it goes out. Throws a `Refusal` (BadRow) that names table and
/// row. A "version" on the outermost level is the service's own and is taken off; all else that is unknown stays.
SettingRow MakeSettingRow(std::size_t table, nlohmann::json row);

/// Throws a `Refusal` (BadRow) unless the text can be the id of a row in this table.
void CheckRowId(std::size_t table, const std::string& id);

} // namespace tolm::service
