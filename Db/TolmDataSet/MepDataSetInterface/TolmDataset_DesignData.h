#pragma once

#include "TolmDataSet/ICircuitTemplateData.h"
#include "TolmDataSet/IConnectorData.h"
#include "TolmDataSet/IMEPMaterialSerieData.h"
#include "TolmDataSet/IMaterialData.h"
#include "TolmDataSet/ISizeModuleData.h"
#include "TolmDataSet/ISystemTypeData.h"
#include "TolmDataSet/TolmBaseDesignData.h"

#include <vector>

/// The six tables behind their interfaces. Each is made by its `Create` alone; an empty owner tells that there was no
/// memory for it.
namespace tolm {

class TOLM_DATASET_API MaterialData : public TolmBaseDesignData, public IMaterialData {
public:
    static vorn::OwnerPtr<IMaterialData> Create();
    ~MaterialData() override;

    void reset() override;
    std::vector<const IProjectSettingMaterial*> GetMaterialList() const override;
    void AddMaterial(vorn::OwnerPtr<IProjectSettingMaterial> pNewMaterial) override;
    void AddMaterialToDB(const IProjectSettingMaterial* pMaterial) override;
    void DeleteMaterialList(std::vector<const IProjectSettingMaterial*> materialList) override;
    void CollectDesignData(wstring datasetFilePath, wstring componentFilePath,
                           TolmProjectSettingTableId tableId) override;

private:
    MaterialData() = default;
    friend struct ObjectMaker;
    friend struct TableTestAccess;

    std::vector<vorn::OwnerPtr<IProjectSettingMaterial>> m_materialList;
};

class TOLM_DATASET_API SizeModuleData : public TolmBaseDesignData, public ISizeModuleData {
public:
    static vorn::OwnerPtr<ISizeModuleData> Create();
    ~SizeModuleData() override;

    void reset() override;
    std::vector<const IProjectSettingSizeModule*> GetSizeList() const override;
    void AddSizeModule(vorn::OwnerPtr<IProjectSettingSizeModule> pNewSize) override;
    void AddSizeModuleToDB(const IProjectSettingSizeModule* pSize) override;
    void DeleteSizeModuleList(std::vector<const IProjectSettingSizeModule*> sizeModuleList) override;
    bool IsTheSizeModuleReferred(const IProjectSettingSizeModule* pSizeModule, wstring& referencingName) const override;
    void CollectDesignData(wstring datasetFilePath, wstring componentFilePath,
                           TolmProjectSettingTableId tableId) override;

private:
    SizeModuleData() = default;
    friend struct ObjectMaker;
    friend struct TableTestAccess;

    std::vector<vorn::OwnerPtr<IProjectSettingSizeModule>> m_sizeModuleList;
};

class TOLM_DATASET_API ConnectorData : public TolmBaseDesignData, public IConnectorData {
public:
    static vorn::OwnerPtr<IConnectorData> Create();
    ~ConnectorData() override;

    void reset() override;
    std::vector<const IProjectSettingConnectionSerie*> GetConnectionSerieList() const override;
    void CollectDesignData(wstring datasetFilePath, wstring componentFilePath,
                           TolmProjectSettingTableId tableId) override;

private:
    ConnectorData() = default;
    friend struct ObjectMaker;
    friend struct TableTestAccess;

    bool ReadConectionSerieList(wstring datasetFilePath, wstring componentFilePath, MEPConnectorType connectorType,
                                std::vector<vorn::OwnerPtr<IProjectSettingConnectionSerie>>& list);

    std::vector<vorn::OwnerPtr<IProjectSettingConnectionSerie>> m_connectionSerieList;
};

class TOLM_DATASET_API SystemTypeData : public TolmBaseDesignData, public ISystemTypeData {
public:
    static vorn::OwnerPtr<ISystemTypeData> Create();
    ~SystemTypeData() override;

    void reset() override;
    std::vector<const IProjectSettingSystemType*> GetSystemTypeList() const override;
    void AddSystemType(vorn::OwnerPtr<IProjectSettingSystemType> pSystemType) override;
    void GetAndAddSystemTypeById(wstring id) override;
    void AddSystemTypeToDB(const IProjectSettingSystemType* pSystemType) override;
    void DeleteSystemTypeList(std::vector<const IProjectSettingSystemType*> systemTypeList) override;
    void CollectDesignData(wstring datasetFilePath, wstring componentFilePath,
                           TolmProjectSettingTableId tableId) override;

private:
    SystemTypeData() = default;
    friend struct ObjectMaker;
    friend struct TableTestAccess;

