#include "StoreSupport/RefreshFixture.h"

#include "Host/Categories.h"
#include "Host/Components.h"
#include "Host/Session.h"
#include "Vorn/Log.h"

#include <stdexcept>
#include <tuple>
#include <utility>

using namespace tolmtest;
using tolm::RecoverDataInfo;
namespace schema = tolm::schema;

namespace {

using LogLines = std::vector<std::wstring>;

std::string SystemType(const std::string& id, const std::string& name) {
    return R"({"ID":")" + id + R"(","systemType":")" + name +
           R"(","code":"C","description":"D","systemCategory":21,"fittingIds":[]})";
}

std::string Serie(const std::string& id, const std::string& name) {
    return R"({"ID":")" + id + R"(","name":")" + name + R"(","minSize":1.5,"maxSize":2.5,"connective":1})";
}

std::string Node(const std::string& group, const std::string& id, const std::string& parent = "") {
    return R"({"ID":")" + id + R"(","groupName":")" + group + R"(","parentID":")" + parent + R"(","text":"name-)" + id +
           R"(","content":{"shape":1,"systemPress":1,"series":"steel","type":2,)"
           R"("currentUseTemperature":0,"sizeList":[]}})";
}

/// A wire row: its "series" is a number, not a name.
std::string WireNode(const std::string& id) {
    return R"({"ID":")" + id + R"(","groupName":"electricWireType","parentID":"","text":"name-)" + id +
           R"(","content":{"series":0,"currentUseTemperature":1,"sizeList":[]}})";
}

std::string Table(const std::string& name, const std::string& rows) {
    return "\"" + name + "\":[" + rows + "]";
}

class CloudAdditions : public RefreshFixture {
protected:
    bool Add(const std::string& tables) {
        CloudHas(5, "{" + tables + "}", "{}");
        return Refresh();
    }
};

TEST_F(CloudAdditions, OfSystemTypesGoByTheirTable) {
    EXPECT_TRUE(Add(Table("PipeSystemType", SystemType("S1", "a")) + "," +
                    Table("HVACPipeSystemType", SystemType("S2", "b")) + "," +
                    Table("DuctSystemType", SystemType("S3", "c")) + "," +
                    Table("ElectricalSystemType", SystemType("S4", "d"))));
    EXPECT_EQ(Records(schema::kSystemType), (RecordLines{"S1 a 1 2", "S2 b 1 1", "S3 c 2 1", "S4 d 6 3"}));
    EXPECT_EQ(TakeNotifications(), Loaded);
}

TEST_F(CloudAdditions, OfSeriesGoByTheirTable) {
    EXPECT_TRUE(Add(
        Table("PipeType", Serie("T1", "a")) + "," + Table("HVACPipeType", Serie("T2", "b")) + "," +
        Table("DuctType", Serie("T3", "c")) + "," + Table("ConduitFittingsType", Serie("T4", "d")) + "," +
        Table("CableTrayFittingsType", R"({"ID":"T5","name":"e","minSize":1,"maxSize":2,"connective":21,"type":2})")));
    EXPECT_EQ(Records(schema::kMaterialSerie),
              (RecordLines{"T1 a 1 2", "T2 b 1 1", "T3 c 2 1", "T4 d 4 3", "T5 e 3 3"}));
    EXPECT_EQ(TakeNotifications(), Loaded);
}

TEST_F(CloudAdditions, OfConfigTreeGoByTheirGroup) {
    EXPECT_TRUE(Add(Table("ConfigTree", Node("MaterialSeries", "M1") + "," + Node("HVACMaterialSeries", "M2") + "," +
                                            Node("MaterialSeries", "Z1", "M1") + "," +
                                            Node("HVACMaterialSeries", "Z2", "M2") + "," + WireNode("Z3") + "," +
                                            Node("electricLinePipe", "Z4") + "," + Node("cableTray", "Z5") + "," +
                                            Node("pipeFittingGroup", "G1") + "," + Node("havcFittingGroup", "G2") +
                                            "," + Node("ductFittingGroup", "G3") + "," + Node("unheardOf", "U1"))));
    EXPECT_EQ(Records(schema::kMaterial), (RecordLines{"M1 name-M1 1 2", "M2 name-M2 1 1"}));
    EXPECT_EQ(Records(schema::kSizeModule),
              (RecordLines{"Z1 name-Z1 1 2", "Z2 name-Z2 1 1", "Z3 name-Z3 5 3", "Z4 name-Z4 4 3", "Z5 name-Z5 3 3"}));
    EXPECT_EQ(Records(schema::kMaterialSerieGroup),
              (RecordLines{"G1 name-G1 1 2", "G2 name-G2 1 1", "G3 name-G3 2 1"}));
    EXPECT_EQ(TakeNotifications(), Loaded);
}

