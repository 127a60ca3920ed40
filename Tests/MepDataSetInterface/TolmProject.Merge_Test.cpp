#include "MepDataSetInterface/DatasetTestSupport.h"

#include "StoreSupport/RefreshFixture.h"
#include "Support/FileSizeLimit.h"
#include "Vorn/Notification.h"

#include <algorithm>
#include <optional>

namespace {

using namespace tolm;
using namespace tolmtest;

using Texts = std::vector<std::string>;
using Answers = std::vector<ScriptedAnswer>;

const Notification kUploaded{0, L"修改专业配置成功！"};
const Notification kNoVersion{2, L"获取云端配置版本失败！"};
const Notification kBusy{2, L"提交失败，当前项目有数据正在提交中，请稍后再次提交！"};

constexpr const char* kDownload3 = "/api/DownloadVersion/P1/3";
constexpr const char* kDownload5 = "/api/DownloadVersion/P1/5";
constexpr const char* kVersion = "/api/GetVersion/P1";
constexpr const char* kUpLoad = "/api/UpLoad/P1";

/// What the service answers to the calls of a merge.
ScriptedAnswer VersionIs(int version) {
    return ScriptedAnswer::Data(std::to_string(version));
}
ScriptedAnswer TakenAs(int version) {
    return ScriptedAnswer::Data(R"({"version":)" + std::to_string(version) + "}");
}
ScriptedAnswer Brings(const std::string& id) {
    return ScriptedAnswer::Data(R"({"add":{"ConfigTree":[{"ID":")" + id +
                                R"(","groupName":"MaterialSeries","parentID":"","text":"their )" + id +
                                R"(","content":{}}]},"del":{"ConfigTree":[]}})");
}
ScriptedAnswer Changes(const std::string& id) {
    return ScriptedAnswer::Data(R"({"add":{"ConfigTree":[{"ID":")" + id +
                                R"(","groupName":"MaterialSeries","parentID":"","text":"their )" + id +
                                R"(","content":{}}]},"del":{"ConfigTree":[{"ID":")" + id +
                                R"(","groupName":"MaterialSeries","parentID":""}]}})");
}

Warnings Warned(const wchar_t* message) {
    return {wstring(L"TolmDataset::MergeDataAndSendModifiedData: ") + message};
}

/// A dataset with a local edit at version 3, and a cloud that the host has seen at version 5.
class MergeLoop : public DatasetOnStore {
protected:
    void SetUp() override {
        Store(MakeMaterial(L"ours"));
        CQbase::removeStore(statusPath);
        Store(MakeMaterial(L"ours"));
        ASSERT_TRUE(util.SetLocalVersion(path, ddq, 3));
    }

    void Answer(const Answers& answers) {
        for (const auto& answer : answers)
            server.Next(answer);
    }
    bool Merge() { return dataset->MergeDataAndSendModifiedData(L"P1", &reporter, cloud, local); }

    void ExpectVersions(int cloudVersion, int localVersion, int header) const {
        bool changed = false;
        EXPECT_EQ(cloud, cloudVersion);
        EXPECT_EQ(local, localVersion);
        EXPECT_EQ(util.GetLocalVersion(path, ddq, changed), header);
    }
    std::string MaterialIds() const {
        return SqlValue(path, "SELECT group_concat(id) FROM (SELECT id FROM MTS ORDER BY id)");
    }

    ScriptedServer server;
    TestSession session{server.Address()};
    ProgressNotes reporter;
    int cloud = 5;
    int local = 3;
};

TEST_F(MergeLoop, WithoutAReporterDoesNothing) {
    EXPECT_FALSE(dataset->MergeDataAndSendModifiedData(L"P1", nullptr, cloud, local));
    EXPECT_EQ(TakeDebugWarningsWithFunction(), Warned(L"pProgressReporter为空"));
    EXPECT_TRUE(server.Requests().empty());
    ExpectVersions(5, 3, 3);
}

TEST_F(MergeLoop, SendsAfterOneMergeDuringWhichTheCloudStoodStill) {
    Answer({Brings("theirs"), VersionIs(5), TakenAs(6), VersionIs(6)});
    EXPECT_TRUE(Merge());
    EXPECT_EQ(server.Paths(), (Texts{kDownload3, kVersion, kUpLoad, kVersion}));
    ExpectVersions(6, 6, 6);
    EXPECT_EQ(MaterialIds(), "ours,theirs");
    EXPECT_FALSE(Exists(statusPath));
    EXPECT_EQ(TakeNotifications(), (std::vector{kUploaded}));
}

