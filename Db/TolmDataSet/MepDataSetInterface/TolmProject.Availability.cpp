#include "MepDataSetInterface/TolmProject.h"
#include "Host/Definitions.h"
#include "MepDataSetInterface/AvailableRecords.h"
#include "MepDatabase/MepQbaseUtil.h"

#include <algorithm>

namespace tolm {
namespace {

/// The connector types that an object type is offered.
struct OfferedConnector {
    TolmProjectSettingMEPObjectType objectType;
    MEPConnectorType connectorType;
};
constexpr OfferedConnector kOfferedConnectors[] = {
    {TolmProjectSettingMEPObjectType::Pipe, MEPConnectorType::PipeThreaded},
    {TolmProjectSettingMEPObjectType::Pipe, MEPConnectorType::PipeWelded},
    {TolmProjectSettingMEPObjectType::Pipe, MEPConnectorType::PipeFlanged},
    {TolmProjectSettingMEPObjectType::Pipe, MEPConnectorType::PipeGrooved},
    {TolmProjectSettingMEPObjectType::Pipe, MEPConnectorType::PipeSocket},
    {TolmProjectSettingMEPObjectType::Duct, MEPConnectorType::Duct},
    {TolmProjectSettingMEPObjectType::CableTray, MEPConnectorType::CableTray},
    {TolmProjectSettingMEPObjectType::Conduit, MEPConnectorType::Conduit},
};

template <class Row> std::vector<float> Column(const std::vector<Row>& rows, float Row::*field) {
    std::vector<float> values(rows.size());
    std::ranges::transform(rows, values.begin(), field);
    return values;
}

} // namespace

IdMap<IProjectSettingMaterial> TolmDataset::GetAvailableMaterialList(TolmProjectSettingMEPObjectType objectType,
                                                                     MEPDisciplineId discipline) {
    RecordList<IProjectSettingMaterial> list;
    MepQbaseUtil::GetInstance()->ReadMaterialList(m_datasetFilePath, DataSetFilePath::TOLMDDQFilePath, objectType,
                                                  discipline, list);
    return ById(std::move(list), TOLM_CALL_SITE, L"materialList[i]为空");
}

IdMap<IProjectSettingSizeModule> TolmDataset::GetAvailableSizeModuleList(TolmProjectSettingMEPObjectType objectType,
                                                                         MEPDisciplineId discipline) {
    RecordList<IProjectSettingSizeModule> list;
    MepQbaseUtil::GetInstance()->ReadSizeModuleList(m_datasetFilePath, DataSetFilePath::TOLMDDQFilePath, objectType,
                                                    discipline, list);
    return ById(std::move(list), TOLM_CALL_SITE, L"sizeList[i]为空");
}

vorn::OwnerPtr<IProjectSettingSizeModule> TolmDataset::GetSizeModule(TolmProjectSettingMEPObjectType objectType,
                                                                     MEPDisciplineId discipline, wstring serieId,
                                                                     SectionType sectionType) {
    const wstring templatePath = DataSetFilePath::TOLMDDQFilePath;
    vorn::OwnerPtr<IProjectSettingSizeModule> found;
    if (!serieId.empty()) {
        MepQbaseUtil::GetInstance()->ReadSizeModuleList(m_datasetFilePath, templatePath, objectType, serieId, found);
    } else {
        RecordList<IProjectSettingSizeModule> list;
        MepQbaseUtil::GetInstance()->ReadSizeModuleList(m_datasetFilePath, templatePath, objectType, discipline, list);
        found = TakeFirst(list, sectionType, TOLM_CALL_SITE);
    }
    return found ? std::move(found) : IProjectSettingSizeModule::Create();
}

std::vector<float> TolmDataset::GetAvailableSizeList(TolmProjectSettingMEPObjectType objectType,
                                                     MEPDisciplineId discipline, wstring serieId,
                                                     SectionType sectionType) {
    const auto module = GetSizeModule(objectType, discipline, std::move(serieId), sectionType);
    if (!module)
        return {};
    switch (module->GetMEPType()) {
    case TolmProjectSettingMEPObjectType::Pipe:
    case TolmProjectSettingMEPObjectType::Conduit:
        return Column(module->GetPipeSizeList(), &ProjectSettingPipeSize::nominalDiameter);
    case TolmProjectSettingMEPObjectType::Duct:
    case TolmProjectSettingMEPObjectType::CableTray:
        return Column(module->GetDuctSizeList(), &ProjectSettingDuctSize::size);
    default:
        return {};
    }
}

const std::map<MEPSystemClassification, wstring>&
TolmDataset::GetAvailableSystemClassificationList(MEPDisciplineId discipline) {
    return MEPSystemClassificationDefinition::GetAvailableSystemClassificationList(discipline);
}

IdMap<IProjectSettingMEPMaterialSerie>
TolmDataset::GetAvailableMEPMaterialSerieList(TolmProjectSettingMEPObjectType objectType, MEPDisciplineId discipline) {
    RecordList<IProjectSettingMEPMaterialSerie> list;
    MepQbaseUtil::GetInstance()->ReadMEPMaterialSerieList(m_datasetFilePath, DataSetFilePath::TOLMDDQFilePath,
                                                          m_componentFilePath, objectType, discipline, list);
    return ById(std::move(list), TOLM_CALL_SITE, L"serieList[i]为空");
}

bool TolmDataset::GetAvailableConnectionList(TolmProjectSettingMEPObjectType objectType,
                                             std::map<MEPConnectorType, wstring>& connectorTypes,
                                             IdMap<IProjectSettingConnectionSerie>& series) {
    const std::map<MEPConnectorType, wstring> names = MEPConnectorTypeDefinition::ConnectorTypeNameList;
    for (const auto& offered : kOfferedConnectors) {
        const auto known = names.find(offered.connectorType);
        if (offered.objectType == objectType && known != names.end())
            connectorTypes.insert(*known);
    }
    MepQbaseUtil::GetInstance()->ReadConectionSerieList(m_datasetFilePath, DataSetFilePath::TOLMDDQFilePath,
                                                        m_componentFilePath, objectType, connectorTypes, series);
    return !series.empty();
}

void TolmDataset::GetSystemTypeNameIDs(std::vector<std::map<wstring, wstring>>& result) {
    // Plumbing pipes, ducts, HVAC pipes, electrical systems, cable trays.
    const std::vector<int> disciplines{2, 1, 1, 3, 3};
    const std::vector<int> objectTypes{1, 2, 1, 6, 3};
    MepQbaseUtil::GetInstance()->ReadSystemTypeNameIds(m_datasetFilePath, DataSetFilePath::TOLMDDQFilePath, disciplines,
                                                       objectTypes, result);
}

bool TolmDataset::GetMEPSerieRecordGuidListOfSystemType(std::vector<wstring> systemTypeIds,
                                                        std::map<wstring, std::vector<wstring>>& result) {
    return MepQbaseUtil::GetInstance()->ReadMEPSerieRecordGuidListOfSystemType(
        m_datasetFilePath, DataSetFilePath::TOLMDDQFilePath, std::move(systemTypeIds), result);
}

} // namespace tolm
