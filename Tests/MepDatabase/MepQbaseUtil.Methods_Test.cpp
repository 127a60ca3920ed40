#include "MepDatabase/MepQbaseUtil.h"
#include "MepDatabase/RecordAttributes.h"
#include "MepDatabase/StoreSchema.h"
#include "StoreSupport/StoreFixture.h"
#include "TolmDataSet/DataSetMethods.h"

#include <limits>
#include <set>
#include <string>

namespace {

using namespace tolm;
using namespace tolmtest;
using MaxSizes = std::vector<DataSetInsulationMaxSize>;

DataSetBalancingMethod Balancing(const wstring& id) {
    DataSetBalancingMethod method;
    method.SetId(id);
    method.SetName(L"名 " + id);
    method.SetDesc(L"说明");
    method.SetDev1Min(1.5F);
    method.SetDev1Max(2.5F);
    method.SetDev2Min(3.5F);
    method.SetDev2Max(4.5F);
    method.SetThrottlingLimit1Min(11);
    method.SetThrottlingLimit1Max(12);
    method.SetThrottlingLimit2Min(13);
    method.SetThrottlingLimit2Max(14);
    method.SetIsWarningNearRoot(true);
    method.setDisciplineType(MEPDisciplineId::HVAC);
    return method;
}

DataSetInsulationSerie Insulation(const wstring& id, MEPDisciplineId discipline = MEPDisciplineId::HVAC,
                                  TolmInsulationSerieType type = TolmInsulationSerieType::Duct) {
    DataSetInsulationSerie serie;
    serie.SetId(id);
    serie.SetCode(L"B1");
    serie.SetDescription(L"橡塑 " + id);
    serie.SetThermalConductivity(0.034F);
    serie.SetDisciplineType(discipline);
    serie.SetInsulationType(type);
    serie.AddCircularSize({50, 7, 25});
    serie.AddCircularSize({-1, 8, 32767});
    serie.AddRectSize({400, 300, 30});
    return serie;
}

DataSetSizingMethod Sizing(const wstring& id, TolmSizingMethodType type = TolmSizingMethodType::Duct) {
    DataSetSizingMethod method;
    method.SetId(id);
    method.SetCode(L"S1");
    method.SetDesc(L"等摩阻 " + id);
    method.SetKeepConnectTerminalSize(true);
    method.SetUseStaticRegain(true);
    method.SetMinWPerHRatio(0.25F);
    method.SetMethodType(type);
    method.AddDimensionMethod({1, 0.5F, -2.5F});
    method.AddDimensionMethod({-2, 8.0F, 1e30F});
    return method;
}

template <class Record> std::vector<wstring> Ids(const std::vector<Record>& list) {
    std::vector<wstring> ids;
    for (const auto& record : list)
        ids.push_back(record.GetId());
    return ids;
}

class MethodStorage : public StoreFixture {
protected:
    std::vector<DataSetBalancingMethod> BalancingOf(MEPDisciplineId discipline) {
        std::vector<DataSetBalancingMethod> list(1); // a read replaces it
        const bool found = util.readBalancingMethodList(path, ddq, discipline, list);
        EXPECT_EQ(found, !list.empty());
        return list;
    }
    std::vector<DataSetInsulationSerie> InsulationOf(MEPDisciplineId discipline, TolmInsulationSerieType type) {
        std::vector<DataSetInsulationSerie> list(1);
        const bool found = util.readInsulationSerieList(path, ddq, discipline, type, list);
        EXPECT_EQ(found, !list.empty());
        return list;
    }
    std::vector<DataSetSizingMethod> SizingOf(TolmSizingMethodType type) {
        std::vector<DataSetSizingMethod> list(1);
        const bool found = util.readSizingMethodList(path, ddq, type, list);
        EXPECT_EQ(found, !list.empty());
        return list;
    }
};

template <class Record> void ExpectNoAttributeTwice(AttributeTable<Record> table, std::size_t rows) {
    std::set<short> ids;
    for (const auto& row : table)
        EXPECT_TRUE(ids.insert(row.id).second) << row.id;
    EXPECT_EQ(table.size(), rows);
}

TEST(MethodAttributes, NoneStandsTwiceInATable) {
    ExpectNoAttributeTwice(BalancingMethodAttributes(), 11);
    ExpectNoAttributeTwice(InsulationSerieAttributes(), 7);
    ExpectNoAttributeTwice(SizingMethodAttributes(), 7);
}

// --- balancing methods
// ------------------------------------------------------------------------------------------------

using BalancingStorage = MethodStorage;

TEST_F(BalancingStorage, TheFileShowsTheAttributesUnderTheirNames) {
    ASSERT_TRUE(util.addBalancingMethod(path, ddq, Balancing(L"b")));
    EXPECT_EQ(Sql(path, "select Name, Description, IsWarningNearRoot, Dev1DpMin, Dev1DpMax, Dev2DpMin, Dev2DpMax, "
                        "ThrottlingLimit1Min, ThrottlingLimit1Max, ThrottlingLimit2Min, ThrottlingLimit2Max, "
                        "DisciplineId from BMD"),
              (std::vector<SqlRow>{{"名 b", "说明", "1", "1.5", "2.5", "3.5", "4.5", "11", "12", "13", "14", "NULL"}}));
}

TEST_F(BalancingStorage, AMethodStoredHereHasNoDisciplineAndPassesNoFilter) {
    ASSERT_TRUE(util.addBalancingMethod(path, ddq, Balancing(L"b")));
    for (const auto discipline :
         {MEPDisciplineId::None, MEPDisciplineId::HVAC, MEPDisciplineId::Plumbing, MEPDisciplineId::Electrical})
        EXPECT_TRUE(BalancingOf(discipline).empty());
}

TEST_F(BalancingStorage, AMethodWhoseDisciplineCameFromElsewhereIsReadWhole) {
    ASSERT_TRUE(util.addBalancingMethod(path, ddq, Balancing(L"b1")));
    ASSERT_TRUE(util.addBalancingMethod(path, ddq, Balancing(L"b2")));
    Sql(path, "update BMD set DisciplineId = 1 where Name like '%b2'");
    const auto list = BalancingOf(MEPDisciplineId::HVAC);
    ASSERT_EQ(list.size(), 1U);
    const auto& read = list[0];
    EXPECT_EQ(read.GetId(), L"b2");
    EXPECT_EQ(read.GetName(), L"名 b2");
    EXPECT_EQ(read.GetDesc(), L"说明");
    EXPECT_TRUE(read.GetIsWarningNearRoot());
    EXPECT_EQ(read.GetDev1DpMin(), 1.5F);
    EXPECT_EQ(read.GetDev1DpMax(), 2.5F);
    EXPECT_EQ(read.GetDev2DpMin(), 3.5F);
    EXPECT_EQ(read.GetDev2DpMax(), 4.5F);
    EXPECT_EQ(read.GetThrottlingLimit1Min(), 11);
    EXPECT_EQ(read.GetThrottlingLimit1Max(), 12);
    EXPECT_EQ(read.GetThrottlingLimit2Min(), 13);
    EXPECT_EQ(read.GetThrottlingLimit2Max(), 14);
    EXPECT_EQ(read.disciplineId(), MEPDisciplineId::Plumbing) << "the record's own default: nothing gives it another";
}

TEST_F(BalancingStorage, AWriteKeepsADisciplineThatCameFromElsewhere) {
    ASSERT_TRUE(util.addBalancingMethod(path, ddq, Balancing(L"b")));
    Sql(path, "update BMD set DisciplineId = 3");
    auto changed = Balancing(L"b");
    changed.SetIsWarningNearRoot(false);
    ASSERT_TRUE(util.addBalancingMethod(path, ddq, changed));
    const auto list = BalancingOf(MEPDisciplineId::Electrical);
    ASSERT_EQ(list.size(), 1U);
    EXPECT_FALSE(list[0].GetIsWarningNearRoot());
    EXPECT_EQ(SqlValue(path, "select IsWarningNearRoot from BMD"), "0");
}

TEST_F(BalancingStorage, ALimitBeyondAShortIsTheNearestOne) {
    auto method = Balancing(L"b");
    method.SetThrottlingLimit1Min(std::numeric_limits<std::int32_t>::min());
    method.SetThrottlingLimit1Max(std::numeric_limits<std::int32_t>::max());
    ASSERT_TRUE(util.addBalancingMethod(path, ddq, method));
    EXPECT_EQ(Sql(path, "select ThrottlingLimit1Min, ThrottlingLimit1Max from BMD"),
              (std::vector<SqlRow>{{"-32768", "32767"}}));
}

TEST_F(BalancingStorage, MissingAttributesLeaveTheDefaults) {
    ASSERT_TRUE(util.addBalancingMethod(path, ddq, Balancing(L"b")));
    Sql(path, "update BMD set DisciplineId = 2, Dev1DpMin = null, Dev2DpMax = null, ThrottlingLimit2Max = null, "
              "IsWarningNearRoot = null, Name = null");
    const auto list = BalancingOf(MEPDisciplineId::Plumbing);
    ASSERT_EQ(list.size(), 1U);
    EXPECT_EQ(list[0].GetDev1DpMin(), 2000.0F);
    EXPECT_EQ(list[0].GetDev2DpMax(), 9999999.0F);
    EXPECT_EQ(list[0].GetThrottlingLimit2Max(), 100);
    EXPECT_FALSE(list[0].GetIsWarningNearRoot());
    EXPECT_EQ(list[0].GetName(), L"");
}

TEST_F(BalancingStorage, ADeletionTakesTheKnown) {
    for (const wchar_t* id : {L"1", L"2", L"3"})
        ASSERT_TRUE(util.addBalancingMethod(path, ddq, Balancing(id)));
    Sql(path, "update BMD set DisciplineId = 1");
    EXPECT_TRUE(util.deleteBalancingMethodList(path, ddq, {Balancing(L"1"), Balancing(L"9"), Balancing(L"3")}));
    EXPECT_EQ(Ids(BalancingOf(MEPDisciplineId::HVAC)), std::vector<wstring>{L"2"});
}

// --- insulation series
// ------------------------------------------------------------------------------------------------

using InsulationStorage = MethodStorage;

TEST_F(InsulationStorage, TheFileShowsTheAttributesUnderTheirNames) {
    ASSERT_TRUE(util.addInsulationSerie(path, ddq, Insulation(L"i")));
    EXPECT_EQ(Sql(path, "select Code, Name, InsulationType, DisciplineId, ThermalConductivity, "
                        "hex(CircularMaxSizes), hex(RectMaxSizes) from ISS"),
              (std::vector<SqlRow>{{"B1", "橡塑 i", "0", "1", "NULL", "32001900FFFFFF7F", "90012C011E00"}}));
}

TEST_F(InsulationStorage, AllSizesComeBackInTheCircularList) {
    ASSERT_TRUE(util.addInsulationSerie(path, ddq, Insulation(L"i")));
    const auto list = InsulationOf(MEPDisciplineId::HVAC, TolmInsulationSerieType::Duct);
    ASSERT_EQ(list.size(), 1U);
    const auto& read = list[0];
    EXPECT_EQ(read.GetId(), L"i");
    EXPECT_EQ(read.GetCode(), L"B1");
    EXPECT_EQ(read.GetDescription(), L"橡塑 i");
    EXPECT_EQ(read.GetThermalConductivity(), 0.0F) << "it is never written";
    EXPECT_EQ(read.GetCircularMaxSizes(), (MaxSizes{{50, 0, 25}, {-1, 0, 32767}, {400, 300, 30}}));
    EXPECT_TRUE(read.GetRectMaxSizes().empty());
}

TEST_F(InsulationStorage, AConductivityThatCameFromElsewhereIsRead) {
    ASSERT_TRUE(util.addInsulationSerie(path, ddq, Insulation(L"i")));
    Sql(path, "update ISS set ThermalConductivity = 0.5");
    EXPECT_EQ(InsulationOf(MEPDisciplineId::HVAC, TolmInsulationSerieType::Duct).at(0).GetThermalConductivity(), 0.5F);
    ASSERT_TRUE(util.addInsulationSerie(path, ddq, Insulation(L"i")));
    EXPECT_EQ(SqlValue(path, "select ThermalConductivity from ISS"), "0.5") << "a write leaves it";
}

TEST_F(InsulationStorage, AListIsThatOfOneDisciplineAndTypeWhichItGivesToItsSeries) {
    const auto add = [&](const wchar_t* id, MEPDisciplineId discipline, TolmInsulationSerieType type) {
        ASSERT_TRUE(util.addInsulationSerie(path, ddq, Insulation(id, discipline, type)));
    };
    add(L"1", MEPDisciplineId::HVAC, TolmInsulationSerieType::Pipe);
    add(L"2", MEPDisciplineId::HVAC, TolmInsulationSerieType::Duct);
    add(L"3", MEPDisciplineId::Plumbing, TolmInsulationSerieType::Pipe);
    add(L"4", MEPDisciplineId::HVAC, TolmInsulationSerieType::Pipe);
    const auto list = InsulationOf(MEPDisciplineId::HVAC, TolmInsulationSerieType::Pipe);
    EXPECT_EQ(Ids(list), (std::vector<wstring>{L"1", L"4"}));
    for (const auto& serie : list) {
        EXPECT_EQ(serie.GetDisciplineId(), MEPDisciplineId::HVAC);
        EXPECT_EQ(serie.GetInsulationType(), TolmInsulationSerieType::Pipe);
    }
}

TEST_F(InsulationStorage, EmptyListsRemoveTheirAttributes) {
    ASSERT_TRUE(util.addInsulationSerie(path, ddq, Insulation(L"i")));
    DataSetInsulationSerie bare;
    bare.SetId(L"i");
    ASSERT_TRUE(util.addInsulationSerie(path, ddq, bare));
    EXPECT_EQ(Sql(path, "select CircularMaxSizes, RectMaxSizes from ISS"), (std::vector<SqlRow>{{"NULL", "NULL"}}));
    const auto list = InsulationOf(MEPDisciplineId::Plumbing, TolmInsulationSerieType::Pipe);
    ASSERT_EQ(list.size(), 1U);
    EXPECT_TRUE(list[0].GetCircularMaxSizes().empty());
}

TEST_F(InsulationStorage, AListOver300IsRefusedBeforeTheStoreIsOpened) {
    DataSetInsulationSerie circular = Insulation(L"c");
    DataSetInsulationSerie rectangular = Insulation(L"r");
    while (circular.GetCircularMaxSizes().size() < 300)
        circular.AddCircularSize({1, 2, 3});
    while (rectangular.GetRectMaxSizes().size() < 301)
        rectangular.AddRectSize({1, 2, 3});
    EXPECT_FALSE(util.addInsulationSerie(path, ddq, rectangular));
    EXPECT_FALSE(Exists(path));
    EXPECT_TRUE(util.addInsulationSerie(path, ddq, circular));
    circular.AddCircularSize({1, 2, 3});
    circular.SetCode(L"changed");
    EXPECT_FALSE(util.addInsulationSerie(path, ddq, circular));
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              (Warnings{L"MepQbaseUtil::addInsulationSerie: RectMaxSizes 超过300条: 301",
                        L"MepQbaseUtil::addInsulationSerie: CircularMaxSizes 超过300条: 301"}));
    EXPECT_EQ(SqlValue(path, "select Code from ISS"), "B1");
}

