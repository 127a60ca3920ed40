#include "MepDataSetInterface/TableSlices.h"
#include "MepDataSetInterface/TableTestSupport.h"

namespace {

using namespace tolm;
using namespace tolmtest;

class MaterialTable : public TableOnStore<MaterialData> {};

TEST_F(MaterialTable, BeforeItsCollectionItIsEmptyAndReadsNothing) {
    util.WriteMaterial(path, ddq, MakeMaterial(L"a").get());
    EXPECT_TRUE(table->GetMaterialList().empty());
}

TEST_F(MaterialTable, AddWritesToTheStoreAndAppends) {
    Attach();
    table->AddMaterial(MakeMaterial(L"a"));
    table->AddMaterial(MakeMaterial(L"b"));
    EXPECT_EQ(IdsOf(table->GetMaterialList()), (Ids{L"a", L"b"}));
    EXPECT_EQ(StoredMaterials(), (Ids{L"a", L"b"}));
}

TEST_F(MaterialTable, AddOfAKnownIdReplacesInPlace) {
    Attach();
    table->AddMaterial(MakeMaterial(L"a", L"old"));
    table->AddMaterial(MakeMaterial(L"b"));
    table->AddMaterial(MakeMaterial(L"a", L"new"));
    EXPECT_EQ(IdsOf(table->GetMaterialList()), (Ids{L"a", L"b"}));
    EXPECT_EQ(table->GetMaterialList()[0]->GetName(), L"new");
    vorn::OwnerPtr<IProjectSettingMaterial> stored;
    ASSERT_TRUE(util.ReadMaterial(path, ddq, L"a", stored));
    EXPECT_EQ(stored->GetName(), L"new");
}

TEST_F(MaterialTable, IdentifiersAreComparedWithTheirCase) {
    Attach();
    table->AddMaterial(MakeMaterial(L"a"));
    table->AddMaterial(MakeMaterial(L"A"));
    EXPECT_EQ(IdsOf(table->GetMaterialList()), (Ids{L"a", L"A"}));
}

TEST_F(MaterialTable, AddOfAnEmptyOwnerWritesNothingAndLeavesTheList) {
    Attach();
    table->AddMaterial({});
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MaterialData::AddMaterial: pNewMaterial为空"}));
    EXPECT_TRUE(table->GetMaterialList().empty());
    EXPECT_FALSE(Exists(path));
}

TEST_F(MaterialTable, AnEditLeavesItsMarkForTheNextUpload) {
    Attach();
    table->AddMaterial(MakeMaterial(L"a"));
    EXPECT_EQ(StatusRecords(), (std::vector<std::string>{"MTS a 1 1 2"}));
    table->DeleteMaterialList({MakeMaterial(L"a").get()});
    EXPECT_TRUE(StatusRecords().empty());
}

TEST_F(MaterialTable, AFailedWriteDoesNotKeepTheRecordOutOfTheList) {
    table->AddMaterial(MakeMaterial(L"a"));
    EXPECT_EQ(IdsOf(table->GetMaterialList()), (Ids{L"a"}));
    EXPECT_FALSE(Exists(path));
}

TEST_F(MaterialTable, AddToTheStoreAloneLeavesTheList) {
    Attach();
    const auto material = MakeMaterial(L"a");
    table->AddMaterialToDB(material.get());
    EXPECT_TRUE(table->GetMaterialList().empty());
    EXPECT_EQ(StoredMaterials(), (Ids{L"a"}));
}

TEST_F(MaterialTable, AddToTheStoreAloneLeavesTheCheckOfThePointerToTheStore) {
    Attach();
    table->AddMaterialToDB(nullptr);
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::WriteMaterial: newMaterial为空"}));
}

TEST_F(MaterialTable, DeleteRemovesFromStoreAndListByIdentifier) {
    Attach();
    for (const wchar_t* id : {L"a", L"b", L"c"})
        table->AddMaterial(MakeMaterial(id));
    const auto likeB = MakeMaterial(L"b");
    table->DeleteMaterialList({likeB.get()});
    EXPECT_EQ(IdsOf(table->GetMaterialList()), (Ids{L"a", L"c"}));
    EXPECT_EQ(StoredMaterials(), (Ids{L"a", L"c"}));
}

TEST_F(MaterialTable, DeleteTakesTheTablesOwnPointers) {
    Attach();
    for (const wchar_t* id : {L"a", L"b", L"c"})
        table->AddMaterial(MakeMaterial(id));
    table->DeleteMaterialList(table->GetMaterialList());
    EXPECT_TRUE(table->GetMaterialList().empty());
    EXPECT_TRUE(StoredMaterials().empty());
}

TEST_F(MaterialTable, DeleteWithANullPointerRemovesTheOtherAndTheStoreSeesBoth) {
    Attach();
    table->AddMaterial(MakeMaterial(L"a"));
    table->DeleteMaterialList({nullptr, table->GetMaterialList()[0]});
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::DeleteMaterialList: material为空",
                                                         L"MaterialData::DeleteMaterialList: materialList[i]为空"}));
    EXPECT_TRUE(table->GetMaterialList().empty());
    EXPECT_TRUE(StoredMaterials().empty());
}

