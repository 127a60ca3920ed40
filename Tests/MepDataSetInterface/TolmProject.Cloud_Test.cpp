#include "MepDataSetInterface/DatasetTestSupport.h"

#include "Host/Categories.h"
#include "Host/Components.h"
#include "Support/ScriptedServer.h"
#include "Support/TestSession.h"
#include "Vorn/Files.h"

#include <optional>

namespace {

using namespace tolm;
using namespace tolmtest;

const Notification kNotInitialised{2, L"获取云端配置版本失败,云端配置未做初始化！"};
const Notification kNoVersion{2, L"获取云端配置版本失败！"};

class Cloud : public DatasetOnStore {
protected:
    void Answer(int version) { server.Next(ScriptedAnswer::Data(std::to_string(version))); }

    /// Gives the dataset a header with this version; none for no store at all.
    void Local(std::optional<int> version) {
        CQbase::removeStore(path);
        CQbase::removeStore(statusPath);
        if (version) {
            MakeStore();
            ASSERT_TRUE(util.SetLocalVersion(path, ddq, *version));
        }
    }
    void ChangeLocally() { Store(MakeMaterial(L"changed")); }

    CompareVersionResult Compare() {
        projectId = L"before";
        cloudVersion = 111;
        localVersion = 222;
        timePoint = L"before";
        return dataset->CompareCloudVersion(projectId, cloudVersion, localVersion, timePoint);
    }

    ScriptedServer server;
    wstring projectId;
    int cloudVersion = 0;
    int localVersion = 0;
    wstring timePoint;
};

TEST_F(Cloud, VersionIsTheServicesAnswer) {
    const TestSession session(server.Address());
    Answer(5);
    EXPECT_EQ(dataset->GetCloudVersion(L"P1"), 5);
    EXPECT_EQ(server.Paths(), (std::vector<std::string>{"/api/GetVersion/P1"}));
    EXPECT_TRUE(TakeNotifications().empty());
}

TEST_F(Cloud, VersionOfAProjectThatWasNeverFilledIsMinusOneAndTheUserHearsOfIt) {
    const TestSession session(server.Address());
    Answer(-1);
    EXPECT_EQ(dataset->GetCloudVersion(L"P1"), -1);
    EXPECT_EQ(TakeNotifications(), (std::vector<Notification>{kNotInitialised}));
}

TEST_F(Cloud, VersionThatCannotBeHadIsMinusTwoAndTheUserHearsOfIt) {
    const TestSession session(server.Address());
    server.Next(ScriptedAnswer::Code("10001"));
    Answer(0);
    EXPECT_EQ(dataset->GetCloudVersion(L"P1"), -2);
    EXPECT_EQ(dataset->GetCloudVersion(L"P1"), -2);
    EXPECT_EQ(TakeNotifications(), (std::vector<Notification>{kNoVersion, kNoVersion}));
}

TEST_F(Cloud, ComparisonWithoutASessionIsReportedAndLeavesTheOtherOutputs) {
    EXPECT_EQ(static_cast<int>(Compare()), -1);
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"TolmDataset::CompareCloudVersion: pSettings为空"}));
    EXPECT_EQ(timePoint, L"");
    EXPECT_EQ(projectId, L"before");
    EXPECT_EQ(cloudVersion, 111);
    EXPECT_EQ(localVersion, 222);
}

TEST_F(Cloud, ComparisonWithoutAWorkingProjectIsEqualAndLeavesTheVersions) {
    const TestSession session(server.Address(), L"");
    EXPECT_EQ(static_cast<int>(Compare()), 0);
    EXPECT_EQ(projectId, L"");
    EXPECT_EQ(timePoint, L"");
    EXPECT_EQ(cloudVersion, 111);
    EXPECT_EQ(localVersion, 222);
    EXPECT_TRUE(server.Requests().empty());
}

TEST_F(Cloud, ComparisonOfADatasetThatWasNeverSynchronisedSaysThatTheCloudIsAhead) {
    const TestSession session(server.Address());
    for (const auto local : {std::optional<int>(), std::optional<int>(0)}) {
        Local(local);
        if (local)
            ChangeLocally();
        Answer(5);
        EXPECT_EQ(static_cast<int>(Compare()), 1);
        EXPECT_EQ(projectId, L"P1");
        EXPECT_EQ(cloudVersion, 5);
        EXPECT_EQ(localVersion, local ? 0 : -1);
        EXPECT_EQ(timePoint, L"");
    }
}