TEST_F(InsulationStorage, ADeletionTakesTheKnown) {
    for (const wchar_t* id : {L"1", L"2"})
        ASSERT_TRUE(util.addInsulationSerie(path, ddq, Insulation(id)));
    EXPECT_TRUE(util.deleteInsulationSerieList(path, ddq, {Insulation(L"1"), Insulation(L"9")}));
    EXPECT_EQ(Ids(InsulationOf(MEPDisciplineId::HVAC, TolmInsulationSerieType::Duct)), std::vector<wstring>{L"2"});
}

// --- sizing methods
// ---------------------------------------------------------------------------------------------------

using SizingStorage = MethodStorage;

TEST_F(SizingStorage, EveryFieldComesBack) {
    ASSERT_TRUE(util.addSizingMethod(path, ddq, Sizing(L"s")));
    const auto list = SizingOf(TolmSizingMethodType::Duct);
    ASSERT_EQ(list.size(), 1U);
    const auto& read = list[0];
    EXPECT_EQ(read.GetId(), L"s");
    EXPECT_EQ(read.GetCode(), L"S1");
    EXPECT_EQ(read.GetDesc(), L"等摩阻 s");
    EXPECT_TRUE(read.GetKeepConnectTerminalSize());
    EXPECT_TRUE(read.GetUseStaticRegain());
    EXPECT_EQ(read.GetMinWPerHRatio(), 0.25F);
    EXPECT_EQ(read.GetMethodType(), TolmSizingMethodType::Duct);
    EXPECT_EQ(read.GetDimensionMethods(), Sizing(L"s").GetDimensionMethods());
}

