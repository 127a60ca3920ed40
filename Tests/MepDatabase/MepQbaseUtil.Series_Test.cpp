#include "MepDatabase/MepQbaseUtil.h"
#include "MepDatabase/StoreFrame.h"
#include "StoreSupport/MepQbaseUtilTestAccess.h"
#include "StoreSupport/SeriesFixture.h"
#include "Vorn/Constants.h"

#include <cmath>

namespace {

using namespace tolm;
using namespace tolmtest;
using Access = MepQbaseUtilTestAccess;
using Rows = std::vector<SqlRow>;

SizeModulePtr Sizes(const wstring& id = L"p") {
    auto module = SizeModule(id, L"sizes", Type::Pipe, Discipline::Plumbing, 7);
    module->AddPipeSize({15.7F, 21.3F, 15.0F, 2.8F});
    module->SetMaterial(Material(L"m", L"steel"));
    return module;
}

/// A series with every field and part.
SeriePtr Whole(const wstring& id = L"s") {
    auto serie = Serie(id, L"steel, threaded");
    serie->SetMinSize(15.0);
    serie->SetMaxSize(100.5);
    serie->SetCreateTime(1'700'000'000'123);
    serie->SetJunctionType(PreferredJunctionType::Tap);
    auto sizes = Sizes();
    auto connection = Connection(L"c", L"threaded", Connector::PipeGrooved);
    AddFitting(*connection, {Part::Tee, Rule::Tees, L"e1", 15.0, 50.0});
    serie->SetSizeModule(sizes);
    serie->SetConnectionSerie(connection);
    serie->SetSerieGroup(Group(L"g", L"steel pipes", Type::Duct, Discipline::HVAC, 5));
    return serie;
}

class MaterialSeries : public SeriesFixture {
protected:
    void WriteWhole(const wstring& id = L"s") { ASSERT_TRUE(Write(Sizes()) && Write(Whole(id))); }
    /// The store, locked for reading, with the series as the current record.
    void OpenAt(CQbase& qb, const wchar_t* id) {
        ASSERT_TRUE(Access::OpenQbase(path, ddq, &qb, false, false) && qb.fetchEqualRec("SMS", id));
    }
};

TEST_F(MaterialSeries, EveryFieldAndPartComesBack) {
    WriteWhole();
    const auto read = Read(L"s");
    EXPECT_EQ(read->GetId(), L"s");
    EXPECT_EQ(read->GetName(), L"steel, threaded");
    EXPECT_EQ(read->GetMinSize(), 15.0);
    EXPECT_EQ(read->GetMaxSize(), 100.5);
    EXPECT_EQ(read->GetMEPType(), Type::Pipe);
    EXPECT_EQ(read->GetDisciplineId(), Discipline::Plumbing);
    EXPECT_EQ(read->GetCreateTime(), 1'700'000'000'123);
    EXPECT_EQ(read->GetJunctionType(), PreferredJunctionType::Tap);
    ASSERT_NE(read->GetSizeModule(), nullptr);
    EXPECT_EQ(read->GetSizeModule()->GetId(), L"p");
    EXPECT_EQ(read->GetSizeModule()->GetPipeSizeList(), Sizes()->GetPipeSizeList());
    ASSERT_NE(read->GetSizeModule()->GetMaterial(), nullptr);
    EXPECT_EQ(read->GetSizeModule()->GetMaterial()->GetName(), L"steel");
}

TEST_F(MaterialSeries, TheConnectionSeriesAndTheGroupComeBack) {
    WriteWhole();
    const auto read = Read(L"s");
    ASSERT_NE(read->GetConnectionSerie(), nullptr);
    EXPECT_EQ(read->GetConnectionSerie()->GetId(), L"c");
    EXPECT_EQ(read->GetConnectionSerie()->GetName(), L"threaded");
    EXPECT_EQ(read->GetConnectionSerie()->GetConnectionType(), Connector::PipeGrooved);
    EXPECT_EQ(read->GetConnectionSerie()->GetObjectType(), Type::Pipe);
    EXPECT_EQ(FittingsOf(*read->GetConnectionSerie()), (std::vector<Fitting>{{Part::Tee, Rule::Tees, L"e1"}}));
    ASSERT_NE(read->GetSerieGroup(), nullptr);
    EXPECT_EQ(read->GetSerieGroup()->GetId(), L"g");
    EXPECT_EQ(read->GetSerieGroup()->GetName(), L"steel pipes");
    EXPECT_EQ(read->GetSerieGroup()->GetMEPType(), Type::Duct);
    EXPECT_EQ(read->GetSerieGroup()->GetDisciplineId(), Discipline::HVAC);
    EXPECT_EQ(read->GetSerieGroup()->GetCreateTime(), 0) << "a group read with a series has no time";
}

TEST_F(MaterialSeries, TheFileShowsFieldsAndReferences) {
    WriteWhole();
    EXPECT_EQ(Sql(path, "select Name, minSize, maxSize, MEPType, DisciplineId, CreateTime, JunctionType, SizeModuleId, "
                        "ConnectionSerieId, SerieGroupId from SMS"),
              (Rows{{"steel, threaded", "15.0", "100.5", "1", "2", "1700000000123.0", "1", "p", "c", "g"}}));
    EXPECT_EQ(Sql(path, "select Name, ConnectionType, MEPType from COS"), (Rows{{"threaded", "4", "1"}}));
    EXPECT_EQ(Sql(path, "select Name, MEPType, DisciplineId, CreateTime from MSG"),
              (Rows{{"steel pipes", "2", "1", "NULL"}}));
}

TEST_F(MaterialSeries, TheSizeModuleIsNotWrittenWithTheSeries) {
    ASSERT_TRUE(Write(Whole()));
    EXPECT_EQ(SqlValue(path, "select count(*) from PSI"), "0");
    EXPECT_EQ(SqlValue(path, "select count(*) from MTS"), "0");
    EXPECT_EQ(SqlValue(path, "select SizeModuleId from SMS"), "p");
}

TEST_F(MaterialSeries, OnlyTheSeriesIsTracked) {
    WriteWhole();
    EXPECT_EQ(StatusRecords(), (std::vector<std::string>{"PSI p 1 1 2", "SMS s 1 1 2"}));
    ASSERT_TRUE(CQbase::removeStore(statusPath) && Write(Whole()));
    EXPECT_EQ(StatusRecords(), (std::vector<std::string>{"SMS s 2 1 2"}));
}

TEST_F(MaterialSeries, WithoutPartsHasNoReferences) {
    ASSERT_TRUE(Write(Serie(L"s", L"bare")));
    EXPECT_EQ(Sql(path, "select SizeModuleId, ConnectionSerieId, SerieGroupId from SMS"),
              (Rows{{"NULL", "NULL", "NULL"}}));
    const auto read = Read(L"s");
    EXPECT_EQ(read->GetName(), L"bare");
    EXPECT_EQ(read->GetSizeModule(), nullptr);
    EXPECT_EQ(read->GetConnectionSerie(), nullptr);
    EXPECT_EQ(read->GetSerieGroup(), nullptr);
    EXPECT_NEAR(read->GetMaxSize(), vorn::Constants::MAX_MODEL_SIZE, vorn::Constants::MAX_MODEL_SIZE * 1e-6);
}

TEST_F(MaterialSeries, AWriteWithoutPartsKeepsTheStoredReferences) {
    WriteWhole();
    ASSERT_TRUE(Write(Serie(L"s", L"bare")));
    EXPECT_EQ(Sql(path, "select Name, SizeModuleId, ConnectionSerieId, SerieGroupId from SMS"),
              (Rows{{"bare", "p", "c", "g"}}));
}

TEST_F(MaterialSeries, PartsThatExistAreWrittenOver) {
    ASSERT_TRUE(Write(Group(L"g", L"before", Type::Pipe, Discipline::Plumbing, 99)) && Write(Connection(L"c")));
    WriteWhole();
    EXPECT_EQ(Sql(path, "select Name, CreateTime from MSG"), (Rows{{"steel pipes", "99.0"}}))
        << "the group keeps its time of creation";
    EXPECT_EQ(Sql(path, "select Name, length(FittingList) from COS"), (Rows{{"threaded", "106"}}));
}

TEST_F(MaterialSeries, SizesThatAreNoFloatsAreClamped) {
    auto serie = Serie(L"s");
    serie->SetMinSize(std::nan(""));
    serie->SetMaxSize(1e300);
    ASSERT_TRUE(Write(serie));
    EXPECT_EQ(Sql(path, "select minSize, maxSize > 3.4e38, maxSize < 3.5e38 from SMS"), (Rows{{"0.0", "1", "1"}}));
}

TEST_F(MaterialSeries, AnEmptyIdIsReplacedInSeriesAndParts) {
    auto serie = Whole(L"");
    wstring none;
    auto connection = Connection(L"", L"threaded");
    serie->SetConnectionSerie(connection);
    serie->SetSerieGroup(Group(L"", L"group"));
    ASSERT_TRUE(Write(serie));
    const auto list = Series();
    ASSERT_EQ(list.size(), 1U);
    EXPECT_EQ(list[0]->GetId().size(), 36U);
    ASSERT_NE(list[0]->GetConnectionSerie(), nullptr);
    EXPECT_EQ(list[0]->GetConnectionSerie()->GetName(), L"threaded");
    ASSERT_NE(list[0]->GetSerieGroup(), nullptr);
    EXPECT_EQ(list[0]->GetSerieGroup()->GetName(), L"group");
    EXPECT_EQ(serie->GetId(), L"") << "the record itself is not changed";
}

// --- references that lead nowhere
// --------------------------------------------------------------------------------------

TEST_F(MaterialSeries, EachPartThatIsGoneIsLeftOutWithoutAWord) {
    for (const char* gone : {"PSI", "COS", "MSG"}) {
        WriteWhole(L"a");
        ASSERT_TRUE(Write(Whole(L"b")));
        Sql(path, std::string("delete from ") + gone);
        const auto list = Series();
        ASSERT_EQ(list.size(), 2U) << "the walk goes on behind a reference that leads nowhere: " << gone;
        for (const auto& serie : list) {
            EXPECT_EQ(serie->GetSizeModule() == nullptr, gone == std::string("PSI"));
            EXPECT_EQ(serie->GetConnectionSerie() == nullptr, gone == std::string("COS"));
            EXPECT_EQ(serie->GetSerieGroup() == nullptr, gone == std::string("MSG"));
        }
    }
}

TEST_F(MaterialSeries, AConnectionSeriesThatCannotBeReadIsLeftOut) {
    WriteWhole();
    SetFittingList(L"c", PackedFittingBytes("unknown", 1, 1, "e1", 1, 2));
    const auto read = Read(L"s");
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::read_connection_serie_att: pFitting为空"}));
    EXPECT_EQ(read->GetConnectionSerie(), nullptr);
    EXPECT_NE(read->GetSizeModule(), nullptr);
    EXPECT_NE(read->GetSerieGroup(), nullptr);
}

TEST_F(MaterialSeries, TheReaderEndsOnItsOwnRecordWhateverIsMissing) {
    for (const char* gone : {"none", "PSI", "COS", "MSG"}) {
        WriteWhole();
        if (gone != std::string("none"))
            Sql(path, std::string("delete from ") + gone);
        CQbase qb;
        OpenAt(qb, L"s");
        auto serie = Serie(L"");
        EXPECT_TRUE(util.read_mep_materialserie_att(&qb, components, serie));
        short type = 0;
        EXPECT_EQ(CurrentId(qb), L"s") << gone;
        EXPECT_TRUE(qb.getShort(1110, type)) << "a record of its own class";
    }
}

TEST_F(MaterialSeries, ASizeModuleWithoutATypeIsReadAsOneOfTheSeries) {
    WriteWhole();
    Sql(path, "update PSI set MEPType = null");
    EXPECT_EQ(Read(L"s")->GetSizeModule()->GetPipeSizeList().size(), 1U);
}

TEST_F(MaterialSeries, APartThatTheFactoryDoesNotMakeIsReported) {
    WriteWhole();
    CQbase qb;
    OpenAt(qb, L"s");
    auto serie = Serie(L"");
    const EmptyFactory nothing;
    EXPECT_TRUE(util.read_mep_materialserie_att(&qb, components, serie));
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              (Warnings{L"MepQbaseUtil::read_mep_materialserie_att: ptempSize为空",
                        L"MepQbaseUtil::read_mep_materialserie_att: ptempConnSerie为空",
                        L"MepQbaseUtil::read_mep_materialserie_att: pGroup为空"}));
    EXPECT_EQ(serie->GetName(), L"steel, threaded");
    EXPECT_EQ(serie->GetSizeModule(), nullptr);
    EXPECT_EQ(CurrentId(qb), L"s");
}

