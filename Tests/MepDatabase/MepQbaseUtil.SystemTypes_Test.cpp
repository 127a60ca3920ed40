#include "MepDatabase/MepQbaseUtil.h"
#include "MepDatabase/StoreFrame.h"
#include "StoreSupport/MepQbaseUtilTestAccess.h"
#include "StoreSupport/SeriesFixture.h"

namespace {

using namespace tolm;
using namespace tolmtest;
using Access = MepQbaseUtilTestAccess;
using Rows = std::vector<SqlRow>;
using Ids = std::vector<wstring>;

SizeModulePtr Cable(const wstring& id, wstring specName) {
    auto module = SizeModule(id, L"cable " + specName, Type::Wire, Discipline::Electrical);
    module->SetMEPType(Type::Wire);
    module->SetCableSpecTypeName(specName);
    module->AddCableSpecification({L"2.5", 24, EnvironmentTemperature::Celsius30});
    return module;
}

/// A system type with references to these series and cable tables, which are made here and stored nowhere.
SystemTypePtr Linked(SystemTypePtr systemType, const Ids& series, const Ids& cables = {}) {
    for (const wstring& id : series) {
        auto serie = Serie(id);
        systemType->AddSystemMaterialSerie(serie);
    }
    for (const wstring& id : cables)
        systemType->AddCableSpecType(Cable(id, L"name of " + id));
    return systemType;
}

SystemTypePtr Circuit(const wstring& id) {
    return SystemType(id, L"lighting", Type::ElectricalSystem, Discipline::Electrical);
}

Ids SerieIds(const IProjectSettingSystemType& systemType) {
    Ids ids;
    for (const auto* serie : systemType.GetSystemMaterialSerieList())
        ids.push_back(serie->GetId());
    return ids;
}

class SystemTypes : public SeriesFixture {
protected:
    using SeriesFixture::Read;
    std::vector<SystemTypePtr> List(Type type = Type::Pipe, Discipline discipline = Discipline::Plumbing) {
        std::vector<SystemTypePtr> list;
        const bool found = util.ReadSystemTypeList(path, ddq, components, discipline, type, list);
        EXPECT_EQ(found, !list.empty());
        return list;
    }
    SystemTypePtr ReadSystem(const wstring& id) {
        SystemTypePtr systemType;
        EXPECT_TRUE(util.ReadSystemType(path, ddq, components, id, systemType));
        return systemType ? std::move(systemType) : SystemType(L"none");
    }
};

TEST_F(SystemTypes, EveryFieldComesBack) {
    auto systemType = SystemType(L"x", L"supply", Type::Duct, Discipline::HVAC);
    wstring description = L"fresh air";
    wstring code = L"SA";
    systemType->SetDescription(description);
    systemType->SetCode(code);
    systemType->SetCreateTime(1'700'000'000'123);
    systemType->SetClassification(static_cast<MEPSystemClassification>(3));
    ASSERT_TRUE(Write(systemType));
    const auto read = ReadSystem(L"x");
    EXPECT_EQ(read->GetId(), L"x");
    EXPECT_EQ(read->GetName(), L"supply");
    EXPECT_EQ(read->GetDescription(), L"fresh air");
    EXPECT_EQ(read->GetCode(), L"SA");
    EXPECT_EQ(read->GetCreateTime(), 1'700'000'000'123);
    EXPECT_EQ(static_cast<int>(read->GetClassification()), 3);
    EXPECT_EQ(read->GetMEPType(), Type::Duct);
    EXPECT_EQ(read->GetDisciplineId(), Discipline::HVAC);
    EXPECT_TRUE(read->GetSystemMaterialSerieList().empty());
    EXPECT_TRUE(read->GetCableSpecTypeList().empty());
}

TEST_F(SystemTypes, SeriesAndCablesComeBackWhole) {
    auto serie = Serie(L"s", L"steel");
    auto connection = Connection(L"c");
    AddFitting(*connection, {.component = L"e1"});
    serie->SetConnectionSerie(connection);
    ASSERT_TRUE(Write(serie) && Write(Serie(L"r", L"copper")) && Write(Cable(L"w", L"BV")) &&
                Write(Linked(Circuit(L"x"), {L"s", L"r"}, {L"w"})));
    const auto read = ReadSystem(L"x");
    const auto series = read->GetSystemMaterialSerieList();
    ASSERT_EQ(series.size(), 2U);
    EXPECT_EQ(series[0]->GetName(), L"steel");
    EXPECT_EQ(series[0]->GetConnectionSerie()->GetProducts().size(), 1U);
    EXPECT_EQ(series[1]->GetName(), L"copper");
    const auto cables = read->GetCableSpecTypeList();
    ASSERT_EQ(cables.size(), 1U);
    EXPECT_EQ(cables.at(L"BV")->GetId(), L"w");
    EXPECT_EQ(cables.at(L"BV")->GetCableSpecificationList().size(), 1U);
}

TEST_F(SystemTypes, TheFileShowsFieldsAndReferencesAlone) {
    ASSERT_TRUE(Write(Linked(Circuit(L"x"), {L"s", L"r"}, {L"w"})));
    EXPECT_EQ(Sql(path, "select Name, Code, Description, CreateTime, SystemClassification, DisciplineId, MEPType from "
                        "SYS"),
              (Rows{{"lighting", "", "", "0.0", "21", "3", "6"}}));
    EXPECT_EQ(SqlValue(path, "select count(*) from SMS"), "0");
    EXPECT_EQ(SqlValue(path, "select count(*) from PSI"), "0");
    CQbase qb;
    ASSERT_TRUE(Access::OpenQbase(path, ddq, &qb, false, false) && qb.fetchFirstMember("SYS"));
    EXPECT_EQ(ReadIdList(qb, 1607), (Ids{L"s", L"r"}));
    EXPECT_EQ(ReadIdList(qb, 1610), (Ids{L"w"}));
}

TEST_F(SystemTypes, CablesAreStoredInOrderOfTheirNames) {
    auto systemType = Circuit(L"x");
    systemType->AddCableSpecType(Cable(L"1", L"YJV"));
    systemType->AddCableSpecType(Cable(L"2", L"BV"));
    ASSERT_TRUE(Write(systemType));
    CQbase qb;
    ASSERT_TRUE(Access::OpenQbase(path, ddq, &qb, false, false) && qb.fetchFirstMember("SYS"));
    EXPECT_EQ(ReadIdList(qb, 1610), (Ids{L"2", L"1"}));
}

TEST_F(SystemTypes, OfEmptyListsTheSeriesAreRemovedAndTheCablesStayEmpty) {
    ASSERT_TRUE(Write(Linked(Circuit(L"x"), {L"s"}, {L"w"})) && Write(Circuit(L"x")));
    EXPECT_EQ(Sql(path, "select MaterialSerieIds is null, CableSpecTypeIds is null from SYS"), (Rows{{"1", "0"}}));
    CQbase qb;
    CWszArray ids;
    ASSERT_TRUE(Access::OpenQbase(path, ddq, &qb, false, false) && qb.fetchFirstMember("SYS"));
    EXPECT_FALSE(qb.getWszArray(1607, ids, 100, -1));
    EXPECT_TRUE(qb.getWszArray(1610, ids, 100, -1));
    EXPECT_EQ(ids.length(), 0);
}

TEST_F(SystemTypes, ReferencesThatLeadNowhereAreDroppedAndStayInTheRecord) {
    ASSERT_TRUE(Write(Serie(L"s")) && Write(Cable(L"w", L"BV")) &&
                Write(Linked(Circuit(L"x"), {L"gone", L"s"}, {L"gone", L"w"})) && Write(Circuit(L"y")));
    const auto list = List(Type::ElectricalSystem, Discipline::Electrical);
    ASSERT_EQ(list.size(), 2U) << "the walk goes on behind a reference that leads nowhere";
    EXPECT_EQ(SerieIds(*list[0]), (Ids{L"s"}));
    EXPECT_EQ(list[0]->GetCableSpecTypeList().size(), 1U);
    CQbase qb;
    ASSERT_TRUE(Access::OpenQbase(path, ddq, &qb, false, false) && qb.fetchFirstMember("SYS"));
    EXPECT_EQ(ReadIdList(qb, 1607), (Ids{L"gone", L"s"}));
}

TEST_F(SystemTypes, OfMoreThanAHundredReferencesTheRestIsLost) {
    Ids series;
    for (int i = 0; i < 101; ++i) {
        series.push_back(L"s" + std::to_wstring(i));
        ASSERT_TRUE(Write(Serie(series.back())));
    }
    ASSERT_TRUE(Write(Linked(SystemType(L"x"), series)));
    EXPECT_EQ(SerieIds(*ReadSystem(L"x")), Ids(series.begin(), series.begin() + 100));
}

TEST_F(SystemTypes, OfTwoCablesOfOneNameTheFirstIsRead) {
    ASSERT_TRUE(Write(Cable(L"1", L"BV")) && Write(Cable(L"2", L"BV")) &&
                Write(Linked(Circuit(L"x"), {}, {L"1", L"2"})));
    const auto read = ReadSystem(L"x");
    const auto cables = read->GetCableSpecTypeList();
    ASSERT_EQ(cables.size(), 1U);
    EXPECT_EQ(cables.at(L"BV")->GetId(), L"1");
    EXPECT_EQ(SqlValue(path, "select count(*) from PSI"), "2");
}

TEST_F(SystemTypes, ACableWithoutATypeIsReadAsACable) {
    ASSERT_TRUE(Write(Cable(L"w", L"BV")) && Write(Linked(Circuit(L"x"), {}, {L"w"})));
    Sql(path, "update PSI set MEPType = null");
    EXPECT_EQ(ReadSystem(L"x")->GetCableSpecTypeList().size(), 1U);
}

TEST_F(SystemTypes, AListIsThatOfOneDisciplineAndTypeInOrderOfCreation) {
    ASSERT_TRUE(Write(Serie(L"s")) && Write(Linked(SystemType(L"b"), {L"s"})) && Write(Circuit(L"x")) &&
                Write(Linked(SystemType(L"a"), {L"s"})) && Write(SystemType(L"y", L"", Type::Pipe, Discipline::HVAC)) &&
                Write(SystemType(L"c")));
    const auto list = List();
    ASSERT_EQ(list.size(), 3U);
    EXPECT_EQ(list[0]->GetId(), L"b");
    EXPECT_EQ(list[1]->GetId(), L"a");
    EXPECT_EQ(list[2]->GetId(), L"c");
    EXPECT_NE(list[0]->GetSystemMaterialSerieList()[0], list[1]->GetSystemMaterialSerieList()[0]);
}

TEST_F(SystemTypes, AnEmptyListOrAnUnknownIdIsFalse) {
    MakeStore();
    EXPECT_TRUE(List().empty());
    auto systemType = SystemType(L"held");
    EXPECT_FALSE(util.ReadSystemType(path, ddq, components, L"unknown", systemType));
    EXPECT_EQ(systemType->GetId(), L"held");
}

TEST_F(SystemTypes, EachCategoryIsReadOnceForAllSystems) {
    for (int i = 0; i < 5; ++i) {
        const wstring number = std::to_wstring(i);
        auto serie = Serie(L"s" + number);
        auto connection = Connection(L"c" + number);
        AddFitting(*connection, {.component = L"e1"});
        serie->SetConnectionSerie(connection);
        ASSERT_TRUE(Write(serie) && Write(Linked(SystemType(L"x" + number), {L"s0", L"s" + number})));
    }
    const ComponentReads reads([](const wstring& category) {
        std::vector<ComponentPtr> list;
        list.push_back(Component(L"e1", category));
        return list;
    });
    EXPECT_EQ(List().size(), 5U);
    EXPECT_EQ(reads.Categories(), (Ids{L"elbow"}));
}

// --- the nested reader -----------------------------------------------------------------------------------------------

TEST_F(SystemTypes, TheReaderEndsOnItsRecordWithTheFiltersOfAWalk) {
    ASSERT_TRUE(Write(Serie(L"s")) && Write(Linked(Circuit(L"x"), {L"s"}, {L"gone"})) && Write(SystemType(L"pipes")) &&
                Write(Circuit(L"y")));
    CQbase qb;
    ASSERT_TRUE(Access::OpenQbase(path, ddq, &qb, false, false) && qb.setFilter(1601, "=", L"nothing") &&
                qb.fetchEqualRec("SYS", L"x"));
    auto systemType = SystemType(L"");
    EXPECT_TRUE(util.read_system_type_att(&qb, components, systemType));
    EXPECT_EQ(CurrentId(qb), L"x");
    EXPECT_TRUE(qb.fetchNextMember());
    EXPECT_EQ(CurrentId(qb), L"y") << "the filter of before is gone, those of the record stand";
    EXPECT_FALSE(qb.fetchNextMember());
}

TEST_F(SystemTypes, TheReaderRefusesNoStoreAndNoRecord) {
    CQbase qb;
    SystemTypePtr none;
    auto systemType = SystemType(L"x");
    EXPECT_FALSE(util.read_system_type_att(nullptr, components, systemType));
    EXPECT_FALSE(util.read_system_type_att(&qb, components, none));
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::read_system_type_att: qb为空",
                                                         L"MepQbaseUtil::read_system_type_att: retSystemType为空"}));
}

