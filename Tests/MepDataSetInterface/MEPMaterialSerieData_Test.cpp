#include "MepDataSetInterface/TableSlices.h"
#include "MepDataSetInterface/TableTestSupport.h"
#include "StoreSupport/SeriesFixture.h"

namespace {

using namespace tolm;
using namespace tolmtest;

class MaterialSerieTable : public TableOnStore<MEPMaterialSerieData, SeriesFixture> {
protected:
    void Add(const wchar_t* id, const wchar_t* name = L"") { table->AddSerie(Serie(id, name)); }
    void Collect(int id) { table->CollectDesignData(path, components, static_cast<TableId>(id)); }
    Ids Listed() { return IdsOf(table->GetSerieList()); }
    Ids Stored() { return IdsOf(Series()); }
};

TEST_F(MaterialSerieTable, BeforeItsCollectionItIsEmptyAndReadsNothing) {
    ASSERT_TRUE(Write(Serie(L"a")) && Write(Group(L"g")));
    EXPECT_EQ(Listed(), Ids{});
    EXPECT_TRUE(table->GetSerieGroupList().empty());
}

TEST_F(MaterialSerieTable, AddWritesToTheStoreAndAppends) {
    Attach(components);
    Add(L"a");
    Add(L"b");
    EXPECT_EQ(Listed(), (Ids{L"a", L"b"}));
    EXPECT_EQ(Stored(), (Ids{L"a", L"b"}));
    EXPECT_EQ(StatusRecords(), (std::vector<std::string>{"SMS a 1 1 2", "SMS b 1 1 2"}));
}

TEST_F(MaterialSerieTable, AddOfAKnownIdReplacesInPlace) {
    Attach(components);
    Add(L"a", L"old");
    Add(L"b");
    Add(L"a", L"new");
    EXPECT_EQ(Listed(), (Ids{L"a", L"b"}));
    EXPECT_EQ(table->GetSerieList()[0]->GetName(), L"new");
    EXPECT_EQ(Read(L"a")->GetName(), L"new");
}

TEST_F(MaterialSerieTable, IdentifiersAreComparedWithTheirCase) {
    Attach(components);
    Add(L"a");
    Add(L"A");
    EXPECT_EQ(Listed(), (Ids{L"a", L"A"}));
}

TEST_F(MaterialSerieTable, AddOfAnEmptyOwnerWritesNothing) {
    Attach(components);
    table->AddSerie({});
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MEPMaterialSerieData::AddSerie: pSerie为空"}));
    EXPECT_EQ(Listed(), Ids{});
    EXPECT_FALSE(Exists(path));
}

TEST_F(MaterialSerieTable, AFailedWriteDoesNotKeepTheRecordOutOfTheList) {
    Add(L"a");
    EXPECT_EQ(Listed(), (Ids{L"a"}));
    EXPECT_FALSE(Exists(path));
}

TEST_F(MaterialSerieTable, AddToTheStoreAloneLeavesTheList) {
    Attach(components);
    const auto serie = Serie(L"a");
    table->AddSerieToDB(serie.get());
    EXPECT_EQ(Listed(), Ids{});
    EXPECT_EQ(Stored(), (Ids{L"a"}));
    table->AddSerieToDB(nullptr);
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::WriteMEPMaterialSerie: newSerie为空"}));
}

TEST_F(MaterialSerieTable, OneReadByItsIdReplacesInPlaceAndWritesNothing) {
    Attach(components);
    Add(L"a", L"old");
    Add(L"b");
    auto serie = Serie(L"a", L"merged");
    auto connection = Connection(L"c");
    AddFitting(*connection, {.component = L"e1"});
    serie->SetConnectionSerie(connection);
    ASSERT_TRUE(Write(serie));
    const auto before = FileBytes(path);
    const auto statusBefore = FileBytes(statusPath);
    table->GetAndAddSerieById(L"a");
    EXPECT_EQ(Listed(), (Ids{L"a", L"b"}));
    const auto* read = table->GetSerieList()[0];
    EXPECT_EQ(read->GetName(), L"merged");
    ASSERT_NE(read->GetConnectionSerie(), nullptr);
    EXPECT_EQ(FittingsOf(*read->GetConnectionSerie()), (std::vector<Fitting>{{.component = L"e1"}}));
    EXPECT_EQ(FileBytes(path), before);
    EXPECT_EQ(FileBytes(statusPath), statusBefore);
}

TEST_F(MaterialSerieTable, OneReadByItsIdIsAppendedWhereTheTableLacksIt) {
    Attach(components);
    Add(L"a");
    ASSERT_TRUE(Write(Serie(L"b")));
    table->GetAndAddSerieById(L"b");
    EXPECT_EQ(Listed(), (Ids{L"a", L"b"}));
}

TEST_F(MaterialSerieTable, AnUnknownIdChangesNothingAndReportsNothing) {
    Attach(components);
    Add(L"a");
    for (const wchar_t* id : {L"x", L"A", L""})
        table->GetAndAddSerieById(id);
    EXPECT_EQ(TakeDebugWarnings(), Warnings{});
    EXPECT_EQ(Listed(), (Ids{L"a"}));
}

TEST_F(MaterialSerieTable, DeleteRemovesFromStoreAndListByIdentifier) {
    Attach(components);
    for (const wchar_t* id : {L"a", L"b", L"c"})
        Add(id);
    const auto unknown = Serie(L"x");
    const auto likeC = Serie(L"c");
    table->DeleteSerieList({table->GetSerieList()[0], unknown.get(), likeC.get()});
    EXPECT_EQ(Listed(), (Ids{L"b"}));
    EXPECT_EQ(Stored(), (Ids{L"b"}));
}

TEST_F(MaterialSerieTable, DeleteWithANullPointerRemovesTheOther) {
    Attach(components);
    Add(L"a");
    table->DeleteSerieList({nullptr, table->GetSerieList()[0]});
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::DeleteMEPMaterialSerieList: serie为空",
                                                         L"MEPMaterialSerieData::DeleteSerieList: serieList[i]为空"}));
    EXPECT_EQ(Listed(), Ids{});
    EXPECT_EQ(Stored(), Ids{});
}

