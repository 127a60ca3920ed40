#include "MepDatabase/MepQbaseUtil.h"
#include "StoreSupport/MepQbaseUtilTestAccess.h"
#include "StoreSupport/SeriesFixture.h"

#include <limits>

namespace {

using namespace tolm;
using namespace tolmtest;
using Access = MepQbaseUtilTestAccess;
using Rows = std::vector<SqlRow>;
using Fittings = std::vector<Fitting>;

class ConnectionSeries : public SeriesFixture {
protected:
    /// The one series of threaded pipes.
    ConnectionPtr Only() {
        auto list = Connections();
        EXPECT_EQ(list.size(), 1U);
        return list.empty() ? Connection(L"none") : std::move(list[0]);
    }
    std::map<wstring, ConnectionPtr> ByType(Type type, const std::map<Connector, wstring>& connectors) {
        std::map<wstring, ConnectionPtr> series;
        const bool found = util.ReadConectionSerieList(path, ddq, components, type, connectors, series);
        EXPECT_EQ(found, !series.empty());
        return series;
    }
    /// A stored series with these fittings as the store has them.
    void Stored(const std::string& bytes, const wstring& id = L"c") {
        ASSERT_TRUE(Write(Connection(id, L"threaded")));
        SetFittingList(id, bytes);
    }
};

ConnectionPtr TwoElbows(const wstring& id = L"c") {
    auto connection = Connection(id, L"threaded");
    AddFitting(*connection, {Part::Elbow, Rule::Elbows, L"e1", 15.0, 50.0});
    AddFitting(*connection, {Part::Transition, Rule::RoundTransitions, L"e2", 20.5, 65.0});
    return connection;
}

const Fittings kTwoElbowsRead = {{Part::Elbow, Rule::Elbows, L"e1"}, {Part::Transition, Rule::RoundTransitions, L"e2"}};

TEST_F(ConnectionSeries, EveryFieldComesBackAndEachFittingServesAllSizes) {
    ASSERT_TRUE(Write(TwoElbows()));
    const auto read = Only();
    EXPECT_EQ(read->GetId(), L"c");
    EXPECT_EQ(read->GetName(), L"threaded");
    EXPECT_EQ(read->GetConnectionType(), Connector::PipeThreaded);
    EXPECT_EQ(read->GetObjectType(), Type::Pipe);
    EXPECT_EQ(FittingsOf(*read), kTwoElbowsRead);
    const auto products = read->GetProducts();
    EXPECT_EQ(products[0].m_pComponent->GetCategoryCode(), L"elbow");
}

TEST_F(ConnectionSeries, TheFileShowsNameTypesAndPackedFittings) {
    ASSERT_TRUE(Write(TwoElbows()));
    EXPECT_EQ(Sql(path, "select Name, ConnectionType, MEPType from COS"), (Rows{{"threaded", "1", "1"}}));
    EXPECT_EQ(FittingList(L"c"), PackedFittingBytes("elbow", 1, 1, "e1", 15.0F, 50.0F) +
                                     PackedFittingBytes("elbow", 4, 11, "e2", 20.5F, 65.0F));
}

TEST_F(ConnectionSeries, WithoutFittingsHasNoList) {
    ASSERT_TRUE(Write(TwoElbows()));
    EXPECT_NE(FittingList(L"c"), std::nullopt);
    ASSERT_TRUE(Write(Connection(L"c")));
    EXPECT_EQ(FittingList(L"c"), std::nullopt);
    EXPECT_TRUE(Only()->GetProducts().empty());
}

TEST_F(ConnectionSeries, ALongTextIsCutAtItsField) {
    auto connection = Connection(L"c");
    AddFitting(*connection, {.component = wstring(60, L'p')}, wstring(60, L'c'));
    AddFitting(*connection, {.component = wstring(20, L'品')}, wstring(20, L'类'));
    ASSERT_TRUE(Write(std::move(connection)));
    const auto bytes = FittingList(L"c").value_or("");
    ASSERT_EQ(bytes.size(), 212U);
    EXPECT_EQ(bytes.substr(0, 50), std::string(50, 'c'));
    EXPECT_EQ(bytes.substr(58, 40), std::string(40, 'p'));
    EXPECT_EQ(bytes.substr(106 + 48, 2), std::string(2, '\0')) << "sixteen characters of three bytes";
    EXPECT_EQ(bytes.substr(106 + 58 + 39, 1), std::string(1, '\0')) << "thirteen characters of three bytes";
}

TEST_F(ConnectionSeries, ABoundThatIsNoFloatIsClamped) {
    auto connection = Connection(L"c");
    AddFitting(*connection, {Part::Elbow, Rule::Elbows, L"e1", -1e300, 1e300});
    ASSERT_TRUE(Write(std::move(connection)));
    constexpr float most = std::numeric_limits<float>::max();
    EXPECT_EQ(FittingList(L"c"), PackedFittingBytes("elbow", 1, 1, "e1", -most, most));
}

TEST_F(ConnectionSeries, OfTwoCategoriesComeBackTheFittingsOfTheFirst) {
    auto connection = TwoElbows();
    AddFitting(*connection, {Part::Tee, Rule::Tees, L"t1"}, L"tee");
    AddFitting(*connection, {Part::Elbow, Rule::Elbows, L"e1"});
    ASSERT_TRUE(Write(std::move(connection)));
    EXPECT_EQ(FittingsOf(*Only()), (Fittings{kTwoElbowsRead[0], kTwoElbowsRead[1], kTwoElbowsRead[0]}));
    EXPECT_EQ(FittingList(L"c").value_or("").size(), 4 * 106U) << "the store keeps all";
}

TEST_F(ConnectionSeries, ANegativePartTypeStaysInTheStoreAndIsSkipped) {
    Stored(PackedFittingBytes("tee", -1, 1, "t1", 1, 2) + PackedFittingBytes("elbow", 2, 3, "e1", 1, 2));
    EXPECT_EQ(FittingsOf(*Only()), (Fittings{{Part::Tee, Rule::Crosses, L"e1"}})) << "it does not settle the category";
    EXPECT_EQ(FittingList(L"c").value_or("").size(), 2 * 106U);
}

TEST_F(ConnectionSeries, APartTypeThatHasNoNamePasses) {
    Stored(PackedFittingBytes("elbow", 0, -5, "e1", 1, 2) + PackedFittingBytes("elbow", 77, 99, "e2", 1, 2));
    EXPECT_EQ(FittingsOf(*Only()), (Fittings{{Part::Undefined, static_cast<Rule>(-5), L"e1"},
                                             {static_cast<Part>(77), static_cast<Rule>(99), L"e2"}}));
}

TEST_F(ConnectionSeries, AComponentThatTheCatalogueLacksIsSkippedWithoutAWord) {
    Stored(PackedFittingBytes("elbow", 1, 1, "gone", 1, 2) + PackedFittingBytes("elbow", 1, 1, "e2", 1, 2));
    EXPECT_EQ(FittingsOf(*Only()), (Fittings{{Part::Elbow, Rule::Elbows, L"e2"}}));
}

TEST_F(ConnectionSeries, ARemainderThatIsNoEntryIsPassedOver) {
    Stored(PackedFittingBytes("elbow", 1, 1, "e1", 1, 2) + std::string(105, 'x'));
    EXPECT_EQ(FittingsOf(*Only()), (Fittings{{Part::Elbow, Rule::Elbows, L"e1"}}));
    for (const std::size_t length : {0U, 1U, 105U}) {
        SetFittingList(L"c", std::string(length, 'x'));
        EXPECT_TRUE(Only()->GetProducts().empty()) << length;
    }
}

TEST_F(ConnectionSeries, BytesOfAnyKindAreRead) {
    Stored(std::string(106 * 3, '\x7f'));
    EXPECT_TRUE(Connections().empty());
    EXPECT_EQ(TakeDebugWarnings(), (Warnings{L"pFitting为空"}));
    SetFittingList(L"c", std::string(106 * 3, '\xff'));
    EXPECT_TRUE(Only()->GetProducts().empty()) << "all part types are negative";
}

TEST_F(ConnectionSeries, MoreFittingsThanAnyWriterMakesAreRead) {
    std::string bytes;
    for (int i = 0; i < 1000; ++i)
        bytes += PackedFittingBytes("elbow", 1, 1, "e1", 1, 2);
    Stored(bytes);
    EXPECT_EQ(Only()->GetProducts().size(), 1000U);
}

TEST_F(ConnectionSeries, WithoutACategoryServiceHasNoFittings) {
    ASSERT_TRUE(Write(TwoElbows()));
    TolmCategoryInfoUtilsHandler::Get().SetUtils(nullptr);
    EXPECT_TRUE(Only()->GetProducts().empty());
}

TEST_F(ConnectionSeries, OfAnUnknownCategoryIsReportedAndLeftOut) {
    Stored(PackedFittingBytes("unknown", 1, 1, "e1", 1, 2) + PackedFittingBytes("elbow", 1, 1, "e1", 1, 2));
    ASSERT_TRUE(Write(TwoElbows(L"other")));
    EXPECT_EQ(Only()->GetId(), L"other") << "the walk goes on";
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::read_connection_serie_att: pFitting为空"}));
}

TEST_F(ConnectionSeries, OfAnUnknownCategoryIsReportedForEachSeries) {
    Stored(PackedFittingBytes("unknown", 1, 1, "e1", 1, 2), L"a");
    Stored(PackedFittingBytes("unknown", 1, 1, "e1", 1, 2), L"b");
    EXPECT_TRUE(Connections().empty());
    EXPECT_EQ(TakeDebugWarnings(), (Warnings{L"pFitting为空", L"pFitting为空"}));
}

TEST_F(ConnectionSeries, WithoutAComponentDatabaseHasNoFittings) {
    ASSERT_TRUE(Write(TwoElbows()));
    std::vector<ConnectionPtr> list;
    EXPECT_TRUE(util.ReadConectionSerieList(path, ddq, folder.File(L"missing.db"), Connector::PipeThreaded, list));
    ASSERT_EQ(list.size(), 1U);
    EXPECT_TRUE(list[0]->GetProducts().empty());
}

TEST_F(ConnectionSeries, ACatalogueWithANullComponentIsReported) {
    ASSERT_TRUE(Write(TwoElbows()));
    const ComponentReads reads([](const wstring&) {
        std::vector<ComponentPtr> list;
        list.push_back(Component(L"e1"));
        list.emplace_back();
        return list;
    });
    EXPECT_TRUE(Connections().empty());
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              (Warnings{L"MepQbaseUtil::read_connection_serie_att: retComponents[j]为空"}));
}

