#include "Tools/TwoUsers.h"

#include <fstream>

using namespace tolmtest;
using tolmcli::Done;
using tolmcli::Failed;
using tolmcli::Misused;
using tolmcli::Refused;

namespace {

/// A dataset that has no settings yet, of a project that has none either.
class EmptyProject : public TwoUsers {
protected:
    void SetUp() override {
        TwoUsers::SetUp();
        m_service.CreateProject("empty");
        Make(m_new, m_wire.Address(), "empty", "anna");
    }
    ToolRun New(const std::string& command, const std::vector<std::string>& rest = {}) {
        return On(m_new, command, rest);
    }
    /// Makes Anna's dataset belong to the empty project, as if the service had lost the other one.
    void MoveAnnaToTheEmptyProject() {
        const std::string path = vorn::StringUtil::ToString(m_folder.File(L"anna.tolm.json"));
        std::ifstream in(path);
        auto profile = nlohmann::json::parse(in);
        profile["project"] = "empty";
        std::ofstream(path) << profile.dump();
    }
    /// The service fills new projects from the settings of the tower.
    void OfferATemplate() { m_service.SetTemplate("182943227345633280", "tower"); }

    std::string m_new = vorn::StringUtil::ToString(m_folder.File(L"new.db"));
};

void SetLocalVersion(const std::string& dataset, long version) {
    CQbase store;
    ASSERT_TRUE(
        store.openDatabase(tolm::DataSetFilePath::TOLMDDQFilePath, vorn::StringUtil::ToWString(dataset), false));
    ASSERT_TRUE(store.lockForUpdate() && store.fetchFirstMember("000") && store.setLong(1200, version));
    ASSERT_TRUE(store.saveRec() && store.closeDatabase());
}

} // namespace

TEST_F(TwoUsers, SyncOfTheSameStateSaysSo) {
    const auto run = Anna("sync");
    EXPECT_EQ(run.code, Done);
    EXPECT_TRUE(Contains(run.out, "Up to date; the dataset holds version 1")) << run.out;
    const auto json = AnnaSyncs();
    EXPECT_EQ(json.at("result"), "up to date");
    EXPECT_EQ(json.at("attempts"), 1);
    for (const char* list : {"came", "went", "renamed", "overridden", "waiting"})
        EXPECT_TRUE(json.at(list).empty()) << list;
}

TEST_F(TwoUsers, SyncPullsWhenTheCloudIsAhead) {
    m_service.Apply("tower", kRenameBrass);
    const auto json = AnnaSyncs();
    EXPECT_EQ(json.at("result"), "pulled");
    EXPECT_EQ(json.at("fromVersion"), 1);
    EXPECT_EQ(json.at("toVersion"), 2);
    EXPECT_EQ(NameOf(m_anna, "material", "m2"), "Red brass");
    EXPECT_EQ(Anna("compare", {"--json"}).Json().at("code"), 0);
}

TEST_F(TwoUsers, SyncPushesWhenOnlyTheDatasetChangedAndStampsItsVersion) {
    Expect(Anna("edit", {"material", "m2", "--name", "Red brass"}));
    const auto json = AnnaSyncs();
    EXPECT_EQ(json.at("result"), "pushed");
    EXPECT_EQ(json.at("toVersion"), 2);
    EXPECT_EQ(m_service.Version("tower"), 2);
    EXPECT_TRUE(Contains(m_service.Tables("tower"), "Red brass"));
    EXPECT_EQ(ChangesOf(m_anna), 0U);
    EXPECT_EQ(Anna("compare", {"--json"}).Json().at("code"), 0);
    EXPECT_FALSE(Anna("compare", {"--json"}).Json().at("lastUpdate").get<std::string>().empty());
}

TEST_F(TwoUsers, SyncMergesWhenBothChanged) {
    m_service.Apply("tower", kRenameBrass);
    Expect(Anna("edit", {"material", "m1", "--name", "Black steel"}));
    const auto json = AnnaSyncs();
    EXPECT_EQ(json.at("result"), "merged");
    EXPECT_EQ(json.at("toVersion"), 3);
    EXPECT_EQ(NameOf(m_anna, "material", "m1"), "Black steel");
    EXPECT_EQ(NameOf(m_anna, "material", "m2"), "Red brass");
    EXPECT_EQ(Anna("compare", {"--json"}).Json().at("code"), 0);
    BenSyncs();
    ExpectTheSameSettings();
}

TEST_F(TwoUsers, SyncTellsTheComparisonInPlainWords) {
    m_service.Apply("tower", kRenameBrass);
    const auto run = Anna("sync");
    EXPECT_TRUE(Contains(run.out, "Cloud version 2, local version 1: cloud ahead")) << run.out;
    EXPECT_TRUE(Contains(run.out, "Pulled; the dataset holds version 2")) << run.out;
}

