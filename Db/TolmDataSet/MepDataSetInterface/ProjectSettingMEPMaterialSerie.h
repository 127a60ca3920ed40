#pragma once

#include "TolmDataSet/IProjectSettingMEPMaterialSerie.h"
#include "Vorn/Constants.h"

namespace tolm {

/// The group of a material series. A copy has the same identifier, a clone a new one.
class TOLM_DATASET_API ProjectSettingMEPMaterialSerieGroup : public IProjectSettingMEPMaterialSerieGroup {
public:
    static vorn::OwnerPtr<IProjectSettingMEPMaterialSerieGroup> Create();
    ProjectSettingMEPMaterialSerieGroup(const ProjectSettingMEPMaterialSerieGroup&) = default;
    ProjectSettingMEPMaterialSerieGroup& operator=(const ProjectSettingMEPMaterialSerieGroup&) = default;
    ~ProjectSettingMEPMaterialSerieGroup() override;

    vorn::OwnerPtr<IProjectSettingMEPMaterialSerieGroup> Clone() const override;
    wstring GetId() const override { return m_id; }
    void SetId(wstring& id) override { m_id = id; }
    wstring GetName() const override { return m_name; }
    void SetName(wstring& name) override { m_name = name; }
    TolmProjectSettingMEPObjectType GetMEPType() const override { return m_mepType; }
    void SetMEPType(TolmProjectSettingMEPObjectType type) override { m_mepType = type; }
    MEPDisciplineId GetDisciplineId() const override { return m_disciplineId; }
    void SetDisciplineId(MEPDisciplineId discipline) override { m_disciplineId = discipline; }
    __int64 GetCreateTime() const override { return m_createTime; }
    void SetCreateTime(__int64 time) override { m_createTime = time; }

private:
    ProjectSettingMEPMaterialSerieGroup();
    friend struct ObjectMaker;

    wstring m_id;
    wstring m_name;
    TolmProjectSettingMEPObjectType m_mepType = TolmProjectSettingMEPObjectType::Pipe;
    MEPDisciplineId m_disciplineId = MEPDisciplineId::Plumbing;
    __int64 m_createTime = 0;
};

/// A material series. It owns its group, its size table and its connection series, and is not copied, only cloned.
class TOLM_DATASET_API ProjectSettingMEPMaterialSerie : public IProjectSettingMEPMaterialSerie {
public:
    static vorn::OwnerPtr<IProjectSettingMEPMaterialSerie> Create();
    ~ProjectSettingMEPMaterialSerie() override;

    vorn::OwnerPtr<IProjectSettingMEPMaterialSerie> Clone() const override;
    wstring GetId() const override { return m_id; }
    void SetId(wstring& id) override { m_id = id; }
    wstring GetName() const override { return m_name; }
    void SetName(wstring& name) override { m_name = name; }
    const IProjectSettingMEPMaterialSerieGroup* GetSerieGroup() const override { return m_serieGroup.get(); }
    void SetSerieGroup(vorn::OwnerPtr<IProjectSettingMEPMaterialSerieGroup> group) override {
        m_serieGroup = std::move(group);
    }
    CableTrayShape GetTrayShape() const override;
    SectionType GetDuctShape() const override;
    PreferredJunctionType GetJunctionType() const override { return m_junctionType; }
    void SetJunctionType(PreferredJunctionType type) override { m_junctionType = type; }
    TolmProjectSettingMEPObjectType GetMEPType() const override { return m_mepType; }
    void SetMEPType(TolmProjectSettingMEPObjectType type) override { m_mepType = type; }
    MEPDisciplineId GetDisciplineId() const override { return m_disciplineId; }
    void SetDisciplineId(MEPDisciplineId discipline) override { m_disciplineId = discipline; }
    __int64 GetCreateTime() const override { return m_createTime; }
    void SetCreateTime(__int64 time) override { m_createTime = time; }
    const IProjectSettingSizeModule* GetSizeModule() const override { return m_sizeModule.get(); }
    void SetSizeModule(vorn::OwnerPtr<IProjectSettingSizeModule>& sizeModule) override {
        m_sizeModule = std::move(sizeModule);
    }
    double GetMinSize() const override { return m_minSize; }
    void SetMinSize(double size) override { m_minSize = size; }
    double GetMaxSize() const override { return m_maxSize; }
    void SetMaxSize(double size) override { m_maxSize = size; }
    void SetConnectionSerieId(wstring& id) override;
    vorn::OwnerPtr<IProjectSettingConnectionSerie> CloneConnectionSerie() const override;
    const IProjectSettingConnectionSerie* GetConnectionSerie() const override { return m_connectionSerie.get(); }
    void SetConnectionSerie(vorn::OwnerPtr<IProjectSettingConnectionSerie>& connectionSerie) override {
        m_connectionSerie = std::move(connectionSerie);
    }

private:
    ProjectSettingMEPMaterialSerie();
    friend struct ObjectMaker;

    void CopyFieldsTo(IProjectSettingMEPMaterialSerie& target) const;

    wstring m_id;
    wstring m_name;
    PreferredJunctionType m_junctionType = PreferredJunctionType::Tee;
    double m_minSize = 0.0;
    double m_maxSize = vorn::Constants::MAX_MODEL_SIZE;
    TolmProjectSettingMEPObjectType m_mepType = TolmProjectSettingMEPObjectType::Pipe;
    MEPDisciplineId m_disciplineId = MEPDisciplineId::Plumbing;
    __int64 m_createTime = 0;
    vorn::OwnerPtr<IProjectSettingMEPMaterialSerieGroup> m_serieGroup;
    vorn::OwnerPtr<IProjectSettingSizeModule> m_sizeModule;
    vorn::OwnerPtr<IProjectSettingConnectionSerie> m_connectionSerie;
};

} // namespace tolm
