#pragma once

#include "TolmDataSet/ITolmDataset.h"

namespace tolm {

enum class TableKind;
struct TableSlice;

/// The dataset: six tables and four paths, and the operations on them.
class TOLM_DATASET_API TolmDataset : public ITolmDataset {
public:
    /// An empty owner when there is no memory for it.
    static vorn::OwnerPtr<ITolmDataset> Create(wstring datasetFilePath, wstring componentFilePath,
                                               wstring combinedProductFilePath, wstring binaryFileFolder);
    ~TolmDataset() override;
    TolmDataset(const TolmDataset&) = delete;
    TolmDataset& operator=(const TolmDataset&) = delete;

    wstring GetDatasetFilePath() const override { return m_datasetFilePath; }
    void ResetPathAndResetTables(wstring datasetFilePath, wstring componentFilePath, wstring combinedProductFilePath,
                                 wstring binaryFileFolder) override;
    void ResetDataTables() override;
    void CollectData(bool flag, const std::vector<TolmProjectSettingTableId>& tableIds) override;
    bool ReadDisciplineList(IdMap<ITolmDisciplineInfo>& disciplines) override;
    const ISystemTypeData* GetSystemTypeData(TolmProjectSettingTableId tableId) override;
    const ISystemTypeData* GetSystemTypeData() override { return m_systemData.get(); }
    const IConnectorData* GetConnectionSerieData(TolmProjectSettingTableId tableId) override;
    const IConnectorData* GetConnectionSerieData() override { return m_ConnectorData.get(); }
    const ISizeModuleData* GetSizeModuleData(TolmProjectSettingTableId tableId) override;
    const ISizeModuleData* GetSizeModuleData() override { return m_sizeData.get(); }
    const IMaterialData* GetMaterialData(TolmProjectSettingTableId tableId) override;
    const IMaterialData* GetMaterialData() override { return m_materialData.get(); }
    const IMEPMaterialSerieData* GetMEPMaterialSerieData(TolmProjectSettingTableId tableId) override;
    const IMEPMaterialSerieData* GetMEPMaterialSerieData() override { return m_MEPmaterialSerieData.get(); }
    const ICircuitTemplateData* GetCircuitTemplateData() override { return m_circuitTemplateData.get(); }

    void GetSystemTypeNameIDs(std::vector<std::map<wstring, wstring>>& result) override;
    bool GetMEPSerieRecordGuidListOfSystemType(std::vector<wstring> systemTypeIds,
                                               std::map<wstring, std::vector<wstring>>& result) override;
    IdMap<IProjectSettingMEPMaterialSerie> GetAvailableMEPMaterialSerieList(TolmProjectSettingMEPObjectType objectType,
                                                                            MEPDisciplineId discipline) override;
    IdMap<IProjectSettingMaterial> GetAvailableMaterialList(TolmProjectSettingMEPObjectType objectType,
                                                            MEPDisciplineId discipline) override;
    std::vector<float> GetAvailableSizeList(TolmProjectSettingMEPObjectType objectType, MEPDisciplineId discipline,
                                            wstring serieId, SectionType sectionType) override;
    bool GetAvailableConnectionList(TolmProjectSettingMEPObjectType objectType,
                                    std::map<MEPConnectorType, wstring>& connectorTypes,
                                    IdMap<IProjectSettingConnectionSerie>& series) override;
    vorn::OwnerPtr<IProjectSettingSizeModule> GetSizeModule(TolmProjectSettingMEPObjectType objectType,
                                                            MEPDisciplineId discipline, wstring serieId,
                                                            SectionType sectionType) override;
    IdMap<IProjectSettingSizeModule> GetAvailableSizeModuleList(TolmProjectSettingMEPObjectType objectType,
                                                                MEPDisciplineId discipline) override;
    const std::map<MEPSystemClassification, wstring>&
    GetAvailableSystemClassificationList(MEPDisciplineId discipline) override;

    std::vector<vorn::OwnerPtr<ITolmProjectSettingComponent>>
    GetProjectProductList(wstring categoryCode, std::map<wstring, wstring>& conditions, bool flag) override;
    std::map<wstring, std::vector<vorn::OwnerPtr<ITolmProjectSettingComponent>>>
    GetProjectProductList(std::vector<wstring> categoryCodes) override;
    std::map<int, vorn::OwnerPtr<ITolmProjectSettingComponent>>
    GetOneProjectProduct(const ITolmCategoryInfo* category, __int64 id, std::vector<int> numbers) override;

    bool SendModifiedDataToCloud(bool flag, vorn::IProgressReporter* reporter) override;
    bool RemoveCombinedComponents(wstring localKey, wstring targetId, std::vector<wstring> ids) override;
    bool SyncDataFromCloud(bool flag, vorn::IProgressReporter* reporter, RecoverDataInfo* recoverInfo) override;
    bool AddCombinedComponents(wstring targetId, std::vector<TolmCombinedProduct> products) override;
    CompareVersionResult CompareCloudVersion(wstring& projectId, int& cloudVersion, int& localVersion,
                                             wstring& timePoint) override;
    bool MergeDataAndSendModifiedData(wstring projectId, vorn::IProgressReporter* reporter, int& cloudVersion,
                                      int& localVersion) override;
    int GetCloudVersion(wstring projectId) override;
    bool SetLocalVersion(int version) override;
    wstring GetLastUpdateTimePointString() override;
    wstring SetLastUpdateTimePoint() override;
    bool ReplaceFittingComponentId(std::map<wstring, wstring> idMap) override;
    bool UpdateAllComponentId(std::map<wstring, wstring>& componentIds,
                              std::map<wstring, wstring>& componentTypeIds) override;
    bool ApplyDefaultProjectSettingTemplate(const wstring& projectId) override;
    bool SendUpdateSettingDataInfo(const std::vector<wstring>& ids, int kind) override;

private:
    TolmDataset(wstring datasetFilePath, wstring componentFilePath, wstring combinedProductFilePath,
                wstring binaryFileFolder);
    friend struct ObjectMaker;
    friend struct TolmDatasetTestAccess;

    /// The version in the file's header; -1 without one.
    int HeaderVersion() const;
    /// Calls `use` with the owner of the table.
    template <class Use> auto WithTable(TableKind table, const Use& use);
    bool HasTable(TableKind table);
    void CollectSlice(const TableSlice& slice);
    /// True when the id is one of the table's, which is then collected.
    bool CollectForGetter(TolmProjectSettingTableId tableId, TableKind table);

    vorn::OwnerPtr<ISystemTypeData> m_systemData;
    vorn::OwnerPtr<IConnectorData> m_ConnectorData;
    vorn::OwnerPtr<ISizeModuleData> m_sizeData;
    vorn::OwnerPtr<IMaterialData> m_materialData;
    vorn::OwnerPtr<IMEPMaterialSerieData> m_MEPmaterialSerieData;
    vorn::OwnerPtr<ICircuitTemplateData> m_circuitTemplateData;
    wstring m_datasetFilePath;
    wstring m_componentFilePath;
    wstring m_binaryFileFolder;
    wstring m_combinedProductFilePath;
};

} // namespace tolm