TEST_F(MergeLoop, ReportsTheProgressOfTheMergeAlone) {
    Answer({Brings("theirs"), VersionIs(5), TakenAs(6), VersionIs(6)});
    EXPECT_TRUE(Merge());
    EXPECT_TRUE(std::is_sorted(reporter.percentages.begin(), reporter.percentages.end()));
    EXPECT_EQ(reporter.percentages.front(), 1);
    EXPECT_EQ(std::count(reporter.percentages.begin(), reporter.percentages.end(), 80.0), 1);
}

TEST_F(MergeLoop, StampsTheVersionThatItAskedForLastAndNotThatOfTheUpload) {
    Answer({Brings("theirs"), VersionIs(5), TakenAs(6), VersionIs(9)});
    EXPECT_TRUE(Merge());
    ExpectVersions(9, 9, 9);
}

TEST_F(MergeLoop, WritesNoTimePoint) {
    Answer({Brings("theirs"), VersionIs(5), TakenAs(6), VersionIs(6)});
    EXPECT_TRUE(Merge());
    EXPECT_TRUE(dataset->GetLastUpdateTimePointString().empty());
}

TEST_F(MergeLoop, MergesOnceMoreWhenTheCloudMovedMeanwhile) {
    Answer({Brings("theirs"), VersionIs(6), Brings("more"), VersionIs(6), TakenAs(7), VersionIs(7)});
    EXPECT_TRUE(Merge());
    EXPECT_EQ(server.Paths(), (Texts{kDownload3, kVersion, kDownload5, kVersion, kUpLoad, kVersion}));
    ExpectVersions(7, 7, 7);
    EXPECT_EQ(MaterialIds(), "more,ours,theirs");
}

TEST_F(MergeLoop, GoesOnAsLongAsTheCloudMoves) {
    for (int version = 6; version < 16; ++version)
        Answer({Brings("theirs " + std::to_string(version)), VersionIs(version)});
    Answer({Brings("last"), VersionIs(15), TakenAs(16), VersionIs(16)});
    EXPECT_TRUE(Merge());
    EXPECT_EQ(server.Requests().size(), 24U);
    ExpectVersions(16, 16, 16);
}

TEST_F(MergeLoop, HoldsTheVersionOfTheFirstPassUntilTheLastStepSetsIt) {
    Answer({Brings("theirs"), VersionIs(6), Brings("more"), VersionIs(6), ScriptedAnswer::Code("200100")});
    EXPECT_FALSE(Merge());
    EXPECT_EQ(TakeDebugWarningsWithFunction(), Warned(L"bSucc 失败"));
    EXPECT_EQ(TakeNotifications(), (std::vector{kBusy}));
    ExpectVersions(6, 5, 3);
}

TEST_F(MergeLoop, KeepsTheChangesOfARefusedUploadForTheNextTry) {
    Answer({Brings("theirs"), VersionIs(5), ScriptedAnswer::Code("200100")});
    EXPECT_FALSE(Merge());
    TakeDebugWarnings();
    EXPECT_EQ(StatusRecords(), (Texts{"MTS ours 2 1 2"}));
    Answer({Brings("theirs"), VersionIs(5), TakenAs(6), VersionIs(6)});
    EXPECT_TRUE(Merge());
    ExpectVersions(6, 6, 6);
    EXPECT_FALSE(Exists(statusPath));
}

TEST_F(MergeLoop, StampsTheCloudsVersionWhereNothingIsLeftToSend) {
    Answer({Changes("ours"), VersionIs(5)});
    EXPECT_TRUE(Merge());
    EXPECT_EQ(server.Paths(), (Texts{kDownload3, kVersion}));
    ExpectVersions(5, 5, 5);
    EXPECT_FALSE(Exists(statusPath));
    EXPECT_EQ(TakeNotifications(), std::vector<Notification>{});
    EXPECT_EQ(SqlValue(path, "SELECT Name FROM MTS"), "their ours");
}

/// The refresh has a null reporter and brings the file to the cloud's version. The merge then finds nothing to merge
/// with, and the host hears so.
TEST_F(MergeLoop, RefreshesBeforeTheNextPassWhereNothingIsLeftToSend) {
    Answer({Changes("ours"), VersionIs(6), VersionIs(6), Changes("ours"), ScriptedAnswer::Data("[]"), Brings("more")});
    EXPECT_FALSE(Merge());
    EXPECT_EQ(server.Paths(),
              (Texts{kDownload3, kVersion, kVersion, kDownload3, "/api/workunit/downloadData/W1", kDownload5}));
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              (Warnings{L"MepQbaseUtil::MergeCloudAndLocalDataset: ducplicateFilesSucc为false",
                        L"TolmDataset::MergeDataAndSendModifiedData: mergeSucc 失败"}));
    ExpectVersions(6, 5, 6);
    EXPECT_TRUE(dataset->GetLastUpdateTimePointString().empty());
    EXPECT_EQ(TakeNotifications(), (std::vector<Notification>{{0, L"载入成功！"}}));
}

