#include "Tools/TwoUsers.h"

using namespace tolmtest;
using tolmcli::Done;
using tolmcli::Failed;
using tolmcli::Refused;

namespace {

constexpr const char* kCrossed = R"({"code": "200100", "data": null})";

} // namespace

TEST_F(TwoUsers, ACrossedUploadIsComparedAnewAndMerged) {
    Expect(Anna("edit", {"material", "m1", "--name", "Black steel"}));
    m_wire.Before("/api/UpLoad/", [&] { m_service.Apply("tower", kRenameBrass); });
    const auto json = AnnaSyncs();
    EXPECT_EQ(json.at("result"), "merged");
    EXPECT_EQ(json.at("attempts"), 2);
    EXPECT_EQ(json.at("toVersion"), 3);
    BenSyncs();
    ExpectTheSameSettings();
}

TEST_F(TwoUsers, AMergeWhoseUploadIsCrossedIsMergedAnew) {
    m_service.Apply("tower", kRenameBrass);
    Expect(Anna("add", {"material", "--kind", "plumbing-pipe", "--name", "Zinc"}));
    m_wire.Before("/api/UpLoad/", [&] {
        m_service.Apply("tower", R"({"format": "tolm-change", "formatVersion": 1, "add": {"ConfigTree": [
            {"ID": "m3", "text": "Zinc", "groupName": "MaterialSeries", "parentID": "", "content": {}}]}})");
    });
    const auto json = AnnaSyncs();
    EXPECT_EQ(json.at("attempts"), 2);
    EXPECT_EQ(json.at("toVersion"), 4);
    EXPECT_EQ(EffectOn(json.at("renamed"), "Zinc(1)").at("was"), "Zinc");
    BenSyncs();
    ExpectTheSameSettings();
}

TEST_F(TwoUsers, EveryRetryIsTold) {
    Expect(Anna("edit", {"material", "m1", "--name", "Black steel"}));
    m_wire.Answer("/api/UpLoad/", 200, kCrossed);
    const auto run = Anna("sync");
    EXPECT_EQ(run.code, Done) << run.err;
    EXPECT_TRUE(Contains(run.out, "Not yet: nothing was sent: somebody else was sending changes")) << run.out;
    EXPECT_TRUE(Contains(run.out, "Trying again in 0.0 s")) << run.out;
}

TEST_F(TwoUsers, SyncGivesUpAfterItsAttemptsAndKeepsTheChanges) {
    Expect(Anna("edit", {"material", "m1", "--name", "Black steel"}));
    for (int i = 0; i < 3; ++i)
        m_wire.Answer("/api/UpLoad/", 200, kCrossed);
    const auto run = Anna("sync", {"--attempts", "3"});
    EXPECT_EQ(run.code, Failed);
    EXPECT_TRUE(Contains(run.err, "given up after 3 attempts; your changes are kept")) << run.err;
    EXPECT_EQ(m_wire.Count("/api/UpLoad/"), 3);
    EXPECT_EQ(ChangesOf(m_anna), 1U);
    EXPECT_EQ(AnnaSyncs().at("result"), "pushed");
}

TEST_F(TwoUsers, AChangeWhoseUploadsAnswerWasLostIsNoConflictWithItself) {
    Expect(Anna("edit", {"size", "s1", "--row", "25,33.7,27.3,3.2", "--roughness", "0.04567"}));
    Expect(Anna("add", {"material", "--kind", "plumbing-pipe", "--name", "Zinc"}));
    m_wire.LoseAnswer("/api/UpLoad/");
    const auto json = AnnaSyncs();
    EXPECT_EQ(json.at("attempts"), 2);
    EXPECT_EQ(json.at("went").size(), 2U) << json.dump(2);
    EXPECT_TRUE(json.at("overridden").empty()) << json.dump(2);
    EXPECT_TRUE(json.at("renamed").empty()) << json.dump(2);
    EXPECT_EQ(ChangesOf(m_anna), 0U);
    BenSyncs();
    ExpectTheSameSettings();
}

