#include "Host/Definitions.h"
#include "MepDataSetInterface/RecordBasics.h"
#include "MepDataSetInterface/TableLists.h"
#include "MepDataSetInterface/TableSlices.h"
#include "MepDataSetInterface/TolmDataset_DesignData.h"
#include "MepDatabase/MepQbaseUtil.h"

namespace tolm {

ISizeModuleData::~ISizeModuleData() = default;

vorn::OwnerPtr<ISizeModuleData> SizeModuleData::Create() {
    return ObjectMaker::Create<ISizeModuleData, SizeModuleData>();
}

SizeModuleData::~SizeModuleData() = default;

void SizeModuleData::reset() {
    m_sizeModuleList.clear();
}

std::vector<const IProjectSettingSizeModule*> SizeModuleData::GetSizeList() const {
    return Lend(m_sizeModuleList, TOLM_CALL_SITE, L"m_sizeModuleList[i]为空");
}

void SizeModuleData::AddSizeModule(vorn::OwnerPtr<IProjectSettingSizeModule> pNewSize) {
    if (!pNewSize) {
        VORN_DEBUG_WARN(L"pNewSize为空");
        return;
    }
    AddSizeModuleToDB(pNewSize.get());
    ReplaceOrAppend(m_sizeModuleList, std::move(pNewSize), TOLM_CALL_SITE, L"*iter为空");
}

void SizeModuleData::AddSizeModuleToDB(const IProjectSettingSizeModule* pSize) {
    MepQbaseUtil::GetInstance()->WriteSizeModule(m_datasetFilePath, DataSetFilePath::TOLMDDQFilePath, pSize);
}

void SizeModuleData::DeleteSizeModuleList(std::vector<const IProjectSettingSizeModule*> sizeModuleList) {
    MepQbaseUtil::GetInstance()->DeleteSizeModuleList(m_datasetFilePath, DataSetFilePath::TOLMDDQFilePath,
                                                      sizeModuleList);
    EraseById(m_sizeModuleList, sizeModuleList, TOLM_CALL_SITE, {L"sizeModuleList[i]为空", L"(*iter)为空"});
}

bool SizeModuleData::IsTheSizeModuleReferred(const IProjectSettingSizeModule* pSizeModule,
                                             wstring& referencingName) const {
    return MepQbaseUtil::GetInstance()->IsTheSizeModuleReferred(m_datasetFilePath, DataSetFilePath::TOLMDDQFilePath,
                                                                pSizeModule, referencingName);
}

void SizeModuleData::CollectDesignData(wstring datasetFilePath, wstring componentFilePath,
                                       TolmProjectSettingTableId tableId) {
    m_datasetFilePath = std::move(datasetFilePath);
    m_componentFilePath = std::move(componentFilePath);
    if (const TableSlice* slice = FindSlice(tableId, TableKind::SizeModules))
        ReadSizeModuleList(m_datasetFilePath, slice->objectType, slice->discipline, m_sizeModuleList);
}

} // namespace tolm