TEST_F(MaterialTable, DeleteOfAnUnknownIdentifierPassesItOver) {
    Attach();
    table->AddMaterial(MakeMaterial(L"a"));
    const auto unknown = MakeMaterial(L"x");
    table->DeleteMaterialList({unknown.get()});
    EXPECT_EQ(IdsOf(table->GetMaterialList()), (Ids{L"a"}));
}

TEST_F(MaterialTable, DeleteRemovesOneEntryPerInput) {
    Attach();
    table->AddMaterial(MakeMaterial(L"a"));
    table->CollectDesignData(path, L"", TableId::PlumbingPipeMaterials);
    ASSERT_EQ(IdsOf(table->GetMaterialList()), (Ids{L"a", L"a"}));
    const auto likeA = MakeMaterial(L"a");
    table->DeleteMaterialList({likeA.get()});
    EXPECT_EQ(IdsOf(table->GetMaterialList()), (Ids{L"a"}));
}

TEST_F(MaterialTable, EmptyEntriesAreReportedAndPassedOver) {
    Attach();
    List().emplace_back();
    table->AddMaterial(MakeMaterial(L"a"));
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MaterialData::AddMaterial: iter为空"}));
    EXPECT_EQ(IdsOf(table->GetMaterialList()), (Ids{L"a"}));
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MaterialData::GetMaterialList: pMat为空"}));
    table->DeleteMaterialList({List()[1].get()});
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MaterialData::DeleteMaterialList: iter为空"}));
    EXPECT_EQ(List().size(), 1U);
}

TEST_F(MaterialTable, AnEmptyEntryBehindTheMatchIsNotMet) {
    Attach();
    table->AddMaterial(MakeMaterial(L"a"));
    List().emplace_back();
    table->AddMaterial(MakeMaterial(L"a", L"new"));
    table->DeleteMaterialList({List()[0].get()});
    EXPECT_EQ(TakeDebugWarnings(), Warnings{});
}

TEST_F(MaterialTable, ResetReleasesTheRecordsAndKeepsThePaths) {
    Attach();
    table->AddMaterial(MakeMaterial(L"a"));
    table->reset();
    EXPECT_TRUE(table->GetMaterialList().empty());
    EXPECT_EQ(StoredMaterials(), (Ids{L"a"}));
    table->AddMaterial(MakeMaterial(L"b"));
    EXPECT_EQ(StoredMaterials(), (Ids{L"a", L"b"}));
}

struct MaterialSlice {
    TableId id;
    ObjectType type;
    MEPDisciplineId discipline;
};
constexpr MaterialSlice kSlices[] = {
    {static_cast<TableId>(28), ObjectType::Pipe, MEPDisciplineId::Plumbing},
    {static_cast<TableId>(29), ObjectType::Duct, MEPDisciplineId::HVAC},
    {static_cast<TableId>(30), ObjectType::CableTray, MEPDisciplineId::Electrical},
    {static_cast<TableId>(31), ObjectType::Conduit, MEPDisciplineId::Electrical},
    {static_cast<TableId>(35), ObjectType::Pipe, MEPDisciplineId::HVAC},
};

TEST_F(MaterialTable, EachIdSelectsItsTypeAndDiscipline) {
    for (const auto& slice : kSlices) {
        const auto id = std::to_wstring(static_cast<int>(slice.id));
        util.WriteMaterial(path, ddq, MakeMaterial(id, L"", slice.type, slice.discipline).get());
    }
    for (const auto& slice : kSlices) {
        table->reset();
        table->CollectDesignData(path, L"", slice.id);
        EXPECT_EQ(IdsOf(table->GetMaterialList()), (Ids{std::to_wstring(static_cast<int>(slice.id))}));
    }
}

TEST_F(MaterialTable, CollectionsAppendWithoutAReset) {
    util.WriteMaterial(path, ddq, MakeMaterial(L"a").get());
    util.WriteMaterial(path, ddq, MakeMaterial(L"d", L"", ObjectType::Duct, MEPDisciplineId::HVAC).get());
    for (const TableId id : {TableId::PlumbingPipeMaterials, TableId::PlumbingPipeMaterials, TableId::DuctMaterials})
        table->CollectDesignData(path, L"", id);
    EXPECT_EQ(IdsOf(table->GetMaterialList()), (Ids{L"a", L"a", L"d"}));
}

TEST_F(MaterialTable, AnIdOfAnotherTableReadsNothingButKeepsThePaths) {
    util.WriteMaterial(path, ddq, MakeMaterial(L"a").get());
    for (int id = -1; id <= 40; ++id) {
        if (FindSlice(static_cast<TableId>(id), TableKind::Materials) == nullptr)
            table->CollectDesignData(path, L"", static_cast<TableId>(id));
    }
    EXPECT_TRUE(table->GetMaterialList().empty());
    table->AddMaterial(MakeMaterial(L"b"));
    EXPECT_EQ(StoredMaterials(), (Ids{L"a", L"b"}));
}

} // namespace