TEST_F(SizingStorage, TheFileShowsTheAttributesUnderTheirNames) {
    ASSERT_TRUE(util.addSizingMethod(path, ddq, Sizing(L"s", TolmSizingMethodType::Pipe)));
    EXPECT_EQ(Sql(path, "select Code, Name, KeepConnectTerminalSize, MethodType, UseStaticRegain, MinWPerHRatio, "
                        "length(DimensionMethods), hex(substr(DimensionMethods, 1, 10)) from PSM"),
              (std::vector<SqlRow>{{"S1", "等摩阻 s", "1", "1", "1", "0.25", "20", "01000000003F000020C0"}}));
}

TEST_F(SizingStorage, AListIsThatOfOneType) {
    ASSERT_TRUE(util.addSizingMethod(path, ddq, Sizing(L"1", TolmSizingMethodType::Pipe)));
    ASSERT_TRUE(util.addSizingMethod(path, ddq, Sizing(L"2", TolmSizingMethodType::Duct)));
    EXPECT_EQ(Ids(SizingOf(TolmSizingMethodType::Pipe)), std::vector<wstring>{L"1"});
    EXPECT_EQ(Ids(SizingOf(TolmSizingMethodType::Duct)), std::vector<wstring>{L"2"});
}

TEST_F(SizingStorage, BytesBehindTheLastWholeStepArePassedOver) {
    ASSERT_TRUE(util.addSizingMethod(path, ddq, Sizing(L"s")));
    Sql(path, "update PSM set DimensionMethods = x'01000000003F000020C00200'");
    const auto list = SizingOf(TolmSizingMethodType::Duct);
    EXPECT_EQ(list.at(0).GetDimensionMethods(), (std::vector<DataSetDimensionMethodItem>{{1, 0.5F, -2.5F}}));
}

