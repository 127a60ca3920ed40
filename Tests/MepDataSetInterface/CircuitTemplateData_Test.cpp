#include "MepDataSetInterface/TableTestSupport.h"

#include "StoreSupport/CircuitTemplates.h"
#include "StoreSupport/CloudTestSupport.h"

namespace {

using namespace tolm;
using namespace tolmtest;

/// The table on a fresh store, in a session without a project.
class CircuitTemplateTable : public StoreFixture {
protected:
    void Attach() { table->CollectDesignData(path, static_cast<TableId>(4)); }
    auto& List() { return TableTestAccess::List(dynamic_cast<CircuitTemplateData&>(*table)); }
    void Add(const wchar_t* id, const wchar_t* spec = L"2.5") { table->AddCircuitTemplate(CircuitTemplate(id, spec)); }
    Ids Shown() { return IdsOf(table->GetCircuitTemplateList()); }
    Ids Stored() {
        std::vector<TemplatePtr> list;
        util.ReadCircuitTemplateList(path, ddq, list);
        return IdsOf(list);
    }

    const TestSession session{L"", L""};
    vorn::OwnerPtr<ICircuitTemplateData> table = CircuitTemplateData::Create();
};

TEST_F(CircuitTemplateTable, LendsItsRecordsAndReportsAnEmptyEntry) {
    List().push_back(CircuitTemplate(L"1"));
    List().emplace_back();
    EXPECT_EQ(Shown(), Ids{L"1"});
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              (Warnings{L"CircuitTemplateData::GetCircuitTemplateList: m_circuitTemplateList[i]为空"}));
    table->reset();
    EXPECT_TRUE(List().empty());
}

TEST_F(CircuitTemplateTable, CollectsAllTemplatesOfTheStoreByItsOneId) {
    const auto first = CircuitTemplate(L"1");
    const auto second = CircuitTemplate(L"2");
    ASSERT_TRUE(util.WriteCircuitTemplateList(path, ddq, {first.get(), second.get()}));
    table->CollectDesignData(path, TableId::CircuitTemplates);
    EXPECT_EQ(Shown(), (Ids{L"1", L"2"}));
    table->CollectDesignData(path, TableId::CircuitTemplates);
    EXPECT_EQ(Shown(), (Ids{L"1", L"2", L"1", L"2"})) << "a collection appends";
}

TEST_F(CircuitTemplateTable, ByAnyOtherIdKeepsThePathAndReadsNothing) {
    const auto stored = CircuitTemplate(L"1");
    ASSERT_TRUE(util.WriteCircuitTemplateList(path, ddq, {stored.get()}));
    for (int id = -1; id <= 40; ++id) {
        if (id != 32)
            table->CollectDesignData(path, static_cast<TableId>(id));
    }
    EXPECT_TRUE(Shown().empty());
    Add(L"2");
    EXPECT_EQ(Stored(), (Ids{L"1", L"2"})) << "the path is kept";
}

TEST_F(CircuitTemplateTable, AnAddedTemplateStandsInStoreAndList) {
    Attach();
    Add(L"1");
    Add(L"2");
    EXPECT_EQ(Shown(), (Ids{L"1", L"2"}));
    EXPECT_EQ(Stored(), (Ids{L"1", L"2"}));
}

TEST_F(CircuitTemplateTable, AddOfAKnownIdReplacesInPlace) {
    Attach();
    Add(L"1");
    Add(L"2");
    Add(L"1", L"16");
    EXPECT_EQ(Shown(), (Ids{L"1", L"2"}));
    EXPECT_EQ(table->GetCircuitTemplateList()[0]->GetWireSpec(), L"16");
    EXPECT_EQ(Sql(path, "select WireSpec from CRT order by seq"), (std::vector<SqlRow>{{"16"}, {"2.5"}}));
}

