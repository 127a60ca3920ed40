#include "MepDataSetInterface/TableTestSupport.h"
#include "StoreSupport/SeriesFixture.h"

namespace {

using namespace tolm;
using namespace tolmtest;

class SerieGroupTable : public TableOnStore<MEPMaterialSerieData, SeriesFixture> {
protected:
    void SetUp() override {
        SeriesFixture::SetUp();
        Attach(components);
    }
    void Add(const std::vector<const wchar_t*>& ids) {
        for (const wchar_t* id : ids)
            table->AddSerieGroup(Group(id));
    }
    auto& Groups() { return TableTestAccess::Groups(dynamic_cast<MEPMaterialSerieData&>(*table)); }
    Ids Listed() { return IdsOf(table->GetSerieGroupList()); }
    Ids Stored() {
        std::vector<GroupPtr> list;
        util.ReadMEPMaterialSerieGroupList(path, ddq, Type::Pipe, Discipline::Plumbing, list);
        return IdsOf(list);
    }
};

TEST_F(SerieGroupTable, AddWritesToTheStoreAndAppends) {
    Add({L"a", L"b"});
    EXPECT_EQ(Listed(), (Ids{L"a", L"b"}));
    EXPECT_EQ(Stored(), (Ids{L"a", L"b"}));
    EXPECT_EQ(StatusRecords(), (std::vector<std::string>{"MSG a 1 1 2", "MSG b 1 1 2"}));
    EXPECT_TRUE(table->GetSerieList().empty());
}

TEST_F(SerieGroupTable, AddOfAKnownIdReplacesInPlace) {
    table->AddSerieGroup(Group(L"a", L"old"));
    Add({L"b"});
    table->AddSerieGroup(Group(L"a", L"new"));
    EXPECT_EQ(Listed(), (Ids{L"a", L"b"}));
    EXPECT_EQ(table->GetSerieGroupList()[0]->GetName(), L"new");
}

TEST_F(SerieGroupTable, AddOfAnEmptyOwnerWritesNothing) {
    table->AddSerieGroup({});
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MEPMaterialSerieData::AddSerieGroup: pGroup为空"}));
    EXPECT_EQ(Listed(), Ids{});
    EXPECT_FALSE(Exists(path));
}

TEST_F(SerieGroupTable, AFailedWriteDoesNotKeepTheGroupOutOfTheList) {
    const auto detached = MEPMaterialSerieData::Create();
    detached->AddSerieGroup(Group(L"a"));
    EXPECT_EQ(IdsOf(detached->GetSerieGroupList()), (Ids{L"a"}));
    EXPECT_FALSE(Exists(path));
}

TEST_F(SerieGroupTable, EmptyEntriesAreReportedAndPassedOver) {
    Groups().emplace_back();
    Add({L"a"});
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MEPMaterialSerieData::AddSerieGroup: (*iter)为空"}));
    EXPECT_EQ(Listed(), (Ids{L"a"}));
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              (Warnings{L"MEPMaterialSerieData::GetSerieGroupList: m_serieGroupList[i]为空"}));
}

TEST_F(SerieGroupTable, DeleteOfOneGroupTakesTheFirstOfTheTableAndTheNamedOneOfTheStore) {
    Add({L"a", L"b", L"c"});
    table->DeleteSerieGroupList({table->GetSerieGroupList()[2]});
    EXPECT_EQ(Listed(), (Ids{L"b", L"c"}));
    EXPECT_EQ(Stored(), (Ids{L"a", L"b"}));
}

TEST_F(SerieGroupTable, DeleteOfTheFrontAgreesWithTheStore) {
    Add({L"a", L"b"});
    table->DeleteSerieGroupList({table->GetSerieGroupList()[0]});
    EXPECT_EQ(Listed(), (Ids{L"b"}));
    EXPECT_EQ(Stored(), (Ids{L"b"}));
}

TEST_F(SerieGroupTable, DeleteOfSeveralTakesPositionsThatShift) {
    Add({L"a", L"b", L"c", L"d"});
    table->DeleteSerieGroupList({table->GetSerieGroupList()[2], table->GetSerieGroupList()[3]});
    EXPECT_EQ(Listed(), (Ids{L"b", L"d"})) << "a stood at 0, then c at 1";
    EXPECT_EQ(Stored(), (Ids{L"a", L"b"}));
}

