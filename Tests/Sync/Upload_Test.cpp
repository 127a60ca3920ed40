#include "StoreSupport/SeriesFixture.h"
#include "StoreSupport/SyncFixture.h"
#include "StoreSupport/UploadFixture.h"

#include "Host/Session.h"
#include "Support/Relay.h"

#include <algorithm>

namespace tolmtest {
namespace {

using nlohmann::json;
using tolm::CompareVersionResult;
using Texts = std::vector<std::string>;

/// Calls of a merge that ends with an upload, each on a connection of its own.
constexpr std::size_t kDownloadCall = 1;
constexpr std::size_t kUpLoadCall = 3;

json Row(const std::string& id, const std::string& name) {
    return {{"ID", id},        {"groupName", "MaterialSeries"}, {"text", name}, {"parentID", ""},
            {"CreateTime", 1}, {"content", json::object()}};
}

/// A host's dataset and its user, who edits materials "edited", "removed", "new" beside "kept".
class UploadOverTheWire : public SyncFixture {
protected:
    void Start(const std::string& project = "P") {
        m_project = project;
        Open({{"ConfigTree", {Row("edited", "e"), Row("removed", "r"), Row("kept", "k")}}}, project);
    }
    void OpenSessionAt(const std::wstring& address) const {
        const std::wstring project(m_project.begin(), m_project.end());
        tolm::CollaborationProjectSettingForPS::Open({address, project, L"workunit-1", 30'000'000});
    }

    void Edit(HostedDataset& dataset) {
        ASSERT_TRUE(util.WriteMaterial(dataset.Path(), ddq, PipeMaterial(L"edited", L"ours").get()));
        ASSERT_TRUE(util.WriteMaterial(dataset.Path(), ddq, PipeMaterial(L"new", L"added").get()));
        const auto removed = PipeMaterial(L"removed", L"r");
        ASSERT_TRUE(util.DeleteMaterialList(dataset.Path(), ddq, {removed.get()}));
    }
    static MaterialPtr PipeMaterial(const wchar_t* id, const wchar_t* name) {
        return Material(id, name, Type::Pipe, Discipline::Plumbing, 1);
    }

    bool Merge(HostedDataset& dataset) {
        ProgressNotes reporter;
        return dataset.Api().MergeDataAndSendModifiedData(m_projectId, &reporter, m_cloud, m_local);
    }
    CompareVersionResult Compare(HostedDataset& dataset) {
        wstring timePoint;
        return dataset.Api().CompareCloudVersion(m_projectId, m_cloud, m_local, timePoint);
    }
    /// What a host does by the comparison.
    bool Step(HostedDataset& dataset) {
        auto& api = dataset.Api();
        switch (Compare(dataset)) {
        case CompareVersionResult::Same:
            return true;
        case CompareVersionResult::CloudAhead:
            return dataset.Pull();
        case CompareVersionResult::LocalChanges:
            return api.SendModifiedDataToCloud(false, nullptr) && api.SetLocalVersion(api.GetCloudVersion(m_projectId));
        case CompareVersionResult::BothChanged:
            return Merge(dataset);
        default:
            return false;
        }
    }
    void ExpectInStep(HostedDataset& dataset) {
        EXPECT_EQ(static_cast<int>(Compare(dataset)), static_cast<int>(CompareVersionResult::Same));
        EXPECT_FALSE(vorn::FileInfo(dataset.StatusPath()).Exists());
        EXPECT_TRUE(Same(Expected(m_project), dataset.Content()));
    }

    /// "id name" of the tree's rows.
    Texts CloudRows() {
        Texts rows;
        const auto tables = json::parse(service.Tables(m_project));
        for (const auto& row : tables.value("ConfigTree", json::array()))
            rows.push_back(row.at("ID").get<std::string>() + " " + row.at("text").get<std::string>());
        std::sort(rows.begin(), rows.end());
        return rows;
    }

