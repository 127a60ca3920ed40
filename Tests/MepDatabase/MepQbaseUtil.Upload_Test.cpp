#include "StoreSupport/UploadFixture.h"

#include "Vorn/Clock.h"

using namespace tolmtest;
using nlohmann::json;
namespace schema = tolm::schema;

namespace {

using Texts = std::vector<std::string>;

class PatchUpload : public UploadFixture {
protected:
    bool IsPending() const { return Exists(statusPath); }
};

// --- what goes out ---------------------------------------------------------------------------------------------------

/// The rows of `StoreOfEachClass`, as every list of the patch has them.
std::string RowsOf(const std::string& prefix, const std::string& name) {
    const std::string tree = R"({"Children":"[]","CreateTime":)";
    const std::string node = R"(,"display":1,"groupName":")";
    const std::string end = R"(","nodeID":"","order":0,"parentID":"","tableName":"","text":")" + name + R"("})";
    return R"({"ConfigTree":[)" + tree + R"(13,"ID":")" + prefix +
           R"(sizes","Nodes":"[]","content":{"roughness":0.0015,"sizeList":[)"
           R"({"DN":25,"ID":28.399999999999999,"OD":32,"Thickness":1.8}]})" +
           node + "MaterialSeries" + end + "," + tree + R"(12,"ID":")" + prefix +
           R"(material","Nodes":"[]","content":{})" + node + "HVACMaterialSeries" + end + "," + tree + R"(11,"ID":")" +
           prefix + R"(group","Nodes":"[]","content":{})" + node + "pipeFittingGroup" + end +
           R"(],"PipeSystemType":[{"CreateTime":15,"ID":")" + prefix +
           R"(system","code":"","description":"","fittingIds":[],"systemCategory":21,"systemType":")" + name +
           R"("}],"PipeType":[{"Cap":[],"CreateTime":14,"Cross":[],"Elbow":[],"ID":")" + prefix +
           R"(serie","PipeSegmentId":"","Tee":[{"FittingPartType":2,"categoryCode":"tee","id":"t1","max":1000000,)"
           R"("min":1,"publicComponentId":"0","version":1}],"Transition":[],"Union":[],"connective":1,)"
           R"("maxSize":10000000,"minSize":0,"name":")" +
           name + R"(","parentID":"","preferredConnect":0}]})";
}

/// Created, recovered, edited and removed records of every class, at version 7.
std::string WholePatch() {
    return R"({"createList":)" + RowsOf("new ", "新") + R"(,"editList":)" + RowsOf("old ", "改") +
           R"(,"force":1,"recoveryList":{"DuctSystemType":[{"CreateTime":0,"ID":"back","code":"","description":"",)"
           R"("fittingIds":[],"systemCategory":21,"systemType":"again"}]},"removeList":{"ConfigTree":["gone sizes",)"
           R"("gone material","gone group"],"DuctType":["gone serie"],"PipeSystemType":["gone system"]},)"
           R"("tolm_version":"1.2.3","userID":"user-1","version":7})";
}

TEST_F(PatchUpload, HoldsTheFourListsOfAllClassesByteForByte) {
    StoreOfEachClass(L"old ", L"旧");
    ForgetChanges();
    ASSERT_TRUE(util.SetLocalVersion(path, ddq, 7));
    StoreOfEachClass(L"old ", L"改");
    StoreOfEachClass(L"new ", L"新");
    ASSERT_TRUE(Write(SystemType(L"back", L"again", Type::Duct, Discipline::HVAC)));
    Recovered() = {L"back"};
    Note(schema::kSystemType, L"gone system", Removed);
    Note(schema::kMaterialSerie, L"gone serie", Removed, 2, 1);
    Note(schema::kMaterialSerieGroup, L"gone group", Removed);
    Note(schema::kMaterial, L"gone material", Removed);
    Note(schema::kSizeModule, L"gone sizes", Removed);
    EXPECT_TRUE(Upload());
    EXPECT_EQ(Requests("/api/UpLoad/")[0].path, "/api/UpLoad/P1");
    EXPECT_EQ(PatchText(), WholePatch());
}

TEST_F(PatchUpload, OfRemovedRecordsAloneHasThreeEmptyLists) {
    MakeStore();
    Note(schema::kMaterial, L"gone", Removed);
    EXPECT_TRUE(Upload());
    EXPECT_EQ(PatchText(), R"({"createList":{},"editList":{},"force":1,"recoveryList":{},)"
                           R"("removeList":{"ConfigTree":["gone"]},"tolm_version":"1.2.3","userID":"user-1",)"
                           R"("version":0})");
}

