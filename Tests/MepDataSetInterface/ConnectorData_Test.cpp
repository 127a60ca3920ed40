#include "MepDataSetInterface/TableSlices.h"
#include "MepDataSetInterface/TableTestSupport.h"
#include "StoreSupport/SeriesFixture.h"

namespace {

using namespace tolm;
using namespace tolmtest;

class ConnectorTable : public TableOnStore<ConnectorData, SeriesFixture> {
protected:
    void Collect(int id) { table->CollectDesignData(path, components, static_cast<TableId>(id)); }
    Ids Listed() { return IdsOf(table->GetConnectionSerieList()); }
};

struct ConnectorSlice {
    int id;
    int connectorType;
};
constexpr ConnectorSlice kSlices[] = {
    {15, 1}, {16, 2}, {17, 3}, {18, 4}, {19, 5}, {20, 11}, {21, 21}, {22, 22}, {23, 31},
};

TEST_F(ConnectorTable, BeforeItsCollectionItIsEmptyAndReadsNothing) {
    ASSERT_TRUE(Write(Connection(L"a")));
    EXPECT_EQ(Listed(), Ids{});
}

TEST_F(ConnectorTable, EachIdSelectsItsConnectorTypeAlone) {
    for (const auto& slice : kSlices)
        ASSERT_TRUE(Write(Connection(std::to_wstring(slice.id), L"", static_cast<Connector>(slice.connectorType))));
    for (const auto& slice : kSlices) {
        table->reset();
        Collect(slice.id);
        EXPECT_EQ(Listed(), (Ids{std::to_wstring(slice.id)}));
        EXPECT_EQ(static_cast<int>(table->GetConnectionSerieList()[0]->GetConnectionType()), slice.connectorType);
    }
}

TEST_F(ConnectorTable, AnIdOfAnotherTableReadsNothing) {
    for (const auto& slice : kSlices)
        ASSERT_TRUE(Write(Connection(std::to_wstring(slice.id), L"", static_cast<Connector>(slice.connectorType))));
    for (int id = -1; id <= 40; ++id) {
        if (FindSlice(static_cast<TableId>(id), TableKind::Connections) == nullptr)
            Collect(id);
    }
    EXPECT_EQ(Listed(), Ids{});
}

TEST_F(ConnectorTable, AConnectorTypeIsReadWhateverTheObjectType) {
    ASSERT_TRUE(Write(Connection(L"p", L"", Connector::PipeWelded, Type::Pipe)) &&
                Write(Connection(L"c", L"", Connector::PipeWelded, Type::Conduit)));
    Collect(16);
    EXPECT_EQ(Listed(), (Ids{L"p", L"c"}));
}

TEST_F(ConnectorTable, FittingsComeFromTheComponentDatabaseOfTheCollection) {
    auto connection = Connection(L"a");
    AddFitting(*connection, {.component = L"e2"});
    ASSERT_TRUE(Write(std::move(connection)));
    Collect(15);
    ASSERT_EQ(Listed(), (Ids{L"a"}));
    EXPECT_EQ(FittingsOf(*table->GetConnectionSerieList()[0]), (std::vector<Fitting>{{.component = L"e2"}}));
}

TEST_F(ConnectorTable, CollectionsAppendWithoutAReset) {
    ASSERT_TRUE(Write(Connection(L"a")) && Write(Connection(L"d", L"", Connector::Duct)));
    for (const int id : {15, 15, 20})
        Collect(id);
    EXPECT_EQ(Listed(), (Ids{L"a", L"a", L"d"}));
}

TEST_F(ConnectorTable, LendsItsRecordsAndReportsAnEmptyEntry) {
    List().push_back(IProjectSettingConnectionSerie::Create());
    List().emplace_back();
    EXPECT_EQ(table->GetConnectionSerieList(), (std::vector<const IProjectSettingConnectionSerie*>{List()[0].get()}));
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              (Warnings{L"ConnectorData::GetConnectionSerieList: m_connectionSerieList[i]为空"}));
    table->reset();
    EXPECT_TRUE(List().empty());
}

TEST_F(ConnectorTable, OfAStoreThatIsNotThereStaysEmpty) {
    Collect(20);
    EXPECT_EQ(Listed(), Ids{});
    EXPECT_FALSE(Exists(path));
}

TEST_F(ConnectorTable, OfADatasetHoldsTheDuctConnectionsAlone) {
    ASSERT_TRUE(Write(Connection(L"a")) && Write(Connection(L"d", L"", Connector::Duct)));
    const auto dataset = TolmDataset::Create(path, components, L"", L"");
    dataset->CollectData(false, {TableId::DuctConnections});
    EXPECT_EQ(IdsOf(dataset->GetConnectionSerieData()->GetConnectionSerieList()), (Ids{L"d"}));
}

} // namespace
