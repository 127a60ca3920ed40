#include "MepDataSetInterface/TolmProjectSettingSizeModule.h"

#include "MepDataSetInterface/RecordBasics.h"
#include "Vorn/DebugMessage.h"

namespace tolm {
namespace {

constexpr RowFaults kPipeFaults{L"m_pipeList is empty", L"index row exceeds m_pipeList"};
constexpr RowFaults kDuctFaults{L"m_ductSizeList is empty", L"index row exceeds m_ductSizeList"};
constexpr RowFaults kCableFaults{L"m_cableSpecList is empty", L"index row exceeds m_cableSpecList"};

/// A material with the same identifier, name and object type, and no more; empty when it could not be made.
vorn::OwnerPtr<IProjectSettingMaterial> SameMaterial(const IProjectSettingMaterial& source) {
    auto material = IProjectSettingMaterial::Create();
    if (!material)
        return {};
    wstring id = source.GetId();
    wstring name = source.GetName();
    material->SetId(id);
    material->SetName(name);
    material->SetMEPType(source.GetMEPType());
    return material;
}

} // namespace

IProjectSettingSizeModule::~IProjectSettingSizeModule() = default;

vorn::OwnerPtr<IProjectSettingSizeModule> IProjectSettingSizeModule::Create() {
    return ProjectSettingSizeModule::Create();
}

vorn::OwnerPtr<IProjectSettingSizeModule> ProjectSettingSizeModule::Create() {
    return ObjectMaker::Create<IProjectSettingSizeModule, ProjectSettingSizeModule>();
}

ProjectSettingSizeModule::ProjectSettingSizeModule() : m_id(NewRecordId()) {}

ProjectSettingSizeModule::~ProjectSettingSizeModule() = default;

vorn::OwnerPtr<IProjectSettingSizeModule> ProjectSettingSizeModule::Clone() const {
    auto retSizeModule = IProjectSettingSizeModule::Create();
    if (!retSizeModule) {
        VORN_DEBUG_WARN(L"retSizeModule为空");
        return {};
    }
    CopyFieldsTo(*retSizeModule);
    if (m_material) {
        auto material = SameMaterial(*m_material);
        if (!material) {
            VORN_DEBUG_WARN(L"material为空");
            return {};
        }
        retSizeModule->SetMaterial(std::move(material));
    }
    CopyListsTo(*retSizeModule);
    return retSizeModule;
}

// The cable environment temperature stays behind: a clone starts at the default.
void ProjectSettingSizeModule::CopyFieldsTo(IProjectSettingSizeModule& target) const {
    wstring name = m_name;
    wstring cableSpecTypeName = m_cableSpecTypeName;
    target.SetName(name);
    target.SetMEPType(m_mepType);
    target.SetDisciplineId(m_disciplineId);
    target.SetCreateTime(m_createTime);
    target.SetRoughness(m_roughness);
    target.SetDuctShape(m_ductShape);
    target.SetCableTrayShape(m_cableTrayShape);
    target.SetPressureGrade(m_pressureGrade);
    target.SetCableSpecTypeName(cableSpecTypeName);
    target.SetCableMaterial(m_cableMaterial);
}

void ProjectSettingSizeModule::CopyListsTo(IProjectSettingSizeModule& target) const {
    for (const auto& size : m_pipeList)
        target.AddPipeSize(size);
    for (const auto& size : m_ductSizeList)
        target.AddDuctSize(size);
    for (const auto& spec : m_cableSpecList)
        target.AddCableSpecification(spec);
}

void ProjectSettingSizeModule::SetMEPType(TolmProjectSettingMEPObjectType type) {
    m_mepType = type;
    switch (type) {
    case TolmProjectSettingMEPObjectType::CableTray:
    case TolmProjectSettingMEPObjectType::Conduit:
    case TolmProjectSettingMEPObjectType::Wire:
        SetDisciplineId(MEPDisciplineId::Electrical);
        break;
    case TolmProjectSettingMEPObjectType::Duct:
        SetDisciplineId(MEPDisciplineId::HVAC);
        break;
    default:
        break;
    }
}

std::map<wstring, int> ProjectSettingSizeModule::GetCableSpecificationListOfCurrentTemperature() const {
    std::map<wstring, int> currents;
    for (const auto& spec : m_cableSpecList) {
        if (spec.temperature == m_cableEnvironmentTemperature)
            currents.emplace(spec.area, spec.current);
    }
    return currents;
}

void ProjectSettingSizeModule::DeletePipeSize(int row) {
    if (const wchar_t* fault = EraseRow(m_pipeList, row, kPipeFaults))
        VORN_DEBUG_WARN(fault);
}

void ProjectSettingSizeModule::DeleteDuctSize(int row) {
    if (const wchar_t* fault = EraseRow(m_ductSizeList, row, kDuctFaults))
        VORN_DEBUG_WARN(fault);
}

void ProjectSettingSizeModule::DeleteCableSpecification(int row) {
    if (const wchar_t* fault = EraseRow(m_cableSpecList, row, kCableFaults))
        VORN_DEBUG_WARN(fault);
}

} // namespace tolm
