#pragma once

#include "TolmDataSet/IProjectSettingMaterial.h"

namespace tolm {

/// A material. A copy has the same identifier, a clone a new one.
class TOLM_DATASET_API ProjectSettingMaterial : public IProjectSettingMaterial {
public:
    static vorn::OwnerPtr<IProjectSettingMaterial> Create();
    ProjectSettingMaterial(const ProjectSettingMaterial&) = default;
    ProjectSettingMaterial& operator=(const ProjectSettingMaterial&) = default;
    ~ProjectSettingMaterial() override;

    vorn::OwnerPtr<IProjectSettingMaterial> Clone() const override;
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
    ProjectSettingMaterial();
    friend struct ObjectMaker;

    wstring m_id;
    wstring m_name;
    MEPDisciplineId m_disciplineId = MEPDisciplineId::Plumbing;
    TolmProjectSettingMEPObjectType m_mepType = TolmProjectSettingMEPObjectType::Pipe;
    __int64 m_createTime = 0;
};

} // namespace tolm