TEST_F(SystemTypes, PartsThatTheFactoryDoesNotMakeAreReported) {
    ASSERT_TRUE(Write(Serie(L"s")) && Write(Cable(L"w", L"BV")) && Write(Linked(Circuit(L"x"), {L"s"}, {L"w"})));
    CQbase qb;
    ASSERT_TRUE(Access::OpenQbase(path, ddq, &qb, false, false) && qb.fetchFirstMember("SYS"));
    auto systemType = SystemType(L"");
    const EmptyFactory nothing;
    EXPECT_TRUE(util.read_system_type_att(&qb, components, systemType));
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::read_system_type_att: pTemSerie为空",
                                                         L"MepQbaseUtil::read_system_type_att: ptempSize为空"}));
    EXPECT_EQ(systemType->GetName(), L"lighting");
    EXPECT_EQ(CurrentId(qb), L"x");
}

TEST_F(SystemTypes, AFactoryThatMakesNothingIsReported) {
    ASSERT_TRUE(Write(SystemType(L"x")));
    const EmptyFactory nothing;
    SystemTypePtr systemType;
    EXPECT_FALSE(util.ReadSystemType(path, ddq, components, L"x", systemType));
    EXPECT_TRUE(List().empty());
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::ReadSystemType: pTempSystemType为空",
                                                         L"MepQbaseUtil::ReadSystemTypeList: ptempSystem为空"}));
}