TEST_F(SizingStorage, AKindBeyondAShortKeepsItsLowSixteenBits) {
    auto method = Sizing(L"s");
    method.DeleteAllDimensionMethod();
    method.AddDimensionMethod({0x12345, 0.0F, 0.0F});
    ASSERT_TRUE(util.addSizingMethod(path, ddq, method));
    EXPECT_EQ(SizingOf(TolmSizingMethodType::Duct).at(0).GetDimensionMethods().at(0).methodKind, 0x2345);
}

TEST_F(SizingStorage, AListOver300IsRefusedBeforeTheStoreIsOpened) {
    auto method = Sizing(L"s");
    while (method.GetDimensionMethods().size() < 301)
        method.AddDimensionMethod({});
    EXPECT_FALSE(util.addSizingMethod(path, ddq, method));
    EXPECT_FALSE(Exists(path));
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              (Warnings{L"MepQbaseUtil::addSizingMethod: DimensionMethods 超过300条: 301"}));
    method.DeleteDimensionMethod(0);
    EXPECT_TRUE(util.addSizingMethod(path, ddq, method));
    EXPECT_EQ(SizingOf(TolmSizingMethodType::Duct).at(0).GetDimensionMethods().size(), 300U);
}

TEST_F(SizingStorage, ADeletionTakesTheKnown) {
    for (const wchar_t* id : {L"1", L"2"})
        ASSERT_TRUE(util.addSizingMethod(path, ddq, Sizing(id)));
    EXPECT_TRUE(util.deleteSizingMethodList(path, ddq, {Sizing(L"9"), Sizing(L"2")}));
    EXPECT_EQ(Ids(SizingOf(TolmSizingMethodType::Duct)), std::vector<wstring>{L"1"});
}