TEST_F(TwoUsers, SyncWithoutAServiceTellsWhatIsMissing) {
    const std::string local = vorn::StringUtil::ToString(m_folder.File(L"local.db"));
    ASSERT_EQ(Tolm({"new", local}).code, Done);
    for (const char* command : {"sync", "merge", "push"}) {
        const auto run = Tolm({command, local});
        EXPECT_EQ(run.code, Misused);
        EXPECT_TRUE(Contains(run.err, "--server")) << run.err;
    }
}

TEST_F(TwoUsers, SyncTakesASensibleNumberOfAttemptsOnly) {
    EXPECT_EQ(Anna("sync", {"--attempts", "0"}).code, Misused);
    EXPECT_EQ(Anna("sync", {"--attempts", "many"}).code, Misused);
    EXPECT_EQ(Tolm({"sync", m_anna, "--pause", "-1"}).code, Misused);
}

TEST_F(TwoUsers, ACloudBehindTheDatasetIsAClearErrorAndNothingIsLost) {
    Expect(Anna("edit", {"material", "m2", "--name", "Red brass"}));
    SetLocalVersion(m_anna, 9);
    const auto before = Settings(m_anna);
    for (const char* command : {"sync", "merge", "push"}) {
        const auto run = Anna(command);
        EXPECT_EQ(run.code, Refused) << command;
        EXPECT_TRUE(Contains(run.err, "the cloud stands at version 1, below this dataset's 9")) << run.err;
    }
    EXPECT_EQ(Settings(m_anna), before);
    EXPECT_EQ(ChangesOf(m_anna), 1U);
    EXPECT_EQ(m_service.Version("tower"), 1);
}

/// Another program synchronised the dataset between the two halves of a comparison.
TEST_F(TwoUsers, ACloudThatSeemsBehindForAMomentIsAskedAgain) {
    Expect(Anna("edit", {"material", "m2", "--name", "Red brass"}));
    Expect(Anna("sync"));
    m_wire.Answer("/api/GetVersion/", 200, R"({"code":"10000","data":1})");
    const auto run = Anna("sync");
    EXPECT_EQ(run.code, Done) << run.err;
    EXPECT_TRUE(Contains(run.out, "the cloud moved on during the comparison")) << run.out;
    EXPECT_EQ(VersionOf(m_anna), 2);
}

TEST_F(TwoUsers, DiscardPutsACloudThatIsBehindInPlaceOfTheDatasetAndKeepsThatBesideIt) {
    Expect(Anna("edit", {"material", "m2", "--name", "Red brass"}));
    SetLocalVersion(m_anna, 9);
    EXPECT_EQ(Anna("sync").code, Refused);
    const auto before = Settings(m_anna);
    const auto run = Anna("pull", {"--discard"});
    EXPECT_EQ(run.code, Done) << run.err;
    EXPECT_EQ(VersionOf(m_anna), 1);
    EXPECT_EQ(ChangesOf(m_anna), 0U);
    ExpectTheSameSettings();
    const auto kept = vorn::StringUtil::ToString(m_folder.File(L"anna_discarded.db"));
    EXPECT_TRUE(Contains(run.out, "The dataset as it was is kept in " + kept)) << run.out;
    EXPECT_EQ(Settings(kept), before);
    EXPECT_EQ(ChangesOf(kept), 1U);
}

TEST_F(TwoUsers, ADiscardThatCannotBeDownloadedLeavesTheDatasetAndItsChanges) {
    Expect(Anna("edit", {"material", "m2", "--name", "Red brass"}));
    SetLocalVersion(m_anna, 9);
    const auto before = Settings(m_anna);
    m_wire.LoseAnswer("/api/DownloadVersion/");
    const auto run = Anna("pull", {"--discard"});
    EXPECT_NE(run.code, Done);
    EXPECT_TRUE(Contains(run.err, "the dataset is as it was")) << run.err;
    EXPECT_EQ(Settings(m_anna), before);
    EXPECT_EQ(ChangesOf(m_anna), 1U);
    EXPECT_EQ(VersionOf(m_anna), 9);
}

TEST_F(TwoUsers, AFirstSyncWithOwnSettingsKeepsThemBesideTheClouds) {
    const std::string dataset = vorn::StringUtil::ToString(m_folder.File(L"fresh.db"));
    Make(dataset, m_service.Address(), "tower", "anna");
    Expect(Tolm({"add", dataset, "material", "--kind", "plumbing-pipe", "--name", "Zinc"}));
    Expect(Tolm({"add", dataset, "material", "--kind", "plumbing-pipe", "--name", "Steel"}));
    const auto json = Synced(On(dataset, "sync", {"--json"}));
    EXPECT_EQ(json.at("result"), "merged");
    EXPECT_EQ(json.at("came").size(), 4U);
    EXPECT_EQ(json.at("went").size(), 2U);
    EXPECT_EQ(EffectOn(json.at("renamed"), "Steel(1)").at("was"), "Steel");
    AnnaSyncs();
    EXPECT_EQ(Settings(dataset), Settings(m_anna));
}