// --- writes and deletions --------------------------------------------------------------------------------------------

/// A system type of a host, one of whose cable tables is missing.
class WithoutCable : public IProjectSettingSystemType {
public:
    explicit WithoutCable(SystemTypePtr rest) : m_rest(std::move(rest)) {}
    wstring GetId() const override { return m_rest->GetId(); }
    void SetId(wstring& id) override { m_rest->SetId(id); }
    wstring GetName() const override { return m_rest->GetName(); }
    void SetName(wstring& name) override { m_rest->SetName(name); }
    wstring GetDescription() const override { return m_rest->GetDescription(); }
    void SetDescription(wstring& text) override { m_rest->SetDescription(text); }
    wstring GetCode() const override { return m_rest->GetCode(); }
    void SetCode(wstring& code) override { m_rest->SetCode(code); }
    __int64 GetCreateTime() const override { return m_rest->GetCreateTime(); }
    void SetCreateTime(__int64 time) override { m_rest->SetCreateTime(time); }
    MEPDisciplineId GetDisciplineId() const override { return m_rest->GetDisciplineId(); }
    void SetDisciplineId(MEPDisciplineId discipline) override { m_rest->SetDisciplineId(discipline); }
    TolmProjectSettingMEPObjectType GetMEPType() const override { return m_rest->GetMEPType(); }
    void SetMEPType(TolmProjectSettingMEPObjectType type) override { m_rest->SetMEPType(type); }
    MEPSystemClassification GetClassification() const override { return m_rest->GetClassification(); }
    void SetClassification(MEPSystemClassification value) override { m_rest->SetClassification(value); }
    void AddSystemMaterialSerie(SeriePtr& serie) override { m_rest->AddSystemMaterialSerie(serie); }
    void DeleteSystemMaterialSerie(int index) override { m_rest->DeleteSystemMaterialSerie(index); }
    void ClearMaterialSerie() override { m_rest->ClearMaterialSerie(); }
    std::vector<const IProjectSettingMEPMaterialSerie*> GetSystemMaterialSerieList() const override {
        return m_rest->GetSystemMaterialSerieList();
    }
    void AddCableSpecType(SizeModulePtr module) override { m_rest->AddCableSpecType(std::move(module)); }
    void DeleteCableSpecType(wstring name) override { m_rest->DeleteCableSpecType(name); }
    void ClearCableSpecTypeList() override { m_rest->ClearCableSpecTypeList(); }
    std::map<wstring, const IProjectSettingSizeModule*> GetCableSpecTypeList() const override {
        return {{L"BV", nullptr}};
    }

private:
    SystemTypePtr m_rest;
};

