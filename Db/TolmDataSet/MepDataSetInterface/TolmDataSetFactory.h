#pragma once

#include "TolmDataSet/ITolmDataSetFactory.h"

namespace tolm {

/// The factory. Its one object is built when the library is loaded and installs itself.
class TolmDataSetFactory final : public ITolmDataSetFactory {
public:
    ~TolmDataSetFactory() override;

    vorn::OwnerPtr<ITolmDataset> CreateDataset(const wstring& datasetFilePath, const wstring& componentFilePath,
                                               const wstring& combinedProductFilePath,
                                               const wstring& binaryFileFolder) override;
    vorn::OwnerPtr<IProjectSettingSizeModule> CreateSizeModule() override;
    vorn::OwnerPtr<IProjectSettingMaterial> CreateMaterial() override;
    vorn::OwnerPtr<IProjectSettingConnectionSerie> CreateConnectionSerie() override;
    vorn::OwnerPtr<IProjectSettingSystemMaterialSerie> CreateSystemMaterialSerie() override;
    vorn::OwnerPtr<IProjectSettingSystemType> CreateSystemType() override;
    vorn::OwnerPtr<IProjectSettingMEPMaterialSerie> CreateMEPMaterialSerie() override;
    vorn::OwnerPtr<ITolmProjectSettingCircuitTemplate> CreateCircuitTemplate() override;
    vorn::OwnerPtr<IProjectSettingMEPMaterialSerieGroup> CreateMEPMaterialSerieGroup() override;

private:
    TolmDataSetFactory();
    static TolmDataSetFactory s_factory;
};

} // namespace tolm