TEST_F(PatchUpload, OfAnEditAloneHasThreeEmptyLists) {
    ASSERT_TRUE(Store(Material(L"m", L"PVC")));
    ForgetChanges();
    ASSERT_TRUE(Store(Material(L"m", L"PE")));
    EXPECT_TRUE(Upload());
    const json patch = Patch();
    for (const char* list : {"createList", "recoveryList", "removeList"})
        EXPECT_EQ(patch.at(list), json::object());
    EXPECT_EQ(IdsOf(patch.at("editList").at("ConfigTree")), (Texts{"m"}));
    EXPECT_EQ(patch.at("editList").at("ConfigTree").at(0).at("text"), "PE");
}

TEST_F(PatchUpload, SendsEachRecordOnceHoweverTheClassesFollowEachOther) {
    for (const wchar_t* prefix : {L"a ", L"b ", L"c "})
        StoreOfEachClass(prefix, L"name");
    EXPECT_TRUE(Upload());
    const json created = Patch().at("createList");
    EXPECT_EQ(IdsOf(created.at("PipeSystemType")), (Texts{"a system", "b system", "c system"}));
    EXPECT_EQ(IdsOf(created.at("PipeType")), (Texts{"a serie", "b serie", "c serie"}));
    EXPECT_EQ(IdsOf(created.at("ConfigTree")), (Texts{"a sizes", "b sizes", "c sizes", "a material", "b material",
                                                      "c material", "a group", "b group", "c group"}));
}

TEST_F(PatchUpload, SortsSystemTypesOfMixedDisciplinesThoughTheirReaderFilters) {
    ASSERT_TRUE(Write(SystemType(L"power", L"1", Type::ElectricalSystem, Discipline::Electrical)));
    ASSERT_TRUE(Write(SystemType(L"duct", L"2", Type::Duct, Discipline::HVAC)));
    ASSERT_TRUE(Write(SystemType(L"pipe", L"3")));
    ASSERT_TRUE(util.SetLocalVersion(path, ddq, 7));
    EXPECT_TRUE(Upload());
    const json patch = Patch();
    EXPECT_EQ(patch.at("version"), 7);
    EXPECT_EQ(IdsOf(patch.at("createList").at("ElectricalSystemType")), (Texts{"power"}));
    EXPECT_EQ(IdsOf(patch.at("createList").at("DuctSystemType")), (Texts{"duct"}));
    EXPECT_EQ(IdsOf(patch.at("createList").at("PipeSystemType")), (Texts{"pipe"}));
}

TEST_F(PatchUpload, PassesOverACreatedRecordThatTheDataStoreDoesNotHave) {
    MakeStore();
    for (const char* classCode : {schema::kSystemType, schema::kMaterialSerie, schema::kSizeModule, schema::kMaterial,
                                  schema::kMaterialSerieGroup}) {
        Note(classCode, L"nowhere", Created);
        Note(classCode, L"nowhere either", Edited);
    }
    EXPECT_TRUE(Upload());
    EXPECT_EQ(Patch().at("createList"), json::object());
    EXPECT_EQ(Patch().at("editList"), json::object());
    EXPECT_FALSE(IsPending());
}

TEST_F(PatchUpload, ReadsACategoryOfComponentsOnceForAllSeries) {
    for (int i = 0; i < 20; ++i)
        StoreOfEachClass(std::to_wstring(i), L"name");
    const ComponentReads reads([](const wstring& category) {
        std::vector<ComponentPtr> list;
        list.push_back(Component(L"t1", category));
        return list;
    });
    EXPECT_TRUE(Upload());
    EXPECT_EQ(reads.Categories(), (std::vector<wstring>{L"tee"}));
    EXPECT_EQ(reads.Paths(), (std::vector<wstring>{components}));
}

// --- recovered system types ------------------------------------------------------------------------------------------

TEST_F(PatchUpload, PutsARecoveredSystemTypeIntoAListOfItsOwnWhateverTheCaseOfItsId) {
    ASSERT_TRUE(Write(SystemType(L"ab-1", L"recovered")));
    ASSERT_TRUE(Write(SystemType(L"ab-2", L"new")));
    Recovered() = {L"AB-1"};
    EXPECT_TRUE(Upload());
    EXPECT_EQ(IdsOf(Patch().at("recoveryList").at("PipeSystemType")), (Texts{"ab-1"}));
    EXPECT_EQ(IdsOf(Patch().at("createList").at("PipeSystemType")), (Texts{"ab-2"}));
}

TEST_F(PatchUpload, DoesNotSplitEditedSystemTypes) {
    ASSERT_TRUE(Write(SystemType(L"ab-1", L"before")));
    ForgetChanges();
    ASSERT_TRUE(Write(SystemType(L"ab-1", L"after")));
    Recovered() = {L"ab-1"};
    EXPECT_TRUE(Upload());
    EXPECT_EQ(Patch().at("recoveryList"), json::object());
    EXPECT_EQ(IdsOf(Patch().at("editList").at("PipeSystemType")), (Texts{"ab-1"}));
}