    tolm::MepQbaseUtil& util = *tolm::MepQbaseUtil::GetInstance();
    const wstring ddq = tolm::DataSetFilePath::TOLMDDQFilePath;
    std::string m_project;
    wstring m_projectId;
    int m_cloud = 0;
    int m_local = 0;
};

const Texts kOurs{"edited ours", "kept k", "new added"};

TEST_F(UploadOverTheWire, APatchBringsEveryChangeToTheOthers) {
    Start();
    auto dataset = Dataset(L"a");
    auto other = Dataset(L"b");
    ASSERT_TRUE(dataset.Pull() && other.Pull());
    Edit(dataset);
    TakeNotifications();
    EXPECT_TRUE(Step(dataset));
    EXPECT_EQ(TakeNotifications(), Uploaded);
    EXPECT_EQ(CloudRows(), kOurs);
    EXPECT_EQ(service.Version("P"), 2);
    ExpectInStep(dataset);
    EXPECT_TRUE(other.Pull());
    EXPECT_TRUE(Same(dataset.Content(), other.Content()));
}

TEST_F(UploadOverTheWire, TablesOneByOneBringTheSame) {
    Start();
    auto dataset = Dataset(L"a");
    ASSERT_TRUE(dataset.Pull());
    Edit(dataset);
    EXPECT_TRUE(util.SendModifiedDataToCloud(false, nullptr, dataset.Path(), ddq, componentPath, true));
    EXPECT_EQ(CloudRows(), kOurs);
    ExpectInStep(dataset);
}

TEST_F(UploadOverTheWire, ASystemTypeThatTheCloudRemovedComesBack) {
    m_project = "P";
    const json row{
        {"ID", "pipe-1"},  {"systemType", "J1"},         {"code", ""}, {"description", ""}, {"systemCategory", 21},
        {"CreateTime", 1}, {"fittingIds", json::array()}};
    Open({{"PipeSystemType", {row}}, {"ConfigTree", {Row("kept", "k")}}});
    auto dataset = Dataset(L"a");
    ASSERT_TRUE(dataset.Pull());
    Apply(json::object(), {{"PipeSystemType", {"pipe-1"}}});
    tolm::RecoverDataInfo info;
    info.idMap[L"PIPE-1"] = L"";
    ASSERT_TRUE(dataset.Pull(&info));
    ASSERT_TRUE(info.recovered);
    EXPECT_TRUE(Step(dataset));
    EXPECT_TRUE(util.RecoveredSystemTypeIds().empty());
    const json tables = json::parse(service.Tables("P"));
    ASSERT_EQ(tables.at("PipeSystemType").size(), 1U);
    EXPECT_EQ(tables.at("PipeSystemType")[0].at("ID"), "pipe-1");
    ExpectInStep(dataset);
}

TEST_F(UploadOverTheWire, AnUploadThatCrossesAnotherIsRefusedAndMergedOnTheNextTry) {
    Start();
    auto dataset = Dataset(L"a");
    ASSERT_TRUE(dataset.Pull());
    Edit(dataset);
    EXPECT_EQ(static_cast<int>(Compare(dataset)), static_cast<int>(CompareVersionResult::LocalChanges));
    Apply({{"ConfigTree", {Row("theirs", "t"), Row("edited", "theirs")}}}, json::object());
    TakeNotifications();
    EXPECT_FALSE(dataset.Api().SendModifiedDataToCloud(false, nullptr));
    EXPECT_EQ(TakeNotifications(), (Notifications{{2, L"提交失败，当前项目有数据正在提交中，请稍后再次提交！"}}));
    EXPECT_TRUE(Step(dataset));
    EXPECT_EQ(CloudRows(), (Texts{"edited theirs", "kept k", "new added", "theirs t"}));
    ExpectInStep(dataset);
}

TEST_F(UploadOverTheWire, ANameThatAnotherTookIsRefusedAndRepairedByTheMerge) {
    Start();
    auto dataset = Dataset(L"a");
    ASSERT_TRUE(dataset.Pull());
    Edit(dataset);
    Apply({{"ConfigTree", {Row("theirs", "added")}}}, json::object());
    EXPECT_TRUE(Step(dataset));
    EXPECT_EQ(CloudRows(), (Texts{"edited ours", "kept k", "new added(1)", "theirs added"}));
    ExpectInStep(dataset);
}

/// The answer to a patch is cut at many places: the service has it, the host does not know.
TEST_F(UploadOverTheWire, APatchWhoseAnswerIsLostHasOneEffect) {
    for (const std::size_t bytes : {1U, 20U, 100U}) {
        const std::string project = "P" + std::to_string(bytes);
        SCOPED_TRACE(project);
        Start(project);
        auto dataset = Dataset(L"a" + std::to_wstring(bytes));
        ASSERT_TRUE(dataset.Pull());
        Edit(dataset);
        {
            Relay line(service.Port());
            line.GoAway(1, bytes);
            OpenSessionAt(line.Address());
            TakeNotifications();
            EXPECT_FALSE(dataset.Api().SendModifiedDataToCloud(false, nullptr));
        }
        EXPECT_EQ(TakeNotifications(), (Notifications{{2, L"修改专业配置增量上传时，出现异常！"}}));
        EXPECT_TRUE(vorn::FileInfo(dataset.StatusPath()).Exists());
        EXPECT_EQ(CloudRows(), kOurs);
        EXPECT_EQ(service.Version(project), 2);
        OpenSessionAt(service.Address());
        EXPECT_TRUE(Step(dataset));
        EXPECT_EQ(CloudRows(), kOurs);
        ExpectInStep(dataset);
    }
}

/// A line that goes away at one call of the loop, before the service hears of the call or in the middle of its answer.
class InterruptedMerge : public UploadOverTheWire {
protected:
    /// True when the merge went through: the line did not go away any more.
    bool TryWith(std::size_t call, std::size_t bytes) {
        const std::string project = "P" + std::to_string(call) + "-" + std::to_string(bytes);
        SCOPED_TRACE(project);
        Start(project);
        auto dataset = Dataset(std::wstring(project.begin(), project.end()));
        EXPECT_TRUE(dataset.Pull());
        Edit(dataset);
        Apply({{"ConfigTree", {Row("theirs", "t")}}}, json::object(), project);
        EXPECT_EQ(static_cast<int>(Compare(dataset)), static_cast<int>(CompareVersionResult::BothChanged));
        const bool merged = MergeUntil(dataset, call, bytes);
        if (!merged)
            ExpectThatTheCallerKnows(dataset, call);
        for (int tries = 0; tries < 3 && Compare(dataset) != CompareVersionResult::Same; ++tries)
            EXPECT_TRUE(Step(dataset));
        EXPECT_EQ(CloudRows(), (Texts{"edited ours", "kept k", "new added", "theirs t"}));
        ExpectInStep(dataset);
        return merged;
    }