TEST_F(SystemTypes, AMissingCableTableEndsTheWriteAndNothingIsSaved) {
    const WithoutCable systemType(SystemType(L"x", L"new"));
    EXPECT_FALSE(util.WriteSystemType(path, ddq, &systemType));
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::WriteSystemType: it->second为空"}));
    EXPECT_EQ(SqlValue(path, "select count(*) from SYS"), "0");
    EXPECT_FALSE(Exists(statusPath));
    ASSERT_TRUE(Write(SystemType(L"x", L"before")));
    EXPECT_FALSE(util.WriteSystemType(path, ddq, &systemType));
    EXPECT_EQ(TakeDebugWarnings().size(), 1U);
    EXPECT_EQ(SqlValue(path, "select Name from SYS"), "before");
}

TEST_F(SystemTypes, ANullRecordIsNotWritten) {
    EXPECT_FALSE(util.WriteSystemType(path, ddq, nullptr));
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::WriteSystemType: newSystem为空"}));
    EXPECT_FALSE(Exists(path));
}

TEST_F(SystemTypes, AWriteNotesCreationAndEdit) {
    ASSERT_TRUE(Write(Linked(Circuit(L"x"), {L"s"}, {L"w"})));
    EXPECT_EQ(StatusRecords(), (std::vector<std::string>{"SYS x 1 6 3"}));
    ASSERT_TRUE(CQbase::removeStore(statusPath) && Write(Circuit(L"x")));
    EXPECT_EQ(StatusRecords(), (std::vector<std::string>{"SYS x 2 6 3"}));
}

