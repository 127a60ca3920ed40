#include "Tools/TwoUsers.h"

using namespace tolmtest;

TEST_F(TwoUsers, ASettingThatBothEditedIsTheCloudsAndTheLoserIsTold) {
    Expect(Ben("edit", {"material", "m1", "--name", "Ben's steel"}));
    Expect(Anna("edit", {"material", "m1", "--name", "Anna's steel"}));
    BenSyncs();
    const auto run = Anna("sync");
    Expect(run);
    EXPECT_TRUE(Contains(run.out,
                         "Overridden: others changed the same, the cloud's state stands and your change is "
                         "dropped:\n  material Ben's steel (plumbing-pipe): you edited it, the cloud changed it"))
        << run.out;
    EXPECT_EQ(NameOf(m_anna, "material", "m1"), "Ben's steel");
    ExpectTheSameSettings();
}

TEST_F(TwoUsers, ASettingThatBothAddedUnderOneNameIsRenamed) {
    Expect(Ben("add", {"material", "--kind", "plumbing-pipe", "--name", "Zinc"}));
    Expect(Anna("add", {"material", "--kind", "plumbing-pipe", "--name", "Zinc"}));
    BenSyncs();
    const auto run = Anna("sync");
    Expect(run);
    EXPECT_TRUE(Contains(run.out, "Came from the cloud:\n  new     material Zinc (plumbing-pipe)")) << run.out;
    EXPECT_TRUE(Contains(run.out, "Went to the cloud:\n  created material Zinc(1) (plumbing-pipe)")) << run.out;
    EXPECT_TRUE(Contains(run.out, "Renamed, since the cloud has another one of that name:\n"
                                  "  material Zinc (plumbing-pipe) is now Zinc(1)"))
        << run.out;
    BenSyncs();
    ExpectTheSameSettings();
}

TEST_F(TwoUsers, AnEditedSettingThatIsRenamedWentUpAllTheSame) {
    Expect(Ben("add", {"material", "--kind", "plumbing-pipe", "--name", "Zinc"}));
    Expect(Anna("edit", {"material", "m1", "--name", "Zinc"}));
    BenSyncs();
    const auto json = AnnaSyncs();
    EXPECT_TRUE(json.at("overridden").empty()) << json.dump(2);
    EXPECT_EQ(EffectOn(json.at("went"), "Zinc(1)").at("change"), "edited");
    EXPECT_EQ(EffectOn(json.at("renamed"), "Zinc(1)").at("was"), "Zinc");
    BenSyncs();
    ExpectTheSameSettings();
}

TEST_F(TwoUsers, ASettingThatOneRemovedAndTheOtherEditedIsBack) {
    Expect(Ben("edit", {"size", "s2", "--roughness", "0.02"}));
    Expect(Anna("delete", {"size", "s2"}));
    BenSyncs();
    const auto json = AnnaSyncs();
    const auto effect = EffectOn(json.at("overridden"), "Brass pipe");
    EXPECT_EQ(effect.at("change"), "removed") << json.dump(2);
    EXPECT_EQ(effect.at("cloud"), "changed");
    EXPECT_EQ(effect.at("what"), "size table");
    ExpectTheSameSettings();
}

TEST_F(TwoUsers, ASettingThatOneEditedAndTheOtherRemovedIsGone) {
    Expect(Ben("delete", {"size", "s2"}));
    Expect(Anna("edit", {"size", "s2", "--roughness", "0.02"}));
    BenSyncs();
    const auto json = AnnaSyncs();
    const auto effect = EffectOn(json.at("overridden"), "Brass pipe");
    EXPECT_EQ(effect.at("change"), "edited") << json.dump(2);
    EXPECT_EQ(effect.at("cloud"), "removed");
    ExpectTheSameSettings();
}

TEST_F(TwoUsers, ASettingThatBothRemovedIsNoConflict) {
    Expect(Ben("delete", {"size", "s2"}));
    Expect(Anna("delete", {"size", "s2"}));
    BenSyncs();
    const auto json = AnnaSyncs();
    EXPECT_TRUE(json.at("overridden").empty()) << json.dump(2);
    EXPECT_TRUE(json.at("came").empty()) << json.dump(2);
    ExpectTheSameSettings();
}

TEST_F(TwoUsers, WhatCameIsToldByNewChangedAndGone) {
    Expect(Ben("add", {"size", "--kind", "conduit", "--name", "Spiral", "--row", "20,20,17.5"}));
    Expect(Ben("edit", {"size", "s1", "--roughness", "0.2"}));
    Expect(Ben("delete", {"size", "s2"}));
    BenSyncs();
    const auto json = AnnaSyncs();
    EXPECT_EQ(json.at("came").size(), 3U) << json.dump(2);
    EXPECT_EQ(EffectOn(json.at("came"), "Spiral").at("change"), "new");
    EXPECT_EQ(EffectOn(json.at("came"), "Spiral").at("kind"), "conduit");
    EXPECT_EQ(EffectOn(json.at("came"), "Steel pipe").at("change"), "changed");
    EXPECT_EQ(EffectOn(json.at("came"), "Brass pipe").at("change"), "gone");
    ExpectTheSameSettings();
}

TEST_F(TwoUsers, WhatWentIsToldByCreatedEditedAndRemoved) {
    Expect(Anna("add", {"material", "--kind", "hvac-pipe", "--name", "Zinc"}));
    Expect(Anna("edit", {"size", "s1", "--roughness", "0.2"}));
    Expect(Anna("delete", {"size", "s2"}));
    const auto run = Anna("sync");
    Expect(run);
    EXPECT_TRUE(Contains(run.out, "created material Zinc (hvac-pipe)")) << run.out;
    EXPECT_TRUE(Contains(run.out, "edited  size table Steel pipe (plumbing-pipe)")) << run.out;
    EXPECT_TRUE(Contains(run.out, "removed size table s2 (plumbing-pipe)")) << run.out;
    BenSyncs();
    ExpectTheSameSettings();
}

TEST_F(TwoUsers, ALongListIsToldInNumbersAndWholeInJson) {
    std::string rows;
    for (int i = 0; i < 30; ++i)
        rows += (i == 0 ? "" : ",") + std::string(R"({"ID": "x)") + std::to_string(i) + R"(", "text": "Alloy )" +
                std::to_string(i) + R"(", "groupName": "MaterialSeries", "parentID": "", "content": {}})";
    const std::string change =
        R"({"format": "tolm-change", "formatVersion": 1, "add": {"ConfigTree": [)" + rows + "]}}";
    m_service.Apply("tower", change);
    const auto run = Anna("sync");
    Expect(run);
    EXPECT_TRUE(Contains(run.out, "Came from the cloud:\n  new: 30 materials\n")) << run.out;
    EXPECT_EQ(BenSyncs().at("came").size(), 30U);
}

TEST_F(TwoUsers, NamesInTheSummaryCannotRewriteTheTerminal) {
    Expect(Ben("add", {"material", "--kind", "plumbing-pipe", "--name", "evil\x1b[2Jname"}));
    BenSyncs();
    EXPECT_FALSE(Contains(Anna("sync").out, "\x1b"));
}