TEST_F(ConnectionSeries, AComponentThatGivesNoCopyIsReported) {
    ASSERT_TRUE(Write(TwoElbows()));
    const ComponentReads reads([](const wstring& category) {
        std::vector<ComponentPtr> list;
        list.push_back(Component(L"e1", category));
        list.push_back(Component(L"e2", category, false));
        return list;
    });
    EXPECT_TRUE(Connections().empty());
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              (Warnings{L"MepQbaseUtil::read_connection_serie_att: fittingComponentMap[strProdId]为空"}));
}

TEST_F(ConnectionSeries, OfSeveralVersionsOfAComponentTheNewestIsTaken) {
    TolmComponentData newer;
    newer.id = L"e1";
    newer.categoryCode = L"elbow";
    newer.version = 7;
    ASSERT_TRUE(TolmComponentSqlUtil::Import(components, {}, {}, {newer}));
    ASSERT_TRUE(Write(TwoElbows()));
    const auto read = Only();
    EXPECT_EQ(read->GetProducts()[0].m_pComponent->GetVersion(), 7);
    EXPECT_EQ(read->GetProducts().size(), 2U);
}

TEST_F(ConnectionSeries, EachCategoryIsReadOnceHoweverManySeriesDrawOnIt) {
    for (int i = 0; i < 20; ++i) {
        auto connection = Connection(L"c" + std::to_wstring(i));
        const bool isTee = i % 2 == 1;
        AddFitting(*connection, {.component = isTee ? L"t1" : L"e1"}, isTee ? L"tee" : L"elbow");
        ASSERT_TRUE(Write(std::move(connection)));
    }
    const ComponentReads reads([](const wstring& category) {
        std::vector<ComponentPtr> list;
        list.push_back(Component(category == L"tee" ? L"t1" : L"e1", category));
        return list;
    });
    const auto list = Connections();
    ASSERT_EQ(list.size(), 20U);
    for (const auto& connection : list)
        EXPECT_EQ(connection->GetProducts().size(), 1U);
    EXPECT_NE(list[0]->GetProducts()[0].m_pComponent, list[2]->GetProducts()[0].m_pComponent)
        << "each series owns its components";
    EXPECT_EQ(reads.Categories(), (std::vector<wstring>{L"elbow", L"tee"}));
    EXPECT_EQ(reads.Paths(), (std::vector<wstring>(2, components)));
    EXPECT_EQ(Series().size(), 20U);
    EXPECT_EQ(reads.Categories().size(), 4U) << "the next operation reads afresh";
}