TEST_F(SystemTypes, AnEmptyIdIsReplaced) {
    ASSERT_TRUE(Write(SystemType(L"", L"new")));
    EXPECT_EQ(List().at(0)->GetId().size(), 36U);
}

TEST_F(SystemTypes, ADeletionIsNotedWithTypeAndDisciplineOfTheStore) {
    ASSERT_TRUE(Write(Circuit(L"x")) && Write(SystemType(L"y")) && CQbase::removeStore(statusPath));
    const auto known = SystemType(L"x", L"", Type::Duct, Discipline::HVAC);
    const auto unknown = SystemType(L"unknown");
    EXPECT_TRUE(util.DeleteSystemTypeList(path, ddq, {nullptr, known.get(), unknown.get()}));
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::DeleteSystemTypeList: systemType为空"}));
    EXPECT_EQ(StatusRecords(), (std::vector<std::string>{"SYS x 3 6 3"}));
    EXPECT_EQ(SqlValue(path, "select MEPType from SYS"), "1");
}

TEST_F(SystemTypes, ADeletionOfARecordWithoutTypeAndDisciplineIsNotedWithNone) {
    ASSERT_TRUE(Write(Circuit(L"x")) && CQbase::removeStore(statusPath));
    Sql(path, "update SYS set MEPType = null, DisciplineId = null");
    EXPECT_TRUE(util.DeleteSystemTypeList(path, ddq, {Circuit(L"x").get()}));
    EXPECT_EQ(StatusRecords(), (std::vector<std::string>{"SYS x 3 0 0"}));
}

