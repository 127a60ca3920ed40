#include "TolmDataSet/TolmDataSet.h"

#include "Support/DebugWarnings.h"
#include "Support/TempFolder.h"

#include <gtest/gtest.h>

namespace {

using namespace tolm;
using TableId = TolmProjectSettingTableId;

/// What a host does, with the public headers and the library alone.
class HostDataset : public testing::Test {
protected:
    vorn::OwnerPtr<ITolmDataset> Open() const {
        return ITolmDataSetFactory::Get()->CreateDataset(path, folder.File(L"components.db"),
                                                         folder.File(L"combined.db"), folder.File(L"binary"));
    }

    static vorn::OwnerPtr<IProjectSettingSizeModule> Pipes(wstring name, wstring materialName) {
        auto* const factory = ITolmDataSetFactory::Get();
        auto material = factory->CreateMaterial();
        material->SetName(materialName);
        auto module = factory->CreateSizeModule();
        module->SetName(name);
        module->SetMEPType(TolmProjectSettingMEPObjectType::Pipe);
        module->SetDisciplineId(MEPDisciplineId::Plumbing);
        module->SetRoughness(0.045);
        module->AddPipeSize({15.8F, 21.3F, 15.0F, 2.75F});
        module->AddPipeSize({21.3F, 26.8F, 20.0F, 2.75F});
        module->SetMaterial(std::move(material));
        return module;
    }

    tolmtest::TempFolder folder;
    const wstring path = folder.File(L"set.db");
};

TEST_F(HostDataset, WhatIsAddedIsThereForTheNextWhoOpensIt) {
    wstring id;
    {
        const auto dataset = Open();
        auto module = Pipes(L"镀锌钢管", L"镀锌钢");
        id = module->GetId();
        EditTable(dataset->GetSizeModuleData(TableId::PlumbingPipeSizes))->AddSizeModule(std::move(module));
    }
    const auto dataset = Open();
    dataset->CollectData(false, {TableId::PlumbingPipeSizes, TableId::PlumbingPipeMaterials});
    const auto modules = dataset->GetSizeModuleData()->GetSizeList();
    ASSERT_EQ(modules.size(), 1U);
    EXPECT_EQ(modules[0]->GetId(), id);
    EXPECT_EQ(modules[0]->GetName(), L"镀锌钢管");
    EXPECT_EQ(modules[0]->GetRoughness(), 0.045);
    EXPECT_EQ(modules[0]->GetPipeSizeList(),
              (std::vector<ProjectSettingPipeSize>{{15.8F, 21.3F, 15.0F, 2.75F}, {21.3F, 26.8F, 20.0F, 2.75F}}));
    ASSERT_NE(modules[0]->GetMaterial(), nullptr);
    EXPECT_EQ(modules[0]->GetMaterial()->GetName(), L"镀锌钢");
    ASSERT_EQ(dataset->GetMaterialData()->GetMaterialList().size(), 1U);
}

TEST_F(HostDataset, AnEditedCloneReplacesTheRecordInTheFile) {
    const auto dataset = Open();
    ISizeModuleData* const table = EditTable(dataset->GetSizeModuleData(TableId::PlumbingPipeSizes));
    table->AddSizeModule(Pipes(L"old", L"steel"));
    auto edited = table->GetSizeList()[0]->Clone();
    wstring id = table->GetSizeList()[0]->GetId();
    wstring name = L"new";
    edited->SetId(id);
    edited->SetName(name);
    edited->DeletePipeSize(0);
    table->AddSizeModule(std::move(edited));
    const auto available =
        dataset->GetAvailableSizeModuleList(TolmProjectSettingMEPObjectType::Pipe, MEPDisciplineId::Plumbing);
    ASSERT_EQ(available.size(), 1U);
    EXPECT_EQ(available.at(id)->GetName(), L"new");
    EXPECT_EQ(available.at(id)->GetPipeSizeList().size(), 1U);
}

TEST_F(HostDataset, RecordsOutliveTheDatasetTheyWereAskedOf) {
    auto dataset = Open();
    EditTable(dataset->GetSizeModuleData(TableId::PlumbingPipeSizes))->AddSizeModule(Pipes(L"a", L"steel"));
    const auto available =
        dataset->GetAvailableMaterialList(TolmProjectSettingMEPObjectType::Pipe, MEPDisciplineId::Plumbing);
    dataset.reset();
    ASSERT_EQ(available.size(), 1U);
    EXPECT_EQ(available.begin()->second->GetName(), L"steel");
}

TEST_F(HostDataset, VersionAndTimePointStandInTheFile) {
    const auto dataset = Open();
    EditTable(dataset->GetSizeModuleData(TableId::PlumbingPipeSizes))->AddSizeModule(Pipes(L"a", L"steel"));
    EXPECT_TRUE(dataset->SetLocalVersion(3));
    const wstring timePoint = dataset->SetLastUpdateTimePoint();
    EXPECT_EQ(timePoint.size(), 19U);
    EXPECT_EQ(Open()->GetLastUpdateTimePointString(), timePoint);
}

} // namespace