TEST_F(MaterialSeries, MissingAttributesLeaveTheValues) {
    WriteWhole();
    Sql(path, "update SMS set Name = null, minSize = null, maxSize = null, CreateTime = null, JunctionType = null, "
              "SizeModuleId = null, ConnectionSerieId = null, SerieGroupId = null");
    CQbase qb;
    OpenAt(qb, L"s");
    auto serie = Serie(L"", L"before");
    serie->SetMinSize(3.0);
    EXPECT_TRUE(util.read_mep_materialserie_att(&qb, components, serie));
    EXPECT_EQ(serie->GetName(), L"before");
    EXPECT_EQ(serie->GetMinSize(), 3.0);
    EXPECT_EQ(serie->GetMaxSize(), vorn::Constants::MAX_MODEL_SIZE);
    EXPECT_EQ(serie->GetSizeModule(), nullptr);
}

// --- lists and single reads
// ----------------------------------------------------------------------------------------------

TEST_F(MaterialSeries, AListIsThatOfOneTypeAndDisciplineInOrderOfCreation) {
    ASSERT_TRUE(Write(Serie(L"b")) && Write(Serie(L"x", L"", Type::Pipe, Discipline::HVAC)) && Write(Serie(L"a")) &&
                Write(Serie(L"y", L"", Type::Duct, Discipline::Plumbing)));
    const auto list = Series();
    ASSERT_EQ(list.size(), 2U);
    EXPECT_EQ(list[0]->GetId(), L"b");
    EXPECT_EQ(list[1]->GetId(), L"a");
}

