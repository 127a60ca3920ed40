#include "MepDataSetInterface/AvailableLater.h"
#include "MepDataSetInterface/RecordBasics.h"
#include "MepDataSetInterface/TableLists.h"
#include "MepDataSetInterface/TolmDataset_DesignData.h"

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

void CircuitTemplateData::AddCircuitTemplate(vorn::OwnerPtr<ITolmProjectSettingCircuitTemplate>) {
    VORN_DEBUG_WARN(kAvailableLater);
}

void CircuitTemplateData::AddCircuitTemplateListToDB(std::vector<const ITolmProjectSettingCircuitTemplate*>) {
    VORN_DEBUG_WARN(kAvailableLater);
}

void CircuitTemplateData::DeleteCircuitTemplateList(std::vector<const ITolmProjectSettingCircuitTemplate*>) {
    VORN_DEBUG_WARN(kAvailableLater);
}

void CircuitTemplateData::CollectDesignData(wstring datasetFilePath, TolmProjectSettingTableId) {
    m_datasetFilePath = std::move(datasetFilePath);
}

} // namespace tolm
