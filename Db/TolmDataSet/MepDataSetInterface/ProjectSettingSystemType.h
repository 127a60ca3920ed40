#pragma once

#include "TolmDataSet/IProjectSettingSystemMaterialSerie.h"
#include "TolmDataSet/IProjectSettingSystemType.h"

namespace tolm {

/// A system type. It owns its series and cable tables; there is no copy of one.
class TOLM_DATASET_API ProjectSettingSystemType : public IProjectSettingSystemType {
public:
    static vorn::OwnerPtr<IProjectSettingSystemType> Create();
    ProjectSettingSystemType(const ProjectSettingSystemType&) = delete;
    ProjectSettingSystemType& operator=(const ProjectSettingSystemType&) = delete;
    ~ProjectSettingSystemType() override;

    wstring GetId() const override { return m_id; }
    void SetId(wstring& id) override { m_id = id; }
    wstring GetName() const override { return m_name; }
    void SetName(wstring& name) override { m_name = name; }
    wstring GetDescription() const override { return m_description; }
    void SetDescription(wstring& description) override { m_description = description; }
    wstring GetCode() const override { return m_code; }
    void SetCode(wstring& code) override { m_code = code; }
    __int64 GetCreateTime() const override { return m_createTime; }
    void SetCreateTime(__int64 time) override { m_createTime = time; }
    MEPDisciplineId GetDisciplineId() const override { return m_disciplineId; }
    void SetDisciplineId(MEPDisciplineId discipline) override { m_disciplineId = discipline; }
    TolmProjectSettingMEPObjectType GetMEPType() const override { return m_mepType; }
    void SetMEPType(TolmProjectSettingMEPObjectType type) override { m_mepType = type; }
    MEPSystemClassification GetClassification() const override { return m_classification; }
    void SetClassification(MEPSystemClassification classification) override { m_classification = classification; }
    void AddSystemMaterialSerie(vorn::OwnerPtr<IProjectSettingMEPMaterialSerie>& serie) override;
    void DeleteSystemMaterialSerie(int index) override;
    void ClearMaterialSerie() override { m_SystemMaterialSerieList.clear(); }
    std::vector<const IProjectSettingMEPMaterialSerie*> GetSystemMaterialSerieList() const override;
    void AddCableSpecType(vorn::OwnerPtr<IProjectSettingSizeModule> cableSizeModule) override;
    void DeleteCableSpecType(wstring name) override { m_cableSpecTypeList.erase(name); }
    void ClearCableSpecTypeList() override { m_cableSpecTypeList.clear(); }
    std::map<wstring, const IProjectSettingSizeModule*> GetCableSpecTypeList() const override;

private:
    ProjectSettingSystemType();
    friend struct ObjectMaker;
    friend struct RecordTestAccess;

    wstring m_id;
    wstring m_name;
    wstring m_description;
    wstring m_code;
    __int64 m_createTime = 0;
    TolmProjectSettingMEPObjectType m_mepType = TolmProjectSettingMEPObjectType::Pipe;
    MEPDisciplineId m_disciplineId = MEPDisciplineId::Plumbing;
    MEPSystemClassification m_classification = MEPSystemClassification::DefaultPipeSystem;
    std::vector<vorn::OwnerPtr<IProjectSettingMEPMaterialSerie>> m_SystemMaterialSerieList;
    std::map<wstring, vorn::OwnerPtr<IProjectSettingSizeModule>> m_cableSpecTypeList;
};

/// The link between a system type and one series.
class TOLM_DATASET_API ProjectSettingSystemMaterialSerie : public IProjectSettingSystemMaterialSerie {
public:
    static vorn::OwnerPtr<IProjectSettingSystemMaterialSerie> Create();
    ~ProjectSettingSystemMaterialSerie() override;

    wstring GetSerieId() const override { return m_serieId; }
    void SetSerieId(wstring& id) override { m_serieId = id; }
    const IProjectSettingMEPMaterialSerie* GetMEPMaterialSerie() const override { return m_serie.get(); }
    void SetMEPMaterialSerie(vorn::OwnerPtr<IProjectSettingMEPMaterialSerie> serie) override {
        m_serie = std::move(serie);
    }

private:
    ProjectSettingSystemMaterialSerie();
    friend struct ObjectMaker;

    wstring m_serieId;
    vorn::OwnerPtr<IProjectSettingMEPMaterialSerie> m_serie;
};

} // namespace tolm
