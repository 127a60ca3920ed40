#include "UploadTesting.h"

namespace tolmtest {
namespace {

class Crossing : public UploadWire {
protected:
    Crossing() { Fill({{"PipeType", {Series("s", "S")}}}); }

    static json Change(int version, const std::string& name) { return Creation(version, Series("own " + name, name)); }
};

TEST_F(Crossing, AnUploadAtThePatchsOwnVersionIsTakenWithoutAnyQuery) {
    EXPECT_EQ(Upload(Change(1, "A")), 2);
}

TEST_F(Crossing, AnUploadAtTheVersionThatWasToldLastIsTakenWhateverThePatchSays) {
    SomebodyElseMakesAVersion();
    EXPECT_EQ(GetVersion(), 2);
    EXPECT_EQ(Upload(Change(1, "A")), 3);
}

TEST_F(Crossing, AnUploadAtNeitherIsRefusedAndChangesNothing) {
    EXPECT_EQ(GetVersion(), 1);
    SomebodyElseMakesAVersion();
    const auto before = Tables();
    EXPECT_EQ(UploadCode(Change(1, "A")), "200100");
    EXPECT_EQ(Version(), 2);
    EXPECT_EQ(Tables(), before);
}

TEST_F(Crossing, AnUploadIsTakenAfterTheQueryThatFollowsTheRefusal) {
    SomebodyElseMakesAVersion();
    EXPECT_EQ(UploadCode(Change(1, "A")), "200100");
    EXPECT_EQ(GetVersion(), 2);
    EXPECT_EQ(Upload(Change(1, "A")), 3);
}

TEST_F(Crossing, APatchOfAVersionThatIsYetToComeOrNeverWasIsRefused) {
    EXPECT_EQ(UploadCode(Change(2, "A")), "40903");
    EXPECT_EQ(UploadCode(Change(-1, "A")), "200100");
}

TEST_F(Crossing, ThatThePatchAltersNothingDoesNotHelpIt) {
    SomebodyElseMakesAVersion();
    EXPECT_EQ(UploadCode(EmptyPatch(1)), "200100");
}

TEST_F(Crossing, WhatOneTokenWasToldDoesNotCountForAnother) {
    const auto other = Service().SignIn();
    SomebodyElseMakesAVersion();
    EXPECT_EQ(GetVersion(), 2);
    EXPECT_EQ(UploadCode(Change(1, "A"), other), "200100") << "of the same user";
    EXPECT_EQ(UploadCode(Change(1, "A")), "10000");
}

TEST_F(Crossing, WhatWasToldOfOneProjectDoesNotCountForAnother) {
    Service().FillTables("q", "{}");
    Call("/api/GetVersion/q", json());
    SomebodyElseMakesAVersion();
    EXPECT_EQ(Done("/api/UpLoad/q", EmptyPatch(0)), 1);
    EXPECT_EQ(UploadCode(Change(0, "A")), "200100");
}

TEST_F(Crossing, OfTwoUploadsFromOneVersionTheSecondIsRefused) {
    const auto other = Service().SignIn();
    EXPECT_EQ(GetVersion(), 1);
    EXPECT_EQ(GetVersion(other), 1);
    EXPECT_EQ(UploadCode(Change(1, "A")), "10000");
    EXPECT_EQ(UploadCode(Change(1, "B"), other), "200100");
    EXPECT_EQ(GetVersion(other), 2);
    EXPECT_EQ(UploadCode(Change(1, "B"), other), "10000");
}

TEST_F(Crossing, TheFirstQueryAfterAnUploadTellsItsVersionWhateverCameAfter) {
    EXPECT_EQ(Upload(Change(1, "A")), 2);
    SomebodyElseMakesAVersion();
    SomebodyElseMakesAVersion();
    EXPECT_EQ(GetVersion(), 2);
    EXPECT_EQ(GetVersion(), 4) << "the next one tells the project's";
}

TEST_F(Crossing, TheVersionToldAfterAnUploadIsNotTheProjectsAndDoesNotCountAsIt) {
    EXPECT_EQ(Upload(Change(1, "A")), 2);
    SomebodyElseMakesAVersion();
    EXPECT_EQ(GetVersion(), 2);
    EXPECT_EQ(UploadCode(Change(2, "B")), "200100");
}

TEST_F(Crossing, OnlyTheSendersQueryTellsTheUploadsVersion) {
    const auto other = Service().SignIn();
    EXPECT_EQ(Upload(Change(1, "A")), 2);
    SomebodyElseMakesAVersion();
    EXPECT_EQ(GetVersion(other), 3);
    EXPECT_EQ(GetVersion(), 2);
}

TEST_F(Crossing, ARefusedUploadLeavesTheNextAnswerAsItWas) {
    SomebodyElseMakesAVersion();
    EXPECT_EQ(UploadCode(Change(1, "A")), "200100");
    SomebodyElseMakesAVersion();
    EXPECT_EQ(GetVersion(), 3);
}

TEST_F(Crossing, AnUploadThatAltersNothingIsToldItsVersionTooWhateverCameAfter) {
    EXPECT_EQ(Upload(Creation(1, Series("s", "S"))), 1);
    SomebodyElseMakesAVersion();
    EXPECT_EQ(GetVersion(), 1);
    EXPECT_EQ(GetVersion(), 2);
}

TEST_F(Crossing, TheVersionToldAndTheUploadsVersionOutliveARestart) {
    SomebodyElseMakesAVersion();
    EXPECT_EQ(GetVersion(), 2);
    Service().Restart();
    EXPECT_EQ(Upload(Change(1, "A")), 3) << "the told version was kept";
    SomebodyElseMakesAVersion();
    Service().Restart();
    EXPECT_EQ(GetVersion(), 3) << "the upload's version was kept";
    EXPECT_EQ(GetVersion(), 4);
}

TEST_F(Crossing, WhatAnExpiredTokenWasToldIsForgotten) {
    SomebodyElseMakesAVersion();
    GetVersion();
    Upload(Change(1, "A"));
    Service().PassSeconds(8 * 3600 + 1);
    const auto fresh = Service().SignIn();
    SomebodyElseMakesAVersion();
    EXPECT_EQ(UploadCode(Change(1, "B"), fresh), "200100");
    EXPECT_EQ(GetVersion(fresh), 4);
}

// A client whose answer was lost.

TEST_F(Crossing, TheSamePatchOnceMoreIsAnsweredAlikeAndHasOneEffect) {
    EXPECT_EQ(Upload(Change(1, "A")), 2);
    EXPECT_EQ(Upload(Change(1, "A")), 2);
    EXPECT_EQ(Version(), 2);
    EXPECT_EQ(GetVersion(), 2);
}

TEST_F(Crossing, TheSamePatchOnceMoreUndoesNothingThatCameAfterIt) {
    EXPECT_EQ(Upload(Change(1, "A")), 2);
    Service().Apply("p", R"({"format":"tolm-change","formatVersion":1,"remove":{"PipeType":["own A"]}})");
    EXPECT_EQ(Upload(Change(1, "A")), 2);
    EXPECT_EQ(Version(), 3);
    EXPECT_FALSE(Increment(0)["add"]["PipeType"].dump().find("own A") != std::string::npos);
    EXPECT_EQ(GetVersion(), 2) << "so that the removal comes down";
}

TEST_F(Crossing, TheSamePatchOnceMoreOutlivesARestart) {
    EXPECT_EQ(Upload(Change(1, "A")), 2);
    Service().Restart();
    EXPECT_EQ(Upload(Change(1, "A")), 2);
}

TEST_F(Crossing, TheSamePatchFromAnotherTokenIsAnotherUpload) {
    EXPECT_EQ(Upload(Change(1, "A")), 2);
    EXPECT_EQ(UploadCode(Change(1, "A"), Service().SignIn()), "200100");
}

/// Its sender may have taken back something that the first patch brought, and has to hear of it.
TEST_F(Crossing, AnotherPatchBeforeTheQueryIsRefused) {
    EXPECT_EQ(Upload(Change(1, "A")), 2);
    EXPECT_EQ(UploadCode(Change(1, "B")), "200100");
    EXPECT_EQ(GetVersion(), 2);
    EXPECT_EQ(Upload(Change(1, "B")), 3);
}

TEST_F(Crossing, AClientThatComparesAndMergesAfterALostAnswerEndsWithOneEffect) {
    EXPECT_EQ(Upload(Change(1, "A")), 2);
    EXPECT_EQ(GetVersion(), 2) << "it compares";
    EXPECT_EQ(Increment(1)["add"]["PipeType"], json::array({Series("own A", "A")})) << "it merges";
    EXPECT_EQ(GetVersion(), 2) << "the cloud stood still";
    EXPECT_EQ(Upload(Change(1, "A")), 2) << "it sends again what it still holds for new";
    EXPECT_EQ(GetVersion(), 2);
    EXPECT_EQ(Version(), 2);
}

TEST_F(Crossing, AClientThatMergesAfterALostAnswerTakesInWhatCameAfter) {
    EXPECT_EQ(Upload(Change(1, "A")), 2);
    SomebodyElseMakesAVersion();
    EXPECT_EQ(GetVersion(), 2) << "it compares";
    EXPECT_EQ(GetVersion(), 3) << "it has merged and finds that the cloud moved";
    EXPECT_EQ(Upload(Change(1, "A")), 3) << "after one merge more";
    EXPECT_EQ(Version(), 3);
}

} // namespace
} // namespace tolmtest
