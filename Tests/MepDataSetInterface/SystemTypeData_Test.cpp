#include "MepDataSetInterface/TableSlices.h"
#include "MepDataSetInterface/TableTestSupport.h"
#include "StoreSupport/SeriesFixture.h"

namespace {

using namespace tolm;
using namespace tolmtest;

class SystemTypeTable : public TableOnStore<SystemTypeData, SeriesFixture> {
protected:
    void Add(const wchar_t* id, const wchar_t* name = L"") { table->AddSystemType(SystemType(id, name)); }
    Ids Listed() { return IdsOf(table->GetSystemTypeList()); }
    Ids Stored() {
        std::vector<SystemTypePtr> list;
        util.ReadSystemTypeList(path, ddq, components, Discipline::Plumbing, Type::Pipe, list);
        return IdsOf(list);
    }
};

TEST_F(SystemTypeTable, BeforeItsCollectionItIsEmptyAndReadsNothing) {
    ASSERT_TRUE(Write(SystemType(L"a")));
    EXPECT_EQ(Listed(), Ids{});
}

TEST_F(SystemTypeTable, AddWritesToTheStoreAndAppends) {
    Attach(components);
    Add(L"a");
    Add(L"b");
    EXPECT_EQ(Listed(), (Ids{L"a", L"b"}));
    EXPECT_EQ(Stored(), (Ids{L"a", L"b"}));
    EXPECT_EQ(StatusRecords(), (std::vector<std::string>{"SYS a 1 1 2", "SYS b 1 1 2"}));
}

TEST_F(SystemTypeTable, AddOfAKnownIdReplacesInPlace) {
    Attach(components);
    Add(L"a", L"old");
    Add(L"b");
    Add(L"a", L"new");
    EXPECT_EQ(Listed(), (Ids{L"a", L"b"}));
    EXPECT_EQ(table->GetSystemTypeList()[0]->GetName(), L"new");
    SystemTypePtr stored;
    ASSERT_TRUE(util.ReadSystemType(path, ddq, components, L"a", stored));
    EXPECT_EQ(stored->GetName(), L"new");
}

TEST_F(SystemTypeTable, IdentifiersAreComparedWithTheirCase) {
    Attach(components);
    Add(L"a");
    Add(L"A");
    EXPECT_EQ(Listed(), (Ids{L"a", L"A"}));
}

TEST_F(SystemTypeTable, AddOfAnEmptyOwnerWritesNothing) {
    Attach(components);
    table->AddSystemType({});
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"SystemTypeData::AddSystemType: pSystemType为空"}));
    EXPECT_EQ(Listed(), Ids{});
    EXPECT_FALSE(Exists(path));
}

TEST_F(SystemTypeTable, AFailedWriteDoesNotKeepTheRecordOutOfTheList) {
    Add(L"a");
    EXPECT_EQ(Listed(), (Ids{L"a"}));
    EXPECT_FALSE(Exists(path));
}

TEST_F(SystemTypeTable, AddToTheStoreAloneLeavesTheList) {
    Attach(components);
    const auto systemType = SystemType(L"a");
    table->AddSystemTypeToDB(systemType.get());
    EXPECT_EQ(Listed(), Ids{});
    EXPECT_EQ(Stored(), (Ids{L"a"}));
    table->AddSystemTypeToDB(nullptr);
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::WriteSystemType: newSystem为空"}));
}

TEST_F(SystemTypeTable, OneReadByItsIdReplacesInPlaceAndWritesNothing) {
    Attach(components);
    Add(L"a", L"old");
    Add(L"b");
    auto systemType = SystemType(L"a", L"merged");
    auto serie = Serie(L"s");
    systemType->AddSystemMaterialSerie(serie);
    ASSERT_TRUE(Write(Serie(L"s", L"steel")) && Write(systemType));
    const auto before = FileBytes(path);
    const auto statusBefore = FileBytes(statusPath);
    table->GetAndAddSystemTypeById(L"a");
    EXPECT_EQ(Listed(), (Ids{L"a", L"b"}));
    const auto* read = table->GetSystemTypeList()[0];
    EXPECT_EQ(read->GetName(), L"merged");
    ASSERT_EQ(read->GetSystemMaterialSerieList().size(), 1U);
    EXPECT_EQ(read->GetSystemMaterialSerieList()[0]->GetName(), L"steel");
    EXPECT_EQ(FileBytes(path), before);
    EXPECT_EQ(FileBytes(statusPath), statusBefore);
}

TEST_F(SystemTypeTable, OneReadByItsIdIsAppendedWhereTheTableLacksIt) {
    Attach(components);
    Add(L"a");
    ASSERT_TRUE(Write(SystemType(L"b")));
    table->GetAndAddSystemTypeById(L"b");
    EXPECT_EQ(Listed(), (Ids{L"a", L"b"}));
}

TEST_F(SystemTypeTable, AnUnknownIdChangesNothingAndReportsNothing) {
    Attach(components);
    Add(L"a");
    for (const wchar_t* id : {L"x", L"A", L""})
        table->GetAndAddSystemTypeById(id);
    EXPECT_EQ(TakeDebugWarnings(), Warnings{});
    EXPECT_EQ(Listed(), (Ids{L"a"}));
}