TEST_F(PatchUpload, ConfirmsTheRecoveredOnesAfterTheServiceTookThem) {
    ASSERT_TRUE(Write(SystemType(L"ab-1", L"recovered")));
    Recovered() = {L"AB-1", L"cd-2"};
    EXPECT_TRUE(Upload());
    EXPECT_EQ(server.Paths(), (Texts{"/api/UpLoad/P1", "/api/workunit/uploadData"}));
    EXPECT_EQ(server.Requests().back().body,
              R"({"dataIds":["AB-1","cd-2"],"dataStatus":1,"projectId":"P1","workunitId":"W1"})");
    EXPECT_TRUE(Recovered().empty());
}

TEST_F(PatchUpload, IsDoneAlsoWhenTheServiceDoesNotTakeTheConfirmation) {
    ASSERT_TRUE(Write(SystemType(L"ab-1", L"recovered")));
    Recovered() = {L"ab-1"};
    server.On("/api/workunit/uploadData", ScriptedAnswer::Code("10001"));
    EXPECT_TRUE(Upload());
    EXPECT_TRUE(Recovered().empty());
    EXPECT_FALSE(IsPending());
    EXPECT_EQ(TakeNotifications(), Uploaded);
}

// --- what the local side keeps ---------------------------------------------------------------------------------------

TEST_F(PatchUpload, TellsTheUserAndLeavesNoStatusStoreAndTheVersionAsItWas) {
    ASSERT_TRUE(Store(Material(L"m", L"PVC")));
    ASSERT_TRUE(util.SetLocalVersion(path, ddq, 7));
    EXPECT_TRUE(Upload());
    EXPECT_EQ(TakeNotifications(), Uploaded);
    EXPECT_FALSE(IsPending());
    EXPECT_FALSE(Exists(statusPath + L"-journal"));
    EXPECT_EQ(Version(), 7);
    EXPECT_TRUE(util.GetLastUpdateTimePoint(path, ddq).empty());
    EXPECT_TRUE(Upload());
    EXPECT_EQ(server.Requests().size(), 1U);
}

TEST_F(PatchUpload, WritesTheTimePointWithItsFlag) {
    ASSERT_TRUE(Store(Material(L"m", L"PVC")));
    vorn::Clock::SetSource([] { return std::chrono::system_clock::from_time_t(1'700'000'000); });
    EXPECT_TRUE(Upload(true));
    const wstring expected = vorn::Clock::Format(vorn::Clock::LocalNow());
    vorn::Clock::SetSource(nullptr);
    EXPECT_EQ(util.GetLastUpdateTimePoint(path, ddq), expected);
    EXPECT_EQ(SqlValue(path, "SELECT group_concat(id) FROM \"000\""), "FileHeader");
    EXPECT_EQ(Version(), -1);
}

TEST_F(PatchUpload, KeepsTheVersionBesideTheTimePoint) {
    ASSERT_TRUE(Store(Material(L"m", L"PVC")));
    ASSERT_TRUE(util.SetLocalVersion(path, ddq, 7));
    EXPECT_TRUE(Upload(true));
    EXPECT_EQ(Version(), 7);
    EXPECT_FALSE(util.GetLastUpdateTimePoint(path, ddq).empty());
}

TEST_F(PatchUpload, ReportsNothingBeforeTheAnswerAndEightyThen) {
    ASSERT_TRUE(Store(Material(L"m", L"PVC")));
    std::vector<double> expected(15, 0.0);
    expected.push_back(80.0);
    for (const bool taken : {false, true}) {
        server.On("/api/UpLoad/", taken ? ScriptedAnswer::Data(R"({"version":8})") : ScriptedAnswer::Code("200100"));
        ProgressNotes progress;
        EXPECT_EQ(Upload(false, &progress), taken);
        EXPECT_EQ(progress.percentages, expected);
    }
}

TEST_F(PatchUpload, HoldsBothStoresUntilItIsDone) {
    ASSERT_TRUE(Store(Material(L"m", L"PVC")));
    ProgressNotes progress;
    int looked = 0;
    progress.onReport = [&](double) {
        for (const auto& file : {path, statusPath}) {
            CQbase other;
            EXPECT_FALSE(other.openDatabase(ddq, file, false) && other.lockForRead());
            ++looked;
        }
    };
    EXPECT_TRUE(Upload(false, &progress));
    EXPECT_EQ(looked, 32);
    CQbase other;
    EXPECT_TRUE(other.openDatabase(ddq, path, false) && other.lockForUpdate());
}

} // namespace