// --- lists -----------------------------------------------------------------------------------------------------------

TEST_F(ConnectionSeries, ByTypeAreThoseOfTheObjectTypeAndTheGivenConnectors) {
    ASSERT_TRUE(Write(Connection(L"d", L"", Connector::PipeWelded)) && Write(TwoElbows(L"a")) &&
                Write(Connection(L"b", L"", Connector::PipeThreaded, Type::Duct)) &&
                Write(Connection(L"c", L"", Connector::Conduit, Type::Conduit)) && Write(Connection(L"e")));
    const auto series = ByType(Type::Pipe, {{Connector::PipeThreaded, L""}, {Connector::PipeWelded, L""}});
    ASSERT_EQ(series.size(), 3U);
    EXPECT_EQ(series.at(L"d")->GetConnectionType(), Connector::PipeWelded);
    EXPECT_EQ(FittingsOf(*series.at(L"a")), kTwoElbowsRead);
    EXPECT_TRUE(series.contains(L"e"));
    EXPECT_TRUE(ByType(Type::Pipe, {}).empty());
    EXPECT_TRUE(ByType(Type::Pipe, {{Connector::PipeSocket, L""}}).empty());
}

TEST_F(ConnectionSeries, ByTypeAreAddedToTheMap) {
    ASSERT_TRUE(Write(TwoElbows(L"a")) && Write(TwoElbows(L"b")));
    std::map<wstring, ConnectionPtr> series;
    series.emplace(L"a", Connection(L"a", L"held"));
    series.emplace(L"x", Connection(L"x"));
    EXPECT_TRUE(
        util.ReadConectionSerieList(path, ddq, components, Type::Pipe, {{Connector::PipeThreaded, L""}}, series));
    EXPECT_EQ(series.size(), 3U);
    EXPECT_EQ(series.at(L"a")->GetName(), L"held") << "an id that the map holds keeps its series";
}