    bool ReadSystemTypeList(wstring datasetFilePath, wstring componentFilePath, MEPDisciplineId discipline,
                            TolmProjectSettingMEPObjectType objectType,
                            std::vector<vorn::OwnerPtr<IProjectSettingSystemType>>& list);

    std::vector<vorn::OwnerPtr<IProjectSettingSystemType>> m_SystemTypeList;
};

class TOLM_DATASET_API MEPMaterialSerieData : public TolmBaseDesignData, public IMEPMaterialSerieData {
public:
    static vorn::OwnerPtr<IMEPMaterialSerieData> Create();
    ~MEPMaterialSerieData() override;

    void reset() override;
    std::vector<const IProjectSettingMEPMaterialSerie*> GetSerieList() const override;
    void GetAndAddSerieById(wstring id) override;
    void AddSerie(vorn::OwnerPtr<IProjectSettingMEPMaterialSerie> pSerie) override;
    void AddSerieToDB(const IProjectSettingMEPMaterialSerie* pSerie) override;
    void DeleteSerieList(std::vector<const IProjectSettingMEPMaterialSerie*> serieList) override;
    std::vector<const IProjectSettingMEPMaterialSerieGroup*> GetSerieGroupList() const override;
    void AddSerieGroup(vorn::OwnerPtr<IProjectSettingMEPMaterialSerieGroup> pGroup) override;
    void DeleteSerieGroupList(std::vector<const IProjectSettingMEPMaterialSerieGroup*> groupList) override;
    bool IsTheMEPMaterialSeireReferred(const IProjectSettingMEPMaterialSerie* pSerie,
                                       wstring& referencingName) const override;
    void CollectDesignData(wstring datasetFilePath, wstring componentFilePath,
                           TolmProjectSettingTableId tableId) override;

private:
    MEPMaterialSerieData() = default;
    friend struct ObjectMaker;
    friend struct TableTestAccess;

    bool ReadSerieList(wstring datasetFilePath, wstring componentFilePath, TolmProjectSettingMEPObjectType objectType,
                       MEPDisciplineId discipline, std::vector<vorn::OwnerPtr<IProjectSettingMEPMaterialSerie>>& list);
    bool ReadSerieGroupList(wstring datasetFilePath, TolmProjectSettingMEPObjectType objectType,
                            MEPDisciplineId discipline,
                            std::vector<vorn::OwnerPtr<IProjectSettingMEPMaterialSerieGroup>>& list);

    std::vector<vorn::OwnerPtr<IProjectSettingMEPMaterialSerie>> m_serieList;
    std::vector<vorn::OwnerPtr<IProjectSettingMEPMaterialSerieGroup>> m_serieGroupList;
};

class TOLM_DATASET_API CircuitTemplateData : public TolmBaseDesignData, public ICircuitTemplateData {
public:
    static vorn::OwnerPtr<ICircuitTemplateData> Create();
    ~CircuitTemplateData() override;

    void reset() override;
    std::vector<const ITolmProjectSettingCircuitTemplate*> GetCircuitTemplateList() const override;
    void AddCircuitTemplate(vorn::OwnerPtr<ITolmProjectSettingCircuitTemplate> pCircuitTemplate) override;
    void
    AddCircuitTemplateListToDB(std::vector<const ITolmProjectSettingCircuitTemplate*> pCircuitTemplateList) override;
    void
    DeleteCircuitTemplateList(std::vector<const ITolmProjectSettingCircuitTemplate*> pCircuitTemplateList) override;
    void CollectDesignData(wstring datasetFilePath, TolmProjectSettingTableId tableId) override;

private:
    CircuitTemplateData() = default;
    friend struct ObjectMaker;
    friend struct TableTestAccess;

    std::vector<vorn::OwnerPtr<ITolmProjectSettingCircuitTemplate>> m_circuitTemplateList;
};

} // namespace tolm
