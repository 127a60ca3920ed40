#include "StoreSupport/UploadRecords.h"

#include "MepDatabase/MepProjectSettingHttpUtility.h"
#include "MepDatabase/TreeRows.h"
#include "MepDatabase/WireText.h"
#include "StoreSupport/CloudTestSupport.h"
#include "StoreSupport/IngestFixture.h"

namespace tolmtest {
namespace {

using web::json::value;

/// A server that takes everything, and a session with it.
class RecordLists : public testing::Test {
protected:
    void SetUp() override { server.On("/", ScriptedAnswer::Data("null")); }

    /// "path: ids" of each request, in their order.
    Lines Sent() const {
        Lines lines;
        for (const auto& request : server.Requests()) {
            std::string line = request.path + ":";
            for (const auto& id : RowIds(Json(request.body).at("rows")))
                line += " " + id;
            lines.push_back(tolm::wstring(line.begin(), line.end()));
        }
        return lines;
    }

    ScriptedServer server;
    TestSession session{server.Address()};
};

/// "table: ids" of each table of what was gathered, in order of names.
Lines Gathered(const value& target) {
    Lines lines;
    if (target.is_null())
        return lines;
    for (const auto& [table, rows] : target.as_object()) {
        std::string line = table + ":";
        for (const auto& id : RowIds(rows))
            line += " " + id;
        lines.push_back(tolm::wstring(line.begin(), line.end()));
    }
    std::sort(lines.begin(), lines.end());
    return lines;
}

/// "group: ids" of each row of "ConfigTree", in order.
Lines GatheredTree(const value& target) {
    Lines lines;
    if (target.is_null())
        return lines;
    EXPECT_EQ(target.size(), 1U);
    for (const auto& row : target.at("ConfigTree").as_array())
        lines.push_back(tolm::WideText(row.at("groupName")) + L": " + tolm::WideText(row.at("ID")));
    return lines;
}

const Discipline kDisciplines[] = {Discipline::None, Discipline::HVAC, Discipline::Plumbing, Discipline::Electrical,
                                   Discipline{4}};

wstring IdOf(Discipline discipline, int type) {
    return L"d" + std::to_wstring(static_cast<int>(discipline)) + L"t" + std::to_wstring(type);
}

/// A record of each discipline and object type, all disciplines of the lowest type first, with such ids as "d1t2".
template <class Record, class Make> SharedList<Record> OneOfEach(const Make& make) {
    SharedList<Record> list;
    for (int type = 0; type <= 7; ++type)
        for (const auto discipline : kDisciplines)
            list.push_back(Shared(make(IdOf(discipline, type), Type{type}, discipline)));
    return list;
}

SharedList<tolm::IProjectSettingSystemType> SystemTypes() {
    return OneOfEach<tolm::IProjectSettingSystemType>(
        [](const wstring& id, Type type, Discipline discipline) { return SystemType(id, id, type, discipline); });
}

SharedList<tolm::IProjectSettingMEPMaterialSerie> MaterialSeries() {
    return OneOfEach<tolm::IProjectSettingMEPMaterialSerie>(
        [](const wstring& id, Type type, Discipline discipline) { return Serie(id, id, type, discipline); });
}

SharedList<tolm::IProjectSettingSizeModule> SizeModules() {
    return OneOfEach<tolm::IProjectSettingSizeModule>(
        [](const wstring& id, Type type, Discipline discipline) { return SizeModule(id, id, type, discipline); });
}

SharedList<tolm::IProjectSettingMaterial> Materials() {
    return OneOfEach<tolm::IProjectSettingMaterial>(
        [](const wstring& id, Type type, Discipline discipline) { return Material(id, id, type, discipline); });
}

SharedList<tolm::IProjectSettingMEPMaterialSerieGroup> Groups() {
    return OneOfEach<tolm::IProjectSettingMEPMaterialSerieGroup>(
        [](const wstring& id, Type type, Discipline discipline) { return Group(id, id, type, discipline); });
}

// --- the tables of each family
// ----------------------------------------------------------------------------------------

const Lines kSystemTypeTables{L"PipeSystemType: d2t0 d2t1 d2t2 d2t3 d2t4 d2t5 d2t6 d2t7", L"HVACPipeSystemType: d1t1",
                              L"DuctSystemType: d1t0 d1t2 d1t3 d1t4 d1t5 d1t6 d1t7",
                              L"ElectricalSystemType: d3t0 d3t1 d3t2 d3t3 d3t4 d3t5 d3t6 d3t7"};
const Lines kSerieTables{L"PipeType: d2t1", L"HVACPipeType: d0t1 d1t1 d3t1 d4t1", L"DuctType: d0t2 d1t2 d2t2 d3t2 d4t2",
                         L"ConduitFittingsType: d0t4 d1t4 d2t4 d3t4 d4t4",
                         L"CableTrayFittingsType: d0t3 d1t3 d2t3 d3t3 d4t3"};

Lines Paths(const char* call, const Lines& tables) {
    Lines lines;
    for (const auto& table : tables)
        lines.push_back(L"/api/" + tolm::FromWire(call) + L"/P7/" + table);
    return lines;
}

Lines InOrderOfNames(Lines lines) {
    std::sort(lines.begin(), lines.end());
    return lines;
}

TEST_F(RecordLists, SendSystemTypesTableByTable) {
    EXPECT_TRUE(Client().SendCreatedOrEditedSystemTypeList(L"P7", SystemTypes(), true, true));
    EXPECT_EQ(Sent(), Paths("CreateList", kSystemTypeTables));
}

TEST_F(RecordLists, SendSeriesTableByTable) {
    EXPECT_TRUE(Client().SendCreatedOrEditedMEPMaterialSerieList(L"P7", MaterialSeries(), true, false));
    EXPECT_EQ(Sent(), Paths("EditList", kSerieTables));
}

TEST_F(RecordLists, GatherSystemTypesAndSeriesUnderTheirTables) {
    value target;
    Client().SendCreatedOrEditedSystemTypeList(target, L"", SystemTypes(), false, true);
    EXPECT_EQ(Gathered(target), InOrderOfNames(kSystemTypeTables));
    target = value();
    Client().SendCreatedOrEditedMEPMaterialSerieList(target, L"", MaterialSeries(), false, false);
    EXPECT_EQ(Gathered(target), InOrderOfNames(kSerieTables));
    EXPECT_TRUE(server.Requests().empty());
}

const Lines kSizeRows{
    L"MaterialSeries: d2t1",     L"HVACMaterialSeries: d0t1", L"HVACMaterialSeries: d1t1", L"HVACMaterialSeries: d3t1",
    L"HVACMaterialSeries: d4t1", L"ductSeriesType: d0t2",     L"ductSeriesType: d1t2",     L"ductSeriesType: d2t2",
    L"ductSeriesType: d3t2",     L"ductSeriesType: d4t2",     L"electricWireType: d0t5",   L"electricWireType: d1t5",
    L"electricWireType: d2t5",   L"electricWireType: d3t5",   L"electricWireType: d4t5",   L"electricLinePipe: d0t4",
    L"electricLinePipe: d1t4",   L"electricLinePipe: d2t4",   L"electricLinePipe: d3t4",   L"electricLinePipe: d4t4",
    L"cableTray: d0t3",          L"cableTray: d1t3",          L"cableTray: d2t3",          L"cableTray: d3t3",
    L"cableTray: d4t3"};

Lines MaterialRows() {
    Lines lines;
    for (const auto& [group, discipline] :
         {std::pair{L"MaterialSeries: ", Discipline::Plumbing}, std::pair{L"HVACMaterialSeries: ", Discipline::HVAC}})
        for (int type = 0; type <= 7; ++type)
            lines.push_back(group + IdOf(discipline, type));
    return lines;
}

const Lines kGroupRows{L"pipeFittingGroup: d2t1", L"havcFittingGroup: d1t1", L"ductFittingGroup: d1t2"};

/// What the requests carried, as `GatheredTree` tells it; each must go to "ConfigTree".
Lines SentTree(const ScriptedServer& server, const std::string& path) {
    Lines lines;
    for (const auto& request : server.Requests()) {
        EXPECT_EQ(request.path, path);
        auto target = value::object();
        target["ConfigTree"] = Json(request.body).at("rows");
        for (const auto& line : GatheredTree(target))
            lines.push_back(line);
    }
    return lines;
}

TEST_F(RecordLists, SendSizeTablesToConfigTreeWithTheirGroup) {
    EXPECT_TRUE(Client().SendCreatedOrEditedSizeModelList(L"P7", SizeModules(), true, true));
    EXPECT_EQ(SentTree(server, "/api/CreateList/P7/ConfigTree"), kSizeRows);
    EXPECT_EQ(server.Requests().size(), 6U);
}

TEST_F(RecordLists, SendMaterialsOfPlumbingAndHvacToConfigTree) {
    EXPECT_TRUE(Client().SendCreatedOrEditedMateriaList(L"P7", Materials(), true, true));
    EXPECT_EQ(SentTree(server, "/api/CreateList/P7/ConfigTree"), MaterialRows());
    EXPECT_EQ(server.Requests().size(), 2U);
}

TEST_F(RecordLists, SendGroupsOfThreePairingsToConfigTree) {
    EXPECT_TRUE(Client().SendCreatedOrEditedMaterieSerieGroupList(L"P7", Groups(), true, true));
    EXPECT_EQ(SentTree(server, "/api/CreateList/P7/ConfigTree"), kGroupRows);
    EXPECT_EQ(server.Requests().size(), 3U);
}

TEST_F(RecordLists, GatherSizesMaterialsAndGroupsInOneArrayWithARunningIndex) {
    value target;
    int index = 0;
    Client().SendCreatedOrEditedSizeModelList(target, index, L"", SizeModules(), false, true);
    EXPECT_EQ(index, 25);
    Client().SendCreatedOrEditedMateriaList(target, index, L"", Materials(), false, true);
    EXPECT_EQ(index, 41);
    Client().SendCreatedOrEditedMaterieSerieGroupList(target, index, L"", Groups(), false, true);
    EXPECT_EQ(index, 44);
    Lines expected = kSizeRows;
    for (const auto& lines : {MaterialRows(), kGroupRows})
        expected.insert(expected.end(), lines.begin(), lines.end());
    EXPECT_EQ(GatheredTree(target), expected);
    EXPECT_TRUE(server.Requests().empty());
}

TEST_F(RecordLists, EncodeEachSizeTableByItsOwnKind) {
    value target;
    int index = 0;
    for (const auto& [type, key] : {std::pair{Type::Pipe, "roughness"},
                                    {Type::Duct, "systemPress"},
                                    {Type::CableTray, "type"},
                                    {Type::Wire, "currentUseTemperature"}}) {
        Client().SendCreatedOrEditedSizeModelList(target, index, L"", {Shared(SizeModule(L"s", L"n", type))}, false,
                                                  true);
        EXPECT_TRUE(target.at("ConfigTree").at(index - 1).at("content").has_field(key)) << key;
    }
    Client().SendCreatedOrEditedSizeModelList(target, index, L"", {Shared(SizeModule(L"s", L"n", Type::Conduit))},
                                              false, true);
    EXPECT_EQ(target.at("ConfigTree").at(4).at("content"), Row("{'sizeList':[]}"));
}

// --- bare and wrapped
// -------------------------------------------------------------------------------------------------

TEST_F(RecordLists, SendAnEditedMaterialWrappedAndGatherItBare) {
    const auto material = Shared(Material(L"m1", L"Steel"));
    EXPECT_TRUE(Client().SendCreatedOrEditedMateriaList(L"P7", {material}, true, false));
    const auto sent = Json(OnlyRequest(server).body).at("rows").at(0);
    EXPECT_EQ(OnlyRequest(server).path, "/api/EditList/P7/ConfigTree");
    value target;
    int index = 0;
    Client().SendCreatedOrEditedMateriaList(target, index, L"P7", {material}, false, false);
    const auto gathered = target.at("ConfigTree").at(0);
    EXPECT_EQ(gathered.at("ID"), value::string("m1"));
    EXPECT_EQ(sent.at("id"), value::string("m1"));
    EXPECT_EQ(sent.at("data"), gathered);
    EXPECT_EQ(sent.size(), 2U);
}

/// The first row that each family gathers with these flags.
std::vector<value> GatheredRows(bool wrap, bool created) {
    std::vector<value> targets(5);
    std::vector<int> index(5);
    auto& client = Client();
    client.SendCreatedOrEditedSystemTypeList(targets[0], L"", {Shared(SystemType(L"a"))}, wrap, created);
    client.SendCreatedOrEditedMEPMaterialSerieList(targets[1], L"", {Shared(Serie(L"a"))}, wrap, created);
    client.SendCreatedOrEditedSizeModelList(targets[2], index[2], L"", {Shared(SizeModule(L"a", L"n"))}, wrap, created);
    client.SendCreatedOrEditedMateriaList(targets[3], index[3], L"", {Shared(Material(L"a", L"n"))}, wrap, created);
    client.SendCreatedOrEditedMaterieSerieGroupList(targets[4], index[4], L"", {Shared(Group(L"a"))}, wrap, created);
    std::vector<value> rows;
    for (const auto& target : targets)
        rows.push_back(target.as_object().begin()->second.at(0));
    return rows;
}

TEST_F(RecordLists, HandTheirFlagsToTheEncoder) {
    const auto bare = GatheredRows(false, true);
    EXPECT_EQ(GatheredRows(false, false), bare);
    EXPECT_EQ(GatheredRows(true, true), bare);
    const auto wrapped = GatheredRows(true, false);
    for (std::size_t at = 0; at < bare.size(); ++at) {
        EXPECT_EQ(bare[at].at("ID"), value::string("a")) << at;
        EXPECT_EQ(wrapped[at].at("data"), bare[at]) << at;
    }
}

// --- empty, null and refused
// ------------------------------------------------------------------------------------------

TEST_F(RecordLists, OfNothingAreNotSent) {
    EXPECT_FALSE(Client().SendCreatedOrEditedSystemTypeList(L"P7", {}, true, true));
    EXPECT_FALSE(Client().SendCreatedOrEditedMEPMaterialSerieList(L"P7", {}, true, true));
    EXPECT_FALSE(Client().SendCreatedOrEditedSizeModelList(L"P7", {}, true, true));
    EXPECT_FALSE(Client().SendCreatedOrEditedMateriaList(L"P7", {}, true, true));
    EXPECT_FALSE(Client().SendCreatedOrEditedMaterieSerieGroupList(L"P7", {}, true, true));
    EXPECT_TRUE(server.Requests().empty());
}

TEST_F(RecordLists, OfNothingGatherNothing) {
    value target;
    int index = 3;
    Client().SendCreatedOrEditedSystemTypeList(target, L"P7", {}, true, true);
    Client().SendCreatedOrEditedMEPMaterialSerieList(target, L"P7", {}, true, true);
    Client().SendCreatedOrEditedSizeModelList(target, index, L"P7", {}, true, true);
    Client().SendCreatedOrEditedMateriaList(target, index, L"P7", {}, true, true);
    Client().SendCreatedOrEditedMaterieSerieGroupList(target, index, L"P7", {}, true, true);
    EXPECT_TRUE(target.is_null());
    EXPECT_EQ(index, 3);
}

TEST_F(RecordLists, OfRecordsWithoutATableAreDroppedAndCountAsSent) {
    EXPECT_TRUE(Client().SendCreatedOrEditedMateriaList(
        L"P7", {Shared(Material(L"m", L"n", Type::Pipe, Discipline::Electrical))}, true, true));
    EXPECT_TRUE(Client().SendCreatedOrEditedMaterieSerieGroupList(
        L"P7", {Shared(Group(L"g", L"n", Type::Duct, Discipline::Plumbing))}, true, true));
    EXPECT_TRUE(server.Requests().empty());
    value target;
    Client().SendCreatedOrEditedSystemTypeList(
        target, L"P7", {Shared(SystemType(L"s", L"n", Type::Pipe, Discipline::None))}, false, true);
    EXPECT_TRUE(target.is_null());
}

TEST_F(RecordLists, WithANullRecordAreReportedAndNothingIsSent) {
    EXPECT_FALSE(
        Client().SendCreatedOrEditedSystemTypeList(L"P7", {Shared(SystemType(L"a")), nullptr, nullptr}, true, true));
    EXPECT_FALSE(Client().SendCreatedOrEditedMEPMaterialSerieList(L"P7", {Shared(Serie(L"a")), nullptr}, true, true));
    EXPECT_FALSE(
        Client().SendCreatedOrEditedSizeModelList(L"P7", {Shared(SizeModule(L"a", L"n")), nullptr}, true, false));
    EXPECT_FALSE(Client().SendCreatedOrEditedMateriaList(L"P7", {Shared(Material(L"a", L"n")), nullptr}, true, true));
    EXPECT_FALSE(Client().SendCreatedOrEditedMaterieSerieGroupList(L"P7", {nullptr, Shared(Group(L"a"))}, true, true));
    const std::wstring client = L"TolmProjectSettingHttpUtility::SendCreatedOrEdited";
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              (Warnings{client + L"SystemTypeList: systemType为空", client + L"MEPMaterialSerieList: serie为空",
                        client + L"SizeModelList: pSizeModule为空", client + L"MateriaList: material为空",
                        client + L"MaterieSerieGroupList: serie为空"}));
    EXPECT_TRUE(server.Requests().empty());
}

TEST_F(RecordLists, WithANullRecordGatherNothing) {
    value target;
    int index = 0;
    Client().SendCreatedOrEditedSystemTypeList(target, L"P7", {Shared(SystemType(L"a")), nullptr}, false, true);
    Client().SendCreatedOrEditedMEPMaterialSerieList(target, L"P7", {Shared(Serie(L"a")), nullptr}, false, true);
    Client().SendCreatedOrEditedSizeModelList(target, index, L"P7", {Shared(SizeModule(L"a", L"n")), nullptr}, false,
                                              true);
    Client().SendCreatedOrEditedMateriaList(target, index, L"P7", {Shared(Material(L"a", L"n")), nullptr}, false, true);
    Client().SendCreatedOrEditedMaterieSerieGroupList(target, index, L"P7", {Shared(Group(L"a")), nullptr}, false,
                                                      true);
    EXPECT_EQ(TakeDebugWarnings(),
              (Warnings{L"systemType为空", L"serie为空", L"pSizeModule为空", L"material为空", L"serie为空"}));
    EXPECT_TRUE(target.is_null());
    EXPECT_EQ(index, 0);
}

TEST(RecordListsRefused, StopAtTheFirstTableThatIsRefused) {
    ScriptedServer server;
    server.Next(ScriptedAnswer::Data("1")).Next(ScriptedAnswer::Code("10003"));
    const TestSession session(server.Address());
    EXPECT_FALSE(Client().SendCreatedOrEditedSystemTypeList(L"P7", SystemTypes(), true, true));
    EXPECT_EQ(server.Paths(),
              (std::vector<std::string>{"/api/CreateList/P7/PipeSystemType", "/api/CreateList/P7/HVACPipeSystemType"}));
    EXPECT_EQ(TakeLogLines(), (Lines{L"发送失败!"}));
}

TEST(RecordListsRefused, AreSentNowhereWithoutAProject) {
    ScriptedServer server;
    const TestSession session(server.Address());
    EXPECT_FALSE(Client().SendCreatedOrEditedMateriaList(L"", Materials(), true, true));
    EXPECT_TRUE(server.Requests().empty());
}

// --- rows and ids of a patch
// ------------------------------------------------------------------------------------------

TEST(TreeRows, AreNotTakenUnlessThereIsOneForEachRecord) {
    auto target = Row("{'ConfigTree':['a']}");
    const auto before = target;
    int index = 1;
    for (const auto& encoded : {Row("{'rows':['b']}"), Row("{'rows':[]}"), Row("{'rows':['b','c','d']}"), value()})
        EXPECT_FALSE(tolm::PutTreeRows(target, index, encoded, 2));
    EXPECT_EQ(index, 1);
    EXPECT_EQ(target, before);
    EXPECT_TRUE(tolm::PutTreeRows(target, index, Row("{'rows':['b','c']}"), 2));
    EXPECT_EQ(index, 3);
    EXPECT_EQ(target, Row("{'ConfigTree':['a','b','c']}"));
}

TEST(TreeRows, StandWhereTheIndexSays) {
    value target;
    int index = 2;
    EXPECT_TRUE(tolm::PutTreeRows(target, index, Row("{'rows':['c']}"), 1));
    EXPECT_EQ(target, Row("{'ConfigTree':[null,null,'c']}"));
    index = 0;
    EXPECT_TRUE(tolm::PutTreeRows(target, index, Row("{'rows':['a','b']}"), 2));
    EXPECT_EQ(target, Row("{'ConfigTree':['a','b','c']}"));
}

TEST(RemovedIds, ReplaceThoseOfTheirTable) {
    value target;
    Client().AddRemovedDataIds(target, L"P7", {L"a", L"钢"}, L"PipeType");
    Client().AddRemovedDataIds(target, L"P7", {L"c"}, L"DuctType");
    EXPECT_EQ(target, Row("{'PipeType':['a','钢'],'DuctType':['c']}"));
    Client().AddRemovedDataIds(target, L"P7", {L"d"}, L"PipeType");
    EXPECT_EQ(target, Row("{'PipeType':['d'],'DuctType':['c']}"));
}

TEST(RemovedIds, OfConfigTreeShareOneArray) {
    value target;
    int index = 0;
    Client().AddRemovedConfigTreeIds(target, index, L"P7", {L"a", L"b"}, L"ConfigTree");
    EXPECT_EQ(index, 2);
    Client().AddRemovedConfigTreeIds(target, index, L"P7", {L"c"}, L"ConfigTree");
    EXPECT_EQ(index, 3);
    EXPECT_EQ(target, Row("{'ConfigTree':['a','b','c']}"));
}

TEST(RemovedIds, AreNothingWithoutIdsProjectOrTable) {
    value target;
    int index = 0;
    Client().AddRemovedDataIds(target, L"P7", {}, L"PipeType");
    Client().AddRemovedDataIds(target, L"", {L"a"}, L"PipeType");
    Client().AddRemovedDataIds(target, L"P7", {L"a"}, L"");
    Client().AddRemovedConfigTreeIds(target, index, L"P7", {}, L"ConfigTree");
    Client().AddRemovedConfigTreeIds(target, index, L"", {L"a"}, L"ConfigTree");
    Client().AddRemovedConfigTreeIds(target, index, L"P7", {L"a"}, L"");
    EXPECT_TRUE(target.is_null());
    EXPECT_EQ(index, 0);
}

} // namespace
} // namespace tolmtest
