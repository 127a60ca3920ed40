#include "Tolm/Find.h"

#include <array>
#include <utility>

namespace tolmcli {
namespace {

using TableIds = std::vector<tolm::TolmProjectSettingTableId>;

/// The slices of one column of the kinds table, narrowed to one kind unless `word` is empty.
TableIds Slices(std::optional<tolm::TolmProjectSettingTableId> Kind::*column, const std::string& word) {
    TableIds ids;
    if (!word.empty()) {
        if (const auto id = KindOf(word).*column)
            ids.push_back(*id);
        return ids;
    }
    for (const Kind& kind : AllKinds()) {
        if (const auto id = kind.*column)
            ids.push_back(*id);
    }
    return ids;
}

/// Connection series are sliced by connector type, and each connector type belongs to one object type.
TableIds ConnectionSlices(const std::string& word) {
    using Id = tolm::TolmProjectSettingTableId;
    using Type = tolm::TolmProjectSettingMEPObjectType;
    constexpr std::array<std::pair<Type, Id>, 9> kSlices{{
        {Type::Pipe, Id::PipeThreadedConnections},
        {Type::Pipe, Id::PipeWeldedConnections},
        {Type::Pipe, Id::PipeFlangedConnections},
        {Type::Pipe, Id::PipeGroovedConnections},
        {Type::Pipe, Id::PipeSocketConnections},
        {Type::Duct, Id::DuctConnections},
        {Type::CableTray, Id::CableTrayConnections},
        {Type::CableTray, Id::CableTrayAlternativeConnections},
        {Type::Conduit, Id::ConduitConnections},
    }};
    TableIds ids;
    for (const auto& [type, id] : kSlices) {
        if (word.empty() || type == KindOf(word).type)
            ids.push_back(id);
    }
    return ids;
}

void Collect(Workplace& place, const TableIds& ids) {
    place.Dataset().ResetDataTables();
    place.Dataset().CollectData(false, ids);
}

} // namespace

std::vector<const tolm::IProjectSettingMaterial*> CollectMaterials(Workplace& place, const std::string& kind) {
    Collect(place, Slices(&Kind::materials, kind));
    return place.Dataset().GetMaterialData()->GetMaterialList();
}

std::vector<const tolm::IProjectSettingSizeModule*> CollectSizes(Workplace& place, const std::string& kind) {
    Collect(place, Slices(&Kind::sizes, kind));
    return place.Dataset().GetSizeModuleData()->GetSizeList();
}

std::vector<const tolm::IProjectSettingMEPMaterialSerie*> CollectSeries(Workplace& place, const std::string& kind) {
    Collect(place, Slices(&Kind::series, kind));
    return place.Dataset().GetMEPMaterialSerieData()->GetSerieList();
}

std::vector<const tolm::IProjectSettingMEPMaterialSerieGroup*> CollectGroups(Workplace& place,
                                                                             const std::string& kind) {
    Collect(place, Slices(&Kind::series, kind));
    return place.Dataset().GetMEPMaterialSerieData()->GetSerieGroupList();
}

std::vector<const tolm::IProjectSettingSystemType*> CollectSystems(Workplace& place, const std::string& kind) {
    Collect(place, Slices(&Kind::systems, kind));
    return place.Dataset().GetSystemTypeData()->GetSystemTypeList();
}

std::vector<const tolm::IProjectSettingConnectionSerie*> CollectConnections(Workplace& place, const std::string& kind) {
    Collect(place, ConnectionSlices(kind));
    return place.Dataset().GetConnectionSerieData()->GetConnectionSerieList();
}

} // namespace tolmcli