TEST_F(TwoUsers, AVersionThatIsLostBehindAnUploadIsPulled) {
    Expect(Anna("edit", {"material", "m1", "--name", "Black steel"}));
    m_wire.Before("/api/UpLoad/", [&] { m_wire.LoseAnswer("/api/GetVersion/"); });
    const auto json = AnnaSyncs();
    EXPECT_EQ(json.at("attempts"), 2);
    EXPECT_EQ(json.at("result"), "pulled");
    EXPECT_EQ(json.at("went").size(), 1U);
    EXPECT_TRUE(json.at("came").empty()) << json.dump(2);
    EXPECT_EQ(VersionOf(m_anna), 2);
    EXPECT_EQ(Anna("compare", {"--json"}).Json().at("code"), 0);
}

TEST_F(TwoUsers, AServiceThatFailsForAMomentIsAskedAgain) {
    Expect(Anna("edit", {"material", "m1", "--name", "Black steel"}));
    m_wire.Answer("/api/GetVersion/", 500, R"({"code": "50000", "data": null})");
    m_wire.Answer("/api/UpLoad/", 503, R"({"code": "50000", "data": null})");
    const auto json = AnnaSyncs();
    EXPECT_EQ(json.at("attempts"), 3);
    EXPECT_EQ(json.at("result"), "pushed");
}

TEST_F(TwoUsers, APullThatBreaksOffIsTriedAgain) {
    m_service.Apply("tower", kRenameBrass);
    m_wire.LoseAnswer("/api/DownloadVersion/");
    const auto json = AnnaSyncs();
    EXPECT_EQ(json.at("attempts"), 2);
    EXPECT_EQ(NameOf(m_anna, "material", "m2"), "Red brass");
}

TEST_F(TwoUsers, ACloudThatMovesWhileAllChangesLoseIsFollowed) {
    m_service.Apply("tower", kRenameSteel);
    Expect(Anna("edit", {"material", "m1", "--name", "Black steel"}));
    m_wire.Before("/api/GetVersion/", [] {});
    m_wire.Before("/api/GetVersion/", [&] { m_service.Apply("tower", kRenameBrass); });
    const auto json = AnnaSyncs();
    EXPECT_EQ(json.at("toVersion"), 3);
    EXPECT_EQ(EffectOn(json.at("overridden"), "Their steel").at("cloud"), "changed");
    EXPECT_EQ(EffectOn(json.at("came"), "Red brass").at("change"), "changed");
    EXPECT_EQ(m_wire.Count("/api/UpLoad/"), 0);
    BenSyncs();
    ExpectTheSameSettings();
}

TEST_F(TwoUsers, ANameThatStandsTwiceEndsWithAClearMessage) {
    Expect(Anna("add", {"material", "--kind", "plumbing-pipe", "--name", "Zinc"}));
    const auto added = Anna("add", {"material", "--kind", "plumbing-pipe", "--name", "Lead", "--json"}).Json();
    CQbase store;
    ASSERT_TRUE(store.openDatabase(tolm::DataSetFilePath::TOLMDDQFilePath, m_folder.File(L"anna.db"), false));
    ASSERT_TRUE(store.lockForUpdate());
    ASSERT_TRUE(store.fetchEqualRec("MTS", vorn::StringUtil::ToWString(added.at("id").get<std::string>())));
    ASSERT_TRUE(store.setWsz(1601, L"Zinc", -1) && store.saveRec() && store.closeDatabase());
    const auto run = Anna("sync");
    EXPECT_EQ(run.code, Refused);
    EXPECT_TRUE(Contains(run.err, "two settings bear the same name")) << run.err;
    EXPECT_TRUE(Contains(run.err, "material Zinc (")) << run.err;
    EXPECT_EQ(m_wire.Count("/api/UpLoad/"), 1);
    EXPECT_EQ(ChangesOf(m_anna), 2U);
    EXPECT_EQ(m_service.Version("tower"), 1);
}

TEST_F(TwoUsers, ChangesThatTheServiceDoesNotTakeAreNotSentAgain) {
    Expect(Anna("edit", {"material", "m1", "--name", "Black steel"}));
    m_wire.Answer("/api/UpLoad/", 200, R"({"code": "40002", "data": null})");
    const auto run = Anna("sync");
    EXPECT_EQ(run.code, Failed);
    EXPECT_TRUE(Contains(run.err, "does not take these changes. Your changes are kept.")) << run.err;
    EXPECT_EQ(m_wire.Count("/api/UpLoad/"), 1);
    EXPECT_EQ(ChangesOf(m_anna), 1U);
}

