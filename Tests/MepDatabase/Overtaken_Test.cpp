#include "MepDatabase/DatasetPaths.h"
#include "MepDatabase/FileHeader.h"
#include "MepDatabase/StoreFrame.h"
#include "StoreSupport/LockTimeout.h"
#include "StoreSupport/Records.h"
#include "StoreSupport/RefreshFixture.h"
#include "Support/FaultyFiles.h"
#include "Support/Interceptor.h"

#include <fstream>
#include <functional>
#include <future>
#include <memory>
#include <thread>
#include <utility>

namespace tolmtest {
namespace {

using tolm::DatasetPaths;

std::string Row(const std::string& id, const std::string& name) {
    return R"({"ID":")" + id + R"(","text":")" + name +
           R"(","groupName":"MaterialSeries","parentID":"","CreateTime":1,"content":{}})";
}

/// A refresh during which somebody else writes to the dataset, when its download has just come.
class OvertakenRefresh : public RefreshFixture {
protected:
    static constexpr double kDownloaded = 16;

    OvertakenRefresh() {
        LocalHas(2);
        CloudHas(3, R"({"ConfigTree":[)" + Row("m1", "theirs") + "]}", "{}");
    }
    /// Lets it happen in the first so many downloads.
    void OnDownloads(int times, const std::function<void()>& happens) {
        progress.onReport = [this, times, happens](double percentage) {
            if (percentage == kDownloaded && m_happened < times) {
                ++m_happened;
                happens();
            }
        };
    }
    void Edit(const wstring& id) { EXPECT_TRUE(util.WriteMaterial(path, ddq, Material(id, L"mine").get())); }
    /// As a refresh or an upload leaves it.
    void ChangeUnnoted(const wstring& id) {
        Edit(id);
        EXPECT_TRUE(CQbase::removeStore(DatasetPaths::Of(path).status));
    }

private:
    int m_happened = 0;
};

TEST_F(OvertakenRefresh, BeginsAnew) {
    OnDownloads(1, [this] { ChangeUnnoted(L"m2"); });
    EXPECT_TRUE(Refresh());
    EXPECT_EQ(DownloadCount(), 2U);
    EXPECT_EQ(Records(tolm::schema::kMaterial), (RecordLines{"m2 mine 1 2", "m1 theirs 1 2"}));
    EXPECT_EQ(LocalVersion(), 3);
    EXPECT_EQ(TakeNotifications(), Loaded);
}

/// The host found no changes when it compared; it finds them when it compares anew, and merges.
TEST_F(OvertakenRefresh, DoesNotOverwriteAnEditThatWasNotedMeanwhile) {
    OnDownloads(1, [this] { Edit(L"m1"); });
    EXPECT_FALSE(Refresh());
    EXPECT_EQ(DownloadCount(), 1U);
    EXPECT_EQ(Records(tolm::schema::kMaterial), RecordLines{"m1 mine 1 2"});
    EXPECT_EQ(LocalVersion(), 2);
    EXPECT_EQ(TakeNotifications(), LoadFailed);
}

TEST_F(OvertakenRefresh, OverwritesEditsThatWereNotedBefore) {
    Edit(L"m1");
    OnDownloads(1, [this] { Edit(L"m2"); });
    EXPECT_TRUE(Refresh());
    EXPECT_EQ(Records(tolm::schema::kMaterial), (RecordLines{"m1 theirs 1 2", "m2 mine 1 2"}));
    EXPECT_EQ(LocalVersion(), 3);
}

TEST_F(OvertakenRefresh, AsksForTheChangesSinceTheVersionThatStandsThen) {
    OnDownloads(1, [this] { ASSERT_TRUE(util.SetLocalVersion(path, ddq, 1)); });
    EXPECT_TRUE(Refresh());
    EXPECT_EQ(DownloadPath(), "/api/DownloadVersion/P1/1");
}

