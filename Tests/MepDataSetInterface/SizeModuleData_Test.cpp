#include "MepDataSetInterface/TableSlices.h"
#include "MepDataSetInterface/TableTestSupport.h"
#include "MepDatabase/StoreSchema.h"

namespace {

using namespace tolm;
using namespace tolmtest;

class SizeModuleTable : public TableOnStore<SizeModuleData> {};

TEST_F(SizeModuleTable, AddWritesToTheStoreAndAppends) {
    Attach();
    table->AddSizeModule(MakeSizeModule(L"a"));
    table->AddSizeModule(MakeSizeModule(L"b"));
    EXPECT_EQ(IdsOf(table->GetSizeList()), (Ids{L"a", L"b"}));
    EXPECT_EQ(StoredSizeModules(), (Ids{L"a", L"b"}));
    EXPECT_EQ(StatusRecords(), (std::vector<std::string>{"PSI a 1 1 2", "PSI b 1 1 2"}));
}

TEST_F(SizeModuleTable, AddOfAKnownIdReplacesInPlace) {
    Attach();
    table->AddSizeModule(MakeSizeModule(L"a", L"old"));
    table->AddSizeModule(MakeSizeModule(L"b"));
    table->AddSizeModule(MakeSizeModule(L"a", L"new"));
    EXPECT_EQ(IdsOf(table->GetSizeList()), (Ids{L"a", L"b"}));
    EXPECT_EQ(table->GetSizeList()[0]->GetName(), L"new");
}

TEST_F(SizeModuleTable, AddOfAnEmptyOwnerWritesNothing) {
    Attach();
    table->AddSizeModule({});
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"SizeModuleData::AddSizeModule: pNewSize为空"}));
    EXPECT_FALSE(Exists(path));
}

TEST_F(SizeModuleTable, AddToTheStoreAloneLeavesTheList) {
    Attach();
    const auto module = MakeSizeModule(L"a");
    table->AddSizeModuleToDB(module.get());
    EXPECT_TRUE(table->GetSizeList().empty());
    EXPECT_EQ(StoredSizeModules(), (Ids{L"a"}));
    table->AddSizeModuleToDB(nullptr);
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::WriteSizeModule: newSize为空"}));
}

TEST_F(SizeModuleTable, AFailedWriteDoesNotKeepTheRecordOutOfTheList) {
    table->AddSizeModule(MakeSizeModule(L"a"));
    EXPECT_EQ(IdsOf(table->GetSizeList()), (Ids{L"a"}));
}

TEST_F(SizeModuleTable, DeleteRemovesFromStoreAndListByIdentifier) {
    Attach();
    for (const wchar_t* id : {L"a", L"b", L"c"})
        table->AddSizeModule(MakeSizeModule(id));
    const auto unknown = MakeSizeModule(L"x");
    table->DeleteSizeModuleList({table->GetSizeList()[1], unknown.get()});
    EXPECT_EQ(IdsOf(table->GetSizeList()), (Ids{L"a", L"c"}));
    EXPECT_EQ(StoredSizeModules(), (Ids{L"a", L"c"}));
}

TEST_F(SizeModuleTable, DeleteWithANullPointerRemovesTheOther) {
    Attach();
    table->AddSizeModule(MakeSizeModule(L"a"));
    table->DeleteSizeModuleList({nullptr, table->GetSizeList()[0]});
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              (Warnings{L"MepQbaseUtil::DeleteSizeModuleList: size为空",
                        L"SizeModuleData::DeleteSizeModuleList: sizeModuleList[i]为空"}));
    EXPECT_TRUE(table->GetSizeList().empty());
}

TEST_F(SizeModuleTable, EmptyEntriesAreReportedAndPassedOver) {
    Attach();
    List().emplace_back();
    table->AddSizeModule(MakeSizeModule(L"a"));
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"SizeModuleData::AddSizeModule: *iter为空"}));
    EXPECT_EQ(IdsOf(table->GetSizeList()), (Ids{L"a"}));
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"SizeModuleData::GetSizeList: m_sizeModuleList[i]为空"}));
    table->DeleteSizeModuleList({List()[1].get()});
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"SizeModuleData::DeleteSizeModuleList: (*iter)为空"}));
    EXPECT_EQ(List().size(), 1U);
}

