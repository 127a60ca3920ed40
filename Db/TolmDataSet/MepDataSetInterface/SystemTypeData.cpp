#include "Host/Definitions.h"
#include "MepDataSetInterface/RecordBasics.h"
#include "MepDataSetInterface/TableLists.h"
#include "MepDataSetInterface/TableSlices.h"
#include "MepDataSetInterface/TolmDataset_DesignData.h"
#include "MepDatabase/MepQbaseUtil.h"

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

void SystemTypeData::AddSystemType(vorn::OwnerPtr<IProjectSettingSystemType> pSystemType) {
    if (!pSystemType) {
        VORN_DEBUG_WARN(L"pSystemType为空");
        return;
    }
    AddSystemTypeToDB(pSystemType.get());
    ReplaceOrAppend(m_SystemTypeList, std::move(pSystemType), TOLM_CALL_SITE, L"(*iter)为空");
}

void SystemTypeData::GetAndAddSystemTypeById(wstring id) {
    vorn::OwnerPtr<IProjectSettingSystemType> systemType;
    MepQbaseUtil::GetInstance()->ReadSystemType(m_datasetFilePath, DataSetFilePath::TOLMDDQFilePath,
                                                m_componentFilePath, std::move(id), systemType);
    if (systemType)
        ReplaceOrAppend(m_SystemTypeList, std::move(systemType), TOLM_CALL_SITE, L"(*iter)为空");
}

void SystemTypeData::AddSystemTypeToDB(const IProjectSettingSystemType* pSystemType) {
    MepQbaseUtil::GetInstance()->WriteSystemType(m_datasetFilePath, DataSetFilePath::TOLMDDQFilePath, pSystemType);
}

void SystemTypeData::DeleteSystemTypeList(std::vector<const IProjectSettingSystemType*> systemTypeList) {
    MepQbaseUtil::GetInstance()->DeleteSystemTypeList(m_datasetFilePath, DataSetFilePath::TOLMDDQFilePath,
                                                      systemTypeList);
    EraseById(m_SystemTypeList, systemTypeList, TOLM_CALL_SITE, {L"systemTypeList[i]为空", L"(*iter)为空"});
}

bool SystemTypeData::ReadSystemTypeList(wstring datasetFilePath, wstring componentFilePath, MEPDisciplineId discipline,
                                        TolmProjectSettingMEPObjectType objectType,
                                        RecordList<IProjectSettingSystemType>& list) {
    return MepQbaseUtil::GetInstance()->ReadSystemTypeList(std::move(datasetFilePath), DataSetFilePath::TOLMDDQFilePath,
                                                           std::move(componentFilePath), discipline, objectType, list);
}

void SystemTypeData::CollectDesignData(wstring datasetFilePath, wstring componentFilePath,
                                       TolmProjectSettingTableId tableId) {
    m_datasetFilePath = std::move(datasetFilePath);
    m_componentFilePath = std::move(componentFilePath);
    if (const TableSlice* slice = FindSlice(tableId, TableKind::SystemTypes))
        ReadSystemTypeList(m_datasetFilePath, m_componentFilePath, slice->discipline, slice->objectType,
                           m_SystemTypeList);
}

} // namespace tolm
