#pragma once

#include "Service/ProjectStore.h"

#include <nlohmann/json_fwd.hpp>

#include <string>
#include <string_view>
#include <vector>

namespace tolm::service {

/// A project file as it was read and checked.
struct ProjectFile {
    std::string id;   ///< empty when the file tells none
    std::string name; ///< empty when the file tells none
    std::vector<SettingRow> rows;
};

/// A change file as it was read and checked.
struct ChangeFile {
    std::string description;
    SettingChange change;
    std::vector<WorkunitEntry> workunits;
};

/// Reads a project file's text. Files that its "BinaryTable" names are taken from the folder. Throws a `Refusal` for
/// anything that is not as it has to be; the message names table and row.
ProjectFile ReadProjectFile(std::string_view text, const std::string& folder);
/// The same for a change file.
ChangeFile ReadChangeFile(std::string_view text, const std::string& folder);

/// An entry of a work unit and its two members; each throws a `Refusal`.
WorkunitEntry ReadWorkunitEntry(const std::string& workunitId, const nlohmann::json& value);
std::string ReadDataId(const nlohmann::json& value);
int ReadDataStatus(const nlohmann::json& value);

/// Text of a project file that holds a project's rows as the JSON text `tables` has them.
std::string WriteProjectFile(const ProjectInfo& project, const std::string& tables);

/// Whole content of a file; throws `std::runtime_error` with the reason.
std::string ReadWholeFile(const std::string& path);

} // namespace tolm::service
