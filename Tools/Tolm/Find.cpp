#include "Tolm/Find.h"

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

} // namespace

std::vector<const tolm::IProjectSettingMaterial*> CollectMaterials(Workplace& place, const std::string& kind) {
    place.Dataset().ResetDataTables();
    place.Dataset().CollectData(false, Slices(&Kind::materials, kind));
    return place.Dataset().GetMaterialData()->GetMaterialList();
}

std::vector<const tolm::IProjectSettingSizeModule*> CollectSizes(Workplace& place, const std::string& kind) {
    place.Dataset().ResetDataTables();
    place.Dataset().CollectData(false, Slices(&Kind::sizes, kind));
    return place.Dataset().GetSizeModuleData()->GetSizeList();
}

} // namespace tolmcli