TEST_F(SystemTypeTable, DeleteRemovesFromStoreAndListByIdentifier) {
    Attach(components);
    for (const wchar_t* id : {L"a", L"b", L"c"})
        Add(id);
    const auto unknown = SystemType(L"x");
    const auto likeC = SystemType(L"c");
    table->DeleteSystemTypeList({table->GetSystemTypeList()[0], unknown.get(), likeC.get()});
    EXPECT_EQ(Listed(), (Ids{L"b"}));
    EXPECT_EQ(Stored(), (Ids{L"b"}));
}

TEST_F(SystemTypeTable, DeleteWithANullPointerRemovesTheOther) {
    Attach(components);
    Add(L"a");
    table->DeleteSystemTypeList({nullptr, table->GetSystemTypeList()[0]});
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              (Warnings{L"MepQbaseUtil::DeleteSystemTypeList: systemType为空",
                        L"SystemTypeData::DeleteSystemTypeList: systemTypeList[i]为空"}));
    EXPECT_EQ(Listed(), Ids{});
    EXPECT_EQ(Stored(), Ids{});
}

TEST_F(SystemTypeTable, EmptyEntriesAreReportedAndPassedOver) {
    Attach(components);
    List().emplace_back();
    Add(L"a");
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"SystemTypeData::AddSystemType: (*iter)为空"}));
    table->GetAndAddSystemTypeById(L"a");
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"SystemTypeData::GetAndAddSystemTypeById: (*iter)为空"}));
    EXPECT_EQ(Listed(), (Ids{L"a"}));
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              (Warnings{L"SystemTypeData::GetSystemTypeList: m_SystemTypeList[i]为空"}));
    table->DeleteSystemTypeList({List()[1].get()});
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"SystemTypeData::DeleteSystemTypeList: (*iter)为空"}));
    EXPECT_EQ(List().size(), 1U);
}

TEST_F(SystemTypeTable, ResetReleasesTheRecordsAndKeepsThePaths) {
    Attach(components);
    Add(L"a");
    table->reset();
    EXPECT_EQ(Listed(), Ids{});
    Add(L"b");
    EXPECT_EQ(Stored(), (Ids{L"a", L"b"}));
}

struct SystemSlice {
    int id;
    Discipline discipline;
    Type type;
};
constexpr SystemSlice kSlices[] = {
    {0, Discipline::Plumbing, Type::Pipe},
    {1, Discipline::HVAC, Type::Duct},
    {2, Discipline::HVAC, Type::Pipe},
    {3, Discipline::Electrical, Type::ElectricalSystem},
};

TEST_F(SystemTypeTable, EachIdSelectsItsDisciplineAndType) {
    for (const auto& slice : kSlices)
        ASSERT_TRUE(Write(SystemType(std::to_wstring(slice.id), L"", slice.type, slice.discipline)));
    for (const auto& slice : kSlices) {
        table->reset();
        table->CollectDesignData(path, components, static_cast<TableId>(slice.id));
        EXPECT_EQ(Listed(), (Ids{std::to_wstring(slice.id)}));
    }
}

TEST_F(SystemTypeTable, AnIdOfAnotherTableReadsNothing) {
    for (const auto& slice : kSlices)
        ASSERT_TRUE(Write(SystemType(std::to_wstring(slice.id), L"", slice.type, slice.discipline)));
    for (int id = -1; id <= 40; ++id) {
        if (FindSlice(static_cast<TableId>(id), TableKind::SystemTypes) == nullptr)
            table->CollectDesignData(path, components, static_cast<TableId>(id));
    }
    EXPECT_EQ(Listed(), Ids{});
}

TEST_F(SystemTypeTable, CollectionsAppendWithoutAReset) {
    ASSERT_TRUE(Write(SystemType(L"a")) && Write(SystemType(L"d", L"", Type::Duct, Discipline::HVAC)));
    for (const TableId id :
         {TableId::PlumbingPipeSystemTypes, TableId::PlumbingPipeSystemTypes, TableId::DuctSystemTypes})
        table->CollectDesignData(path, components, id);
    EXPECT_EQ(Listed(), (Ids{L"a", L"a", L"d"}));
}

TEST_F(SystemTypeTable, FittingsComeFromTheComponentDatabaseOfTheCollection) {
    auto serie = Serie(L"s");
    auto connection = Connection(L"c");
    AddFitting(*connection, {.component = L"e2"});
    serie->SetConnectionSerie(connection);
    auto systemType = SystemType(L"a");
    auto link = Serie(L"s");
    systemType->AddSystemMaterialSerie(link);
    ASSERT_TRUE(Write(serie) && Write(systemType));
    const auto fittings = [this] {
        const auto series = table->GetSystemTypeList().at(0)->GetSystemMaterialSerieList();
        return FittingsOf(*series.at(0)->GetConnectionSerie());
    };
    table->CollectDesignData(path, components, TableId::PlumbingPipeSystemTypes);
    EXPECT_EQ(fittings(), (std::vector<Fitting>{{.component = L"e2"}}));
    table->reset();
    table->GetAndAddSystemTypeById(L"a");
    EXPECT_EQ(fittings(), (std::vector<Fitting>{{.component = L"e2"}}));
}

} // namespace
