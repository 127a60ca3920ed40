#include "MepDataSetInterface/ProjectSettingMEPMaterialSerie.h"

#include "MepDataSetInterface/RecordBasics.h"
#include "Vorn/DebugMessage.h"

namespace tolm {
namespace {

/// A clone that keeps the identifier; empty when none could be made.
template <class Record> vorn::OwnerPtr<Record> CloneWithSameId(const Record& source) {
    auto clone = source.Clone();
    if (clone) {
        wstring id = source.GetId();
        clone->SetId(id);
    }
    return clone;
}

} // namespace

IProjectSettingMEPMaterialSerieGroup::~IProjectSettingMEPMaterialSerieGroup() = default;
IProjectSettingMEPMaterialSerie::~IProjectSettingMEPMaterialSerie() = default;

vorn::OwnerPtr<IProjectSettingMEPMaterialSerieGroup> IProjectSettingMEPMaterialSerieGroup::Create() {
    return ProjectSettingMEPMaterialSerieGroup::Create();
}

vorn::OwnerPtr<IProjectSettingMEPMaterialSerieGroup> ProjectSettingMEPMaterialSerieGroup::Create() {
    return ObjectMaker::Create<IProjectSettingMEPMaterialSerieGroup, ProjectSettingMEPMaterialSerieGroup>();
}

ProjectSettingMEPMaterialSerieGroup::ProjectSettingMEPMaterialSerieGroup() : m_id(NewRecordId()) {}

ProjectSettingMEPMaterialSerieGroup::~ProjectSettingMEPMaterialSerieGroup() = default;

vorn::OwnerPtr<IProjectSettingMEPMaterialSerieGroup> ProjectSettingMEPMaterialSerieGroup::Clone() const {
    auto retGroup = IProjectSettingMEPMaterialSerieGroup::Create();
    if (!retGroup) {
        VORN_DEBUG_WARN(L"retGroup为空");
        return {};
    }
    wstring name = m_name;
    retGroup->SetName(name);
    retGroup->SetMEPType(m_mepType);
    retGroup->SetDisciplineId(m_disciplineId);
    retGroup->SetCreateTime(m_createTime);
    return retGroup;
}

vorn::OwnerPtr<IProjectSettingMEPMaterialSerie> IProjectSettingMEPMaterialSerie::Create() {
    return ProjectSettingMEPMaterialSerie::Create();
}

vorn::OwnerPtr<IProjectSettingMEPMaterialSerie> ProjectSettingMEPMaterialSerie::Create() {
    return ObjectMaker::Create<IProjectSettingMEPMaterialSerie, ProjectSettingMEPMaterialSerie>();
}

ProjectSettingMEPMaterialSerie::ProjectSettingMEPMaterialSerie() : m_id(NewRecordId()) {}

ProjectSettingMEPMaterialSerie::~ProjectSettingMEPMaterialSerie() = default;

vorn::OwnerPtr<IProjectSettingMEPMaterialSerie> ProjectSettingMEPMaterialSerie::Clone() const {
    auto retSerie = IProjectSettingMEPMaterialSerie::Create();
    if (!retSerie) {
        VORN_DEBUG_WARN(L"retSerie为空");
        return {};
    }
    CopyFieldsTo(*retSerie);
    if (m_serieGroup) {
        auto group = CloneWithSameId(*m_serieGroup);
        if (!group) {
            VORN_DEBUG_WARN(L"group为空");
            return {};
        }
        retSerie->SetSerieGroup(std::move(group));
    }
    if (m_sizeModule) {
        auto sizeModule = CloneWithSameId(*m_sizeModule);
        if (!sizeModule) {
            VORN_DEBUG_WARN(L"sizeModule为空");
            return {};
        }
        retSerie->SetSizeModule(sizeModule);
    }
    if (m_connectionSerie) {
        auto connectionSerie = m_connectionSerie->Clone();
        retSerie->SetConnectionSerie(connectionSerie);
    }
    return retSerie;
}

void ProjectSettingMEPMaterialSerie::CopyFieldsTo(IProjectSettingMEPMaterialSerie& target) const {
    wstring name = m_name;
    target.SetName(name);
    target.SetMEPType(m_mepType);
    target.SetMinSize(m_minSize);
    target.SetMaxSize(m_maxSize);
    target.SetCreateTime(m_createTime);
    target.SetJunctionType(m_junctionType);
    target.SetDisciplineId(m_disciplineId);
}

CableTrayShape ProjectSettingMEPMaterialSerie::GetTrayShape() const {
    const auto* sizeModule = GetSizeModule();
    return sizeModule != nullptr ? sizeModule->GetCableTrayShape() : CableTrayShape::None;
}

SectionType ProjectSettingMEPMaterialSerie::GetDuctShape() const {
    const auto* sizeModule = GetSizeModule();
    return sizeModule != nullptr ? sizeModule->GetDuctShape() : SectionType::None;
}

void ProjectSettingMEPMaterialSerie::SetConnectionSerieId(wstring& id) {
    if (m_connectionSerie)
        m_connectionSerie->SetId(id);
}

vorn::OwnerPtr<IProjectSettingConnectionSerie> ProjectSettingMEPMaterialSerie::CloneConnectionSerie() const {
    if (!m_connectionSerie)
        return {};
    return m_connectionSerie->Clone();
}

} // namespace tolm