TEST_F(MaterialSeries, AnEmptyListIsTrueWhereTheStoreOpens) {
    std::vector<SeriePtr> list;
    std::vector<GroupPtr> groups;
    EXPECT_FALSE(util.ReadMEPMaterialSerieList(path, ddq, components, Type::Pipe, Discipline::Plumbing, list));
    EXPECT_FALSE(util.ReadMEPMaterialSerieGroupList(path, ddq, Type::Pipe, Discipline::Plumbing, groups));
    MakeStore();
    EXPECT_TRUE(util.ReadMEPMaterialSerieList(path, ddq, components, Type::Pipe, Discipline::Plumbing, list));
    EXPECT_TRUE(util.ReadMEPMaterialSerieGroupList(path, ddq, Type::Pipe, Discipline::Plumbing, groups));
    EXPECT_TRUE(list.empty() && groups.empty());
}

TEST_F(MaterialSeries, AnUnknownIdLeavesThePointer) {
    WriteWhole();
    auto serie = Serie(L"held");
    EXPECT_FALSE(util.ReadMEPMaterialSerie(path, ddq, components, L"unknown", serie));
    EXPECT_EQ(serie->GetId(), L"held");
}

TEST_F(MaterialSeries, SeveralShareTheirPartsAndOwnTheirCopies) {
    WriteWhole(L"a");
    ASSERT_TRUE(Write(Whole(L"b")));
    EXPECT_EQ(SqlValue(path, "select count(*) from COS"), "1");
    const auto list = Series();
    ASSERT_EQ(list.size(), 2U);
    EXPECT_NE(list[0]->GetSizeModule(), list[1]->GetSizeModule());
    EXPECT_NE(list[0]->GetSizeModule()->GetMaterial(), list[1]->GetSizeModule()->GetMaterial());
    EXPECT_EQ(list[1]->GetSizeModule()->GetMaterial()->GetName(), L"steel");
    EXPECT_NE(list[0]->GetConnectionSerie(), list[1]->GetConnectionSerie());
}

