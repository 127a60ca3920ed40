#include "Tolm/Kinds.h"

#include "Tolm/Errors.h"
#include "Vorn/Text.h"

#include <algorithm>

namespace tolmcli {

using tolm::MEPDisciplineId;
using Type = tolm::TolmProjectSettingMEPObjectType;
using TableId = tolm::TolmProjectSettingTableId;

const std::vector<Kind>& AllKinds() {
    static const std::vector<Kind> kinds{
        {"plumbing-pipe", Type::Pipe, MEPDisciplineId::Plumbing, TableId::PlumbingPipeSizes,
         TableId::PlumbingPipeMaterials, TableId::PlumbingPipeSeries, TableId::PlumbingPipeSystemTypes},
        {"hvac-pipe", Type::Pipe, MEPDisciplineId::HVAC, TableId::HVACPipeSizes, TableId::HVACPipeMaterials,
         TableId::HVACPipeSeries, TableId::HVACPipeSystemTypes},
        {"duct", Type::Duct, MEPDisciplineId::HVAC, TableId::DuctSizes, TableId::DuctMaterials, TableId::DuctSeries,
         TableId::DuctSystemTypes},
        {"cable-tray", Type::CableTray, MEPDisciplineId::Electrical, TableId::CableTraySizes,
         TableId::CableTrayMaterials, TableId::CableTraySeries, std::nullopt},
        {"conduit", Type::Conduit, MEPDisciplineId::Electrical, TableId::ConduitSizes, TableId::ConduitMaterials,
         TableId::ConduitSeries, std::nullopt},
        {"wire", Type::Wire, MEPDisciplineId::Electrical, TableId::WireSizes, std::nullopt, std::nullopt, std::nullopt},
        {"electrical", Type::ElectricalSystem, MEPDisciplineId::Electrical, std::nullopt, std::nullopt, std::nullopt,
         TableId::ElectricalSystemTypes},
    };
    return kinds;
}

const Kind& KindOf(const std::string& word) {
    const auto& kinds = AllKinds();
    const auto found = std::find_if(kinds.begin(), kinds.end(), [&](const Kind& kind) { return word == kind.word; });
    if (found != kinds.end())
        return *found;
    std::string choices;
    for (const Kind& kind : kinds)
        choices += (choices.empty() ? "" : ", ") + std::string(kind.word);
    throw Failure("no such kind: " + word + " (one of " + choices + ")", Misused);
}

std::wstring KindWord(int type, int discipline) {
    for (const Kind& kind : AllKinds()) {
        if (static_cast<int>(kind.type) == type && static_cast<int>(kind.discipline) == discipline)
            return vorn::StringUtil::ToWString(kind.word);
    }
    return L"type " + std::to_wstring(type) + L", discipline " + std::to_wstring(discipline);
}

} // namespace tolmcli