TEST_F(ConnectionSeries, OfOneConnectorAreOfEveryObjectTypeInOrderOfCreation) {
    ASSERT_TRUE(Write(Connection(L"b")) && Write(Connection(L"x", L"", Connector::Duct)) &&
                Write(Connection(L"a", L"", Connector::PipeThreaded, Type::Duct)));
    auto list = Connections();
    ASSERT_EQ(list.size(), 2U);
    EXPECT_EQ(list[0]->GetId(), L"b");
    EXPECT_EQ(list[1]->GetId(), L"a");
    EXPECT_EQ(list[1]->GetObjectType(), Type::Duct);
    EXPECT_TRUE(util.ReadConectionSerieList(path, ddq, components, Connector::Duct, list));
    EXPECT_EQ(list.size(), 3U) << "a list is appended to";
}

TEST_F(ConnectionSeries, AFactoryThatMakesNothingIsReported) {
    ASSERT_TRUE(Write(TwoElbows()));
    const EmptyFactory nothing;
    EXPECT_TRUE(Connections().empty());
    EXPECT_TRUE(ByType(Type::Pipe, {{Connector::PipeThreaded, L""}}).empty());
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::ReadConectionSerieList: ptempConnSerie为空",
                                                         L"MepQbaseUtil::ReadConectionSerieList: ptempConnSerie为空"}));
}

// --- the nested reader and writer
// --------------------------------------------------------------------------------------

TEST_F(ConnectionSeries, ReaderAndWriterRefuseNoStoreAndNoRecord) {
    CQbase qb;
    ConnectionPtr none;
    auto connection = Connection(L"c");
    EXPECT_FALSE(util.read_connection_serie_att(nullptr, components, connection));
    EXPECT_FALSE(util.read_connection_serie_att(&qb, components, none));
    EXPECT_FALSE(util.write_connection_serie_att(nullptr, connection.get()));
    EXPECT_FALSE(util.write_connection_serie_att(&qb, nullptr));
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::read_connection_serie_att: qb为空",
                                                         L"MepQbaseUtil::read_connection_serie_att: retConnSerie为空",
                                                         L"MepQbaseUtil::write_connection_serie_att: qb为空",
                                                         L"MepQbaseUtil::write_connection_serie_att: pConnSerie为空"}));
}