TEST_F(Cloud, ComparisonWithAProjectThatWasNeverFilledSaysSo) {
    const TestSession session(server.Address());
    Local(3);
    Answer(-1);
    EXPECT_EQ(static_cast<int>(Compare()), 4);
    EXPECT_EQ(cloudVersion, -1);
    EXPECT_EQ(localVersion, 3);
    EXPECT_EQ(timePoint, L"");
    TakeNotifications();
}

struct Comparison {
    bool changed;
    int cloud;
    int local;
    int result;
};
constexpr Comparison kComparisons[] = {
    {false, 3, 3, 0}, {false, 4, 3, 1}, {false, 2, 3, -1}, {true, 3, 3, 2}, {true, 4, 3, 3}, {true, 2, 3, -1},
};

TEST_F(Cloud, ComparisonOfTwoVersionsGoesByTheirOrderAndTheLocalChanges) {
    const TestSession session(server.Address());
    for (const auto& row : kComparisons) {
        Local(row.local);
        const wstring written = dataset->SetLastUpdateTimePoint();
        if (row.changed)
            ChangeLocally();
        Answer(row.cloud);
        EXPECT_EQ(static_cast<int>(Compare()), row.result) << row.changed << row.cloud << row.local;
        EXPECT_EQ(cloudVersion, row.cloud);
        EXPECT_EQ(localVersion, row.local);
        EXPECT_EQ(timePoint, written);
    }
}

TEST_F(Cloud, ComparisonWithAFailedFetchIsImpossibleAndGivesTheTimePointOfASynchronisedDataset) {
    const TestSession session(server.Address());
    Local(3);
    const wstring written = dataset->SetLastUpdateTimePoint();
    server.Next(ScriptedAnswer::Code("10001"));
    EXPECT_EQ(static_cast<int>(Compare()), -1);
    EXPECT_EQ(cloudVersion, -2);
    EXPECT_EQ(timePoint, written);
    Local(0);
    server.Next(ScriptedAnswer::Code("10001"));
    EXPECT_EQ(static_cast<int>(Compare()), -1);
    EXPECT_EQ(timePoint, L"");
    TakeNotifications();
}

TEST_F(Cloud, ARefreshWithoutASessionFails) {
    EXPECT_FALSE(dataset->SyncDataFromCloud(true, nullptr, nullptr));
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::SyncDataFromCloud: pSettings为空"}));
}

/// One plumbing pipe material that the service adds at version 2.
constexpr const char* kOneMaterial =
    R"({"add":{"ConfigTree":[{"ID":"m-1","groupName":"MaterialSeries","parentID":"","text":"copper","content":{}}]},)"
    R"("del":{}})";

TEST_F(Cloud, ARefreshBringsTheDatasetToTheServicesVersionAndNotesTheTimeWithItsFlag) {
    const TestSession session(server.Address());
    for (const bool flag : {false, true}) {
        Local(std::nullopt);
        Answer(2);
        server.On("/api/DownloadVersion/", ScriptedAnswer::Data(kOneMaterial));
        server.On("/api/workunit/downloadData", ScriptedAnswer::Data("[]"));
        EXPECT_TRUE(dataset->SyncDataFromCloud(flag, nullptr, nullptr));
        EXPECT_EQ(dataset->GetLastUpdateTimePointString().empty(), !flag);
        bool changed = true;
        EXPECT_EQ(util.GetLocalVersion(path, ddq, changed), 2);
        EXPECT_FALSE(changed);
    }
}

constexpr const char* kOtherContent =
    R"({"add":{"ConfigTree":[],"BinaryTable":[{"fileName":"a.bin","length":3,"data":"YWJj"}],)"
    R"("Combination_16353515":[{"ID":"k1","Name":"Hanger","Spacing":1200,"List":[)"
    R"({"CategoryStandardCode":"16353515","ComponentId":"a","ComponentTypeId":"at"}]}]},"del":{}})";