TEST_F(CloudAdditions, OfDuctSizesBringTheirMaterial) {
    EXPECT_TRUE(Add(Table("ConfigTree", Node("ductSeriesType", "Z1"))));
    EXPECT_EQ(Records(schema::kSizeModule), (RecordLines{"Z1 name-Z1 2 1"}));
    ASSERT_EQ(Records(schema::kMaterial).size(), 1U);
    EXPECT_NE(Records(schema::kMaterial)[0].find(" steel 2 1"), std::string::npos);
}

TEST_F(CloudAdditions, OfSeriesComeAfterTheirSizeTables) {
    EXPECT_TRUE(Add(Table("CableTrayFittingsType",
                          R"({"ID":"T1","name":"tray","minSize":1,"maxSize":2,"connective":21,"type":2})") +
                    "," + Table("ConfigTree", Node("cableTray", "Z1"))));
    EXPECT_EQ(RecordText(schema::kMaterialSerie, L"T1", schema::kSizeModuleId), L"Z1");
}

TEST_F(CloudAdditions, OfFilesGoToTheBinaryFolder) {
    EXPECT_TRUE(Add(Table("BinaryTable", R"({"fileName":"a.bin","length":3,"data":"YWJj"})")));
    EXPECT_EQ(FileBytes(folder.File(L"a.bin")), "abc");
}

TEST_F(CloudAdditions, OfFilesTouchNothingOfTheStoreThatIsRefreshed) {
    tolm::TolmFilePathSettings::SetCurrentDatasetFilePath(L"");
    const std::vector<std::string> names{"set.db", "set.db-journal", "set_Status.db", "set_temp.db",
                                         "set_Status_temp.db"};
    std::string rows = R"({"fileName":"a.bin","length":3,"data":"YWJj"})";
    for (const auto& name : names)
        rows += R"(,{"fileName":")" + name + R"(","length":3,"data":"YWJj"})";
    EXPECT_TRUE(Add(Table("BinaryTable", rows) + "," + Table("PipeSystemType", SystemType("S1", "a"))));
    EXPECT_EQ(TakeDebugWarnings(), Warnings(names.size(), L"BinaryTable:下载文件失败"));
    EXPECT_EQ(Records(schema::kSystemType), (RecordLines{"S1 a 1 2"}));
    EXPECT_FALSE(Exists(statusPath));
    EXPECT_EQ(FileBytes(folder.File(L"a.bin")), "abc");
}

TEST_F(CloudAdditions, OfCombinedProductsGoToTheirOwnFile) {
    auto& categories = tolm::TolmCategoryInfoUtilsHandler::Get();
    categories.SetUtils(tolm::CreateCategoryInfoUtils(folder.File(L"components.db")));
    EXPECT_TRUE(Add(Table("Combination_16353515",
                          R"({"ID":"K1","Name":"rack","Spacing":1500,"List":[{"CategoryStandardCode":"1",)"
                          R"("ComponentId":"2","ComponentTypeId":"3"}]})")));
    categories.SetUtils(nullptr);
    std::vector<tolm::TolmCombinedProduct> products;
    EXPECT_TRUE(tolm::TolmComponentSqlUtil::ReadCombinedProductList(combinedPath, L"16353515", products));
    ASSERT_EQ(products.size(), 1U);
    EXPECT_EQ(products[0].Name, L"rack");
}

