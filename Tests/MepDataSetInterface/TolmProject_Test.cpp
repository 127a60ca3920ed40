#include "MepDataSetInterface/DatasetTestSupport.h"

#include "TolmDataSet/ITolmDataSetFactory.h"
#include "Vorn/Clock.h"

namespace {

using namespace tolm;
using namespace tolmtest;

class Dataset : public DatasetOnStore {};

TEST_F(Dataset, OnFourEmptyTextsHasAnEmptyPathAndSixEmptyTables) {
    const auto empty = TolmDataset::Create(L"", L"", L"", L"");
    ASSERT_TRUE(empty);
    EXPECT_EQ(empty->GetDatasetFilePath(), L"");
    ASSERT_NE(empty->GetSystemTypeData(), nullptr);
    ASSERT_NE(empty->GetConnectionSerieData(), nullptr);
    ASSERT_NE(empty->GetSizeModuleData(), nullptr);
    ASSERT_NE(empty->GetMaterialData(), nullptr);
    ASSERT_NE(empty->GetMEPMaterialSerieData(), nullptr);
    ASSERT_NE(empty->GetCircuitTemplateData(), nullptr);
    EXPECT_TRUE(empty->GetSystemTypeData()->GetSystemTypeList().empty());
    EXPECT_TRUE(empty->GetConnectionSerieData()->GetConnectionSerieList().empty());
    EXPECT_TRUE(empty->GetSizeModuleData()->GetSizeList().empty());
    EXPECT_TRUE(empty->GetMaterialData()->GetMaterialList().empty());
    EXPECT_TRUE(empty->GetMEPMaterialSerieData()->GetSerieList().empty());
    EXPECT_TRUE(empty->GetMEPMaterialSerieData()->GetSerieGroupList().empty());
    EXPECT_TRUE(empty->GetCircuitTemplateData()->GetCircuitTemplateList().empty());
}

TEST_F(Dataset, ComingIntoBeingOpensNoFile) {
    for (const auto& file : {path, statusPath, componentPath, combinedPath, binaryFolder})
        EXPECT_FALSE(Exists(file));
}

TEST_F(Dataset, TakesItsPathsInTheOrderDatasetComponentsCombinedBinary) {
    EXPECT_EQ(dataset->GetDatasetFilePath(), path);
    EXPECT_EQ(TolmDatasetTestAccess::ComponentFilePath(Concrete()), componentPath);
    EXPECT_EQ(TolmDatasetTestAccess::CombinedProductFilePath(Concrete()), combinedPath);
    EXPECT_EQ(TolmDatasetTestAccess::BinaryFileFolder(Concrete()), binaryFolder);
}

TEST_F(Dataset, TheFactoryPassesThePathsOnInTheSameOrder) {
    dataset = ITolmDataSetFactory::Get()->CreateDataset(L"a", L"b", L"c", L"d");
    ASSERT_TRUE(dataset);
    EXPECT_EQ(dataset->GetDatasetFilePath(), L"a");
    EXPECT_EQ(TolmDatasetTestAccess::ComponentFilePath(Concrete()), L"b");
    EXPECT_EQ(TolmDatasetTestAccess::CombinedProductFilePath(Concrete()), L"c");
    EXPECT_EQ(TolmDatasetTestAccess::BinaryFileFolder(Concrete()), L"d");
}

TEST_F(Dataset, NewPathsEmptyEveryTableAndNothingIsRead) {
    Store(MakeMaterial(L"a"));
    const wstring other = folder.File(L"other.db");
    ASSERT_TRUE(util.WriteMaterial(other, ddq, MakeMaterial(L"b").get()));
    dataset->CollectData(false, {TableId::PlumbingPipeMaterials});
    dataset->ResetPathAndResetTables(other, L"comp", L"combined", L"binary");
    EXPECT_EQ(dataset->GetDatasetFilePath(), other);
    EXPECT_EQ(TolmDatasetTestAccess::ComponentFilePath(Concrete()), L"comp");
    EXPECT_EQ(TolmDatasetTestAccess::CombinedProductFilePath(Concrete()), L"combined");
    EXPECT_EQ(TolmDatasetTestAccess::BinaryFileFolder(Concrete()), L"binary");
    EXPECT_EQ(Materials(), Ids{});
    dataset->CollectData(false, {TableId::PlumbingPipeMaterials});
    EXPECT_EQ(Materials(), (Ids{L"b"}));
}

TEST_F(Dataset, AResetEmptiesEveryTable) {
    using Access = TolmDatasetTestAccess;
    const auto fill = [](auto& list, auto record) { list.push_back(std::move(record)); };
    auto& systems = dynamic_cast<SystemTypeData&>(*Access::SystemTypes(Concrete()));
    auto& connections = dynamic_cast<ConnectorData&>(*Access::Connections(Concrete()));
    auto& sizes = dynamic_cast<SizeModuleData&>(*Access::Sizes(Concrete()));
    auto& materials = dynamic_cast<MaterialData&>(*Access::Materials(Concrete()));
    auto& series = dynamic_cast<MEPMaterialSerieData&>(*Access::Series(Concrete()));
    auto& templates = dynamic_cast<CircuitTemplateData&>(*Access::CircuitTemplates(Concrete()));
    fill(TableTestAccess::List(systems), IProjectSettingSystemType::Create());
    fill(TableTestAccess::List(connections), IProjectSettingConnectionSerie::Create());
    fill(TableTestAccess::List(sizes), IProjectSettingSizeModule::Create());
    fill(TableTestAccess::List(materials), IProjectSettingMaterial::Create());
    fill(TableTestAccess::List(series), IProjectSettingMEPMaterialSerie::Create());
    fill(TableTestAccess::Groups(series), IProjectSettingMEPMaterialSerieGroup::Create());
    fill(TableTestAccess::List(templates), ITolmProjectSettingCircuitTemplate::Create());
    dataset->ResetDataTables();
    EXPECT_TRUE(systems.GetSystemTypeList().empty());
    EXPECT_TRUE(connections.GetConnectionSerieList().empty());
    EXPECT_TRUE(sizes.GetSizeList().empty());
    EXPECT_TRUE(materials.GetMaterialList().empty());
    EXPECT_TRUE(series.GetSerieList().empty());
    EXPECT_TRUE(series.GetSerieGroupList().empty());
    EXPECT_TRUE(templates.GetCircuitTemplateList().empty());
    EXPECT_EQ(dataset->GetDatasetFilePath(), path) << "the paths stay";
}

TEST_F(Dataset, ItsTablesGoInTheReverseOfTheirOrder) {
    using Access = TolmDatasetTestAccess;
    static std::vector<const void*> released;
    released.clear();
    // The table is kept here; the dataset holds an owner that notes its release.
    const auto watch = [](auto& table) {
        auto kept = std::move(table);
        table = {kept.get(), [](void* object) { released.push_back(object); }};
        return kept;
    };
    const auto systems = watch(Access::SystemTypes(Concrete()));
    const auto connections = watch(Access::Connections(Concrete()));
    const auto sizes = watch(Access::Sizes(Concrete()));
    const auto materials = watch(Access::Materials(Concrete()));
    const auto series = watch(Access::Series(Concrete()));
    const auto templates = watch(Access::CircuitTemplates(Concrete()));
    dataset.reset();
    EXPECT_EQ(released, (std::vector<const void*>{templates.get(), series.get(), materials.get(), sizes.get(),
                                                  connections.get(), systems.get()}));
}

TEST_F(Dataset, AnEmptyCollectionLeavesEverythingWhateverItsFlag) {
    Store(MakeMaterial(L"a"));
    dataset->CollectData(false, {TableId::PlumbingPipeMaterials});
    dataset->CollectData(true, {});
    dataset->CollectData(false, {});
    EXPECT_EQ(Materials(), (Ids{L"a"}));
}

TEST_F(Dataset, ACollectionOfAnIdWithoutMeaningResetsAndReadsNothing) {
    Store(MakeMaterial(L"a"));
    for (const int id : {4, 5, 6, 8, 9, 14, 36, 1000, -1}) {
        dataset->CollectData(false, {TableId::PlumbingPipeMaterials});
        ASSERT_EQ(Materials(), (Ids{L"a"}));
        dataset->CollectData(false, {static_cast<TableId>(id)});
        EXPECT_EQ(Materials(), Ids{}) << id;
    }
}

TEST_F(Dataset, IdsWithoutMeaningAreSkippedAmongOthers) {
    Store(MakeMaterial(L"a"));
    dataset->CollectData(true, {static_cast<TableId>(4), TableId::PlumbingPipeMaterials, static_cast<TableId>(36)});
    EXPECT_EQ(Materials(), (Ids{L"a"}));
}

TEST_F(Dataset, ACollectionGivesThePipeSizesOfBothDisciplinesInTheOrderOfItsList) {
    Store(MakeSizeModule(L"hvac", L"", ObjectType::Pipe, MEPDisciplineId::HVAC));
    Store(MakeSizeModule(L"plumbing"));
    dataset->CollectData(false, {TableId::PlumbingPipeSizes, TableId::HVACPipeSizes});
    EXPECT_EQ(Sizes(), (Ids{L"plumbing", L"hvac"}));
    dataset->CollectData(false, {TableId::HVACPipeSizes, TableId::PlumbingPipeSizes});
    EXPECT_EQ(Sizes(), (Ids{L"hvac", L"plumbing"}));
}

TEST_F(Dataset, AnIdListedTwiceLoadsItsRecordsTwice) {
    Store(MakeMaterial(L"a"));
    dataset->CollectData(false, {TableId::PlumbingPipeMaterials, TableId::PlumbingPipeMaterials});
    EXPECT_EQ(Materials(), (Ids{L"a", L"a"}));
}

TEST_F(Dataset, ACollectionOfTwoTablesFillsBoth) {
    Store(MakeMaterial(L"m"));
    Store(MakeSizeModule(L"s"));
    dataset->CollectData(false, {TableId::PlumbingPipeMaterials, TableId::PlumbingPipeSizes});
    EXPECT_EQ(Materials(), (Ids{L"m"}));
    EXPECT_EQ(Sizes(), (Ids{L"s"}));
}

TEST_F(Dataset, ACollectionPassesTheComponentPathToTheTable) {
    struct Base : TolmBaseDesignData {
        static wstring Component(const TolmBaseDesignData& base) { return base.*(&Base::m_componentFilePath); }
        static wstring Dataset(const TolmBaseDesignData& base) { return base.*(&Base::m_datasetFilePath); }
    };
    dataset->CollectData(false, {TableId::DuctConnections, TableId::CircuitTemplates});
    const auto& connections = dynamic_cast<const TolmBaseDesignData&>(*dataset->GetConnectionSerieData());
    EXPECT_EQ(Base::Dataset(connections), path);
    EXPECT_EQ(Base::Component(connections), componentPath);
    const auto& templates = dynamic_cast<const TolmBaseDesignData&>(*dataset->GetCircuitTemplateData());
    EXPECT_EQ(Base::Dataset(templates), path);
    EXPECT_EQ(Base::Component(templates), L"");
}

TEST_F(Dataset, AGetterWithAnIdCollectsAndEmptiesTheOtherTables) {
    Store(MakeMaterial(L"m"));
    Store(MakeSizeModule(L"s"));
    const ISizeModuleData* sizes = dataset->GetSizeModuleData(TableId::PlumbingPipeSizes);
    ASSERT_NE(sizes, nullptr);
    EXPECT_EQ(IdsOf(sizes->GetSizeList()), (Ids{L"s"}));
    const IMaterialData* materials = dataset->GetMaterialData(TableId::PlumbingPipeMaterials);
    ASSERT_NE(materials, nullptr);
    EXPECT_EQ(IdsOf(materials->GetMaterialList()), (Ids{L"m"}));
    EXPECT_TRUE(sizes->GetSizeList().empty());
    EXPECT_EQ(sizes, dataset->GetSizeModuleData());
}

TEST_F(Dataset, AGetterWithAnIdOfAnotherRangeIsNullAndChangesNothing) {
    Store(MakeSizeModule(L"s"));
    dataset->CollectData(false, {TableId::PlumbingPipeSizes});
    EXPECT_EQ(dataset->GetSizeModuleData(TableId::HVACPipeSizes), nullptr);
    EXPECT_EQ(dataset->GetMaterialData(TableId::HVACPipeMaterials), nullptr);
    EXPECT_EQ(Sizes(), (Ids{L"s"}));
}

TEST_F(Dataset, EachGetterTakesExactlyItsIds) {
    const auto within = [](int id, int first, int last) { return id >= first && id <= last; };
    for (int number = -1; number <= 40; ++number) {
        const auto id = static_cast<TableId>(number);
        EXPECT_EQ(dataset->GetSystemTypeData(id) != nullptr, within(number, 0, 3)) << number;
        EXPECT_EQ(dataset->GetConnectionSerieData(id) != nullptr, within(number, 15, 23)) << number;
        EXPECT_EQ(dataset->GetSizeModuleData(id) != nullptr, number == 7 || within(number, 10, 13)) << number;
        EXPECT_EQ(dataset->GetMaterialData(id) != nullptr, within(number, 28, 31)) << number;
        EXPECT_EQ(dataset->GetMEPMaterialSerieData(id) != nullptr, within(number, 24, 27) || number == 34) << number;
    }
}

TEST_F(Dataset, AGetterWithoutAnIdReadsNothing) {
    Store(MakeMaterial(L"a"));
    EXPECT_EQ(Materials(), Ids{});
}

TEST_F(Dataset, AHostEditsATableThroughItsPointer) {
    EditTable(dataset->GetMaterialData(TableId::PlumbingPipeMaterials))->AddMaterial(MakeMaterial(L"a"));
    EXPECT_EQ(Materials(), (Ids{L"a"}));
    dataset->CollectData(false, {TableId::PlumbingPipeMaterials});
    EXPECT_EQ(Materials(), (Ids{L"a"}));
}

TEST_F(Dataset, AResetWithATableMissingReportsItAndResetsNone) {
    Store(MakeMaterial(L"a"));
    const auto expectMissing = [&](auto& table, const wchar_t* words) {
        dataset->CollectData(false, {TableId::PlumbingPipeMaterials});
        auto taken = std::move(table);
        dataset->ResetDataTables();
        EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{wstring(L"TolmDataset::ResetDataTables: ") + words}));
        if (TolmDatasetTestAccess::Materials(Concrete())) {
            EXPECT_EQ(Materials(), (Ids{L"a"})) << "nothing was reset";
        }
        table = std::move(taken);
        dataset->ResetDataTables();
        EXPECT_EQ(Materials(), Ids{});
    };
    expectMissing(TolmDatasetTestAccess::Connections(Concrete()), L"m_ConnectorData为空！");
    expectMissing(TolmDatasetTestAccess::Sizes(Concrete()), L"m_sizeData为空！");
    expectMissing(TolmDatasetTestAccess::Materials(Concrete()), L"m_materialData为空！");
    expectMissing(TolmDatasetTestAccess::SystemTypes(Concrete()), L"m_systemData为空！");
    expectMissing(TolmDatasetTestAccess::Series(Concrete()), L"m_MEPmaterialSerieData为空！");
    expectMissing(TolmDatasetTestAccess::CircuitTemplates(Concrete()), L"m_circuitTemplateData为空！");
}

