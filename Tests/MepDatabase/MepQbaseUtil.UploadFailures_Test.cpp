#include "StoreSupport/LockTimeout.h"
#include "StoreSupport/UploadFixture.h"

#include "Host/Session.h"
#include "MepDatabase/StoreFrame.h"
#include "Support/FileSizeLimit.h"

#include <fstream>
#include <thread>

using namespace tolmtest;
using nlohmann::json;
namespace schema = tolm::schema;

namespace {

using Texts = std::vector<std::string>;

/// In both ways of uploading.
class FailingUpload : public UploadFixture, public testing::WithParamInterface<bool> {
protected:
    bool Send() { return GetParam() ? UploadTableByTable() : Upload(); }
    /// Nothing was sent and the changes are still noted.
    void ExpectUntouched() {
        EXPECT_TRUE(server.Requests().empty());
        EXPECT_TRUE(Exists(statusPath));
        EXPECT_EQ(TakeNotifications(), Notifications{});
    }
    static Warnings Warned(const wchar_t* message) {
        return {wstring(L"MepQbaseUtil::SendModifiedDataToCloud: ") + message};
    }
};

INSTANTIATE_TEST_SUITE_P(AsPatch, FailingUpload, testing::Values(false));
INSTANTIATE_TEST_SUITE_P(TableByTable, FailingUpload, testing::Values(true));

TEST_P(FailingUpload, WithoutASessionIsReported) {
    ASSERT_TRUE(Store(Material(L"m", L"PVC")));
    tolm::CollaborationProjectSettingForPS::Close();
    EXPECT_FALSE(Send());
    EXPECT_EQ(TakeDebugWarningsWithFunction(), Warned(L"pCollaborationProjectSettingForPS为空"));
    ExpectUntouched();
}

TEST_P(FailingUpload, WithoutAProjectHasNothingToUploadTo) {
    ASSERT_TRUE(Store(Material(L"m", L"PVC")));
    tolm::CollaborationProjectSettingForPS::Open({server.Address(), L"", L"W1", 30'000'000});
    EXPECT_TRUE(Send());
    ExpectUntouched();
}

TEST_P(FailingUpload, WithoutAStatusStoreHasNothingToSendAndNeedsNoDataStore) {
    EXPECT_TRUE(Send());
    EXPECT_TRUE(server.Requests().empty());
    EXPECT_FALSE(Exists(path));
    EXPECT_EQ(TakeNotifications(), Notifications{});
}

TEST_P(FailingUpload, OfAnEmptyStatusStoreHasNothingToSendAndNeedsNoDataStore) {
    MakeStoreAt(statusPath);
    EXPECT_TRUE(Send());
    ExpectUntouched();
    std::ofstream(vorn::FileSystem::ToNative(statusPath), std::ios::trunc).flush();
    EXPECT_TRUE(Send());
    ExpectUntouched();
}

TEST_P(FailingUpload, OfADatasetWithoutAPointInItsPathHasNothingToSend) {
    const wstring plain = L"set";
    EXPECT_TRUE(util.SendModifiedDataToCloud(false, nullptr, plain, ddq, components, GetParam()));
    EXPECT_TRUE(server.Requests().empty());
}

TEST_P(FailingUpload, OfAStatusStoreThatDoesNotOpenFails) {
    MakeStore();
    std::ofstream(vorn::FileSystem::ToNative(statusPath)) << "this is no store, and it is longer than a header of one";
    EXPECT_FALSE(Send());
    ExpectUntouched();
}

TEST_P(FailingUpload, OfADataStoreThatDoesNotOpenFails) {
    Note(schema::kMaterial, L"m", Removed);
    EXPECT_FALSE(Send());
    ExpectUntouched();
    EXPECT_FALSE(Exists(path));
}

TEST_P(FailingUpload, OfAStoreThatAnotherHoldsFails) {
    ASSERT_TRUE(Store(Material(L"m", L"PVC")));
    const LockTimeout atOnce(1);
    for (const auto& file : {path, statusPath}) {
        CQbase reader;
        ASSERT_TRUE(reader.openDatabase(ddq, file, false) && reader.lockForRead());
        std::thread([&] { EXPECT_FALSE(Send()); }).join();
        ExpectUntouched();
    }
    EXPECT_TRUE(Send());
}

TEST_P(FailingUpload, OfAStatusStoreThatItsOwnThreadHoldsFails) {
    ASSERT_TRUE(Store(Material(L"m", L"PVC")));
    {
        CQbase reader;
        ASSERT_TRUE(reader.openDatabase(ddq, statusPath, false) && reader.lockForRead());
        EXPECT_FALSE(Send());
        EXPECT_EQ(TakeDebugWarnings(), Warnings{L"加锁顺序错误"});
        ExpectUntouched();
    }
    EXPECT_TRUE(Send());
}

/// Makes so many handles and then none.
int g_handles = 0;
vorn::OwnerPtr<CQbase> MakeSome() {
    return g_handles-- > 0 ? vorn::MakeOwner<CQbase>() : vorn::OwnerPtr<CQbase>();
}

TEST_P(FailingUpload, WithoutAHandleOnAStoreIsReported) {
    ASSERT_TRUE(Store(Material(L"m", L"PVC")));
    const wchar_t* const reported[] = {L"qb_statusQbase为空", L"qb为空", L"qb_statusQbase为空"};
    for (int handles = 0; handles < 3; ++handles) {
        g_handles = handles;
        tolm::StoreFrame::SetMaker(&MakeSome);
        EXPECT_FALSE(Send());
        tolm::StoreFrame::SetMaker(nullptr);
        EXPECT_EQ(TakeDebugWarningsWithFunction(), Warned(reported[handles]));
        ExpectUntouched();
    }
}

/// Without the record that the factory did not make the rest goes out.
TEST_P(FailingUpload, ReportsARecordThatTheFactoryDoesNotMakeAndPassesItOver) {
    StoreOfEachClass(L"", L"name");
    const Warnings expected{L"pTempSystemType为空", L"pTemSysMatSerie为空", L"pTemSizeModule为空", L"pMaterial为空",
                            L"pGroup为空"};
    {
        const EmptyFactory none;
        EXPECT_TRUE(Send());
    }
    EXPECT_EQ(TakeDebugWarnings(), expected);
    EXPECT_FALSE(Exists(statusPath));
}

TEST_P(FailingUpload, ReportsTheSameOfEditedRecords) {
    StoreOfEachClass(L"", L"name");
    ForgetChanges();
    StoreOfEachClass(L"", L"name");
    {
        const EmptyFactory none;
        EXPECT_TRUE(Send());
    }
    Warnings expected;
    for (const wchar_t* message :
         {L"pTempSystemType为空", L"pTemSysMatSerie为空", L"pTemSizeModule为空", L"pMaterial为空", L"pGroup为空"})
        expected.push_back(wstring(L"MepQbaseUtil::SendModifiedDataToCloud: ") + message);
    EXPECT_EQ(TakeDebugWarningsWithFunction(), expected);
}

/// What cannot be read is not taken for what is not there.
TEST_P(FailingUpload, OfADamagedStoreSendsNoPartOfTheChanges) {
    ASSERT_TRUE(Store(Material(L"m", L"PVC")));
    Note(schema::kSystemType, L"gone", Removed);
    DamageTable(path, "MTS");
    EXPECT_FALSE(Send());
    EXPECT_EQ(TakeDebugWarningsWithFunction(), Warned(L"fetchNextRec 失败"));
    ExpectUntouched();
}

TEST_P(FailingUpload, IsToldOfAStatusStoreThatCannotBeRemoved) {
    ASSERT_TRUE(Store(Material(L"m", L"PVC")));
    {
        const FileThatStays stays(statusPath);
        EXPECT_FALSE(Send());
    }
    EXPECT_EQ(TakeDebugWarningsWithFunction(), Warned(L"RemoveFile 失败"));
    EXPECT_EQ(TakeNotifications(), Uploaded); // the service has it
    EXPECT_TRUE(Exists(statusPath));
    EXPECT_TRUE(Send());
    EXPECT_FALSE(Exists(statusPath));
}

/// The service has the changes; the host hears that the header is not on disk.
TEST_P(FailingUpload, IsToldOfAHeaderThatIsNotOnDisk) {
    ASSERT_TRUE(Store(Material(L"m", L"PVC")));
    ASSERT_TRUE(util.SetLocalVersion(path, ddq, 7));
    {
        const FileSizeLimit full(0);
        EXPECT_FALSE(util.SendModifiedDataToCloud(true, nullptr, path, ddq, components, GetParam()));
    }
    const auto warnings = TakeDebugWarnings();
    ASSERT_FALSE(warnings.empty());
    EXPECT_EQ(warnings.back(), L"closeDatabase 失败");
    EXPECT_EQ(TakeNotifications(), Uploaded);
    EXPECT_FALSE(Exists(statusPath));
    EXPECT_EQ(Version(), 7);
    EXPECT_TRUE(util.GetLastUpdateTimePoint(path, ddq).empty());
}

// --- refused patches -------------------------------------------------------------------------------------------------

struct Refusal {
    ScriptedAnswer answer;
    const wchar_t* words;
};

const Refusal kRefusals[] = {
    {ScriptedAnswer::Code("10003"), L"提交失败，项目配置中有重名项，需保证命名唯一后再次提交！"},
    {ScriptedAnswer::Code("200100"), L"提交失败，当前项目有数据正在提交中，请稍后再次提交！"},
    {ScriptedAnswer::Code("1"), L"修改专业配置增量上传失败，服务器解析出现问题！"},
    {ScriptedAnswer::Data("{}").WithStatus(500), L"修改专业配置增量上传时，网络出现问题！"},
    {ScriptedAnswer::CutAfter(20, "{}"), L"修改专业配置增量上传时，出现异常！"},
    {ScriptedAnswer::Data("{}"), L"修改专业配置增量上传时，出现异常！"},
};

class RefusedPatch : public UploadFixture {};

TEST_F(RefusedPatch, KeepsTheChangesAndTheRecoveredIdsAndTheUserHearsWhy) {
    ASSERT_TRUE(Write(SystemType(L"back", L"again")));
    Note(schema::kSystemType, L"gone", Removed);
    for (const auto& refusal : kRefusals) {
        Recovered() = {L"back"};
        server.On("/api/UpLoad/", refusal.answer);
        const auto before = StatusRecords();
        const auto told = Requests("/api/workunit/uploadData").size();
        EXPECT_FALSE(Upload(true));
        EXPECT_EQ(TakeNotifications(), (Notifications{{2, refusal.words}}));
        EXPECT_EQ(StatusRecords(), before);
        EXPECT_EQ(Recovered(), (std::vector<wstring>{L"back"}));
        EXPECT_EQ(Requests("/api/workunit/uploadData").size(), told + 1); // the removed one, not the recovered one
        EXPECT_TRUE(util.GetLastUpdateTimePoint(path, ddq).empty());
    }
    const auto patches = Requests("/api/UpLoad/");
    for (const auto& patch : patches)
        EXPECT_EQ(patch.body, patches[0].body);
}

TEST_F(RefusedPatch, IsTakenOnTheNextTry) {
    ASSERT_TRUE(Store(Material(L"m", L"PVC")));
    server.Next(ScriptedAnswer::Code("200100"));
    EXPECT_FALSE(Upload());
    EXPECT_TRUE(Upload());
    EXPECT_FALSE(Exists(statusPath));
    const auto patches = Requests("/api/UpLoad/");
    ASSERT_EQ(patches.size(), 2U);
    EXPECT_EQ(patches[0].body, patches[1].body);
}

} // namespace