TEST_F(MaterialSeries, AFactoryThatMakesNothingIsReported) {
    WriteWhole();
    ASSERT_TRUE(Write(Group(L"x")));
    const EmptyFactory nothing;
    SeriePtr serie;
    EXPECT_FALSE(util.ReadMEPMaterialSerie(path, ddq, components, L"s", serie));
    EXPECT_TRUE(Series().empty());
    std::vector<GroupPtr> groups;
    EXPECT_TRUE(util.ReadMEPMaterialSerieGroupList(path, ddq, Type::Pipe, Discipline::Plumbing, groups));
    EXPECT_TRUE(groups.empty());
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::ReadMEPMaterialSerie: pTemSerie为空",
                                                         L"MepQbaseUtil::ReadMEPMaterialSerieList: pTemSerie为空",
                                                         L"MepQbaseUtil::ReadMEPMaterialSerieGroupList: pGroup为空"}));
}

// --- null records and deletions
// ----------------------------------------------------------------------------------------

TEST_F(MaterialSeries, NullRecordsAreNotWritten) {
    EXPECT_FALSE(util.WriteMEPMaterialSerie(path, ddq, nullptr));
    EXPECT_FALSE(util.WriteMEPMaterialSerieGroup(path, ddq, nullptr));
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::WriteMEPMaterialSerie: newSerie为空",
                                                         L"MepQbaseUtil::WriteMEPMaterialSerieGroup: newGroup为空"}));
    EXPECT_FALSE(Exists(path));
}