TEST_F(OvertakenRefresh, FindsThatTheOtherOneDidItsWork) {
    OnDownloads(1, [this] { ASSERT_TRUE(util.SetLocalVersion(path, ddq, 3)); });
    EXPECT_FALSE(Refresh());
    EXPECT_EQ(DownloadCount(), 1U);
    EXPECT_EQ(TakeNotifications(), UpToDate);
}

TEST_F(OvertakenRefresh, GivesUpWhenTheDatasetKeepsChanging) {
    OnDownloads(100, [this, number = 0]() mutable { ChangeUnnoted(L"n" + std::to_wstring(++number)); });
    EXPECT_FALSE(Refresh());
    EXPECT_EQ(DownloadCount(), 5U);
    EXPECT_EQ(Records(tolm::schema::kMaterial).size(), 5U) << "the edits stand, and nothing else";
    EXPECT_EQ(LocalVersion(), 2);
    EXPECT_EQ(TakeNotifications(), LoadFailed);
}

TEST_F(OvertakenRefresh, AReaderOvertakesNothing) {
    OnDownloads(1, [this] { LocalVersion(); });
    EXPECT_TRUE(Refresh());
    EXPECT_EQ(DownloadCount(), 1U);
}

/// Another process loads a newer version after the cloud was asked for its own, and before the file is opened. The
/// older answer would be stamped over it, and the next merge would take what came with that version for news.
TEST_F(OvertakenRefresh, DoesNotTakeBackAVersionThatCameAfterTheCloudWasAsked) {
    static std::function<void()> happens;
    happens = [this] {
        CQbase qb;
        EXPECT_TRUE(qb.openDatabase(ddq, path, false) && tolm::StampVersion(qb, 4) && qb.closeDatabase());
        CloudHas(5, R"({"ConfigTree":[)" + Row("m1", "theirs") + "]}", "{}");
    };
    tolm::StoreFrame::SetMaker([] {
        if (happens)
            std::exchange(happens, nullptr)();
        return vorn::MakeOwner<CQbase>();
    });
    EXPECT_TRUE(Refresh());
    tolm::StoreFrame::SetMaker(nullptr);
    EXPECT_EQ(LocalVersion(), 5);
    EXPECT_EQ(DownloadPath(), "/api/DownloadVersion/P1/4");
    EXPECT_EQ(DownloadCount(), 1U);
}

TEST_F(OvertakenRefresh, FollowsACloudThatIsBehindAllTheWhile) {
    ASSERT_TRUE(util.SetLocalVersion(path, ddq, 7));
    EXPECT_TRUE(Refresh());
    EXPECT_EQ(DownloadPath(), "/api/DownloadVersion/P1/7");
    EXPECT_EQ(LocalVersion(), 3);
}

/// The store is emptied before the download; whoever loads it meanwhile is not loaded over.
TEST_F(OvertakenRefresh, OfAWholeProjectBeginsAnewToo) {
    ASSERT_TRUE(util.SetLocalVersion(path, ddq, 0));
    OnDownloads(1, [this] { ChangeUnnoted(L"m2"); });
    EXPECT_TRUE(Refresh());
    EXPECT_EQ(DownloadCount(), 2U);
    EXPECT_EQ(LocalVersion(), 3);
}

// --- changes of which nobody can tell whether they are noted -------------------------------------------------------

/// Another process that holds a store for update from its making to its end.
class OtherHolder {
public:
    OtherHolder(const wstring& ddq, const wstring& path) {
        std::promise<bool> isHeld;
        m_thread = std::thread([&, end = m_end.get_future()] {
            CQbase qb;
            isHeld.set_value(qb.openDatabase(ddq, path, false) && qb.lockForUpdate());
            end.wait();
        });
        EXPECT_TRUE(isHeld.get_future().get());
    }
    ~OtherHolder() {
        m_end.set_value();
        m_thread.join();
    }
    OtherHolder(const OtherHolder&) = delete;
    OtherHolder& operator=(const OtherHolder&) = delete;

private:
    std::promise<void> m_end;
    std::thread m_thread;
};

