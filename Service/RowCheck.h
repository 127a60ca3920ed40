#pragma once

#include <nlohmann/json_fwd.hpp>

#include <cstddef>
#include <string>

namespace tolm::service {

/// Throws a `Refusal` (BadRow) with these words, the table and the row before them.
[[noreturn]] void RefuseRow(std::size_t table, const std::string& id, const std::string& words);

/// Checks the known keys of a row against the table's form: types, required keys, lengths of lists.
void CheckRowFields(std::size_t table, const std::string& id, const nlohmann::json& row);

} // namespace tolm::service
