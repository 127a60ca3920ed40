#pragma once

#include "TolmDataSet/TolmDataSet.h"

#include <nlohmann/json_fwd.hpp>

#include <iosfwd>

namespace tolmcli {

nlohmann::ordered_json ToJson(const tolm::IProjectSettingMEPMaterialSerieGroup& group);
nlohmann::ordered_json ToJson(const tolm::IProjectSettingConnectionSerie& connection);
nlohmann::ordered_json ToJson(const tolm::IProjectSettingMEPMaterialSerie& serie);
nlohmann::ordered_json ToJson(const tolm::IProjectSettingSystemType& system);

/// Each draws the record with all that it holds as a tree.
void Print(std::ostream& out, const tolm::IProjectSettingMEPMaterialSerieGroup& group);
void Print(std::ostream& out, const tolm::IProjectSettingConnectionSerie& connection);
void Print(std::ostream& out, const tolm::IProjectSettingMEPMaterialSerie& serie);
void Print(std::ostream& out, const tolm::IProjectSettingSystemType& system);

/// Display name of a connector type; its number when it has none.
std::wstring ConnectorWord(tolm::MEPConnectorType type);

} // namespace tolmcli