TEST_F(MaterialSerieTable, EmptyEntriesAreReportedAndPassedOver) {
    Attach(components);
    List().emplace_back();
    Add(L"a");
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MEPMaterialSerieData::AddSerie: (*iter)为空"}));
    table->GetAndAddSerieById(L"a");
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MEPMaterialSerieData::GetAndAddSerieById: (*iter)为空"}));
    EXPECT_EQ(Listed(), (Ids{L"a"}));
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MEPMaterialSerieData::GetSerieList: m_serieList[i]为空"}));
    table->DeleteSerieList({List()[1].get()});
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MEPMaterialSerieData::DeleteSerieList: (*iter)为空"}));
    EXPECT_EQ(List().size(), 1U);
}

TEST_F(MaterialSerieTable, ASerieThatASystemListsIsReferredByTheSystemsName) {
    Attach(components);
    Add(L"s");
    Add(L"free");
    auto systemType = SystemType(L"x", L"cold water");
    auto serie = Serie(L"s");
    systemType->AddSystemMaterialSerie(serie);
    ASSERT_TRUE(Write(systemType));
    wstring name = L"before";
    EXPECT_FALSE(table->IsTheMEPMaterialSeireReferred(table->GetSerieList()[1], name));
    EXPECT_EQ(name, L"before");
    EXPECT_TRUE(table->IsTheMEPMaterialSeireReferred(table->GetSerieList()[0], name));
    EXPECT_EQ(name, L"cold water");
    EXPECT_FALSE(table->IsTheMEPMaterialSeireReferred(nullptr, name));
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::IsTheMEPMaterialSeireReferred: pSerie为空"}));
}

