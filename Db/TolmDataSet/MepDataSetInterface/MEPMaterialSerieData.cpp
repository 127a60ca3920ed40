#include "MepDataSetInterface/AvailableLater.h"
#include "MepDataSetInterface/RecordBasics.h"
#include "MepDataSetInterface/TableLists.h"
#include "MepDataSetInterface/TolmDataset_DesignData.h"

namespace tolm {

IMEPMaterialSerieData::~IMEPMaterialSerieData() = default;

vorn::OwnerPtr<IMEPMaterialSerieData> MEPMaterialSerieData::Create() {
    return ObjectMaker::Create<IMEPMaterialSerieData, MEPMaterialSerieData>();
}

MEPMaterialSerieData::~MEPMaterialSerieData() = default;

void MEPMaterialSerieData::reset() {
    m_serieList.clear();
    m_serieGroupList.clear();
}

std::vector<const IProjectSettingMEPMaterialSerie*> MEPMaterialSerieData::GetSerieList() const {
    return Lend(m_serieList, TOLM_CALL_SITE, L"m_serieList[i]为空");
}

std::vector<const IProjectSettingMEPMaterialSerieGroup*> MEPMaterialSerieData::GetSerieGroupList() const {
    return Lend(m_serieGroupList, TOLM_CALL_SITE, L"m_serieGroupList[i]为空");
}

void MEPMaterialSerieData::GetAndAddSerieById(wstring) {
    VORN_DEBUG_WARN(kAvailableLater);
}

void MEPMaterialSerieData::AddSerie(vorn::OwnerPtr<IProjectSettingMEPMaterialSerie>) {
    VORN_DEBUG_WARN(kAvailableLater);
}

void MEPMaterialSerieData::AddSerieToDB(const IProjectSettingMEPMaterialSerie*) {
    VORN_DEBUG_WARN(kAvailableLater);
}

void MEPMaterialSerieData::DeleteSerieList(std::vector<const IProjectSettingMEPMaterialSerie*>) {
    VORN_DEBUG_WARN(kAvailableLater);
}

void MEPMaterialSerieData::AddSerieGroup(vorn::OwnerPtr<IProjectSettingMEPMaterialSerieGroup>) {
    VORN_DEBUG_WARN(kAvailableLater);
}

void MEPMaterialSerieData::DeleteSerieGroupList(std::vector<const IProjectSettingMEPMaterialSerieGroup*>) {
    VORN_DEBUG_WARN(kAvailableLater);
}

bool MEPMaterialSerieData::IsTheMEPMaterialSeireReferred(const IProjectSettingMEPMaterialSerie*, wstring&) const {
    VORN_DEBUG_WARN(kAvailableLater);
    return false;
}

void MEPMaterialSerieData::CollectDesignData(wstring datasetFilePath, wstring componentFilePath,
                                             TolmProjectSettingTableId) {
    m_datasetFilePath = std::move(datasetFilePath);
    m_componentFilePath = std::move(componentFilePath);
}

} // namespace tolm