TEST_F(CloudAdditions, IgnoreTheDeletionsOfAFullLoad) {
    CloudHas(5, "{" + Table("PipeSystemType", SystemType("S1", "a")) + "}",
             "{" + Table("PipeSystemType", R"({"ID":"S1"})") + "}");
    EXPECT_TRUE(Refresh());
    EXPECT_EQ(Records(schema::kSystemType), (RecordLines{"S1 a 1 2"}));
}

TEST_F(CloudAdditions, PassOverAnElementThatIsBroken) {
    EXPECT_TRUE(
        Add(Table("PipeType", R"({"name":"no id"})") + "," + Table("HVACPipeType", Serie("T2", "b")) + "," +
            Table("PipeSystemType", R"({"systemType":"no id"},)" + SystemType("S1", "a")) + "," +
            Table("ConfigTree", R"({"groupName":"MaterialSeries","text":"no id"},)" + Node("MaterialSeries", "M1"))));
    EXPECT_EQ(Records(schema::kMaterialSerie), (RecordLines{"T2 b 1 1"}));
    EXPECT_EQ(Records(schema::kSystemType), (RecordLines{"S1 a 1 2"}));
    EXPECT_EQ(Records(schema::kMaterial), (RecordLines{"M1 name-M1 1 2"}));
    EXPECT_EQ(TakeNotifications(), Loaded);
    EXPECT_EQ(TakeLogLines(), (LogLines{L"Key not found", L"Key not found", L"Key not found"}));
    EXPECT_EQ(LocalVersion(), 5);
}

TEST_F(CloudAdditions, LoseASystemTypeTableThatIsNoArray) {
    const std::pair<const char*, const wchar_t*> tables[] = {
        {"PipeSystemType", L"PipeSystemType:下载给排水管道系统类型失败"},
        {"HVACPipeSystemType", L"HVACPipeSystemType:下载暖通管道系统类型失败"},
        {"DuctSystemType", L"DuctSystemType:下载暖通风系统类型失败"},
        {"ElectricalSystemType", L"ElectricalSystemType:下载电气系统类型失败"},
    };
    for (const auto& [table, failure] : tables) {
        CQbase::removeStore(path);
        EXPECT_TRUE(Add("\"" + std::string(table) + "\":{}," + Table("PipeType", Serie("T1", "a"))));
        EXPECT_EQ(TakeDebugWarningsWithFunction(),
                  (Warnings{std::wstring(L"MepQbaseUtil::SyncDataFromCloud: ") + failure}));
        const auto lines = TakeLogLines();
        ASSERT_EQ(lines.size(), 2U);
        EXPECT_EQ(lines[1], failure);
        EXPECT_EQ(TakeNotifications(), Loaded);
        EXPECT_EQ(Records(schema::kMaterialSerie), (RecordLines{"T1 a 1 2"}));
    }
}

/// A log that fails once, at the first line, and keeps the others: what an operation cannot log itself is raised to
/// the one that called it.
class LogThatFailsOnce {
public:
    LogThatFailsOnce() {
        s_lines.clear();
        s_failed = false;
        vorn::LogManager::SetSink([](const std::wstring& line) {
            if (!std::exchange(s_failed, true))
                throw std::runtime_error("no log");
            s_lines.push_back(line);
        });
    }
    ~LogThatFailsOnce() { const WithoutHandlers restoreTheUsualOnes; }
    LogThatFailsOnce(const LogThatFailsOnce&) = delete;
    LogThatFailsOnce& operator=(const LogThatFailsOnce&) = delete;

    const LogLines& Lines() const { return s_lines; }

private:
    inline static LogLines s_lines;
    inline static bool s_failed = false;
};

