#include "Host/Definitions.h"
#include "MepDataSetInterface/RecordBasics.h"
#include "MepDataSetInterface/TableLists.h"
#include "MepDataSetInterface/TableSlices.h"
#include "MepDataSetInterface/TolmDataset_DesignData.h"
#include "MepDatabase/MepQbaseUtil.h"

#include <utility>

namespace tolm {

ICircuitTemplateData::~ICircuitTemplateData() = default;

vorn::OwnerPtr<ICircuitTemplateData> CircuitTemplateData::Create() {
    return ObjectMaker::Create<ICircuitTemplateData, CircuitTemplateData>();
}

CircuitTemplateData::~CircuitTemplateData() = default;

void CircuitTemplateData::reset() {
    m_circuitTemplateList.clear();
}

std::vector<const ITolmProjectSettingCircuitTemplate*> CircuitTemplateData::GetCircuitTemplateList() const {
    return Lend(m_circuitTemplateList, TOLM_CALL_SITE, L"m_circuitTemplateList[i]为空");
}

void CircuitTemplateData::AddCircuitTemplate(vorn::OwnerPtr<ITolmProjectSettingCircuitTemplate> pCircuitTemplate) {
    if (!pCircuitTemplate) {
        VORN_DEBUG_WARN(L"pCircuitTemplate为空");
        return;
    }
    AddCircuitTemplateListToDB({pCircuitTemplate.get()});
    ReplaceOrAppend(m_circuitTemplateList, std::move(pCircuitTemplate), TOLM_CALL_SITE,
                    L"m_circuitTemplateList[i]为空");
}

void CircuitTemplateData::AddCircuitTemplateListToDB(
    std::vector<const ITolmProjectSettingCircuitTemplate*> pCircuitTemplateList) {
    MepQbaseUtil::GetInstance()->WriteCircuitTemplateList(m_datasetFilePath, DataSetFilePath::TOLMDDQFilePath,
                                                          std::move(pCircuitTemplateList));
}

void CircuitTemplateData::DeleteCircuitTemplateList(
    std::vector<const ITolmProjectSettingCircuitTemplate*> pCircuitTemplateList) {
    MepQbaseUtil::GetInstance()->DeleteCircuitTemplateList(m_datasetFilePath, DataSetFilePath::TOLMDDQFilePath,
                                                           pCircuitTemplateList);
    EraseById(m_circuitTemplateList, pCircuitTemplateList, TOLM_CALL_SITE,
              {L"pCircuitTemplateList[i]为空", L"(*iter)为空"});
}

void CircuitTemplateData::CollectDesignData(wstring datasetFilePath, TolmProjectSettingTableId tableId) {
    m_datasetFilePath = std::move(datasetFilePath);
    if (FindSlice(tableId, TableKind::CircuitTemplates) != nullptr)
        MepQbaseUtil::GetInstance()->ReadCircuitTemplateList(m_datasetFilePath, DataSetFilePath::TOLMDDQFilePath,
                                                             m_circuitTemplateList);
}

} // namespace tolm