    bool MergeUntil(HostedDataset& dataset, std::size_t call, std::size_t bytes) {
        Relay line(service.Port());
        line.GoAway(call, bytes);
        OpenSessionAt(line.Address());
        TakeNotifications();
        const bool merged = Merge(dataset);
        OpenSessionAt(service.Address());
        return merged;
    }

    /// Words to the user, a warning to the host; the files whole, no copy left, the changes noted until the service
    /// is known to have them.
    void ExpectThatTheCallerKnows(HostedDataset& dataset, std::size_t call) {
        const auto told = TakeNotifications();
        ASSERT_FALSE(told.empty());
        EXPECT_EQ(told.back().type, 2);
        EXPECT_EQ(TakeDebugWarnings().empty(), call == kUpLoadCall - 1 || call > kUpLoadCall);
        EXPECT_EQ(SqlValue(dataset.Path(), "PRAGMA integrity_check"), "ok");
        EXPECT_EQ(dataset.Version(), 1);
        const bool noted = vorn::FileInfo(dataset.StatusPath()).Exists();
        EXPECT_EQ(noted, call <= kUpLoadCall);
        if (noted) {
            EXPECT_EQ(SqlValue(dataset.StatusPath(), "SELECT count(*) FROM MTS"), "3");
        }
        const auto stem = dataset.Path().substr(0, dataset.Path().rfind(L'.'));
        for (const wchar_t* copy : {L"_temp.db", L"_Status_temp.db"})
            EXPECT_FALSE(vorn::FileInfo(stem + copy).Exists());
    }
};

TEST_F(InterruptedMerge, AtAnyCallLeavesAllInOrderAndTheNextTrySucceeds) {
    for (const std::size_t bytes : {0U, 30U}) {
        std::size_t call = kDownloadCall;
        while (!TryWith(call, bytes) && call < 20)
            ++call;
        EXPECT_EQ(call, 5U); // download, version, upload, version
    }
}

} // namespace
} // namespace tolmtest