TEST_F(SerieGroupTable, DeleteOfAnUnknownGroupTakesTheTablesOwnAllTheSame) {
    Add({L"a", L"b"});
    const auto unknown = Group(L"x");
    table->DeleteSerieGroupList({unknown.get()});
    EXPECT_EQ(Listed(), (Ids{L"b"}));
    EXPECT_EQ(Stored(), (Ids{L"a", L"b"}));
}

TEST_F(SerieGroupTable, DeleteOfASecondOneOfTheSameIdentifierTakesTheFirst) {
    Add({L"a", L"b"});
    table->CollectDesignData(path, components, TableId::PlumbingPipeSeries);
    ASSERT_EQ(Listed(), (Ids{L"a", L"b", L"a", L"b"}));
    const auto* second = Groups()[3].get();
    table->DeleteSerieGroupList({nullptr, nullptr, nullptr, second});
    EXPECT_EQ(TakeDebugWarnings().size(), 6U);
    ASSERT_EQ(Listed(), (Ids{L"a", L"a", L"b"}));
    EXPECT_EQ(Groups()[2].get(), second);
}

TEST_F(SerieGroupTable, ANullInputIsReportedAndKeepsItsPosition) {
    Add({L"a", L"b", L"c"});
    table->DeleteSerieGroupList({nullptr, table->GetSerieGroupList()[2]});
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              (Warnings{L"MepQbaseUtil::DeleteMEPMaterialSerieGroupList: groupList[i]为空",
                        L"MEPMaterialSerieData::DeleteSerieGroupList: groupList[i]为空"}));
    EXPECT_EQ(Listed(), (Ids{L"a", L"c"}));
    EXPECT_EQ(Stored(), (Ids{L"a", L"b"}));
}

TEST_F(SerieGroupTable, AnEmptyEntryOnTheWalkIsReportedAndPassedOver) {
    Groups().emplace_back();
    Groups().push_back(Group(L"a"));
    const auto input = Group(L"x");
    table->DeleteSerieGroupList({nullptr, input.get()});
    const auto warnings = TakeDebugWarningsWithFunction();
    ASSERT_FALSE(warnings.empty());
    EXPECT_EQ(warnings.back(), L"MEPMaterialSerieData::DeleteSerieGroupList: (*iter)为空");
    EXPECT_EQ(Groups().size(), 1U);
}

TEST_F(SerieGroupTable, AnEmptyEntryAtThePositionIsReportedForEachGroupAndNothingGoes) {
    Groups().emplace_back();
    Groups().push_back(Group(L"a"));
    Groups().push_back(Group(L"b"));
    const auto input = Group(L"a");
    table->DeleteSerieGroupList({input.get()});
    const wstring function = L"MEPMaterialSerieData::DeleteSerieGroupList: ";
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              (Warnings{function + L"(*iter)为空", function + L"m_serieGroupList[i]为空",
                        function + L"m_serieGroupList[i]为空"}));
    EXPECT_EQ(Groups().size(), 3U);
}

TEST_F(SerieGroupTable, APositionBeyondTheTableIsReportedAndNothingGoes) {
    Add({L"a", L"b"});
    table->DeleteSerieGroupList(table->GetSerieGroupList());
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              (Warnings{L"MEPMaterialSerieData::DeleteSerieGroupList: m_serieGroupList[i]为空"}));
    EXPECT_EQ(Listed(), (Ids{L"b"})) << "position 1 was gone when its turn came";
    EXPECT_EQ(Stored(), Ids{});
}

TEST_F(SerieGroupTable, DeleteWithAnEmptyTableReachesTheStoreAlone) {
    ASSERT_TRUE(Write(Group(L"a")) && Write(Group(L"b")));
    const auto first = Group(L"a");
    const auto second = Group(L"b");
    table->DeleteSerieGroupList({first.get(), second.get()});
    EXPECT_EQ(TakeDebugWarnings(), Warnings{});
    EXPECT_EQ(Stored(), Ids{});
}

TEST_F(SerieGroupTable, ACollectionAfterTheDeleteAgreesWithTheStore) {
    Add({L"a", L"b", L"c"});
    table->DeleteSerieGroupList({table->GetSerieGroupList()[2]});
    table->reset();
    table->CollectDesignData(path, components, TableId::PlumbingPipeSeries);
    EXPECT_EQ(Listed(), (Ids{L"a", L"b"}));
}

} // namespace
