#include "MepDataSetInterface/TolmDataSetFactory.h"

#include "MepDataSetInterface/ProjectSettingConnectionSerie.h"
#include "MepDataSetInterface/ProjectSettingMEPMaterialSerie.h"
#include "MepDataSetInterface/ProjectSettingSystemType.h"
#include "MepDataSetInterface/TolmProject.h"
#include "MepDataSetInterface/TolmProjectSettingCircuitTemplate.h"
#include "MepDataSetInterface/TolmProjectSettingMaterial.h"
#include "MepDataSetInterface/TolmProjectSettingSizeModule.h"

#include <new>

namespace tolm {

ITolmDataSetFactory* ITolmDataSetFactory::m_pFactory = nullptr;
TolmDataSetFactory TolmDataSetFactory::s_factory;

ITolmDataSetFactory::~ITolmDataSetFactory() = default;

ITolmDataSetFactory* ITolmDataSetFactory::Get() {
    return m_pFactory;
}

TolmDataSetFactory::TolmDataSetFactory() {
    m_pFactory = this;
}

TolmDataSetFactory::~TolmDataSetFactory() {
    m_pFactory = nullptr;
}

vorn::OwnerPtr<ITolmDataset> TolmDataSetFactory::CreateDataset(const wstring& datasetFilePath,
                                                               const wstring& componentFilePath,
                                                               const wstring& combinedProductFilePath,
                                                               const wstring& binaryFileFolder) {
    try {
        return TolmDataset::Create(datasetFilePath, componentFilePath, combinedProductFilePath, binaryFileFolder);
    } catch (const std::bad_alloc&) { // for the copies of the paths
        return {};
    }
}

vorn::OwnerPtr<IProjectSettingSizeModule> TolmDataSetFactory::CreateSizeModule() {
    return ProjectSettingSizeModule::Create();
}

vorn::OwnerPtr<IProjectSettingMaterial> TolmDataSetFactory::CreateMaterial() {
    return ProjectSettingMaterial::Create();
}

vorn::OwnerPtr<IProjectSettingConnectionSerie> TolmDataSetFactory::CreateConnectionSerie() {
    return ProjectSettingConnectionSerie::Create();
}

vorn::OwnerPtr<IProjectSettingSystemMaterialSerie> TolmDataSetFactory::CreateSystemMaterialSerie() {
    return ProjectSettingSystemMaterialSerie::Create();
}

vorn::OwnerPtr<IProjectSettingSystemType> TolmDataSetFactory::CreateSystemType() {
    return ProjectSettingSystemType::Create();
}

vorn::OwnerPtr<IProjectSettingMEPMaterialSerie> TolmDataSetFactory::CreateMEPMaterialSerie() {
    return ProjectSettingMEPMaterialSerie::Create();
}

vorn::OwnerPtr<ITolmProjectSettingCircuitTemplate> TolmDataSetFactory::CreateCircuitTemplate() {
    return TolmProjectSettingCircuitTemplate::Create();
}

vorn::OwnerPtr<IProjectSettingMEPMaterialSerieGroup> TolmDataSetFactory::CreateMEPMaterialSerieGroup() {
    return ProjectSettingMEPMaterialSerieGroup::Create();
}

} // namespace tolm
