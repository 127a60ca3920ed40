#include "Host/Definitions.h"
#include "MepDataSetInterface/RecordBasics.h"
#include "MepDataSetInterface/TableLists.h"
#include "MepDataSetInterface/TableSlices.h"
#include "MepDataSetInterface/TolmDataset_DesignData.h"
#include "MepDatabase/MepQbaseUtil.h"

namespace tolm {

IMaterialData::~IMaterialData() = default;

vorn::OwnerPtr<IMaterialData> MaterialData::Create() {
    return ObjectMaker::Create<IMaterialData, MaterialData>();
}

MaterialData::~MaterialData() = default;

void MaterialData::reset() {
    m_materialList.clear();
}

std::vector<const IProjectSettingMaterial*> MaterialData::GetMaterialList() const {
    return Lend(m_materialList, TOLM_CALL_SITE, L"pMat为空");
}

void MaterialData::AddMaterial(vorn::OwnerPtr<IProjectSettingMaterial> pNewMaterial) {
    if (!pNewMaterial) {
        VORN_DEBUG_WARN(L"pNewMaterial为空");
        return;
    }
    AddMaterialToDB(pNewMaterial.get());
    ReplaceOrAppend(m_materialList, std::move(pNewMaterial), TOLM_CALL_SITE, L"iter为空");
}

void MaterialData::AddMaterialToDB(const IProjectSettingMaterial* pMaterial) {
    MepQbaseUtil::GetInstance()->WriteMaterial(m_datasetFilePath, DataSetFilePath::TOLMDDQFilePath, pMaterial);
}

void MaterialData::DeleteMaterialList(std::vector<const IProjectSettingMaterial*> materialList) {
    MepQbaseUtil::GetInstance()->DeleteMaterialList(m_datasetFilePath, DataSetFilePath::TOLMDDQFilePath, materialList);
    EraseById(m_materialList, materialList, TOLM_CALL_SITE, {L"materialList[i]为空", L"iter为空"});
}

void MaterialData::CollectDesignData(wstring datasetFilePath, wstring componentFilePath,
                                     TolmProjectSettingTableId tableId) {
    m_datasetFilePath = std::move(datasetFilePath);
    m_componentFilePath = std::move(componentFilePath);
    if (const TableSlice* slice = FindSlice(tableId, TableKind::Materials))
        ReadMaterialList(m_datasetFilePath, slice->objectType, slice->discipline, m_materialList);
}

} // namespace tolm
