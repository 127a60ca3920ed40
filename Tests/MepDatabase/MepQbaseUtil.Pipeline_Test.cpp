#include "StoreSupport/LockTimeout.h"
#include "StoreSupport/RefreshFixture.h"

#include "Host/Session.h"
#include "Vorn/Clock.h"

#include <cstdint>
#include <fstream>
#include <stdexcept>

using namespace tolmtest;
namespace schema = tolm::schema;

namespace {

constexpr const char* Empty = R"({"add":{},"del":{}})";
constexpr const char* OneMaterial =
    R"({"ConfigTree":[{"ID":"M1","groupName":"MaterialSeries","parentID":"","text":"PVC"}]})";

class GetCloudVersion : public RefreshFixture {
protected:
    int Ask(const std::string& data) {
        server.On("/api/GetVersion/", ScriptedAnswer::Data(data));
        return util.GetCloudVersion(L"P1");
    }
};

TEST_F(GetCloudVersion, IsTheServicesFromOneOn) {
    EXPECT_EQ(Ask("5"), 5);
    EXPECT_EQ(Ask("1"), 1);
    EXPECT_EQ(TakeNotifications(), Notifications{});
}

TEST_F(GetCloudVersion, OfAProjectWithoutSettingsIsMinusOne) {
    EXPECT_EQ(Ask("-1"), -1);
    EXPECT_EQ(TakeNotifications(), NotInitialised);
}

TEST_F(GetCloudVersion, CountsEverythingElseAsAFailure) {
    for (const char* const data : {"0", "-2", "-3", "null", "\"5\""}) {
        EXPECT_EQ(Ask(data), -2) << data;
        EXPECT_EQ(TakeNotifications(), VersionFailed);
    }
    server.On("/api/GetVersion/", ScriptedAnswer::Html(500));
    EXPECT_EQ(util.GetCloudVersion(L"P1"), -2);
    EXPECT_EQ(TakeNotifications(), VersionFailed);
}

TEST_F(GetCloudVersion, WithoutAProjectFailsAndAsksNobody) {
    EXPECT_EQ(util.GetCloudVersion(L""), -2);
    EXPECT_EQ(TakeNotifications(), VersionFailed);
    EXPECT_TRUE(server.Requests().empty());
}

using Refreshing = RefreshFixture;

TEST_F(Refreshing, NeedsASession) {
    tolm::CollaborationProjectSettingForPS::Close();
    EXPECT_FALSE(Refresh());
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::SyncDataFromCloud: pSettings为空"}));
    EXPECT_FALSE(Exists(path));
    EXPECT_TRUE(server.Requests().empty());
}

TEST_F(Refreshing, NeedsAVersionAndTouchesNoFileWithoutOne) {
    const std::pair<ScriptedAnswer, Notifications> cases[] = {
        {ScriptedAnswer::Data("-1"), NotInitialised},     {ScriptedAnswer::Data("-2"), VersionFailed},
        {ScriptedAnswer::Code("10003"), VersionFailed},   {ScriptedAnswer::Html(500), VersionFailed},
        {ScriptedAnswer::CutAfter(0, ""), VersionFailed},
    };
    for (const auto& [answer, told] : cases) {
        server.On("/api/GetVersion/", answer);
        EXPECT_FALSE(Refresh());
        EXPECT_EQ(TakeNotifications(), told);
        EXPECT_FALSE(Exists(path));
    }
}

TEST_F(Refreshing, WithoutAWorkingProjectFailsToGetAVersion) {
    tolm::CollaborationProjectSettingForPS::Open({server.Address(), L"", L"W1", 30'000'000});
    EXPECT_FALSE(Refresh());
    EXPECT_EQ(TakeNotifications(), VersionFailed);
    EXPECT_TRUE(server.Requests().empty());
}

TEST_F(Refreshing, NeedsAHandleOnTheStore) {
    CloudHas(5, Empty);
    {
        const NoStoreHandles none;
        EXPECT_FALSE(Refresh());
    }
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::SyncDataFromCloud: qb为空"}));
    EXPECT_EQ(TakeNotifications(), Notifications{});
    EXPECT_EQ(DownloadCount(), 0U);
}

TEST_F(Refreshing, MakesTheFolderBeforeItAsksForAHandle) {
    CloudHas(5, Empty);
    const NoStoreHandles none;
    EXPECT_FALSE(
        util.SyncDataFromCloud(false, nullptr, folder.File(L"a/set.db"), ddq, combinedPath, binaryFolder, nullptr));
    EXPECT_EQ(TakeDebugWarnings(), (Warnings{L"qb为空"}));
    EXPECT_TRUE(Exists(folder.File(L"a")));
}

TEST_F(Refreshing, MakesAMissingFileAndLoadsEverything) {
    CloudHas(5, OneMaterial, "{}");
    EXPECT_TRUE(Refresh());
    EXPECT_EQ(TakeNotifications(), Loaded);
    EXPECT_EQ(DownloadPath(), "/api/DownloadVersion/P1/0");
    EXPECT_EQ(LocalVersion(), 5);
    EXPECT_EQ(Records(schema::kMaterial), (RecordLines{"M1 PVC 1 2"}));
}

TEST_F(Refreshing, AsksTheServiceInItsOrder) {
    CloudHas(5, OneMaterial, "{}");
    EXPECT_TRUE(Refresh());
    EXPECT_EQ(server.Paths(), (std::vector<std::string>{"/api/GetVersion/P1", "/api/DownloadVersion/P1/0",
                                                        "/api/workunit/downloadData/W1"}));
}

TEST_F(Refreshing, MakesTheFolderOfAMissingFile) {
    CloudHas(5, OneMaterial, "{}");
    for (const wchar_t* const name : {L"\\a\\b\\set.db", L"/c/d/set.db"}) {
        const auto inFolder = folder.Path() + name;
        EXPECT_TRUE(util.SyncDataFromCloud(false, nullptr, inFolder, ddq, combinedPath, binaryFolder, nullptr));
        EXPECT_TRUE(Exists(inFolder));
    }
    EXPECT_TRUE(Exists(folder.File(L"a/b/set.db")));
}

TEST_F(Refreshing, NoticesAFileThatCannotBeMadeOnlyBehindTheDownload) {
    CloudHas(5, OneMaterial, "{}");
    std::ofstream(vorn::FileSystem::ToNative(folder.File(L"file"))) << "no folder";
    const auto below = folder.File(L"file/set.db");
    EXPECT_FALSE(util.SyncDataFromCloud(false, nullptr, below, ddq, combinedPath, binaryFolder, nullptr));
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::SyncDataFromCloud: beginTransaction 失败"}));
    EXPECT_EQ(TakeNotifications(), LoadFailed);
    EXPECT_EQ(DownloadCount(), 1U);
}

TEST_F(Refreshing, LeavesAFileAloneThatIsNoStore) {
    CloudHas(5, OneMaterial, "{}");
    std::ofstream(vorn::FileSystem::ToNative(path)) << "this is no store, and it is longer than a header of one";
    const auto before = FileBytes(path);
    EXPECT_FALSE(Refresh());
    EXPECT_EQ(TakeNotifications(), OpenFailed);
    EXPECT_EQ(FileBytes(path), before);
    EXPECT_EQ(DownloadCount(), 0U);
}

TEST_F(Refreshing, FillsAnEmptyFileLikeAMissingOne) {
    CloudHas(5, OneMaterial, "{}");
    std::ofstream(vorn::FileSystem::ToNative(path)).flush();
    ASSERT_TRUE(Exists(path));
    EXPECT_TRUE(Refresh());
    EXPECT_EQ(DownloadPath(), "/api/DownloadVersion/P1/0");
    EXPECT_EQ(Records(schema::kMaterial), (RecordLines{"M1 PVC 1 2"}));
}

TEST_F(Refreshing, FailsToOpenAFolder) {
    CloudHas(5, OneMaterial, "{}");
    ASSERT_TRUE(vorn::FileSystem::CreateDirectories(path));
    EXPECT_FALSE(Refresh());
    EXPECT_EQ(TakeNotifications(), OpenFailed);
}

TEST_F(Refreshing, TakesAHeaderThatCannotBeReadForAFileThatDoesNotOpen) {
    CloudHas(5, OneMaterial, "{}");
    LocalHas(3);
    Put(schema::kMaterial, L"M0", L"stays");
    const LockTimeout atOnce(1);
    CQbase writer;
    ASSERT_TRUE(writer.openDatabase(ddq, path, false) && writer.lockForUpdate());
    EXPECT_FALSE(Refresh());
    EXPECT_EQ(TakeNotifications(), OpenFailed);
    EXPECT_EQ(DownloadCount(), 0U);
    ASSERT_TRUE(writer.closeDatabase());
    EXPECT_EQ(Records(schema::kMaterial), (RecordLines{"M0 stays - -"}));
}

TEST_F(Refreshing, LoadsNothingIntoAStoreThatItCannotEmpty) {
    CloudHas(5, OneMaterial, "{}");
    LocalHas(0);
    Put(schema::kMaterial, L"M0", L"stays");
    const LockTimeout atOnce(1);
    CQbase reader;
    ASSERT_TRUE(reader.openDatabase(ddq, path, false) && reader.lockForRead());
    EXPECT_FALSE(Refresh());
    EXPECT_EQ(TakeNotifications(), OpenFailed);
    EXPECT_EQ(DownloadCount(), 0U);
    ASSERT_TRUE(reader.closeDatabase());
    EXPECT_EQ(Records(schema::kMaterial), (RecordLines{"M0 stays - -"}));
}

TEST_F(Refreshing, OfAnEqualVersionIsDone) {
    CloudHas(5, OneMaterial, "{}");
    LocalHas(5);
    const auto before = FileBytes(path);
    EXPECT_FALSE(Refresh());
    EXPECT_EQ(TakeNotifications(), UpToDate);
    EXPECT_EQ(FileBytes(path), before);
    EXPECT_EQ(DownloadCount(), 0U);
    EXPECT_TRUE(progress.percentages.empty());
}

TEST_F(Refreshing, TakesAVersionOfZeroForAVersion) {
    CloudHas(0, OneMaterial, "{}");
    LocalHas(0);
    EXPECT_FALSE(Refresh());
    EXPECT_EQ(TakeNotifications(), UpToDate);
}

TEST_F(Refreshing, GoesOnFromTheLocalVersion) {
    CloudHas(5, OneMaterial, "{}");
    LocalHas(3);
    Put(schema::kMaterial, L"M0", L"old");
    EXPECT_TRUE(Refresh());
    EXPECT_EQ(DownloadPath(), "/api/DownloadVersion/P1/3");
    EXPECT_EQ(LocalVersion(), 5);
    EXPECT_EQ(Records(schema::kMaterial), (RecordLines{"M0 old - -", "M1 PVC 1 2"}));
}

TEST_F(Refreshing, GoesBackToALowerVersionToo) {
    CloudHas(5, OneMaterial, "{}");
    LocalHas(9);
    EXPECT_TRUE(Refresh());
    EXPECT_EQ(DownloadPath(), "/api/DownloadVersion/P1/9");
    EXPECT_EQ(LocalVersion(), 5);
}

TEST_F(Refreshing, EmptiesAStoreWithoutHeaderForAFullLoad) {
    CloudHas(5, OneMaterial, "{}");
    MakeStore();
    Put(schema::kMaterial, L"M0", L"old");
    Put(schema::kSystemType, L"S0", L"old");
    EXPECT_TRUE(Refresh());
    EXPECT_EQ(DownloadPath(), "/api/DownloadVersion/P1/0");
    EXPECT_EQ(Records(schema::kMaterial), (RecordLines{"M1 PVC 1 2"}));
    EXPECT_EQ(Records(schema::kSystemType), RecordLines{});
}

TEST_F(Refreshing, EmptiesAStoreOfVersionZeroForAFullLoad) {
    CloudHas(5, OneMaterial, "{}");
    LocalHas(0);
    Put(schema::kMaterial, L"M0", L"old");
    EXPECT_TRUE(Refresh());
    EXPECT_EQ(Records(schema::kMaterial), (RecordLines{"M1 PVC 1 2"}));
}

TEST_F(Refreshing, TakesAHeaderWithoutAVersionForVersionZero) {
    CloudHas(5, OneMaterial, "{}");
    MakeStore();
    util.SetLastUpdateTimePoint(path, ddq);
    Put(schema::kMaterial, L"M0", L"old");
    EXPECT_TRUE(Refresh());
    EXPECT_EQ(DownloadPath(), "/api/DownloadVersion/P1/0");
    EXPECT_EQ(Records(schema::kMaterial), (RecordLines{"M1 PVC 1 2"}));
}

TEST_F(Refreshing, AsksFromANegativeVersionAndDeletesNothing) {
    CloudHas(5, OneMaterial, R"({"PipeSystemType":[{"ID":"S0"}]})");
    LocalHas(-3);
    Put(schema::kSystemType, L"S0", L"old");
    EXPECT_TRUE(Refresh());
    EXPECT_EQ(DownloadPath(), "/api/DownloadVersion/P1/-3");
    EXPECT_EQ(Records(schema::kSystemType), (RecordLines{"S0 old - -"}));
}

TEST_F(Refreshing, NeedsTheDownload) {
    LocalHas(3);
    CloudHas(5, "null");
    EXPECT_FALSE(Refresh());
    EXPECT_EQ(TakeNotifications(), DownloadFailed);
    EXPECT_EQ(LocalVersion(), 3);
    EXPECT_TRUE(progress.percentages.empty());
    EXPECT_EQ(server.Paths().size(), 2U);
}

TEST_F(Refreshing, LeavesAnEmptiedStoreEmptyWhenTheDownloadFails) {
    MakeStore();
    Put(schema::kMaterial, L"M0", L"old");
    server.On("/api/GetVersion/", ScriptedAnswer::Data("5"));
    server.On("/api/DownloadVersion/", ScriptedAnswer::Html(500));
    EXPECT_FALSE(Refresh());
    EXPECT_EQ(TakeNotifications(), DownloadFailed);
    EXPECT_EQ(Records(schema::kMaterial), RecordLines{});
    EXPECT_EQ(Records(schema::kHeader), RecordLines{});
    EXPECT_EQ(LocalVersion(), -1);
}

TEST_F(Refreshing, NotesTheSystemTypesThatTheWorkUnitNeedsBack) {
    CloudHas(5, OneMaterial, "{}");
    server.On("/api/workunit/downloadData/",
              ScriptedAnswer::Data(R"([{"dataId":"S1","dataStatus":1},{"dataId":"S2","dataStatus":2}])"));
    EXPECT_TRUE(Refresh());
    EXPECT_EQ(tolm::CollaborationProjectSettingForPS::Instance()->GetRecoverSystemTypeRecordIds(),
              (std::vector<std::wstring>{L"S1"}));
}

TEST_F(Refreshing, GoesOnWithoutTheChangesOfTheWorkUnit) {
    CloudHas(5, OneMaterial, "{}");
    for (const auto& answer : {ScriptedAnswer::Html(500), ScriptedAnswer::Data("null"), ScriptedAnswer::Code("1")}) {
        CQbase::removeStore(path);
        server.On("/api/workunit/downloadData/", answer);
        EXPECT_TRUE(Refresh());
        EXPECT_EQ(TakeNotifications(), Loaded);
    }
}

TEST_F(Refreshing, WithoutAWorkUnitAsksForNoChanges) {
    tolm::CollaborationProjectSettingForPS::Open({server.Address(), L"P1", L"", 30'000'000});
    CloudHas(5, OneMaterial, "{}");
    EXPECT_TRUE(Refresh());
    EXPECT_EQ(server.Paths().size(), 2U);
}

TEST_F(Refreshing, FailsOnAChangeWithoutAnId) {
    LocalHas(3);
    CloudHas(5, OneMaterial, "{}");
    server.On("/api/workunit/downloadData/", ScriptedAnswer::Data(R"([{"dataStatus":1}])"));
    EXPECT_FALSE(Refresh());
    EXPECT_EQ(TakeNotifications(), LoadFailed);
    EXPECT_EQ(TakeLogLines(), (std::vector<std::wstring>{L"Key not found"}));
    EXPECT_EQ(LocalVersion(), 3);
    EXPECT_TRUE(progress.percentages.empty());
}

TEST_F(Refreshing, OfAnEmptyIncrementIsSilentAndKeepsTheVersion) {
    LocalHas(3);
    CloudHas(5, Empty);
    EXPECT_FALSE(Refresh());
    EXPECT_EQ(TakeNotifications(), Notifications{});
    EXPECT_EQ(LocalVersion(), 3);
    EXPECT_EQ(progress.percentages, (std::vector<double>{16}));
}

TEST_F(Refreshing, OfAnEmptyIncrementLeavesAnEmptiedStoreEmpty) {
    MakeStore();
    Put(schema::kMaterial, L"M0", L"old");
    CloudHas(5, Empty);
    EXPECT_FALSE(Refresh());
    EXPECT_EQ(TakeNotifications(), Notifications{});
    EXPECT_EQ(Records(schema::kMaterial), RecordLines{});
    EXPECT_EQ(LocalVersion(), -1);
}

TEST_F(Refreshing, FailsOnAnIncrementOfAnotherForm) {
    LocalHas(3);
    for (const char* const increment : {R"({"add":{}})", R"({"del":{}})", R"({"add":[],"del":{}})",
                                        R"({"add":{},"del":null})", "[]", "5", R"("text")"}) {
        CloudHas(5, increment);
        EXPECT_FALSE(Refresh()) << increment;
        EXPECT_EQ(TakeNotifications(), LoadFailed);
        EXPECT_EQ(TakeLogLines().size(), 1U);
        EXPECT_EQ(LocalVersion(), 3);
    }
}

TEST_F(Refreshing, TellsWhichKeyOfTheIncrementIsMissingByTheLibrarysWords) {
    LocalHas(3);
    CloudHas(5, R"({"add":{}})");
    EXPECT_FALSE(Refresh());
    EXPECT_EQ(TakeLogLines(), (std::vector<std::wstring>{L"Key not found"}));
}

TEST_F(Refreshing, ReportsEachPhase) {
    LocalHas(3);
    CloudHas(5, OneMaterial, R"({"ConfigTree":[]})");
    EXPECT_TRUE(Refresh());
    EXPECT_EQ(progress.percentages, (std::vector<double>{16, 24, 32, 40, 48, 56, 64, 72, 80, 80}));
}

TEST_F(Refreshing, ReportsAFullLoadWithoutTheDeletions) {
    CloudHas(5, OneMaterial, R"({"ConfigTree":[]})");
    EXPECT_TRUE(Refresh());
    EXPECT_EQ(progress.percentages, (std::vector<double>{16, 24, 32, 40, 48, 80}));
}

TEST_F(Refreshing, ReportsDeletionsWithoutAdditions) {
    LocalHas(3);
    CloudHas(5, "{}", R"({"ConfigTree":[]})");
    EXPECT_TRUE(Refresh());
    EXPECT_EQ(progress.percentages, (std::vector<double>{16, 24, 32, 40, 48, 80}));
}

TEST_F(Refreshing, WithoutAReporterDoesTheSame) {
    LocalHas(3);
    CloudHas(5, OneMaterial, R"({"ConfigTree":[]})");
    EXPECT_TRUE(RefreshWith(false, nullptr, nullptr));
    EXPECT_EQ(TakeNotifications(), Loaded);
    EXPECT_EQ(LocalVersion(), 5);
    EXPECT_EQ(Records(schema::kMaterial), (RecordLines{"M1 PVC 1 2"}));
}

std::chrono::system_clock::time_point NoonOfALeapDay() {
    std::tm noon{};
    noon.tm_year = 124;
    noon.tm_mon = 1;
    noon.tm_mday = 29;
    noon.tm_hour = 12;
    noon.tm_min = 34;
    noon.tm_sec = 56;
    noon.tm_isdst = -1;
    return std::chrono::system_clock::from_time_t(std::mktime(&noon));
}

TEST_F(Refreshing, StampsTheTimePointOnlyWhenAsked) {
    vorn::Clock::SetSource(&NoonOfALeapDay);
    CloudHas(5, OneMaterial, "{}");
    EXPECT_TRUE(RefreshWith(false, nullptr, nullptr));
    EXPECT_EQ(util.GetLastUpdateTimePoint(path, ddq), L"");
    CloudHas(6, OneMaterial, R"({"ConfigTree":[]})");
    EXPECT_TRUE(RefreshWith(true, nullptr, nullptr));
    EXPECT_EQ(util.GetLastUpdateTimePoint(path, ddq), L"2024/02/29 12:34:56");
    CloudHas(7, OneMaterial, R"({"ConfigTree":[]})");
    vorn::Clock::SetSource(nullptr);
    EXPECT_TRUE(RefreshWith(false, nullptr, nullptr));
    EXPECT_EQ(util.GetLastUpdateTimePoint(path, ddq), L"2024/02/29 12:34:56");
    EXPECT_EQ(LocalVersion(), 7);
}

TEST_F(Refreshing, FailsWithoutConfigTreeDeletionsAndKeepsWhatItDidUntilThen) {
    LocalHas(3);
    Put(schema::kSystemType, L"S1", L"gone");
    Put(schema::kMaterialSerie, L"T1", L"stays");
    CloudHas(5, OneMaterial, R"({"PipeSystemType":[{"ID":"S1"}],"PipeType":[{"ID":"T1"}]})");
    EXPECT_FALSE(Refresh());
    EXPECT_EQ(TakeNotifications(), LoadFailed);
    EXPECT_EQ(TakeLogLines(), (std::vector<std::wstring>{L"Key not found"}));
    EXPECT_EQ(Records(schema::kSystemType), RecordLines{});
    EXPECT_EQ(Records(schema::kMaterialSerie), (RecordLines{"T1 stays - -"}));
    EXPECT_EQ(Records(schema::kMaterial), RecordLines{});
    EXPECT_EQ(LocalVersion(), 3);
    EXPECT_EQ(progress.percentages, (std::vector<double>{16, 24}));
}

TEST_F(Refreshing, FailsOnSeriesDeletionsThatAreNoArrayAndKeepsWhatItDidUntilThen) {
    LocalHas(3);
    Put(schema::kSystemType, L"S1", L"gone");
    Put(schema::kMaterial, L"M0", L"gone");
    Put(schema::kMaterialSerie, L"T1", L"gone");
    Put(schema::kMaterialSerie, L"T2", L"stays");
    CloudHas(5, OneMaterial,
             R"({"PipeSystemType":[{"ID":"S1"}],"ConfigTree":[{"ID":"M0","groupName":"MaterialSeries","parentID":""}],)"
             R"("PipeType":[{"ID":"T1"}],"HVACPipeType":{},"DuctType":[{"ID":"T2"}]})");
    EXPECT_FALSE(Refresh());
    EXPECT_EQ(TakeNotifications(), LoadFailed);
    EXPECT_EQ(TakeLogLines().size(), 1U);
    EXPECT_EQ(Records(schema::kSystemType), RecordLines{});
    EXPECT_EQ(Records(schema::kMaterial), RecordLines{});
    EXPECT_EQ(Records(schema::kMaterialSerie), (RecordLines{"T2 stays - -"}));
    EXPECT_EQ(LocalVersion(), 3);
    EXPECT_EQ(progress.percentages, (std::vector<double>{16, 24, 32}));
}

TEST_F(Refreshing, BeginsAgainFromTheOldVersionAfterAFailure) {
    LocalHas(3);
    CloudHas(5, OneMaterial, R"({"PipeSystemType":[]})");
    EXPECT_FALSE(Refresh());
    CloudHas(5, OneMaterial, R"({"ConfigTree":[]})");
    EXPECT_TRUE(Refresh());
    EXPECT_EQ(DownloadPath(), "/api/DownloadVersion/P1/3");
    EXPECT_EQ(LocalVersion(), 5);
}

TEST_F(Refreshing, TakesAnExceptionOfTheReporterForAFailure) {
    LocalHas(3);
    CloudHas(5, OneMaterial, R"({"ConfigTree":[]})");
    progress.onReport = [](double percentage) {
        if (percentage > 50)
            throw std::runtime_error("cancelled");
    };
    EXPECT_FALSE(Refresh());
    EXPECT_EQ(TakeNotifications(), LoadFailed);
    EXPECT_EQ(TakeLogLines(), (std::vector<std::wstring>{L"cancelled"}));
    EXPECT_EQ(Records(schema::kMaterial), (RecordLines{"M1 PVC 1 2"}));
    EXPECT_EQ(LocalVersion(), 3);
}

TEST_F(Refreshing, TakesAnExceptionOfTheLastReportForAFailureWithEverythingOnDisk) {
    CloudHas(5, OneMaterial, "{}");
    progress.onReport = [](double percentage) {
        if (percentage == 80)
            throw std::runtime_error("cancelled");
    };
    EXPECT_FALSE(Refresh());
    EXPECT_EQ(TakeNotifications(), LoadFailed);
    EXPECT_EQ(TakeLogLines(), (std::vector<std::wstring>{L"cancelled"}));
    EXPECT_EQ(LocalVersion(), 5);
    EXPECT_EQ(Records(schema::kMaterial), (RecordLines{"M1 PVC 1 2"}));
}

TEST_F(Refreshing, LogsAnExceptionWithoutWordsAsUnknown) {
    LocalHas(3);
    CloudHas(5, OneMaterial, R"({"ConfigTree":[]})");
    progress.onReport = [](double) { throw 5; };
    EXPECT_FALSE(Refresh());
    EXPECT_EQ(TakeNotifications(), LoadFailed);
    EXPECT_EQ(TakeLogLines(), (std::vector<std::wstring>{L"Unknown exception"}));
}

TEST_F(Refreshing, WritesNothingToTheFileBeforeItsEnd) {
    LocalHas(3);
    Put(schema::kSystemType, L"S1", L"gone");
    const auto before = FileBytes(path);
    CloudHas(5, OneMaterial, R"({"PipeSystemType":[{"ID":"S1"}],"ConfigTree":[]})");
    progress.onReport = [&](double percentage) {
        if (progress.percentages.size() < 10) {
            EXPECT_EQ(FileBytes(path), before) << percentage;
        }
    };
    EXPECT_TRUE(Refresh());
    EXPECT_EQ(progress.percentages.size(), 10U);
    EXPECT_NE(FileBytes(path), before);
}

TEST_F(Refreshing, HoldsNoLockDuringTheDownload) {
    LocalHas(0);
    CloudHas(5, OneMaterial, "{}");
    const LockTimeout atOnce(1);
    progress.onReport = [&](double percentage) {
        if (percentage > 16)
            return;
        CQbase other;
        EXPECT_TRUE(other.openDatabase(ddq, path, false) && other.lockForUpdate());
    };
    EXPECT_TRUE(Refresh());
}

} // namespace