TEST_F(Dataset, AResetReportsTheFirstMissingTableInItsOrder) {
    using Access = TolmDatasetTestAccess;
    const auto reported = [&] {
        dataset->ResetDataTables();
        const auto warnings = TakeDebugWarnings();
        EXPECT_EQ(warnings.size(), 1U);
        return warnings.front();
    };
    Access::CircuitTemplates(Concrete()).reset();
    EXPECT_EQ(reported(), L"m_circuitTemplateData为空！");
    Access::Series(Concrete()).reset();
    EXPECT_EQ(reported(), L"m_MEPmaterialSerieData为空！");
    Access::SystemTypes(Concrete()).reset();
    EXPECT_EQ(reported(), L"m_systemData为空！");
    Access::Materials(Concrete()).reset();
    EXPECT_EQ(reported(), L"m_materialData为空！");
    Access::Sizes(Concrete()).reset();
    EXPECT_EQ(reported(), L"m_sizeData为空！");
    Access::Connections(Concrete()).reset();
    EXPECT_EQ(reported(), L"m_ConnectorData为空！");
}

TEST_F(Dataset, ACollectionEndsAtTheFirstMissingTable) {
    Store(MakeMaterial(L"a"));
    TolmDatasetTestAccess::Sizes(Concrete()).reset();
    dataset->CollectData(false, {TableId::PlumbingPipeMaterials, TableId::DuctSizes, TableId::PlumbingPipeMaterials});
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"TolmDataset::ResetDataTables: m_sizeData为空！",
                                                         L"TolmDataset::CollectData: m_sizeData为空！"}));
    EXPECT_EQ(Materials(), (Ids{L"a"})) << "the third id is not read any more";
}

