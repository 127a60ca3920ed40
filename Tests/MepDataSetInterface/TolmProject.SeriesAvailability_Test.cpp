#include "Host/Definitions.h"
#include "MepDataSetInterface/TableTestSupport.h"
#include "StoreSupport/SeriesFixture.h"

namespace {

using namespace tolm;
using namespace tolmtest;
using Names = std::map<wstring, wstring>;

/// A system type with references to series and cable tables that are stored nowhere.
SystemTypePtr Linked(const wstring& id, const Ids& series, const Ids& cables = {}) {
    auto systemType = SystemType(id);
    for (const wstring& serieId : series) {
        auto serie = Serie(serieId);
        systemType->AddSystemMaterialSerie(serie);
    }
    for (wstring cableId : cables) {
        auto cable = SizeModule(cableId, L"", Type::Wire, Discipline::Electrical);
        cable->SetCableSpecTypeName(cableId);
        systemType->AddCableSpecType(std::move(cable));
    }
    return systemType;
}

class SeriesAvailability : public SeriesFixture {
protected:
    vorn::OwnerPtr<ITolmDataset> dataset =
        TolmDataset::Create(path, components, folder.File(L"combined.db"), folder.File(L"binary"));
    std::map<MEPConnectorType, wstring> connectorTypes;
    IdMap<IProjectSettingConnectionSerie> connections;
};

TEST_F(SeriesAvailability, SeriesComeWholeByIdentifierAndLeaveTheTablesAlone) {
    auto serie = Serie(L"b", L"steel");
    auto connection = Connection(L"c");
    AddFitting(*connection, {.component = L"e1"});
    serie->SetConnectionSerie(connection);
    ASSERT_TRUE(Write(serie) && Write(Serie(L"a")) && Write(Serie(L"d", L"", Type::Duct, Discipline::HVAC)) &&
                Write(Serie(L"h", L"", Type::Pipe, Discipline::HVAC)));
    const auto series = dataset->GetAvailableMEPMaterialSerieList(Type::Pipe, Discipline::Plumbing);
    ASSERT_EQ(KeysOf(series), (Ids{L"a", L"b"}));
    EXPECT_EQ(series.at(L"b")->GetName(), L"steel");
    ASSERT_NE(series.at(L"b")->GetConnectionSerie(), nullptr);
    EXPECT_EQ(FittingsOf(*series.at(L"b")->GetConnectionSerie()), (std::vector<Fitting>{{.component = L"e1"}}));
    EXPECT_TRUE(dataset->GetMEPMaterialSerieData()->GetSerieList().empty());
}

TEST_F(SeriesAvailability, OfAStoreThatIsNotThereIsEmpty) {
    std::vector<Names> names;
    std::map<wstring, Ids> ids;
    EXPECT_TRUE(dataset->GetAvailableMEPMaterialSerieList(Type::Pipe, Discipline::Plumbing).empty());
    EXPECT_FALSE(dataset->GetAvailableConnectionList(Type::Pipe, connectorTypes, connections));
    dataset->GetSystemTypeNameIDs(names);
    EXPECT_FALSE(dataset->GetMEPSerieRecordGuidListOfSystemType({L"x"}, ids));
    EXPECT_EQ(connectorTypes.size(), 5U);
    EXPECT_TRUE(connections.empty() && names.empty() && ids.empty());
    EXPECT_FALSE(Exists(path));
}

struct Offer {
    int objectType;
    std::vector<int> connectorTypes;
};

TEST_F(SeriesAvailability, EachObjectTypeIsOfferedItsConnectorTypesUnderTheirNames) {
    MakeStore();
    for (const auto& offer : {Offer{1, {1, 2, 3, 4, 5}}, Offer{2, {11}}, Offer{3, {21}}, Offer{4, {31}}, Offer{5, {}},
                              Offer{6, {}}, Offer{0, {}}}) {
        std::map<MEPConnectorType, wstring> expected;
        for (const int type : offer.connectorTypes) {
            const auto connector = static_cast<MEPConnectorType>(type);
            expected[connector] = MEPConnectorTypeDefinition::ConnectorTypeNameList.at(connector);
        }
        connectorTypes.clear();
        EXPECT_FALSE(
            dataset->GetAvailableConnectionList(static_cast<Type>(offer.objectType), connectorTypes, connections));
        EXPECT_EQ(connectorTypes, expected) << offer.objectType;
    }
}

TEST_F(SeriesAvailability, ConnectionsAreThoseOfObjectTypeAndOfferedConnectorTypes) {
    ASSERT_TRUE(Write(Connection(L"b", L"", Connector::PipeWelded)) && Write(Connection(L"a")) &&
                Write(Connection(L"duct", L"", Connector::Duct, Type::Duct)) &&
                Write(Connection(L"odd", L"", Connector::PipeWelded, Type::Conduit)));
    EXPECT_TRUE(dataset->GetAvailableConnectionList(Type::Pipe, connectorTypes, connections));
    EXPECT_EQ(KeysOf(connections), (Ids{L"a", L"b"}));
    EXPECT_TRUE(dataset->GetConnectionSerieData()->GetConnectionSerieList().empty());
}

TEST_F(SeriesAvailability, TheSecondTrayConnectorTypeIsNeverOffered) {
    ASSERT_TRUE(Write(Connection(L"a", L"", Connector::CableTray, Type::CableTray)) &&
                Write(Connection(L"b", L"", Connector::CableTrayAlternative, Type::CableTray)));
    EXPECT_TRUE(dataset->GetAvailableConnectionList(Type::CableTray, connectorTypes, connections));
    EXPECT_EQ(KeysOf(connections), (Ids{L"a"}));
    EXPECT_EQ(connectorTypes.count(MEPConnectorType::CableTrayAlternative), 0U);
}

TEST_F(SeriesAvailability, WiresHaveNoConnectionsAndTheOutputsStay) {
    ASSERT_TRUE(Write(Connection(L"a", L"", Connector::PipeThreaded, Type::Wire)));
    EXPECT_FALSE(dataset->GetAvailableConnectionList(Type::Wire, connectorTypes, connections));
    EXPECT_TRUE(connectorTypes.empty() && connections.empty());
}

TEST_F(SeriesAvailability, WhatTheCallersConnectorTypesHoldStaysAndIsReadToo) {
    ASSERT_TRUE(Write(Connection(L"a", L"", Connector::PipeThreaded, Type::Duct)) &&
                Write(Connection(L"d", L"", Connector::Duct, Type::Duct)));
    connectorTypes = {{MEPConnectorType::PipeThreaded, L"mine"}, {MEPConnectorType::Duct, L"my ducts"}};
    EXPECT_TRUE(dataset->GetAvailableConnectionList(Type::Duct, connectorTypes, connections));
    EXPECT_EQ(connectorTypes.at(MEPConnectorType::Duct), L"my ducts");
    EXPECT_EQ(connectorTypes.size(), 2U);
    EXPECT_EQ(KeysOf(connections), (Ids{L"a", L"d"}));
}

TEST_F(SeriesAvailability, WhatTheCallersSeriesHoldCountsAsFound) {
    MakeStore();
    connections.emplace(L"mine", Connection(L"mine"));
    EXPECT_TRUE(dataset->GetAvailableConnectionList(Type::Wire, connectorTypes, connections));
    EXPECT_EQ(KeysOf(connections), (Ids{L"mine"}));
}

TEST_F(SeriesAvailability, AConnectorTypeWithoutANameIsNotOffered) {
    const auto before = MEPConnectorTypeDefinition::ConnectorTypeNameList;
    MEPConnectorTypeDefinition::ConnectorTypeNameList.erase(MEPConnectorType::PipeWelded);
    MakeStore();
    EXPECT_FALSE(dataset->GetAvailableConnectionList(Type::Pipe, connectorTypes, connections));
    EXPECT_EQ(connectorTypes.size(), 4U);
    EXPECT_EQ(connectorTypes.count(MEPConnectorType::PipeWelded), 0U);
    MEPConnectorTypeDefinition::ConnectorTypeNameList = before;
}

TEST_F(SeriesAvailability, SystemTypeNamesComePairByPair) {
    ASSERT_TRUE(Write(SystemType(L"p", L"cold water")) && Write(SystemType(L"q", L"hot water")) &&
                Write(SystemType(L"d", L"supply", Type::Duct, Discipline::HVAC)) &&
                Write(SystemType(L"h", L"heating", Type::Pipe, Discipline::HVAC)) &&
                Write(SystemType(L"e", L"lighting", Type::ElectricalSystem, Discipline::Electrical)) &&
                Write(SystemType(L"t", L"trays", Type::CableTray, Discipline::Electrical)) &&
                Write(SystemType(L"o", L"nowhere", Type::Conduit, Discipline::Electrical)));
    std::vector<Names> names;
    dataset->GetSystemTypeNameIDs(names);
    EXPECT_EQ(names, (std::vector<Names>{{{L"p", L"cold water"}, {L"q", L"hot water"}},
                                         {{L"d", L"supply"}},
                                         {{L"h", L"heating"}},
                                         {{L"e", L"lighting"}},
                                         {{L"t", L"trays"}}}));
}

TEST_F(SeriesAvailability, ReferencesOfSystemTypesAreSeriesAndThenCables) {
    ASSERT_TRUE(Write(Linked(L"x", {L"s", L"r"}, {L"w"})) && Write(Linked(L"y", {L"u"})) && Write(Linked(L"z", {})));
    std::map<wstring, Ids> ids;
    EXPECT_TRUE(dataset->GetMEPSerieRecordGuidListOfSystemType({L"x", L"z", L"unknown"}, ids));
    EXPECT_EQ(ids, (std::map<wstring, Ids>{{L"x", {L"s", L"r", L"w"}}}));
    ids.clear();
    EXPECT_FALSE(dataset->GetMEPSerieRecordGuidListOfSystemType({L"z"}, ids));
    EXPECT_TRUE(ids.empty());
}

TEST_F(SeriesAvailability, FittingsGetTheirNewComponentIdentifiers) {
    auto connection = Connection(L"c");
    AddFitting(*connection, {.component = L"e1"});
    AddFitting(*connection, {.component = L"e2"});
    ASSERT_TRUE(Write(std::move(connection)));
    EXPECT_TRUE(dataset->ReplaceFittingComponentId({{L"e1", L"e2"}, {L"e2", L"e1"}}));
    const auto read = Connections();
    ASSERT_EQ(read.size(), 1U);
    EXPECT_EQ(FittingsOf(*read[0]), (std::vector<Fitting>{{.component = L"e2"}, {.component = L"e1"}}));
    EXPECT_FALSE(dataset->ReplaceFittingComponentId({}));
}

} // namespace