TEST_F(CloudAdditions, LoseOneElementWhoseFailureIsRaisedToTheRefresh) {
    const std::tuple<const char*, std::string, const wchar_t*> cases[] = {
        {"ConfigTree", R"({"groupName":"MaterialSeries"})", L"MaterialSeries:下载给排水管道材质或者管段失败"},
        {"ConfigTree", R"({"groupName":"HVACMaterialSeries"})", L"HVACMaterialSeries:下载暖通管道材质 或者管段失败"},
        {"PipeSystemType", "{}", L"PipeSystemType:下载给排水管道系统类型失败"},
        {"PipeType", "{}", L"PipeType:下载管配件组合失败"},
        {"HVACPipeType", "{}", L"HVACPipeType:下载管配件组合失败"},
        {"DuctType", "{}", L"DuctType:下载风管配件组合失败"},
        {"ConduitFittingsType", "{}", L"下载线管配件组合失败"},
        {"CableTrayFittingsType", "{}", L"下载桥架管配件组合失败"},
    };
    for (const auto& [table, element, failure] : cases) {
        CQbase::removeStore(path);
        const LogThatFailsOnce log;
        EXPECT_TRUE(Add(Table(table, element) + "," + Table("DuctSystemType", SystemType("S1", "a"))));
        EXPECT_EQ(TakeDebugWarningsWithFunction(),
                  (Warnings{std::wstring(L"MepQbaseUtil::SyncDataFromCloud: ") + failure}));
        EXPECT_EQ(log.Lines(), (LogLines{L"no log", failure}));
        EXPECT_EQ(TakeNotifications(), Loaded);
        EXPECT_EQ(Records(schema::kSystemType), (RecordLines{"S1 a 2 1"}));
        EXPECT_EQ(LocalVersion(), 5);
    }
}

TEST_F(CloudAdditions, FailOnTablesOfRowsThatAreNoArrays) {
    for (const char* const table :
         {R"("ConfigTree":{})", R"("PipeType":5)", R"("CableTrayFittingsType":null)", R"("ConfigTree":[{"ID":"M1"}])",
          R"("ConfigTree":[null])", R"("ConfigTree":[{"groupName":"cableTray"}])"}) {
        EXPECT_FALSE(Add(table)) << table;
        EXPECT_EQ(TakeNotifications(), LoadFailed);
        EXPECT_EQ(TakeLogLines().size(), 1U);
        EXPECT_EQ(LocalVersion(), -1);
    }
}

class CloudDeletions : public RefreshFixture {
protected:
    CloudDeletions() { LocalHas(3); }

    bool Delete(const std::string& tables) {
        CloudHas(5, "{}", "{" + tables + "}");
        return Refresh();
    }
};

const char* const SystemTypeTables[] = {"PipeSystemType", "HVACPipeSystemType", "DuctSystemType",
                                        "ElectricalSystemType"};
const char* const SeriesTables[] = {"PipeType", "HVACPipeType", "DuctType", "ConduitFittingsType",
                                    "CableTrayFittingsType"};

TEST_F(CloudDeletions, TakeSystemTypesOfEachTable) {
    Put(schema::kSystemType, L"S0", L"stays");
    std::string tables = Table("ConfigTree", "");
    for (const std::string table : SystemTypeTables) {
        Put(schema::kSystemType, std::wstring(table.begin(), table.end()), L"goes");
        tables += "," + Table(table, R"({"ID":")" + table + "\"}");
    }
    EXPECT_TRUE(Delete(tables));
    EXPECT_EQ(Records(schema::kSystemType), (RecordLines{"S0 stays - -"}));
    EXPECT_EQ(TakeNotifications(), Loaded);
    EXPECT_EQ(LocalVersion(), 5);
}

TEST_F(CloudDeletions, TakeSeriesOfEachTable) {
    Put(schema::kMaterialSerie, L"T0", L"stays");
    std::string tables = Table("ConfigTree", "");
    for (const std::string table : SeriesTables) {
        Put(schema::kMaterialSerie, std::wstring(table.begin(), table.end()), L"goes");
        tables += "," + Table(table, R"({"ID":")" + table + "\"}");
    }
    EXPECT_TRUE(Delete(tables));
    EXPECT_EQ(Records(schema::kMaterialSerie), (RecordLines{"T0 stays - -"}));
}

TEST_F(CloudDeletions, TakeConfigTreeByGroupAndLeaveCableTrays) {
    Put(schema::kMaterial, L"M1", L"goes");
    Put(schema::kSizeModule, L"Z1", L"goes");
    Put(schema::kSizeModule, L"Z2", L"tray");
    Put(schema::kMaterialSerieGroup, L"G1", L"goes");
    EXPECT_TRUE(Delete(Table("ConfigTree", Node("MaterialSeries", "M1") + "," + Node("electricLinePipe", "Z1") + "," +
                                               Node("cableTray", "Z2") + "," + Node("pipeFittingGroup", "G1"))));
    EXPECT_EQ(Records(schema::kMaterial), RecordLines{});
    EXPECT_EQ(Records(schema::kSizeModule), (RecordLines{"Z2 tray - -"}));
    EXPECT_EQ(Records(schema::kMaterialSerieGroup), RecordLines{});
}

