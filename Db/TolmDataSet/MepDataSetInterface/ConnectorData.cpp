#include "Host/Definitions.h"
#include "MepDataSetInterface/RecordBasics.h"
#include "MepDataSetInterface/TableLists.h"
#include "MepDataSetInterface/TableSlices.h"
#include "MepDataSetInterface/TolmDataset_DesignData.h"
#include "MepDatabase/MepQbaseUtil.h"

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

bool ConnectorData::ReadConectionSerieList(wstring datasetFilePath, wstring componentFilePath,
                                           MEPConnectorType connectorType,
                                           RecordList<IProjectSettingConnectionSerie>& list) {
    return MepQbaseUtil::GetInstance()->ReadConectionSerieList(std::move(datasetFilePath),
                                                               DataSetFilePath::TOLMDDQFilePath,
                                                               std::move(componentFilePath), connectorType, list);
}

void ConnectorData::CollectDesignData(wstring datasetFilePath, wstring componentFilePath,
                                      TolmProjectSettingTableId tableId) {
    m_datasetFilePath = std::move(datasetFilePath);
    m_componentFilePath = std::move(componentFilePath);
    if (const TableSlice* slice = FindSlice(tableId, TableKind::Connections))
        ReadConectionSerieList(m_datasetFilePath, m_componentFilePath, slice->connectorType, m_connectionSerieList);
}

} // namespace tolm