TEST_F(TwoUsers, ADatasetOfUnknownVersionIsNotLoadedOverItsChanges) {
    Expect(Anna("edit", {"material", "m2", "--name", "Red brass"}));
    SetLocalVersion(m_anna, 0);
    const auto run = Anna("sync");
    EXPECT_EQ(run.code, Refused);
    EXPECT_TRUE(Contains(run.err, "1 local changes")) << run.err;
    EXPECT_EQ(NameOf(m_anna, "material", "m2"), "Red brass");
    EXPECT_EQ(ChangesOf(m_anna), 1U);
}

TEST_F(TwoUsers, ADatasetWhoseNotedChangesCannotBeReadIsNotSynchronised) {
    Expect(Anna("edit", {"material", "m2", "--name", "Red brass"}));
    std::ofstream(vorn::StringUtil::ToString(m_folder.File(L"anna_Status.db")))
        << "these were changes once, and now it is some text that fills more than a header";
    m_service.Apply("tower", kRenameBrass);
    for (const char* command : {"sync", "merge", "push"}) {
        const auto run = Anna(command);
        EXPECT_EQ(run.code, Failed) << command;
        EXPECT_TRUE(Contains(run.err, "cannot open")) << run.err;
    }
    EXPECT_EQ(VersionOf(m_ben), 1);
    EXPECT_EQ(m_wire.Count("/api/DownloadVersion/"), 1);
}

TEST_F(EmptyProject, SyncFillsItFromTheDefaultTemplate) {
    OfferATemplate();
    const auto json = Synced(New("sync", {"--json"}));
    EXPECT_EQ(json.at("result"), "filled from the default template and pulled");
    EXPECT_EQ(json.at("toVersion"), 1);
    EXPECT_EQ(Settings(m_new), Settings(m_anna));
}

TEST_F(EmptyProject, WithoutATemplateSyncNamesTheOtherWay) {
    const auto run = New("sync");
    EXPECT_EQ(run.code, Failed);
    EXPECT_TRUE(Contains(run.err, "--from-local")) << run.err;
}

TEST_F(EmptyProject, OwnSettingsAreKeptWhenTheTemplateComes) {
    OfferATemplate();
    Expect(New("add", {"material", "--kind", "plumbing-pipe", "--name", "Zinc"}));
    const auto json = Synced(New("sync", {"--json"}));
    EXPECT_EQ(json.at("result"), "filled from the default template and merged");
    EXPECT_EQ(json.at("went").size(), 1U);
    EXPECT_TRUE(Contains(m_service.Tables("empty"), "Zinc"));
    EXPECT_TRUE(Contains(m_service.Tables("empty"), "Brass"));
}

TEST_F(EmptyProject, FromLocalMakesTheDatasetsSettingsTheProjectsFirstOnes) {
    MoveAnnaToTheEmptyProject();
    const auto refused = Anna("sync");
    EXPECT_EQ(refused.code, Refused);
    EXPECT_TRUE(Contains(refused.err, "--from-local")) << refused.err;
    const auto json = Synced(Anna("sync", {"--from-local", "--json"}));
    EXPECT_EQ(json.at("result"), "filled from this dataset");
    EXPECT_EQ(json.at("toVersion"), 1);
    EXPECT_EQ(json.at("went").size(), 4U) << json.dump(2);
    EXPECT_TRUE(json.at("came").empty()) << json.dump(2);
    EXPECT_EQ(Anna("compare", {"--json"}).Json().at("code"), 0);
    EXPECT_EQ(ChangesOf(m_anna), 0U);
    Expect(New("sync"));
    EXPECT_EQ(Settings(m_new), Settings(m_anna));
}

TEST_F(EmptyProject, FromLocalSurvivesALostAnswer) {
    MoveAnnaToTheEmptyProject();
    m_wire.LoseAnswer("/api/UpLoad/");
    const auto json = Synced(Anna("sync", {"--from-local", "--json"}));
    EXPECT_EQ(json.at("attempts"), 2);
    EXPECT_TRUE(json.at("renamed").empty()) << json.dump(2);
    EXPECT_EQ(Anna("compare", {"--json"}).Json().at("code"), 0);
    Expect(New("sync"));
    EXPECT_EQ(Settings(m_new), Settings(m_anna));
}

TEST_F(EmptyProject, FromLocalOfAnEmptyDatasetIsAClearError) {
    const auto run = New("sync", {"--from-local"});
    EXPECT_EQ(run.code, Failed);
    EXPECT_TRUE(Contains(run.err, "no settings to fill the project with")) << run.err;
    EXPECT_EQ(m_service.Version("empty"), -1);
}

TEST_F(EmptyProject, FromLocalIsAPlainSyncWhereTheProjectHasSettings) {
    const auto json = Synced(Anna("sync", {"--from-local", "--json"}));
    EXPECT_EQ(json.at("result"), "up to date");
}

TEST_F(EmptyProject, PushAndMergeAreRefused) {
    for (const char* command : {"push", "merge"}) {
        const auto run = New(command);
        EXPECT_EQ(run.code, Refused);
        EXPECT_TRUE(Contains(run.err, "tolm sync")) << run.err;
    }
}