TEST_F(CloudDeletions, TakeCircuitTemplatesAndFiles) {
    Put(schema::kCircuitTemplate, L"C1", L"");
    ASSERT_TRUE(vorn::FileUtility::SaveInBinaryMode(folder.File(L"a.bin"), "abc", 3, false));
    EXPECT_TRUE(Delete(Table("ConfigTree", "") + "," + Table("CircuitTemplate", R"({"ID":"C1"})") + "," +
                       Table("BinaryTable", R"({"fileName":"a.bin"})")));
    EXPECT_EQ(Records(schema::kCircuitTemplate), RecordLines{});
    EXPECT_FALSE(Exists(folder.File(L"a.bin")));
}

TEST_F(CloudDeletions, ComeBeforeTheAdditions) {
    Put(schema::kSystemType, L"S1", L"old");
    CloudHas(5, "{" + Table("PipeSystemType", SystemType("S1", "new")) + "}",
             "{" + Table("ConfigTree", "") + "," + Table("PipeSystemType", SystemType("S1", "old")) + "}");
    EXPECT_TRUE(Refresh());
    EXPECT_EQ(Records(schema::kSystemType), (RecordLines{"S1 new 1 2"}));
}

TEST_F(CloudDeletions, OfABrokenSystemTypeRowLoseTheRestOfItsTable) {
    Put(schema::kSystemType, L"S1", L"goes");
    Put(schema::kSystemType, L"S2", L"stays");
    Put(schema::kSystemType, L"S3", L"goes");
    EXPECT_TRUE(Delete(Table("PipeSystemType", R"({"ID":"S1"},{},{"ID":"S2"})") + "," +
                       Table("DuctSystemType", R"({"ID":"S3"})") + "," + Table("ConfigTree", "")));
    EXPECT_EQ(TakeDebugWarnings(), (Warnings{L"删除系统类型失败"}));
    EXPECT_EQ(Records(schema::kSystemType), (RecordLines{"S2 stays - -"}));
    EXPECT_EQ(TakeNotifications(), Loaded);
}

TEST_F(CloudDeletions, OfABrokenSerieLoseThatOneAlone) {
    Put(schema::kMaterialSerie, L"T1", L"goes");
    EXPECT_TRUE(Delete(Table("PipeType", R"({},{"ID":"T1"})") + "," + Table("ConfigTree", "")));
    EXPECT_EQ(TakeDebugWarnings(), (Warnings{L"删除管配件组合失败"}));
    EXPECT_EQ(Records(schema::kMaterialSerie), RecordLines{});
    EXPECT_EQ(TakeNotifications(), Loaded);
}

class CloudRecovery : public RefreshFixture {
protected:
    /// Refreshes with these rows among the deleted plumbing pipe systems and asks for `ids` back.
    bool Recover(const std::string& rows, const std::vector<std::wstring>& ids) {
        for (const auto& id : ids)
            wanted.idMap[id] = L"";
        CloudHas(5, "{}", "{" + Table("ConfigTree", "") + "," + Table("PipeSystemType", rows) + "}");
        return Refresh(&wanted);
    }

    static std::string Deleted(const std::string& id, const std::string& name, const std::string& version) {
        auto row = SystemType(id, name);
        return row.insert(1, "\"version\":" + version + ",");
    }

    RecoverDataInfo wanted;
};

TEST_F(CloudRecovery, TakesDeletedSystemTypesBackThatAreWanted) {
    LocalHas(3);
    Put(schema::kSystemType, L"S1", L"old");
    Put(schema::kSystemType, L"S2", L"old");
    EXPECT_TRUE(Recover(Deleted("S1", "a", "4") + "," + Deleted("S2", "b", "4"), {L"S1"}));
    EXPECT_TRUE(wanted.recovered);
    EXPECT_EQ(Records(schema::kSystemType), (RecordLines{"S1 a 1 2"}));
    EXPECT_EQ(util.RecoveredSystemTypeIds(), (std::vector<std::wstring>{L"S1"}));
}