TEST_F(OvertakenRefresh, OverwritesNoEditThatItCouldNotSeeAtItsBeginning) {
    Edit(L"m1");
    const LockTimeout brief(1);
    auto holder = std::make_unique<OtherHolder>(ddq, statusPath);
    Interceptor between(server.Port());
    const TestSession sessionBetween(between.Address());
    between.Before("/api/GetVersion/", [&] { holder.reset(); });
    EXPECT_FALSE(Refresh());
    EXPECT_EQ(Records(tolm::schema::kMaterial), RecordLines{"m1 mine 1 2"});
    EXPECT_EQ(LocalVersion(), 2);
    EXPECT_EQ(TakeNotifications(), LoadFailed);
}

TEST_F(OvertakenRefresh, OverwritesNoEditThatIsNotedWhenTheNotesCouldNotBeReadAtItsBeginning) {
    MakeStoreAt(statusPath);
    FaultyFiles files(folder.Path());
    files.FailAt(1, FaultyFiles::Lasts::Once);
    OnDownloads(1, [&] {
        EXPECT_NE(files.FailedPath().find("set_Status.db"), std::string::npos) << files.FailedPath();
        Edit(L"m1");
    });
    EXPECT_FALSE(Refresh());
    EXPECT_EQ(Records(tolm::schema::kMaterial), RecordLines{"m1 mine 1 2"});
    EXPECT_EQ(LocalVersion(), 2);
    EXPECT_EQ(TakeNotifications(), LoadFailed);
}

TEST_F(OvertakenRefresh, IsNotKeptBackByNotesThatAreNeverReadable) {
    std::ofstream(vorn::FileSystem::ToNative(statusPath)) << "this is no store, and it is longer than a header of one";
    OnDownloads(1, [this] { ASSERT_TRUE(util.SetLocalVersion(path, ddq, 1)); });
    EXPECT_TRUE(Refresh());
    EXPECT_EQ(DownloadCount(), 2U);
    EXPECT_EQ(LocalVersion(), 3);
}

TEST_F(OvertakenRefresh, IsNotKeptBackByNotesThatTurnOutToBeNone) {
    MakeStoreAt(statusPath);
    FaultyFiles files(folder.Path());
    files.FailAt(1, FaultyFiles::Lasts::Once);
    EXPECT_TRUE(Refresh());
    EXPECT_TRUE(files.HasFailed());
    EXPECT_EQ(LocalVersion(), 3);
}

// --- the version at the end of a synchronisation -------------------------------------------------------------------

class ReplacedVersion : public RefreshFixture {};

TEST_F(ReplacedVersion, IsStampedOverTheOneThatWasExpected) {
    LocalHas(2);
    int version = 5;
    EXPECT_TRUE(util.ReplaceLocalVersion(path, ddq, 2, version));
    EXPECT_EQ(version, 5);
    EXPECT_EQ(LocalVersion(), 5);
}

TEST_F(ReplacedVersion, LeavesAnotherOneAndTellsIt) {
    LocalHas(4);
    int version = 5;
    EXPECT_TRUE(util.ReplaceLocalVersion(path, ddq, 2, version));
    EXPECT_EQ(version, 4);
    EXPECT_EQ(LocalVersion(), 4);
}

TEST_F(ReplacedVersion, OfAStoreWithoutOneIsExpectedAsMinusOne) {
    MakeStore();
    int version = 5;
    EXPECT_TRUE(util.ReplaceLocalVersion(path, ddq, -1, version));
    EXPECT_EQ(LocalVersion(), 5);
}

TEST_F(ReplacedVersion, FailsWhereTheStoreDoesNotOpen) {
    int version = 5;
    EXPECT_FALSE(util.ReplaceLocalVersion(path, ddq, 2, version));
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::ReplaceLocalVersion: openDatabase 失败"}));
    EXPECT_EQ(version, 5);
}

// --- the order of locks --------------------------------------------------------------------------------------------

