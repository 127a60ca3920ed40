#pragma once

#include "Tolm/Errors.h"
#include "Tolm/Workplace.h"

#include "Vorn/Text.h"

#include <algorithm>
#include <string>
#include <vector>

namespace tolmcli {

/// All materials, or those of one kind, read anew. The records live until the next collection.
std::vector<const tolm::IProjectSettingMaterial*> CollectMaterials(Workplace& place, const std::string& kind);
/// The same for size tables, series, groups, system types and connection series.
std::vector<const tolm::IProjectSettingSizeModule*> CollectSizes(Workplace& place, const std::string& kind);
std::vector<const tolm::IProjectSettingMEPMaterialSerie*> CollectSeries(Workplace& place, const std::string& kind);
std::vector<const tolm::IProjectSettingMEPMaterialSerieGroup*> CollectGroups(Workplace& place, const std::string& kind);
std::vector<const tolm::IProjectSettingSystemType*> CollectSystems(Workplace& place, const std::string& kind);
std::vector<const tolm::IProjectSettingConnectionSerie*> CollectConnections(Workplace& place, const std::string& kind);

/// The record of this id, or the only one of this name. Throws Failure when there is none or more than one.
template <class Record>
const Record& FindOne(const std::vector<const Record*>& records, const std::string& idOrName, const std::string& what) {
    const std::wstring wanted = vorn::StringUtil::ToWString(idOrName);
    const Record* found = nullptr;
    for (const Record* record : records) {
        if (record->GetId() == wanted)
            return *record;
        if (record->GetName() != wanted)
            continue;
        if (found != nullptr)
            throw Failure("more than one " + what + " is named " + idOrName + ": give the id, or narrow with --kind");
        found = record;
    }
    if (found == nullptr)
        throw Failure("there is no " + what + " " + idOrName);
    return *found;
}

/// True when one of the records has the id.
template <class Record> bool Stands(const std::vector<const Record*>& records, const std::wstring& id) {
    return std::any_of(records.begin(), records.end(), [&](const Record* record) { return record->GetId() == id; });
}

} // namespace tolmcli
