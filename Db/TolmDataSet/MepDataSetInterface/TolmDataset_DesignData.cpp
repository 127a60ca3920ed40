#include "TolmDataSet/TolmBaseDesignData.h"

#include "Host/Categories.h"
#include "Host/Definitions.h"
#include "MepDataSetInterface/AvailableLater.h"
#include "MepDatabase/MepQbaseUtil.h"
#include "Vorn/DebugMessage.h"

#include <utility>

namespace tolm {

bool TolmBaseDesignData::ReadMaterialList(wstring datasetFilePath, TolmProjectSettingMEPObjectType mepType,
                                          MEPDisciplineId disciplineId,
                                          std::vector<vorn::OwnerPtr<IProjectSettingMaterial>>& list) {
    return MepQbaseUtil::GetInstance()->ReadMaterialList(std::move(datasetFilePath), DataSetFilePath::TOLMDDQFilePath,
                                                         mepType, disciplineId, list);
}

bool TolmBaseDesignData::ReadSingleMaterial(wstring datasetFilePath, wstring id,
                                            vorn::OwnerPtr<IProjectSettingMaterial>& material) {
    return MepQbaseUtil::GetInstance()->ReadMaterial(std::move(datasetFilePath), DataSetFilePath::TOLMDDQFilePath,
                                                     std::move(id), material);
}

bool TolmBaseDesignData::ReadSizeModuleList(wstring datasetFilePath, TolmProjectSettingMEPObjectType mepType,
                                            MEPDisciplineId disciplineId,
                                            std::vector<vorn::OwnerPtr<IProjectSettingSizeModule>>& list) {
    return MepQbaseUtil::GetInstance()->ReadSizeModuleList(std::move(datasetFilePath), DataSetFilePath::TOLMDDQFilePath,
                                                           mepType, disciplineId, list);
}

bool TolmBaseDesignData::ReadInsulationSeries(wstring, MEPDisciplineId, TolmInsulationSerieType,
                                              std::vector<DataSetInsulationSerie>&) {
    VORN_DEBUG_WARN(kAvailableLater);
    return false;
}

bool TolmBaseDesignData::ReadSizingMethods(wstring, TolmSizingMethodType, std::vector<DataSetSizingMethod>&) {
    VORN_DEBUG_WARN(kAvailableLater);
    return false;
}

bool TolmBaseDesignData::ReadBalancingMethods(wstring, MEPDisciplineId, std::vector<DataSetBalancingMethod>&) {
    VORN_DEBUG_WARN(kAvailableLater);
    return false;
}

bool TolmBaseDesignData::AddInsulationSerie(const DataSetInsulationSerie&) {
    VORN_DEBUG_WARN(kAvailableLater);
    return false;
}

bool TolmBaseDesignData::AddSizingMethod(const DataSetSizingMethod&) {
    VORN_DEBUG_WARN(kAvailableLater);
    return false;
}

bool TolmBaseDesignData::AddBalancingMethod(const DataSetBalancingMethod&) {
    VORN_DEBUG_WARN(kAvailableLater);
    return false;
}

bool TolmBaseDesignData::DeleteInsulationSeries(const std::vector<DataSetInsulationSerie>&) {
    VORN_DEBUG_WARN(kAvailableLater);
    return false;
}

bool TolmBaseDesignData::DeleteSizingMethods(const std::vector<DataSetSizingMethod>&) {
    VORN_DEBUG_WARN(kAvailableLater);
    return false;
}

bool TolmBaseDesignData::DeleteBalancingMethods(const std::vector<DataSetBalancingMethod>&) {
    VORN_DEBUG_WARN(kAvailableLater);
    return false;
}

std::vector<const ITolmCategoryInfo*> TolmBaseDesignData::getEndCategoryList(const ITolmCategoryInfo* category) const {
    if (category == nullptr)
        return {};
    const auto children = category->GetChildren();
    if (children.empty())
        return {category};
    std::vector<const ITolmCategoryInfo*> ends;
    for (const auto* child : children) {
        const auto below = getEndCategoryList(child);
        ends.insert(ends.end(), below.begin(), below.end());
    }
    return ends;
}

} // namespace tolm
