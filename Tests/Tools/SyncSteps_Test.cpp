#include "Tools/TwoUsers.h"

using namespace tolmtest;
using tolmcli::Done;
using tolmcli::Failed;
using tolmcli::Refused;

TEST_F(TwoUsers, PushSendsTheChanges) {
    Expect(Anna("add", {"material", "--kind", "plumbing-pipe", "--name", "Zinc"}));
    const auto run = Anna("push");
    EXPECT_EQ(run.code, Done) << run.err;
    EXPECT_TRUE(Contains(run.out, "created material Zinc (plumbing-pipe)")) << run.out;
    EXPECT_TRUE(Contains(run.out, "Pushed; the dataset holds version 2")) << run.out;
    EXPECT_TRUE(Contains(m_service.Tables("tower"), "Zinc"));
}

TEST_F(TwoUsers, PushWithoutChangesIsUpToDate) {
    const auto run = Anna("push");
    EXPECT_EQ(run.code, Done);
    EXPECT_TRUE(Contains(run.out, "Up to date")) << run.out;
    EXPECT_EQ(m_wire.Count("/api/UpLoad/"), 0);
}

TEST_F(TwoUsers, PushIsRefusedWhenTheCloudMovedOn) {
    m_service.Apply("tower", kRenameBrass);
    const auto withoutChanges = Anna("push");
    EXPECT_EQ(withoutChanges.code, Refused);
    EXPECT_TRUE(Contains(withoutChanges.err, "tolm sync")) << withoutChanges.err;
    Expect(Anna("edit", {"material", "m1", "--name", "Black steel"}));
    EXPECT_EQ(Anna("push").code, Refused);
    EXPECT_EQ(m_wire.Count("/api/UpLoad/"), 0);
    EXPECT_EQ(ChangesOf(m_anna), 1U);
}

TEST_F(TwoUsers, PushThatIsCrossedIsTriedOnceOnly) {
    Expect(Anna("edit", {"material", "m1", "--name", "Black steel"}));
    m_wire.Before("/api/UpLoad/", [&] { m_service.Apply("tower", kRenameBrass); });
    const auto run = Anna("push");
    EXPECT_EQ(run.code, Failed);
    EXPECT_TRUE(Contains(run.err, "somebody else was sending changes")) << run.err;
    EXPECT_EQ(m_wire.Count("/api/UpLoad/"), 1);
    EXPECT_EQ(ChangesOf(m_anna), 1U);
}

TEST_F(TwoUsers, MergeBringsBothSidesTogether) {
    m_service.Apply("tower", kRenameBrass);
    Expect(Anna("edit", {"material", "m1", "--name", "Black steel"}));
    const auto run = Anna("merge");
    EXPECT_EQ(run.code, Done) << run.err;
    EXPECT_TRUE(Contains(run.out, "Merged; the dataset holds version 3")) << run.out;
}

TEST_F(TwoUsers, MergeWithoutTwoSidesTellsWhatStands) {
    const auto same = Anna("merge", {"--json"});
    EXPECT_EQ(same.Json().at("result"), "nothing to merge: up to date");
    Expect(Ben("edit", {"material", "m1", "--name", "Black steel"}));
    EXPECT_EQ(Ben("merge", {"--json"}).Json().at("result"), "nothing to merge: local changes");
    m_service.Apply("tower", kRenameBrass);
    EXPECT_EQ(Anna("merge", {"--json"}).Json().at("result"), "nothing to merge: cloud ahead");
    EXPECT_EQ(VersionOf(m_anna), 1);
    EXPECT_EQ(ChangesOf(m_ben), 1U);
}