TEST_F(MaterialSerieTable, AReferredSerieCanBeDeletedAllTheSame) {
    Attach(components);
    Add(L"s");
    auto systemType = SystemType(L"x", L"cold water");
    auto serie = Serie(L"s");
    systemType->AddSystemMaterialSerie(serie);
    ASSERT_TRUE(Write(systemType));
    table->DeleteSerieList(table->GetSerieList());
    EXPECT_EQ(Listed(), Ids{});
    EXPECT_EQ(Stored(), Ids{});
}

TEST_F(MaterialSerieTable, ResetReleasesSeriesAndGroupsAndKeepsThePaths) {
    Attach(components);
    Add(L"a");
    table->AddSerieGroup(Group(L"g"));
    table->reset();
    EXPECT_EQ(Listed(), Ids{});
    EXPECT_TRUE(table->GetSerieGroupList().empty());
    Add(L"b");
    EXPECT_EQ(Stored(), (Ids{L"a", L"b"}));
}

struct SerieSlice {
    int id;
    Type type;
    Discipline discipline;
    bool hasGroups;
};
constexpr SerieSlice kSlices[] = {
    {24, Type::Pipe, Discipline::Plumbing, true},
    {25, Type::Duct, Discipline::HVAC, true},
    {26, Type::CableTray, Discipline::Electrical, false},
    {27, Type::Conduit, Discipline::Electrical, false},
    {34, Type::Pipe, Discipline::HVAC, true},
};

TEST_F(MaterialSerieTable, EachIdSelectsSeriesAndGroupsOfItsTypeAndDiscipline) {
    for (const auto& slice : kSlices) {
        const wstring id = std::to_wstring(slice.id);
        ASSERT_TRUE(Write(Serie(id, L"", slice.type, slice.discipline)) &&
                    Write(Group(L"g" + id, L"", slice.type, slice.discipline)));
    }
    for (const auto& slice : kSlices) {
        const wstring id = std::to_wstring(slice.id);
        table->reset();
        Collect(slice.id);
        EXPECT_EQ(Listed(), (Ids{id}));
        EXPECT_EQ(IdsOf(table->GetSerieGroupList()), slice.hasGroups ? Ids{L"g" + id} : Ids{}) << slice.id;
    }
}

TEST_F(MaterialSerieTable, AnIdOfAnotherTableReadsNothing) {
    for (const auto& slice : kSlices) {
        const wstring id = std::to_wstring(slice.id);
        ASSERT_TRUE(Write(Serie(id, L"", slice.type, slice.discipline)) &&
                    Write(Group(id, L"", slice.type, slice.discipline)));
    }
    for (int id = -1; id <= 40; ++id) {
        if (FindSlice(static_cast<TableId>(id), TableKind::Series) == nullptr)
            Collect(id);
    }
    EXPECT_EQ(Listed(), Ids{});
    EXPECT_TRUE(table->GetSerieGroupList().empty());
}

TEST_F(MaterialSerieTable, CollectionsAppendWithoutAReset) {
    ASSERT_TRUE(Write(Serie(L"a")) && Write(Group(L"g")) && Write(Serie(L"d", L"", Type::Duct, Discipline::HVAC)));
    for (const int id : {24, 24, 25})
        Collect(id);
    EXPECT_EQ(Listed(), (Ids{L"a", L"a", L"d"}));
    EXPECT_EQ(IdsOf(table->GetSerieGroupList()), (Ids{L"g", L"g"}));
}

TEST_F(MaterialSerieTable, FittingsComeFromTheComponentDatabaseOfTheCollection) {
    auto serie = Serie(L"a");
    auto connection = Connection(L"c");
    AddFitting(*connection, {.component = L"e2"});
    serie->SetConnectionSerie(connection);
    ASSERT_TRUE(Write(serie));
    Collect(24);
    ASSERT_EQ(Listed(), (Ids{L"a"}));
    ASSERT_NE(table->GetSerieList()[0]->GetConnectionSerie(), nullptr);
    EXPECT_EQ(FittingsOf(*table->GetSerieList()[0]->GetConnectionSerie()),
              (std::vector<Fitting>{{.component = L"e2"}}));
}

} // namespace
