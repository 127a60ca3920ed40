#include "TolmDataSet/TolmBaseDesignData.h"

#include "Host/Categories.h"
#include "Host/Definitions.h"
#include "MepDatabase/MepQbaseUtil.h"

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

bool TolmBaseDesignData::ReadInsulationSeries(wstring datasetFilePath, MEPDisciplineId disciplineId,
                                              TolmInsulationSerieType type, std::vector<DataSetInsulationSerie>& list) {
    return MepQbaseUtil::GetInstance()->readInsulationSerieList(
        std::move(datasetFilePath), DataSetFilePath::TOLMDDQFilePath, disciplineId, type, list);
}

bool TolmBaseDesignData::ReadSizingMethods(wstring datasetFilePath, TolmSizingMethodType type,
                                           std::vector<DataSetSizingMethod>& list) {
    return MepQbaseUtil::GetInstance()->readSizingMethodList(std::move(datasetFilePath),
                                                             DataSetFilePath::TOLMDDQFilePath, type, list);
}

bool TolmBaseDesignData::ReadBalancingMethods(wstring datasetFilePath, MEPDisciplineId disciplineId,
                                              std::vector<DataSetBalancingMethod>& list) {
    return MepQbaseUtil::GetInstance()->readBalancingMethodList(std::move(datasetFilePath),
                                                                DataSetFilePath::TOLMDDQFilePath, disciplineId, list);
}

bool TolmBaseDesignData::AddInsulationSerie(const DataSetInsulationSerie& serie) {
    return MepQbaseUtil::GetInstance()->addInsulationSerie(m_datasetFilePath, DataSetFilePath::TOLMDDQFilePath, serie);
}

bool TolmBaseDesignData::AddSizingMethod(const DataSetSizingMethod& method) {
    return MepQbaseUtil::GetInstance()->addSizingMethod(m_datasetFilePath, DataSetFilePath::TOLMDDQFilePath, method);
}

bool TolmBaseDesignData::AddBalancingMethod(const DataSetBalancingMethod& method) {
    return MepQbaseUtil::GetInstance()->addBalancingMethod(m_datasetFilePath, DataSetFilePath::TOLMDDQFilePath, method);
}

bool TolmBaseDesignData::DeleteInsulationSeries(const std::vector<DataSetInsulationSerie>& list) {
    return MepQbaseUtil::GetInstance()->deleteInsulationSerieList(m_datasetFilePath, DataSetFilePath::TOLMDDQFilePath,
                                                                  list);
}

bool TolmBaseDesignData::DeleteSizingMethods(const std::vector<DataSetSizingMethod>& list) {
    return MepQbaseUtil::GetInstance()->deleteSizingMethodList(m_datasetFilePath, DataSetFilePath::TOLMDDQFilePath,
                                                               list);
}

bool TolmBaseDesignData::DeleteBalancingMethods(const std::vector<DataSetBalancingMethod>& list) {
    return MepQbaseUtil::GetInstance()->deleteBalancingMethodList(m_datasetFilePath, DataSetFilePath::TOLMDDQFilePath,
                                                                  list);
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