TEST_F(SystemTypes, ADeletionLeavesSeriesAndCables) {
    ASSERT_TRUE(Write(Serie(L"s")) && Write(Cable(L"w", L"BV")) && Write(Linked(Circuit(L"x"), {L"s"}, {L"w"})));
    EXPECT_TRUE(util.DeleteSystemTypeList(path, ddq, {Circuit(L"x").get()}));
    EXPECT_EQ(SqlValue(path, "select count(*) from SMS"), "1");
    EXPECT_EQ(SqlValue(path, "select count(*) from PSI"), "1");
}

TEST_F(SystemTypes, ExistOrNot) {
    EXPECT_FALSE(util.DoesSystemTypeRecordExist(path, ddq, L"x"));
    EXPECT_FALSE(Exists(path)) << "the question makes no file";
    ASSERT_TRUE(Write(SystemType(L"x")) && Write(Serie(L"s")));
    EXPECT_TRUE(util.DoesSystemTypeRecordExist(path, ddq, L"x"));
    EXPECT_FALSE(util.DoesSystemTypeRecordExist(path, ddq, L"X"));
    EXPECT_FALSE(util.DoesSystemTypeRecordExist(path, ddq, L"s")) << "a record of another class";
    EXPECT_FALSE(util.DoesSystemTypeRecordExist(path, ddq, L""));
}

// --- names and references
// ----------------------------------------------------------------------------------------------

using Names = std::vector<std::map<wstring, wstring>>;

TEST_F(SystemTypes, NamesAreListedForEachPair) {
    ASSERT_TRUE(Write(SystemType(L"a", L"cold water")) && Write(SystemType(L"b", L"hot water")) &&
                Write(Circuit(L"c")) && Write(SystemType(L"d", L"supply", Type::Duct, Discipline::HVAC)));
    Names names = {{{L"held", L"before"}}};
    EXPECT_TRUE(util.ReadSystemTypeNameIds(path, ddq, {3, 2, 1}, {6, 1, 1}, names));
    EXPECT_EQ(
        names,
        (Names{{{L"held", L"before"}}, {{L"c", L"lighting"}}, {{L"a", L"cold water"}, {L"b", L"hot water"}}, {}}));
}

TEST_F(SystemTypes, WithoutANameAreNotListed) {
    ASSERT_TRUE(Write(SystemType(L"a", L"one")) && Write(SystemType(L"b", L"two")) && Write(SystemType(L"c", L"")));
    Sql(path, "update SYS set Name = null where Name = 'one'");
    Names names;
    EXPECT_TRUE(util.ReadSystemTypeNameIds(path, ddq, {2}, {1}, names));
    EXPECT_EQ(names, (Names{{{L"b", L"two"}, {L"c", L""}}}));
}