TEST_F(TwoUsers, WhatAMergeBroughtIsToldAlsoWhenTheUploadFails) {
    m_service.Apply("tower", kRenameBrass);
    Expect(Anna("edit", {"material", "m1", "--name", "Black steel"}));
    m_wire.Answer("/api/UpLoad/", 200, kCrossed);
    const auto run = Anna("sync", {"--attempts", "1"});
    EXPECT_EQ(run.code, Failed);
    EXPECT_TRUE(Contains(run.out, "changed material Red brass")) << run.out;
    EXPECT_TRUE(Contains(run.out, "Still to be sent:\n  edited  material Black steel")) << run.out;
    EXPECT_TRUE(Contains(run.out, "Not finished")) << run.out;
    EXPECT_EQ(AnnaSyncs().at("result"), "merged");
    BenSyncs();
    ExpectTheSameSettings();
}

TEST_F(TwoUsers, AFirstMergeWhoseUploadIsCrossedKeepsNothingThatOthersRemove) {
    const std::string dataset = vorn::StringUtil::ToString(m_folder.File(L"fresh.db"));
    Make(dataset, m_wire.Address(), "tower", "anna");
    Expect(Tolm({"add", dataset, "material", "--kind", "plumbing-pipe", "--name", "Zinc"}));
    m_wire.Before("/api/UpLoad/", [&] {
        m_service.Apply("tower", R"({"format": "tolm-change", "formatVersion": 1,
                                     "remove": {"ConfigTree": ["s2"]}})");
    });
    const auto json = Synced(On(dataset, "sync", {"--json"}));
    EXPECT_EQ(json.at("attempts"), 2);
    EXPECT_EQ(NameOf(dataset, "size", "s2"), "-");
    BenSyncs();
    EXPECT_EQ(Settings(dataset), Settings(m_ben));
}

TEST_F(TwoUsers, AFirstMergeBehindWhichTheVersionIsLostIsGoneOnWith) {
    const std::string dataset = vorn::StringUtil::ToString(m_folder.File(L"fresh.db"));
    Make(dataset, m_wire.Address(), "tower", "anna");
    Expect(Tolm({"add", dataset, "material", "--kind", "plumbing-pipe", "--name", "Zinc"}));
    m_wire.Before("/api/DownloadVersion/", [&] { m_wire.LoseAnswer("/api/GetVersion/"); });
    const auto json = Synced(On(dataset, "sync", {"--json"}));
    EXPECT_EQ(json.at("attempts"), 2);
    EXPECT_EQ(json.at("result"), "pushed");
    BenSyncs();
    EXPECT_EQ(Settings(dataset), Settings(m_ben));
}

TEST_F(TwoUsers, AMergeThatFailsSaysHowFarItCame) {
    m_service.Apply("tower", kRenameBrass);
    Expect(Anna("edit", {"material", "m1", "--name", "Black steel"}));
    m_wire.LoseAnswer("/api/DownloadVersion/");
    EXPECT_TRUE(Contains(Anna("sync", {"--attempts", "1"}).err, "nothing was merged"));
    m_wire.Before("/api/DownloadVersion/", [&] { m_wire.LoseAnswer("/api/GetVersion/"); });
    EXPECT_TRUE(Contains(Anna("sync", {"--attempts", "1"}).err, "merged, but the service did not tell its version"));
    m_wire.Answer("/api/UpLoad/", 200, kCrossed);
    EXPECT_TRUE(Contains(Anna("sync", {"--attempts", "1"}).err, "merged, but nothing was sent: somebody else"));
    m_wire.Before("/api/UpLoad/", [&] { m_wire.LoseAnswer("/api/GetVersion/"); });
    EXPECT_TRUE(Contains(Anna("sync", {"--attempts", "1"}).err, "merged and sent, but the new version could not be"));
    EXPECT_EQ(ChangesOf(m_anna), 0U);
    EXPECT_EQ(AnnaSyncs().at("result"), "pulled");
    BenSyncs();
    ExpectTheSameSettings();
}