// --- what all have in common
// ------------------------------------------------------------------------------------------

TEST_F(MethodStorage, AnEmptyIdIsReplacedInTheStoreAndNotInTheMethod) {
    const auto balancing = Balancing(L"");
    const auto insulation = Insulation(L"");
    const auto sizing = Sizing(L"");
    for (int i = 0; i < 2; ++i) {
        EXPECT_TRUE(util.addBalancingMethod(path, ddq, balancing));
        EXPECT_TRUE(util.addInsulationSerie(path, ddq, insulation));
        EXPECT_TRUE(util.addSizingMethod(path, ddq, sizing));
    }
    EXPECT_EQ(insulation.GetId(), L"");
    const auto ids = Ids(InsulationOf(MEPDisciplineId::HVAC, TolmInsulationSerieType::Duct));
    ASSERT_EQ(ids.size(), 2U);
    EXPECT_EQ(ids[0].size(), 36U);
    EXPECT_NE(ids[0], ids[1]);
    EXPECT_EQ(SqlValue(path, "select count(*) from BMD"), "2");
    EXPECT_EQ(SqlValue(path, "select count(*) from PSM"), "2");
}

TEST_F(MethodStorage, AWriteOfAKnownIdReplaces) {
    ASSERT_TRUE(util.addSizingMethod(path, ddq, Sizing(L"1")) && util.addSizingMethod(path, ddq, Sizing(L"2")));
    auto changed = Sizing(L"1");
    changed.SetDesc(L"changed");
    ASSERT_TRUE(util.addSizingMethod(path, ddq, changed));
    const auto list = SizingOf(TolmSizingMethodType::Duct);
    EXPECT_EQ(Ids(list), (std::vector<wstring>{L"1", L"2"}));
    EXPECT_EQ(list[0].GetDesc(), L"changed");
}

