#include "Host/Definitions.h"
#include "MepDatabase/MepQbaseUtil.h"
#include "Qbase/Qbase.h"
#include "StoreSupport/HistoryMaker.h"
#include "StoreSupport/RefreshFixture.h"
#include "StoreSupport/SyncFixture.h"
#include "Vorn/Text.h"

#include <set>

namespace tolmtest {
namespace {

constexpr int kVersions = 6;
constexpr std::uint64_t kHistories = 4;

/// Merges what the real service says.
class MergeWithCloud : public SyncFixture {
protected:
    /// Notes every record of a dataset as edited, without a change of it.
    void NoteAll(HostedDataset& dataset) {
        CQbase data;
        CQbase status;
        ASSERT_TRUE(data.openDatabase(ddq, dataset.Path(), false) && data.lockForUpdate());
        ASSERT_TRUE(status.openBeside(data, ddq, dataset.StatusPath(), true));
        for (const char* classCode : {"SYS", "MTS", "PSI", "SMS", "MSG"}) {
            for (bool more = data.fetchFirstMember(classCode); more; more = data.fetchNextMember())
                NoteOne(data, status, classCode);
        }
        ASSERT_TRUE(status.closeDatabase() && data.closeDatabase());
    }

    bool Merge(HostedDataset& dataset, const std::wstring& project) {
        pending = true;
        ProgressNotes progress;
        return util.MergeCloudAndLocalDataset(project, &progress, 0, dataset.Version(), dataset.Path(), ddq,
                                              CombinedPath(dataset), dataset.BinaryFolder(), &pending);
    }

    /// Ids of the status store.
    static std::set<std::string> NotedIds(const HostedDataset& dataset) {
        std::set<std::string> ids;
        for (const char* classCode : {"SYS", "MTS", "PSI", "SMS", "MSG"}) {
            for (const SqlRow& row : Sql(dataset.StatusPath(), std::string("SELECT id FROM ") + classCode))
                ids.insert(row[0]);
        }
        return ids;
    }

    static std::wstring CombinedPath(const HostedDataset& dataset) {
        return vorn::FileSystem::FolderOf(dataset.Path()) + L"/combined.db";
    }

    const std::wstring ddq = tolm::DataSetFilePath::TOLMDDQFilePath;
    tolm::MepQbaseUtil& util = *tolm::MepQbaseUtil::GetInstance();
    bool pending = true;

private:
    static void NoteOne(CQbase& data, CQbase& status, const char* classCode) {
        CWsz id;
        short mepType = 0;
        short disciplineId = 0;
        ASSERT_TRUE(data.getObjId(id));
        data.getShort(tolm::schema::kMEPType, mepType);
        data.getShort(tolm::schema::kDisciplineId, disciplineId);
        ASSERT_TRUE(status.createRec(classCode, id.str()));
        status.setShort(tolm::schema::kStatus, 2);
        status.setShort(tolm::schema::kMEPType, mepType);
        status.setShort(tolm::schema::kDisciplineId, disciplineId);
        ASSERT_TRUE(status.saveRec());
    }
};

TEST_F(MergeWithCloud, WhatTheCloudChangedComesOutAsInAFullLoadAndIsForgottenHere) {
    for (std::uint64_t seed = 1; seed <= kHistories && !HasFailure(); ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        const std::string project = "seed" + std::to_string(seed);
        HistoryMaker maker(seed);
        Open(maker.First().at("put"), project);
        auto dataset = Dataset(vorn::StringUtil::ToWString(project));
        ASSERT_TRUE(dataset.Pull());
        for (int version = 2; version <= kVersions && !HasFailure(); ++version) {
            const HistoryStep step = maker.Next();
            const int cloudVersion = Apply(step.at("put"), step.at("remove"), project);
            CQbase::removeStore(dataset.StatusPath());
            NoteAll(dataset);
            ASSERT_TRUE(Merge(dataset, vorn::StringUtil::ToWString(project))) << version;
            ASSERT_TRUE(util.SetLocalVersion(dataset.Path(), ddq, cloudVersion));
            EXPECT_TRUE(Same(Expected(project), dataset.Content())) << step.dump();
        }
    }
}

TEST_F(MergeWithCloud, LocalChangesOfOtherRecordsStayBesideTheClouds) {
    const auto row = [](const char* id, const char* name) {
        return nlohmann::json{{"ID", id}, {"groupName", "pipeFittingGroup"}, {"text", name}, {"parentID", ""}};
    };
    Open({{"ConfigTree", {row("a", "A"), row("b", "B"), row("c", "C"), row("d", "D")}}});
    auto dataset = Dataset(L"host");
    ASSERT_TRUE(dataset.Pull());
    const auto edit = [&](std::wstring id, std::wstring name) {
        auto group = tolm::ITolmDataSetFactory::Get()->CreateMEPMaterialSerieGroup();
        group->SetId(id);
        group->SetName(name);
        group->SetMEPType(tolm::TolmProjectSettingMEPObjectType::Pipe);
        group->SetDisciplineId(tolm::MEPDisciplineId::Plumbing);
        ASSERT_TRUE(util.WriteMEPMaterialSerieGroup(dataset.Path(), ddq, group.get()));
    };
    edit(L"a", L"mine");
    edit(L"b", L"lost");
    edit(L"c", L"lost too");
    edit(L"n", L"theirs");
    Apply({{"ConfigTree", {row("b", "theirs"), row("e", "E")}}}, {{"ConfigTree", {"c"}}});
    ASSERT_TRUE(Merge(dataset, L"P"));
    const char* const all = "SELECT group_concat(id||'='||Name) FROM (SELECT * FROM MSG ORDER BY id)";
    EXPECT_EQ(SqlValue(dataset.Path(), all), "a=mine,b=theirs,d=D,e=E,n=theirs(1)");
    EXPECT_EQ(NotedIds(dataset), (std::set<std::string>{"a", "n"}));
    EXPECT_TRUE(pending);
}

TEST_F(MergeWithCloud, AMergeOfNothingLeavesAllAsItWas) {
    Open({{"PipeType", {{{"ID", "s"}, {"name", "s"}}}}});
    auto dataset = Dataset(L"host");
    ASSERT_TRUE(dataset.Pull());
    NoteAll(dataset);
    const Facts before = dataset.Content();
    EXPECT_TRUE(Merge(dataset, L"P")) << "the service's increment has an empty table";
    EXPECT_TRUE(Same(before, dataset.Content()));
    EXPECT_EQ(NotedIds(dataset), std::set<std::string>{"s"});
}

} // namespace
} // namespace tolmtest