TEST_F(MaterialSeries, ADeletionTakesTheKnownAndLeavesTheParts) {
    WriteWhole();
    ASSERT_TRUE(Write(Serie(L"other")) && CQbase::removeStore(statusPath));
    const auto serie = Whole();
    const auto unknown = Serie(L"unknown");
    EXPECT_TRUE(util.DeleteMEPMaterialSerieList(path, ddq, {nullptr, serie.get(), unknown.get()}));
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::DeleteMEPMaterialSerieList: serie为空"}));
    EXPECT_EQ(Sql(path, "select (select group_concat(Name) from COS), (select count(*) from MSG), "
                        "(select count(*) from PSI), (select count(*) from SMS)"),
              (Rows{{"threaded", "1", "1", "1"}}));
    EXPECT_EQ(StatusRecords(), (std::vector<std::string>{"SMS s 3 1 2"}));
}

TEST_F(MaterialSeries, ReadersRefuseNoStoreAndNoRecord) {
    CQbase qb;
    SeriePtr noSerie;
    GroupPtr noGroup;
    auto serie = Serie(L"s");
    auto group = Group(L"g");
    EXPECT_FALSE(util.read_mep_materialserie_att(nullptr, components, serie));
    EXPECT_FALSE(util.read_mep_materialserie_att(&qb, components, noSerie));
    EXPECT_FALSE(util.read_serie_group_att(nullptr, group));
    EXPECT_FALSE(util.read_serie_group_att(&qb, noGroup));
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::read_mep_materialserie_att: qb为空",
                                                         L"MepQbaseUtil::read_mep_materialserie_att: retMatSerie为空",
                                                         L"MepQbaseUtil::read_serie_group_att: qb为空",
                                                         L"MepQbaseUtil::read_serie_group_att: retMatSerie为空"}));
}

