#pragma once

#include "MepDataSetInterface/TableTestSupport.h"

namespace tolmtest {

/// A dataset on fresh paths, nothing on disk yet.
class DatasetOnStore : public StoreFixture {
protected:
    tolm::TolmDataset& Concrete() { return dynamic_cast<tolm::TolmDataset&>(*dataset); }

    void Store(vorn::OwnerPtr<tolm::IProjectSettingMaterial> material) {
        ASSERT_TRUE(util.WriteMaterial(path, ddq, material.get()));
    }
    void Store(vorn::OwnerPtr<tolm::IProjectSettingSizeModule> module) {
        ASSERT_TRUE(util.WriteSizeModule(path, ddq, module.get()));
    }

    Ids Materials() { return IdsOf(dataset->GetMaterialData()->GetMaterialList()); }
    Ids Sizes() { return IdsOf(dataset->GetSizeModuleData()->GetSizeList()); }

    const wstring componentPath = folder.File(L"components.db");
    const wstring combinedPath = folder.File(L"combined.db");
    const wstring binaryFolder = folder.File(L"binary");
    vorn::OwnerPtr<tolm::ITolmDataset> dataset =
        tolm::TolmDataset::Create(path, componentPath, combinedPath, binaryFolder);
};

} // namespace tolmtest