TEST_F(Dataset, ACollectionReportsEachMissingTableInItsWords) {
    using Access = TolmDatasetTestAccess;
    Access::SystemTypes(Concrete()).reset();
    Access::Connections(Concrete()).reset();
    Access::Sizes(Concrete()).reset();
    Access::Materials(Concrete()).reset();
    Access::Series(Concrete()).reset();
    Access::CircuitTemplates(Concrete()).reset();
    struct Row {
        int id;
        const wchar_t* words;
    };
    for (const auto& [id, words] : {Row{0, L"m_systemData为空！"}, Row{33, L"m_sizeData为空！"},
                                    Row{15, L"m_ConnectorData为空！"}, Row{34, L"m_MEPmaterialSerieData为空！"},
                                    Row{35, L"m_materialData为空！"}, Row{32, L"m_circuitTemplateData为空！"}}) {
        dataset->CollectData(false, {static_cast<TableId>(id)});
        EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"TolmDataset::ResetDataTables: m_ConnectorData为空！",
                                                             wstring(L"TolmDataset::CollectData: ") + words}));
    }
}

TEST_F(Dataset, ItsVersionGoesIntoTheHeaderAndBack) {
    EXPECT_FALSE(dataset->SetLocalVersion(7));
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::SetLocalVersion: openDatabase 失败"}));
    MakeStore();
    EXPECT_TRUE(dataset->SetLocalVersion(7));
    bool changed = true;
    EXPECT_EQ(util.GetLocalVersion(path, ddq, changed), 7);
    EXPECT_FALSE(changed);
}

TEST_F(Dataset, ItsTimePointGoesIntoTheHeaderAndBack) {
    EXPECT_EQ(dataset->GetLastUpdateTimePointString(), L"");
    MakeStore();
    EXPECT_EQ(dataset->GetLastUpdateTimePointString(), L"");
    const wstring written = dataset->SetLastUpdateTimePoint();
    EXPECT_EQ(written.size(), 19U);
    EXPECT_EQ(dataset->GetLastUpdateTimePointString(), written);
}

} // namespace
