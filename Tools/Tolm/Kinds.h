#pragma once

#include "TolmDataSet/MepEnums.h"

#include <optional>
#include <string>
#include <vector>

namespace tolmcli {

/// One kind of thing that settings are kept for, as the command's user names it.
struct Kind {
    const char* word;
    tolm::TolmProjectSettingMEPObjectType type;
    tolm::MEPDisciplineId discipline;
    std::optional<tolm::TolmProjectSettingTableId> sizes;
    std::optional<tolm::TolmProjectSettingTableId> materials;
    std::optional<tolm::TolmProjectSettingTableId> series; ///< with their groups
    std::optional<tolm::TolmProjectSettingTableId> systems;
};

/// All kinds, in the order in which they are listed.
const std::vector<Kind>& AllKinds();

/// The kind of this word. Throws Failure that names the choices.
const Kind& KindOf(const std::string& word);

/// Word of the kind that an object type and a discipline make; their numbers when they make none.
std::wstring KindWord(int type, int discipline);

} // namespace tolmcli