TEST_F(CloudRecovery, WorksOnAFullLoadToo) {
    EXPECT_TRUE(Recover(Deleted("S1", "a", "4"), {L"S1"}));
    EXPECT_TRUE(wanted.recovered);
    EXPECT_EQ(Records(schema::kSystemType), (RecordLines{"S1 a 1 2"}));
}

TEST_F(CloudRecovery, ComparesIdsWithoutRegardToCase) {
    EXPECT_TRUE(Recover(Deleted("s-Abc", "a", "4"), {L"S-aBC"}));
    EXPECT_EQ(util.RecoveredSystemTypeIds(), (std::vector<std::wstring>{L"s-Abc"}));
}

TEST_F(CloudRecovery, TakesTheHighestVersionOfAnId) {
    EXPECT_TRUE(Recover(
        Deleted("S1", "low", "2") + "," + Deleted("S1", "high", "10.5") + "," + Deleted("S1", "middle", "9"), {L"S1"}));
    EXPECT_EQ(Records(schema::kSystemType), (RecordLines{"S1 high 1 2"}));
}

TEST_F(CloudRecovery, TakesTheFirstOfEqualVersions) {
    EXPECT_TRUE(Recover(Deleted("S1", "first", "2") + "," + Deleted("S1", "second", "2"), {L"S1"}));
    EXPECT_EQ(Records(schema::kSystemType), (RecordLines{"S1 first 1 2"}));
}

TEST_F(CloudRecovery, WritesInTheOrderOfIds) {
    EXPECT_TRUE(Recover(Deleted("S3", "c", "1") + "," + Deleted("S1", "a", "1") + "," + Deleted("S2", "b", "1"),
                        {L"S1", L"S2", L"S3"}));
    EXPECT_EQ(Records(schema::kSystemType), (RecordLines{"S1 a 1 2", "S2 b 1 2", "S3 c 1 2"}));
}

TEST_F(CloudRecovery, PassesOverRowsWithoutIdOrVersion) {
    EXPECT_TRUE(Recover(SystemType("S1", "no version") + "," + Deleted("S1", "text", "\"7\"") + "," +
                            Deleted("S1", "null", "null") + R"(,{"ID":5,"version":1},{"version":1},null)",
                        {L"S1", L"5"}));
    EXPECT_FALSE(wanted.recovered);
    EXPECT_EQ(Records(schema::kSystemType), RecordLines{});
    EXPECT_EQ(LocalVersion(), 5);
}

TEST_F(CloudRecovery, TakesEachTableByItsTypeAndDiscipline) {
    std::string tables = Table("ConfigTree", "");
    for (const std::string table : SystemTypeTables) {
        tables += "," + Table(table, Deleted(table, "n", "1"));
        wanted.idMap[std::wstring(table.begin(), table.end())] = L"";
    }
    CloudHas(5, "{}", "{" + tables + "}");
    EXPECT_TRUE(Refresh(&wanted));
    EXPECT_EQ(Records(schema::kSystemType), (RecordLines{"PipeSystemType n 1 2", "DuctSystemType n 2 1",
                                                         "HVACPipeSystemType n 1 1", "ElectricalSystemType n 6 3"}));
}

TEST_F(CloudRecovery, FailsOnATableThatIsNoArray) {
    wanted.idMap[L"S1"] = L"";
    CloudHas(5, "{}", R"({"ConfigTree":[],"DuctSystemType":{}})");
    EXPECT_FALSE(Refresh(&wanted));
    EXPECT_EQ(TakeNotifications(), LoadFailed);
}

TEST_F(CloudRecovery, IsNotWantedWithoutARequest) {
    LocalHas(3);
    Put(schema::kSystemType, L"S1", L"old");
    CloudHas(5, "{}", "{" + Table("ConfigTree", "") + "," + Table("PipeSystemType", Deleted("S1", "a", "4")) + "}");
    EXPECT_TRUE(Refresh());
    EXPECT_EQ(Records(schema::kSystemType), RecordLines{});
}

} // namespace