TEST_F(MethodStorage, IsNotTracked) {
    ASSERT_TRUE(util.addBalancingMethod(path, ddq, Balancing(L"b")));
    ASSERT_TRUE(util.addInsulationSerie(path, ddq, Insulation(L"i")));
    ASSERT_TRUE(util.addSizingMethod(path, ddq, Sizing(L"s")));
    ASSERT_TRUE(util.deleteSizingMethodList(path, ddq, {Sizing(L"s")}));
    EXPECT_FALSE(Exists(statusPath));
}

TEST_F(MethodStorage, OfAStoreThatIsNotThereReadsAndDeletesNothing) {
    EXPECT_TRUE(BalancingOf(MEPDisciplineId::HVAC).empty());
    EXPECT_TRUE(InsulationOf(MEPDisciplineId::HVAC, TolmInsulationSerieType::Pipe).empty());
    EXPECT_TRUE(SizingOf(TolmSizingMethodType::Pipe).empty());
    EXPECT_FALSE(util.deleteBalancingMethodList(path, ddq, {Balancing(L"b")}));
    EXPECT_FALSE(util.deleteInsulationSerieList(path, ddq, {}));
    EXPECT_FALSE(util.deleteSizingMethodList(path, ddq, {}));
    EXPECT_FALSE(util.addSizingMethod(L"", ddq, Sizing(L"s")));
    EXPECT_FALSE(Exists(path));
}

TEST_F(MethodStorage, WithoutAStoreHandleEachOperationSaysSo) {
    const NoStoreHandles none;
    std::vector<DataSetBalancingMethod> balancing;
    std::vector<DataSetInsulationSerie> insulation;
    std::vector<DataSetSizingMethod> sizing;
    EXPECT_FALSE(util.readBalancingMethodList(path, ddq, MEPDisciplineId::HVAC, balancing));
    EXPECT_FALSE(util.addBalancingMethod(path, ddq, Balancing(L"b")));
    EXPECT_FALSE(util.deleteBalancingMethodList(path, ddq, {}));
    EXPECT_FALSE(
        util.readInsulationSerieList(path, ddq, MEPDisciplineId::HVAC, TolmInsulationSerieType::Pipe, insulation));
    EXPECT_FALSE(util.addInsulationSerie(path, ddq, Insulation(L"i")));
    EXPECT_FALSE(util.deleteInsulationSerieList(path, ddq, {}));
    EXPECT_FALSE(util.readSizingMethodList(path, ddq, TolmSizingMethodType::Pipe, sizing));
    EXPECT_FALSE(util.addSizingMethod(path, ddq, Sizing(L"s")));
    EXPECT_FALSE(util.deleteSizingMethodList(path, ddq, {}));
    Warnings expected;
    for (const wchar_t* operation : {L"readBalancingMethodList", L"addBalancingMethod", L"deleteBalancingMethodList",
                                     L"readInsulationSerieList", L"addInsulationSerie", L"deleteInsulationSerieList",
                                     L"readSizingMethodList", L"addSizingMethod", L"deleteSizingMethodList"})
        expected.push_back(wstring(L"MepQbaseUtil::") + operation + L": qb为空");
    EXPECT_EQ(TakeDebugWarningsWithFunction(), expected);
}

} // namespace