TEST_F(Cloud, ARefreshLeavesCombinedProductsAndBinaryFilesAtTheirPaths) {
    const TestSession session(server.Address());
    ASSERT_TRUE(TolmComponentSqlUtil::Import(componentPath, {}, {{L"16353515", L"", L"1", L"吊架", L"Hanger"}}, {}));
    TolmCategoryInfoUtilsHandler::Get().SetUtils(CreateCategoryInfoUtils(componentPath));
    ASSERT_TRUE(vorn::FileSystem::CreateDirectories(binaryFolder));
    Answer(1);
    server.On("/api/DownloadVersion/", ScriptedAnswer::Data(kOtherContent));
    server.On("/api/workunit/downloadData", ScriptedAnswer::Data("[]"));
    EXPECT_TRUE(dataset->SyncDataFromCloud(false, nullptr, nullptr));
    TolmCategoryInfoUtilsHandler::Get().SetUtils({});
    std::vector<TolmCombinedProduct> products;
    EXPECT_TRUE(TolmComponentSqlUtil::ReadCombinedProductList(combinedPath, L"16353515", products));
    ASSERT_EQ(products.size(), 1U);
    EXPECT_EQ(products[0].Id, L"k1");
    EXPECT_EQ(FileBytes(binaryFolder + L"/a.bin"), "abc");
}

/// Notes what is reported.
class Reporter : public vorn::IProgressReporter {
public:
    void ReportProgress(double percentage) override { reported.push_back(percentage); }
    std::vector<double> reported;
};

TEST_F(Cloud, ARefreshReportsItsProgress) {
    const TestSession session(server.Address());
    Answer(2);
    server.On("/api/DownloadVersion/", ScriptedAnswer::Data(kOneMaterial));
    server.On("/api/workunit/downloadData", ScriptedAnswer::Data("[]"));
    Reporter reporter;
    EXPECT_TRUE(dataset->SyncDataFromCloud(false, &reporter, nullptr));
    EXPECT_FALSE(reporter.reported.empty());
}

TEST_F(Cloud, AfterARefreshTheTablesAreCollectedAgain) {
    const TestSession session(server.Address());
    dataset->CollectData(false, {TableId::PlumbingPipeMaterials});
    Answer(2);
    server.On("/api/DownloadVersion/", ScriptedAnswer::Data(kOneMaterial));
    server.On("/api/workunit/downloadData", ScriptedAnswer::Data("[]"));
    EXPECT_TRUE(dataset->SyncDataFromCloud(false, nullptr, nullptr));
    EXPECT_EQ(Materials(), Ids{});
    dataset->CollectData(false, {TableId::PlumbingPipeMaterials});
    EXPECT_EQ(Materials(), (Ids{L"m-1"}));
}

TEST_F(Cloud, ADefaultTemplateIsAppliedToTheProject) {
    const TestSession session(server.Address());
    server.On("/api/useTemplateForDesktop/", ScriptedAnswer::Data("true"));
    EXPECT_TRUE(dataset->ApplyDefaultProjectSettingTemplate(L"P7"));
    ASSERT_EQ(server.Paths().size(), 1U);
    EXPECT_NE(server.Paths()[0].find("P7"), std::string::npos);
    EXPECT_FALSE(dataset->ApplyDefaultProjectSettingTemplate(L""));
}

TEST_F(Cloud, AChangeNoticeNamesProjectAndWorkUnitOfTheSession) {
    const TestSession session(server.Address(), L"P1", L"W9");
    server.On("/api/workunit/uploadData", ScriptedAnswer::Data("true"));
    EXPECT_TRUE(dataset->SendUpdateSettingDataInfo({L"a", L"b"}, 3));
    ASSERT_EQ(server.Requests().size(), 1U);
    const std::string body = server.Requests()[0].body;
    for (const char* part :
         {R"("projectId":"P1")", R"("workunitId":"W9")", R"("dataIds":["a","b"])", R"("dataStatus":3)"})
        EXPECT_NE(body.find(part), std::string::npos) << body;
}

TEST_F(Cloud, AChangeNoticeWithoutASessionIsReported) {
    EXPECT_FALSE(dataset->SendUpdateSettingDataInfo({L"a"}, 1));
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"TolmDataset::SendUpdateSettingDataInfo: pSettings为空"}));
}

} // namespace