// --- groups ----------------------------------------------------------------------------------------------------------

class SerieGroups : public SeriesFixture {
protected:
    std::vector<GroupPtr> Groups(Type type = Type::Pipe, Discipline discipline = Discipline::Plumbing) {
        std::vector<GroupPtr> list;
        EXPECT_TRUE(util.ReadMEPMaterialSerieGroupList(path, ddq, type, discipline, list));
        return list;
    }
};

TEST_F(SerieGroups, EveryFieldComesBack) {
    ASSERT_TRUE(Write(Group(L"g", L"ducts", Type::Duct, Discipline::HVAC, 1'700'000'000'123)));
    const auto list = Groups(Type::Duct, Discipline::HVAC);
    ASSERT_EQ(list.size(), 1U);
    EXPECT_EQ(list[0]->GetId(), L"g");
    EXPECT_EQ(list[0]->GetName(), L"ducts");
    EXPECT_EQ(list[0]->GetMEPType(), Type::Duct);
    EXPECT_EQ(list[0]->GetDisciplineId(), Discipline::HVAC);
    EXPECT_EQ(list[0]->GetCreateTime(), 1'700'000'000'123);
}

TEST_F(SerieGroups, AListIsThatOfOneTypeAndDisciplineInOrderOfCreation) {
    ASSERT_TRUE(Write(Group(L"b")) && Write(Group(L"x", L"", Type::Duct)) && Write(Group(L"a")) &&
                Write(Group(L"y", L"", Type::Pipe, Discipline::HVAC)));
    const auto list = Groups();
    ASSERT_EQ(list.size(), 2U);
    EXPECT_EQ(list[0]->GetId(), L"b");
    EXPECT_EQ(list[1]->GetId(), L"a");
}

TEST_F(SerieGroups, AWriteNotesCreationAndEdit) {
    ASSERT_TRUE(Write(Group(L"g", L"", Type::Duct, Discipline::HVAC)));
    EXPECT_EQ(StatusRecords(), (std::vector<std::string>{"MSG g 1 2 1"}));
    ASSERT_TRUE(CQbase::removeStore(statusPath) && Write(Group(L"g")));
    EXPECT_EQ(StatusRecords(), (std::vector<std::string>{"MSG g 2 1 2"}));
}

TEST_F(SerieGroups, AnEmptyIdIsReplaced) {
    ASSERT_TRUE(Write(Group(L"", L"new")));
    const auto list = Groups();
    ASSERT_EQ(list.size(), 1U);
    EXPECT_EQ(list[0]->GetId().size(), 36U);
}

TEST_F(SerieGroups, ADeletionTakesTheKnown) {
    ASSERT_TRUE(Write(Group(L"a")) && Write(Group(L"b")) && CQbase::removeStore(statusPath));
    const auto known = Group(L"a");
    const auto unknown = Group(L"unknown");
    EXPECT_TRUE(util.DeleteMEPMaterialSerieGroupList(path, ddq, {known.get(), nullptr, unknown.get()}));
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              (Warnings{L"MepQbaseUtil::DeleteMEPMaterialSerieGroupList: groupList[i]为空"}));
    ASSERT_EQ(Groups().size(), 1U);
    EXPECT_EQ(Groups()[0]->GetId(), L"b");
    EXPECT_EQ(StatusRecords(), (std::vector<std::string>{"MSG a 3 1 2"}));
}

} // namespace