class LockOrder : public RefreshFixture {
protected:
    LockOrder() {
        LocalHas(2);
        EXPECT_TRUE(util.WriteMaterial(path, ddq, Material(L"m", L"mine").get()));
        status = DatasetPaths::Of(path).status;
    }
    void WhileHolding(bool (CQbase::*lock)(), const std::function<void()>& work) {
        CQbase qb;
        ASSERT_TRUE(qb.openDatabase(ddq, status, false) && (qb.*lock)());
        work();
    }
    wstring status;
};

TEST_F(LockOrder, AThreadThatHoldsTheStatusStoreIsRefusedTheDataStore) {
    for (const auto lock : {&CQbase::lockForRead, &CQbase::lockForUpdate}) {
        WhileHolding(lock, [&] {
            EXPECT_FALSE(util.WriteMaterial(path, ddq, Material(L"n", L"mine").get()));
            std::vector<MaterialPtr> list;
            EXPECT_FALSE(util.ReadMaterialList(path, ddq, Type::Pipe, Discipline::Plumbing, list));
            int version = 5;
            EXPECT_FALSE(util.ReplaceLocalVersion(path, ddq, 2, version));
        });
        EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::WriteMaterial: 加锁顺序错误",
                                                             L"MepQbaseUtil::ReadMaterialList: 加锁顺序错误",
                                                             L"MepQbaseUtil::ReplaceLocalVersion: 加锁顺序错误",
                                                             L"MepQbaseUtil::ReplaceLocalVersion: openDatabase 失败"}));
    }
    EXPECT_EQ(Records(tolm::schema::kMaterial).size(), 1U);
}

TEST_F(LockOrder, ARefreshIsRefusedItAndAsksNobody) {
    CloudHas(3, R"({"ConfigTree":[)" + Row("m", "theirs") + "]}", "{}");
    for (const auto lock : {&CQbase::lockForRead, &CQbase::lockForUpdate}) {
        WhileHolding(lock, [&] { EXPECT_FALSE(Refresh()); });
        EXPECT_EQ(TakeDebugWarningsWithFunction(), Warnings{L"MepQbaseUtil::SyncDataFromCloud: 加锁顺序错误"});
        EXPECT_EQ(TakeNotifications(), OpenFailed);
    }
    EXPECT_TRUE(server.Requests().empty());
    EXPECT_EQ(LocalVersion(), 2);
}

TEST_F(LockOrder, AMergeIsRefusedIt) {
    CloudHas(3, R"({"ConfigTree":[)" + Row("m", "theirs") + "]}", R"({"ConfigTree":[]})");
    for (const auto lock : {&CQbase::lockForRead, &CQbase::lockForUpdate}) {
        WhileHolding(lock, [&] {
            EXPECT_FALSE(
                util.MergeCloudAndLocalDataset(L"P1", &progress, 3, 2, path, ddq, combinedPath, binaryFolder, nullptr));
        });
        EXPECT_EQ(TakeDebugWarningsWithFunction(),
                  (Warnings{L"MepQbaseUtil::MergeCloudAndLocalDataset: 加锁顺序错误",
                            L"MepQbaseUtil::MergeCloudAndLocalDataset: ducplicateFilesSucc为false"}));
    }
    EXPECT_EQ(Records(tolm::schema::kMaterial), RecordLines{"m mine 1 2"});
}

TEST_F(LockOrder, WithoutALockOnTheStatusStoreNothingIsRefused) {
    WhileHolding(&CQbase::lockForRead, [&] {
        std::thread([&] {
            std::vector<MaterialPtr> list;
            EXPECT_TRUE(util.ReadMaterialList(path, ddq, Type::Pipe, Discipline::Plumbing, list));
        }).join();
    });
    CQbase open;
    ASSERT_TRUE(open.openDatabase(ddq, status, false));
    EXPECT_TRUE(util.WriteMaterial(path, ddq, Material(L"n", L"mine").get()));
}

TEST_F(LockOrder, OfAnotherDatasetIsItsOwn) {
    WhileHolding(&CQbase::lockForUpdate, [&] {
        EXPECT_TRUE(util.WriteMaterial(folder.File(L"other.db"), ddq, Material(L"n", L"mine").get()));
    });
}

} // namespace
} // namespace tolmtest
