#include "MepDataSetInterface/AvailableLater.h"
#include "MepDataSetInterface/RecordBasics.h"
#include "MepDataSetInterface/TableLists.h"
#include "MepDataSetInterface/TolmDataset_DesignData.h"

namespace tolm {

ISystemTypeData::~ISystemTypeData() = default;

vorn::OwnerPtr<ISystemTypeData> SystemTypeData::Create() {
    return ObjectMaker::Create<ISystemTypeData, SystemTypeData>();
}

SystemTypeData::~SystemTypeData() = default;

void SystemTypeData::reset() {
    m_SystemTypeList.clear();
}

std::vector<const IProjectSettingSystemType*> SystemTypeData::GetSystemTypeList() const {
    return Lend(m_SystemTypeList, TOLM_CALL_SITE, L"m_SystemTypeList[i]为空");
}

void SystemTypeData::AddSystemType(vorn::OwnerPtr<IProjectSettingSystemType>) {
    VORN_DEBUG_WARN(kAvailableLater);
}

void SystemTypeData::GetAndAddSystemTypeById(wstring) {
    VORN_DEBUG_WARN(kAvailableLater);
}

void SystemTypeData::AddSystemTypeToDB(const IProjectSettingSystemType*) {
    VORN_DEBUG_WARN(kAvailableLater);
}

void SystemTypeData::DeleteSystemTypeList(std::vector<const IProjectSettingSystemType*>) {
    VORN_DEBUG_WARN(kAvailableLater);
}

void SystemTypeData::CollectDesignData(wstring datasetFilePath, wstring componentFilePath, TolmProjectSettingTableId) {
    m_datasetFilePath = std::move(datasetFilePath);
    m_componentFilePath = std::move(componentFilePath);
}

} // namespace tolm
