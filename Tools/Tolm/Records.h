#pragma once

#include "Tolm/Kinds.h"

#include "TolmDataSet/IProjectSettingMaterial.h"
#include "TolmDataSet/IProjectSettingSizeModule.h"

#include <nlohmann/json_fwd.hpp>

#include <iosfwd>
#include <string>
#include <vector>

namespace tolmcli {

nlohmann::ordered_json ToJson(const tolm::IProjectSettingMaterial& material);
nlohmann::ordered_json ToJson(const tolm::IProjectSettingSizeModule& module);

/// A readable page about one size table.
void Print(std::ostream& out, const tolm::IProjectSettingSizeModule& module);

/// Number of rows in the list that the object type uses.
std::size_t RowCount(const tolm::IProjectSettingSizeModule& module);

/// Names of the columns of a row, as "DN,OD,ID,Thickness".
std::string RowColumns(tolm::TolmProjectSettingMEPObjectType type);

/// Appends the row that the text gives, its columns parted by commas. Throws Failure that names the columns.
void AddRow(tolm::IProjectSettingSizeModule& module, const std::string& text);
/// Removes one row; the first is 1. Throws Failure for a row that is not there.
void RemoveRow(tolm::IProjectSettingSizeModule& module, int row);
void ClearRows(tolm::IProjectSettingSizeModule& module);

/// A number of the user's. Throws Failure that names `what`.
double ParseNumber(const std::string& text, const std::string& what);

} // namespace tolmcli
