#include "MepDataSetInterface/TolmProjectSettingMaterial.h"

#include "MepDataSetInterface/RecordBasics.h"
#include "Vorn/DebugMessage.h"

namespace tolm {

IProjectSettingMaterial::~IProjectSettingMaterial() = default;

vorn::OwnerPtr<IProjectSettingMaterial> IProjectSettingMaterial::Create() {
    return ProjectSettingMaterial::Create();
}

vorn::OwnerPtr<IProjectSettingMaterial> ProjectSettingMaterial::Create() {
    return ObjectMaker::Create<IProjectSettingMaterial, ProjectSettingMaterial>();
}

ProjectSettingMaterial::ProjectSettingMaterial() : m_id(NewRecordId()) {}

ProjectSettingMaterial::~ProjectSettingMaterial() = default;

vorn::OwnerPtr<IProjectSettingMaterial> ProjectSettingMaterial::Clone() const {
    auto retMaterial = IProjectSettingMaterial::Create();
    if (!retMaterial) {
        VORN_DEBUG_WARN(L"retMaterial为空");
        return {};
    }
    wstring name = m_name;
    retMaterial->SetMEPType(m_mepType);
    retMaterial->SetDisciplineId(m_disciplineId);
    retMaterial->SetName(name);
    retMaterial->SetCreateTime(m_createTime);
    return retMaterial;
}

} // namespace tolm
