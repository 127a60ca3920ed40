#pragma once

#include "MepDataSetInterface/RecordBasics.h"
#include "TolmDataSet/IProjectSettingSizeModule.h"

namespace tolm {

/// A size table of any object type. It owns its material and is not copied, only cloned.
class TOLM_DATASET_API ProjectSettingSizeModule : public IProjectSettingSizeModule {
public:
    static vorn::OwnerPtr<IProjectSettingSizeModule> Create();
    ~ProjectSettingSizeModule() override;

    vorn::OwnerPtr<IProjectSettingSizeModule> Clone() const override;
    wstring GetId() const override { return m_id; }
    void SetId(wstring& id) override { m_id = id; }
    wstring GetName() const override { return m_name; }
    void SetName(wstring& name) override { m_name = name; }
    TolmProjectSettingMEPObjectType GetMEPType() const override { return m_mepType; }
    void SetMEPType(TolmProjectSettingMEPObjectType type) override;
    MEPDisciplineId GetDisciplineId() const override { return m_disciplineId; }
    void SetDisciplineId(MEPDisciplineId discipline) override { m_disciplineId = discipline; }
    __int64 GetCreateTime() const override { return m_createTime; }
    void SetCreateTime(__int64 time) override { m_createTime = time; }
    SectionType GetDuctShape() const override { return m_ductShape; }
    void SetDuctShape(SectionType shape) override { m_ductShape = shape; }
    const IProjectSettingMaterial* GetMaterial() const override { return m_material.get(); }
    void SetMaterial(vorn::OwnerPtr<IProjectSettingMaterial> material) override { m_material = std::move(material); }
    double GetRoughness() const override { return m_roughness; }
    void SetRoughness(double roughness) override { m_roughness = roughness; }
    void AddPipeSize(const ProjectSettingPipeSize& size) override { AddRow(m_pipeList, size); }
    const std::vector<ProjectSettingPipeSize>& GetPipeSizeList() const override { return m_pipeList; }
    void DeletePipeSize(int row) override;
    void ClearPipeSizes() override { m_pipeList.clear(); }
    void AddDuctSize(const ProjectSettingDuctSize& size) override { AddRow(m_ductSizeList, size); }
    const std::vector<ProjectSettingDuctSize>& GetDuctSizeList() const override { return m_ductSizeList; }
    void DeleteDuctSize(int row) override;
    void ClearDuctSize() override { m_ductSizeList.clear(); }
    wstring GetCableSpecTypeName() const override { return m_cableSpecTypeName; }
    void SetCableSpecTypeName(wstring& name) override { m_cableSpecTypeName = name; }
    void AddCableSpecification(const ProjectSettingCableSpec& spec) override { AddRow(m_cableSpecList, spec); }
    const std::vector<ProjectSettingCableSpec>& GetCableSpecificationList() const override { return m_cableSpecList; }
    std::map<wstring, int> GetCableSpecificationListOfCurrentTemperature() const override;
    void DeleteCableSpecification(int row) override;
    void ClearCableSpecifications() override { m_cableSpecList.clear(); }
    CableMaterial GetCableMaterial() const override { return m_cableMaterial; }
    void SetCableMaterial(CableMaterial material) override { m_cableMaterial = material; }
    EnvironmentTemperature GetCableEnvironmentTemperature() const override { return m_cableEnvironmentTemperature; }
    void SetCableEnvironmentTemperature(EnvironmentTemperature temperature) override {
        m_cableEnvironmentTemperature = temperature;
    }
    PressureGrade GetPressureGrade() const override { return m_pressureGrade; }
    void SetPressureGrade(PressureGrade grade) override { m_pressureGrade = grade; }
    CableTrayShape GetCableTrayShape() const override { return m_cableTrayShape; }
    void SetCableTrayShape(CableTrayShape shape) override { m_cableTrayShape = shape; }

private:
    ProjectSettingSizeModule();
    friend struct ObjectMaker;

    void CopyFieldsTo(IProjectSettingSizeModule& target) const;
    void CopyListsTo(IProjectSettingSizeModule& target) const;

    wstring m_id;
    wstring m_name;
    TolmProjectSettingMEPObjectType m_mepType = TolmProjectSettingMEPObjectType::Pipe;
    MEPDisciplineId m_disciplineId = MEPDisciplineId::None;
    __int64 m_createTime = 0;
    double m_roughness = 0.0;
    SectionType m_ductShape = SectionType::Rectangular;
    CableTrayShape m_cableTrayShape = CableTrayShape::Trough;
    PressureGrade m_pressureGrade = PressureGrade::Low;
    wstring m_cableSpecTypeName;
    CableMaterial m_cableMaterial = CableMaterial::Copper;
    EnvironmentTemperature m_cableEnvironmentTemperature = EnvironmentTemperature::Celsius35;
    vorn::OwnerPtr<IProjectSettingMaterial> m_material;
    std::vector<ProjectSettingPipeSize> m_pipeList;
    std::vector<ProjectSettingDuctSize> m_ductSizeList;
    std::vector<ProjectSettingCableSpec> m_cableSpecList;
};

} // namespace tolm