TEST_F(ConnectionSeries, TheReaderReadsTheCurrentRecord) {
    ASSERT_TRUE(Write(TwoElbows(L"a")) && Write(TwoElbows(L"b")));
    CQbase qb;
    ASSERT_TRUE(Access::OpenQbase(path, ddq, &qb, false, false) && qb.fetchEqualRec("COS", L"b"));
    auto connection = Connection(L"", L"", Connector::Duct, Type::Duct);
    EXPECT_TRUE(util.read_connection_serie_att(&qb, components, connection));
    EXPECT_EQ(connection->GetId(), L"b");
    EXPECT_EQ(connection->GetConnectionType(), Connector::PipeThreaded);
    EXPECT_EQ(connection->GetObjectType(), Type::Pipe);
    EXPECT_EQ(FittingsOf(*connection), kTwoElbowsRead);
}

TEST_F(ConnectionSeries, AMissingAttributeLeavesTheValue) {
    ASSERT_TRUE(Write(TwoElbows()));
    Sql(path, "update COS set Name = null, MEPType = null, FittingList = null");
    CQbase qb;
    ASSERT_TRUE(Access::OpenQbase(path, ddq, &qb, false, false) && qb.fetchFirstMember("COS"));
    auto connection = Connection(L"", L"before", Connector::Duct, Type::Duct);
    EXPECT_TRUE(util.read_connection_serie_att(&qb, components, connection));
    EXPECT_EQ(connection->GetName(), L"before");
    EXPECT_EQ(connection->GetObjectType(), Type::Duct);
}

TEST_F(ConnectionSeries, AFittingWithoutComponentEndsTheList) {
    auto connection = TwoElbows();
    ComponentPtr none;
    connection->AddFitting(Part::Cap, Rule::Caps, none, 1.0, 2.0);
    AddFitting(*connection, {.component = L"e1"});
    ASSERT_TRUE(Write(std::move(connection)));
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              (Warnings{L"MepQbaseUtil::write_connection_serie_att: fittingList[i].m_pComponent为空"}));
    EXPECT_EQ(FittingsOf(*Only()), kTwoElbowsRead);
    EXPECT_EQ(Only()->GetName(), L"threaded");
}

TEST_F(ConnectionSeries, AFirstFittingWithoutComponentLeavesNoList) {
    ASSERT_TRUE(Write(TwoElbows()));
    auto connection = Connection(L"c");
    ComponentPtr none;
    connection->AddFitting(Part::Cap, Rule::Caps, none, 1.0, 2.0);
    ASSERT_TRUE(Write(std::move(connection)));
    EXPECT_EQ(TakeDebugWarnings(), (Warnings{L"fittingList[i].m_pComponent为空"}));
    EXPECT_EQ(FittingList(L"c"), std::nullopt);
}

TEST_F(ConnectionSeries, ThreeHundredFittingsAreKept) {
    ASSERT_TRUE(Write(LongConnection(L"c", 300)));
    EXPECT_EQ(Only()->GetProducts().size(), 300U);
}

TEST_F(ConnectionSeries, OneMoreIsRefusedBeforeTheStoreIsOpened) {
    EXPECT_FALSE(Write(LongConnection(L"c", 301)));
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              (Warnings{L"MepQbaseUtil::WriteMEPMaterialSerie: FittingList 超过300条: 301"}));
    EXPECT_FALSE(Exists(path));
}

TEST_F(ConnectionSeries, OneMoreLeavesTheStoreAsItWas) {
    ASSERT_TRUE(Write(TwoElbows()));
    const auto before = FileBytes(path);
    EXPECT_FALSE(Write(LongConnection(L"c", 301)));
    EXPECT_EQ(TakeDebugWarnings().size(), 1U);
    EXPECT_EQ(FileBytes(path), before);
}

TEST_F(ConnectionSeries, TheNestedWriterRefusesOneMoreToo) {
    CQbase qb;
    ASSERT_TRUE(Access::OpenQbase(path, ddq, &qb, true, true) && qb.createRec("COS", L"c"));
    EXPECT_FALSE(util.write_connection_serie_att(&qb, LongConnection(L"c", 301).get()));
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              (Warnings{L"MepQbaseUtil::write_connection_serie_att: FittingList 超过300条: 301"}));
}

TEST_F(ConnectionSeries, EntriesBehindAMissingComponentDoNotCount) {
    auto connection = LongConnection(L"c", 300);
    ComponentPtr none;
    connection->AddFitting(Part::Cap, Rule::Caps, none, 1.0, 2.0);
    AddFitting(*connection, {.component = L"e1"});
    EXPECT_TRUE(Write(std::move(connection)));
    EXPECT_EQ(TakeDebugWarnings(), (Warnings{L"fittingList[i].m_pComponent为空"}));
    EXPECT_EQ(Only()->GetProducts().size(), 300U);
}

} // namespace