TEST_F(SystemTypes, NamesOfNoPairsAreTrueWhereTheStoreOpens) {
    Names names;
    EXPECT_FALSE(util.ReadSystemTypeNameIds(path, ddq, {}, {}, names));
    MakeStore();
    EXPECT_TRUE(util.ReadSystemTypeNameIds(path, ddq, {}, {}, names));
    EXPECT_TRUE(names.empty());
}

TEST_F(SystemTypes, NamesOfListsOfUnequalLengthAreReported) {
    MakeStore();
    Names names;
    EXPECT_FALSE(util.ReadSystemTypeNameIds(path, ddq, {1, 2}, {1}, names));
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              (Warnings{L"MepQbaseUtil::ReadSystemTypeNameIds: discipTypes.size()和objTypes.size()不相等"}));
    EXPECT_TRUE(names.empty());
}

using Lists = std::map<wstring, Ids>;

TEST_F(SystemTypes, ReferencesAreSeriesThenCables) {
    ASSERT_TRUE(Write(Linked(Circuit(L"A"), {L"s", L"r"}, {L"w"})) && Write(Linked(Circuit(L"B"), {}, {L"w"})) &&
                Write(Linked(SystemType(L"C"), {L"s"})) && Write(SystemType(L"D")));
    Lists lists;
    EXPECT_TRUE(util.ReadMEPSerieRecordGuidListOfSystemType(path, ddq, {L"A", L"B", L"C", L"D", L"", L"E"}, lists));
    EXPECT_EQ(lists, (Lists{{L"A", {L"s", L"r", L"w"}}, {L"B", {L"w"}}, {L"C", {L"s"}}}));
}

TEST_F(SystemTypes, ReferencesWithoutTextAreLeftOut) {
    ASSERT_TRUE(Write(Linked(Circuit(L"A"), {L"", L"s"}, {L"", L"w"})));
    Lists lists;
    EXPECT_TRUE(util.ReadMEPSerieRecordGuidListOfSystemType(path, ddq, {L"A"}, lists));
    EXPECT_EQ(lists, (Lists{{L"A", {L"s", L"w"}}}));
}

TEST_F(SystemTypes, ReferencesAreLookedForInUpperThenInLowerCase) {
    ASSERT_TRUE(Write(Linked(SystemType(L"ABC-1"), {L"upper"})) && Write(Linked(SystemType(L"abc-1"), {L"lower"})) &&
                Write(Linked(SystemType(L"abc-2"), {L"lower"})) && Write(Linked(SystemType(L"Abc-3"), {L"mixed"})));
    Lists lists;
    EXPECT_TRUE(
        util.ReadMEPSerieRecordGuidListOfSystemType(path, ddq, {L"abc-1", L"aBc-2", L"ABC-2", L"Abc-3"}, lists));
    EXPECT_EQ(lists, (Lists{{L"abc-1", {L"upper"}}, {L"aBc-2", {L"lower"}}, {L"ABC-2", {L"lower"}}}))
        << "a stored id of mixed case is never found";
}

TEST_F(SystemTypes, WithoutReferencesTheListIsFalse) {
    MakeStore();
    Lists lists;
    EXPECT_FALSE(util.ReadMEPSerieRecordGuidListOfSystemType(path, ddq, {L"A"}, lists));
    EXPECT_FALSE(util.ReadMEPSerieRecordGuidListOfSystemType(path, ddq, {}, lists));
    ASSERT_TRUE(Write(SystemType(L"A")));
    EXPECT_FALSE(util.ReadMEPSerieRecordGuidListOfSystemType(path, ddq, {L"A"}, lists));
    lists[L"held"] = {L"s"};
    EXPECT_TRUE(util.ReadMEPSerieRecordGuidListOfSystemType(path, ddq, {L"A"}, lists)) << "what the map held counts";
}

} // namespace