TEST_F(MergeLoop, EndsWithAMergeThatFails) {
    Answer({ScriptedAnswer::Code("10001")});
    EXPECT_FALSE(Merge());
    EXPECT_EQ(TakeDebugWarningsWithFunction().back(), Warned(L"mergeSucc 失败")[0]);
    EXPECT_EQ(server.Requests().size(), 1U);
    ExpectVersions(5, 3, 3);
    EXPECT_EQ(StatusRecords(), (Texts{"MTS ours 2 1 2"}));
}

TEST_F(MergeLoop, EndsWithAVersionThatCannotBeHadAndLeavesTheVersionsAsTheyWere) {
    const std::pair<Answers, std::size_t> cases[] = {
        {{Brings("theirs"), ScriptedAnswer::Html(500)}, 2},
        {{Brings("theirs"), VersionIs(6), Brings("theirs"), VersionIs(0)}, 4},
        {{Brings("theirs"), VersionIs(5), TakenAs(6), ScriptedAnswer::Code("10001")}, 4},
    };
    for (const auto& [answers, calls] : cases) {
        SCOPED_TRACE(calls);
        const auto before = server.Requests().size();
        Answer(answers);
        EXPECT_FALSE(Merge());
        EXPECT_EQ(server.Requests().size(), before + calls);
        EXPECT_EQ(TakeNotifications().back(), kNoVersion);
        ExpectVersions(5, 3, 3);
    }
    EXPECT_FALSE(Exists(statusPath)); // the last one came after the upload
}

/// The upload has taken place: the next comparison shows the cloud ahead with nothing changed here.
TEST_F(MergeLoop, IsToldOfAVersionThatIsNotOnDisk) {
    Answer({Brings("theirs"), VersionIs(5), TakenAs(6), VersionIs(6), VersionIs(6)});
    {
        const WithoutHandlers ownHandlers;
        std::optional<FileSizeLimit> full;
        vorn::NotificationUtils::SetHandler([&](auto, const auto&, const auto&) { full.emplace(0); });
        EXPECT_FALSE(Merge());
    }
    ExpectVersions(6, 6, 3);
    EXPECT_FALSE(Exists(statusPath));
    wstring projectId;
    wstring timePoint;
    EXPECT_EQ(dataset->CompareCloudVersion(projectId, cloud, local, timePoint), CompareVersionResult::CloudAhead);
}

// --- beside other processes -----------------------------------------------------------------------------------------

TEST_F(MergeLoop, StampsWhatItMergedWhereAnotherProcessSentTheChanges) {
    reporter.onReport = [this](double percentage) {
        if (percentage == 80)
            CQbase::removeStore(statusPath);
    };
    Answer({Brings("theirs"), VersionIs(5)});
    EXPECT_TRUE(Merge());
    EXPECT_EQ(server.Paths(), (Texts{kDownload3, kVersion})) << "a version that is told now may have more";
    ExpectVersions(5, 5, 5);
}

TEST_F(MergeLoop, LeavesTheVersionThatAnotherProcessStamped) {
    reporter.onReport = [this](double percentage) {
        if (percentage == 80) {
            ASSERT_TRUE(util.SetLocalVersion(path, ddq, 4));
        }
    };
    Answer({Brings("theirs"), VersionIs(5), TakenAs(6), VersionIs(6)});
    EXPECT_TRUE(Merge());
    ExpectVersions(6, 4, 4);
}

// --- the upload alone ------------------------------------------------------------------------------------------------

TEST_F(MergeLoop, AnUploadAloneSendsThePatchAndNotesTheTimeWithItsFlag) {
    for (const bool flag : {false, true}) {
        Store(MakeMaterial(L"ours"));
        Answer({TakenAs(6)});
        ProgressNotes notes;
        EXPECT_TRUE(dataset->SendModifiedDataToCloud(flag, &notes));
        EXPECT_EQ(server.Paths().back(), kUpLoad);
        EXPECT_EQ(notes.percentages.back(), 80);
        EXPECT_EQ(dataset->GetLastUpdateTimePointString().empty(), !flag);
        ExpectVersions(5, 3, 3);
        EXPECT_FALSE(Exists(statusPath));
    }
}

TEST_F(MergeLoop, AnUploadAloneTellsOfItsFailure) {
    Answer({ScriptedAnswer::Code("200100")});
    EXPECT_FALSE(dataset->SendModifiedDataToCloud(true, nullptr));
    EXPECT_EQ(TakeNotifications(), (std::vector{kBusy}));
    EXPECT_TRUE(Exists(statusPath));
}

} // namespace
