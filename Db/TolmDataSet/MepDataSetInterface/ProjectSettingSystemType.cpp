#include "MepDataSetInterface/ProjectSettingSystemType.h"

#include "MepDataSetInterface/RecordBasics.h"
#include "Vorn/DebugMessage.h"

namespace tolm {
namespace {

constexpr RowFaults kSerieFaults{L"m_SystemMaterialSerieList is empty", L"index row exceeds m_SystemMaterialSerieList"};

}

IProjectSettingSystemType::~IProjectSettingSystemType() = default;
IProjectSettingSystemMaterialSerie::~IProjectSettingSystemMaterialSerie() = default;

vorn::OwnerPtr<IProjectSettingSystemType> IProjectSettingSystemType::Create() {
    return ProjectSettingSystemType::Create();
}

vorn::OwnerPtr<IProjectSettingSystemType> ProjectSettingSystemType::Create() {
    return ObjectMaker::Create<IProjectSettingSystemType, ProjectSettingSystemType>();
}

ProjectSettingSystemType::ProjectSettingSystemType() : m_id(NewRecordId()) {}

ProjectSettingSystemType::~ProjectSettingSystemType() = default;

void ProjectSettingSystemType::AddSystemMaterialSerie(vorn::OwnerPtr<IProjectSettingMEPMaterialSerie>& serie) {
    m_SystemMaterialSerieList.push_back(std::move(serie));
}

void ProjectSettingSystemType::DeleteSystemMaterialSerie(int index) {
    if (const wchar_t* fault = EraseRow(m_SystemMaterialSerieList, index, kSerieFaults))
        VORN_DEBUG_WARN(fault);
}

std::vector<const IProjectSettingMEPMaterialSerie*> ProjectSettingSystemType::GetSystemMaterialSerieList() const {
    std::vector<const IProjectSettingMEPMaterialSerie*> list;
    list.reserve(m_SystemMaterialSerieList.size());
    for (const auto& serie : m_SystemMaterialSerieList) {
        if (!serie) {
            VORN_DEBUG_WARN(L"m_SystemMaterialSerieList[i]为空");
            continue;
        }
        list.push_back(serie.get());
    }
    return list;
}

void ProjectSettingSystemType::AddCableSpecType(vorn::OwnerPtr<IProjectSettingSizeModule> cableSizeModule) {
    if (!cableSizeModule) {
        VORN_DEBUG_WARN(L"cableSizeModule为空");
        return;
    }
    wstring name = cableSizeModule->GetCableSpecTypeName();
    m_cableSpecTypeList.try_emplace(std::move(name), std::move(cableSizeModule));
}

std::map<wstring, const IProjectSettingSizeModule*> ProjectSettingSystemType::GetCableSpecTypeList() const {
    std::map<wstring, const IProjectSettingSizeModule*> list;
    for (const auto& [name, pSize] : m_cableSpecTypeList) {
        if (!pSize) {
            VORN_DEBUG_WARN(L"pSize为空");
            continue;
        }
        list.emplace(name, pSize.get());
    }
    return list;
}

vorn::OwnerPtr<IProjectSettingSystemMaterialSerie> IProjectSettingSystemMaterialSerie::Create() {
    return ProjectSettingSystemMaterialSerie::Create();
}

vorn::OwnerPtr<IProjectSettingSystemMaterialSerie> ProjectSettingSystemMaterialSerie::Create() {
    return ObjectMaker::Create<IProjectSettingSystemMaterialSerie, ProjectSettingSystemMaterialSerie>();
}

ProjectSettingSystemMaterialSerie::ProjectSettingSystemMaterialSerie() : m_serieId(NewRecordId()) {}

ProjectSettingSystemMaterialSerie::~ProjectSettingSystemMaterialSerie() = default;

} // namespace tolm