TEST_F(SizeModuleTable, WithoutAReferrerAModuleIsNotReferred) {
    Attach();
    table->AddSizeModule(MakeSizeModule(L"a"));
    wstring name;
    EXPECT_FALSE(table->IsTheSizeModuleReferred(table->GetSizeList()[0], name));
    EXPECT_EQ(name, L"");
}

TEST_F(SizeModuleTable, AModuleThatASerieUsesIsReferredByTheSeriesName) {
    Attach();
    table->AddSizeModule(MakeSizeModule(L"a"));
    CQbase qb;
    ASSERT_TRUE(qb.openDatabase(ddq, path, false));
    ASSERT_TRUE(qb.lockForUpdate());
    ASSERT_TRUE(qb.createRec(schema::kMaterialSerie, L"p-1"));
    ASSERT_TRUE(qb.setWsz(schema::kName, L"cold water pipes", -1));
    ASSERT_TRUE(qb.setShort(schema::kMEPType, 1));
    ASSERT_TRUE(qb.setShort(schema::kDisciplineId, 2));
    ASSERT_TRUE(qb.setWsz(schema::kSizeModuleId, L"a", -1));
    ASSERT_TRUE(qb.saveRec());
    ASSERT_TRUE(qb.closeDatabase());
    wstring name;
    EXPECT_TRUE(table->IsTheSizeModuleReferred(table->GetSizeList()[0], name));
    EXPECT_EQ(name, L"cold water pipes");
}

TEST_F(SizeModuleTable, ResetReleasesTheRecordsAndKeepsThePaths) {
    Attach();
    table->AddSizeModule(MakeSizeModule(L"a"));
    table->reset();
    EXPECT_TRUE(table->GetSizeList().empty());
    table->AddSizeModule(MakeSizeModule(L"b"));
    EXPECT_EQ(StoredSizeModules(), (Ids{L"a", L"b"}));
}

struct SizeSlice {
    int id;
    ObjectType type;
    MEPDisciplineId discipline;
};
constexpr SizeSlice kSlices[] = {
    {7, ObjectType::Pipe, MEPDisciplineId::Plumbing},         {10, ObjectType::Duct, MEPDisciplineId::HVAC},
    {11, ObjectType::CableTray, MEPDisciplineId::Electrical}, {12, ObjectType::Conduit, MEPDisciplineId::Electrical},
    {13, ObjectType::Wire, MEPDisciplineId::Electrical},      {33, ObjectType::Pipe, MEPDisciplineId::HVAC},
};

TEST_F(SizeModuleTable, EachIdSelectsItsTypeAndDiscipline) {
    for (const auto& slice : kSlices)
        util.WriteSizeModule(path, ddq,
                             MakeSizeModule(std::to_wstring(slice.id), L"", slice.type, slice.discipline).get());
    for (const auto& slice : kSlices) {
        table->reset();
        table->CollectDesignData(path, L"", static_cast<TableId>(slice.id));
        EXPECT_EQ(IdsOf(table->GetSizeList()), (Ids{std::to_wstring(slice.id)}));
    }
}

TEST_F(SizeModuleTable, AnIdOfAnotherTableReadsNothingButKeepsThePaths) {
    for (const auto& slice : kSlices)
        util.WriteSizeModule(path, ddq,
                             MakeSizeModule(std::to_wstring(slice.id), L"", slice.type, slice.discipline).get());
    for (int id = -1; id <= 40; ++id) {
        if (FindSlice(static_cast<TableId>(id), TableKind::SizeModules) == nullptr)
            table->CollectDesignData(path, L"", static_cast<TableId>(id));
    }
    EXPECT_TRUE(table->GetSizeList().empty());
    table->AddSizeModule(MakeSizeModule(L"b"));
    EXPECT_EQ(StoredSizeModules(), (Ids{L"7", L"b"}));
}

TEST_F(SizeModuleTable, CollectionsAppendWithoutAReset) {
    for (const auto& slice : kSlices)
        util.WriteSizeModule(path, ddq,
                             MakeSizeModule(std::to_wstring(slice.id), L"", slice.type, slice.discipline).get());
    for (const int id : {10, 10, 33})
        table->CollectDesignData(path, L"", static_cast<TableId>(id));
    EXPECT_EQ(IdsOf(table->GetSizeList()), (Ids{L"10", L"10", L"33"}));
}

} // namespace