TEST_F(CircuitTemplateTable, AddReportsEmptyEntriesOnTheWay) {
    Attach();
    List().emplace_back();
    List().push_back(CircuitTemplate(L"1"));
    List().emplace_back();
    Add(L"1", L"16");
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              (Warnings{L"CircuitTemplateData::AddCircuitTemplate: m_circuitTemplateList[i]为空"}));
    EXPECT_EQ(List().size(), 3U);
    EXPECT_EQ(List()[1]->GetWireSpec(), L"16");
}

TEST_F(CircuitTemplateTable, AddOfATemplateWithoutAnIdListsItUnderItsNewOne) {
    Attach();
    Add(L"");
    EXPECT_EQ(Shown(), Stored());
    EXPECT_EQ(Shown().at(0).size(), 36U);
}

TEST_F(CircuitTemplateTable, AddOfNothingIsReported) {
    Attach();
    table->AddCircuitTemplate({});
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              (Warnings{L"CircuitTemplateData::AddCircuitTemplate: pCircuitTemplate为空"}));
    EXPECT_FALSE(Exists(path));
}

TEST_F(CircuitTemplateTable, AListGoesToTheStoreAlone) {
    Attach();
    const auto first = CircuitTemplate(L"1");
    const auto second = CircuitTemplate(L"2");
    table->AddCircuitTemplateListToDB({first.get(), second.get()});
    EXPECT_EQ(Stored(), (Ids{L"1", L"2"}));
    EXPECT_TRUE(Shown().empty());
}

TEST_F(CircuitTemplateTable, AListIsSentAsOne) {
    Attach();
    ScriptedServer server;
    server.On("/", ScriptedAnswer::Data("null"));
    const TestSession open(server.Address());
    const auto first = CircuitTemplate(L"1");
    const auto second = CircuitTemplate(L"2");
    table->AddCircuitTemplateListToDB({first.get(), second.get()});
    EXPECT_EQ(OnlyRequest(server).path, "/api/CreateList/P1/CircuitTemplate");
}

TEST_F(CircuitTemplateTable, ADeletionTakesItsOwnRecordsFromStoreAndList) {
    Attach();
    for (const wchar_t* id : {L"1", L"2", L"3"})
        Add(id);
    const auto shown = table->GetCircuitTemplateList();
    const auto unknown = CircuitTemplate(L"9");
    table->DeleteCircuitTemplateList({shown[2], unknown.get(), shown[0]});
    EXPECT_EQ(Shown(), Ids{L"2"});
    EXPECT_EQ(Stored(), Ids{L"2"});
}

TEST_F(CircuitTemplateTable, ADeletionWithANullEntryStopsInTheStoreAndGoesOnInTheList) {
    Attach();
    Add(L"1");
    Add(L"2");
    const auto shown = table->GetCircuitTemplateList();
    table->DeleteCircuitTemplateList({shown[0], nullptr, shown[1]});
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              (Warnings{L"MepQbaseUtil::DeleteCircuitTemplateList: circuitTemplateList[i]为空",
                        L"CircuitTemplateData::DeleteCircuitTemplateList: pCircuitTemplateList[i]为空"}));
    EXPECT_EQ(Stored(), Ids{L"2"});
    EXPECT_TRUE(Shown().empty());
}

TEST_F(CircuitTemplateTable, ADeletionReportsEmptyEntriesOnTheWay) {
    Attach();
    List().emplace_back();
    List().push_back(CircuitTemplate(L"1"));
    const auto one = CircuitTemplate(L"1");
    table->DeleteCircuitTemplateList({one.get()});
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              (Warnings{L"CircuitTemplateData::DeleteCircuitTemplateList: (*iter)为空"}));
    EXPECT_EQ(List().size(), 1U);
}

TEST_F(CircuitTemplateTable, OfADatasetIsCollectedWithTheOthers) {
    const auto stored = CircuitTemplate(L"1");
    ASSERT_TRUE(util.WriteCircuitTemplateList(path, ddq, {stored.get()}));
    const auto dataset = TolmDataset::Create(path, L"", L"", L"");
    dataset->CollectData(false, {TableId::CircuitTemplates});
    EXPECT_EQ(IdsOf(dataset->GetCircuitTemplateData()->GetCircuitTemplateList()), Ids{L"1"});
}

} // namespace
