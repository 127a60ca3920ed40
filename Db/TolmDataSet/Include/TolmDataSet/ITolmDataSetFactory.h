#pragma once

#include "TolmDataSet/IProjectSettingSystemMaterialSerie.h"
#include "TolmDataSet/ITolmDataset.h"

namespace tolm {

/// Makes every object of the library. The one factory stands from the moment the library is loaded until it is
/// unloaded. What it makes is the caller's; an empty owner tells that the object could not be made. Its operations keep
/// no state and may be called from any thread.
class TOLM_DATASET_API ITolmDataSetFactory {
public:
    /// The destructor of the one factory clears `m_pFactory`; nobody else destroys it.
    virtual ~ITolmDataSetFactory();

    /// A dataset on these paths. No file is opened.
    virtual vorn::OwnerPtr<ITolmDataset> CreateDataset(const wstring& datasetFilePath, const wstring& componentFilePath,
                                                       const wstring& combinedProductFilePath,
                                                       const wstring& binaryFileFolder) = 0;
    virtual vorn::OwnerPtr<IProjectSettingSizeModule> CreateSizeModule() = 0;
    virtual vorn::OwnerPtr<IProjectSettingMaterial> CreateMaterial() = 0;
    virtual vorn::OwnerPtr<IProjectSettingConnectionSerie> CreateConnectionSerie() = 0;
    virtual vorn::OwnerPtr<IProjectSettingSystemMaterialSerie> CreateSystemMaterialSerie() = 0;
    virtual vorn::OwnerPtr<IProjectSettingSystemType> CreateSystemType() = 0;
    virtual vorn::OwnerPtr<IProjectSettingMEPMaterialSerie> CreateMEPMaterialSerie() = 0;
    virtual vorn::OwnerPtr<ITolmProjectSettingCircuitTemplate> CreateCircuitTemplate() = 0;
    virtual vorn::OwnerPtr<IProjectSettingMEPMaterialSerieGroup> CreateMEPMaterialSerieGroup() = 0;

    /// The one factory; null only before the library is loaded and after it is unloaded.
    static ITolmDataSetFactory* Get();

protected:
    static ITolmDataSetFactory* m_pFactory;
};

} // namespace tolm
