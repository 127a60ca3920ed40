#include "MepDataSetInterface/RecordBasics.h"
#include "MepDataSetInterface/TableLists.h"
#include "MepDataSetInterface/TolmDataset_DesignData.h"

namespace tolm {

IConnectorData::~IConnectorData() = default;

vorn::OwnerPtr<IConnectorData> ConnectorData::Create() {
    return ObjectMaker::Create<IConnectorData, ConnectorData>();
}

ConnectorData::~ConnectorData() = default;

void ConnectorData::reset() {
    m_connectionSerieList.clear();
}

std::vector<const IProjectSettingConnectionSerie*> ConnectorData::GetConnectionSerieList() const {
    return Lend(m_connectionSerieList, TOLM_CALL_SITE, L"m_connectionSerieList[i]为空");
}

void ConnectorData::CollectDesignData(wstring datasetFilePath, wstring componentFilePath, TolmProjectSettingTableId) {
    m_datasetFilePath = std::move(datasetFilePath);
    m_componentFilePath = std::move(componentFilePath);
}

} // namespace tolm
