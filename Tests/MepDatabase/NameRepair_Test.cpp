#include "MepDatabase/StoreSchema.h"
#include "StoreSupport/IngestFixture.h"

namespace tolmtest {
namespace {

namespace schema = tolm::schema;

class NameRepair : public IngestFixture {
protected:
    void Make(const wstring& id, const wstring& name, short mepType = 1, short disciplineId = 2) {
        MakeRecord("PSI", id, name, mepType, disciplineId);
    }
    bool Repair(const Texts& cloudAdded, const Texts& cloudModified, const Texts& localCreated,
                const Texts& localEdited, bool reportMissing = true) {
        return util.FindAndRenameDuplicatedItems(cloudAdded, cloudModified, localCreated, localEdited, &qb, "PSI", 1, 2,
                                                 reportMissing);
    }
    wstring Name(const wstring& id) { return Text("PSI", id, schema::kName).value_or(L"<none>"); }
};

TEST_F(NameRepair, NoStoreIsReported) {
    EXPECT_FALSE(util.FindAndRenameDuplicatedItems({L"c"}, {}, {L"l"}, {}, nullptr, "PSI", 1, 2, true));
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::FindAndRenameDuplicatedItems: qb 为空"}));
}

TEST_F(NameRepair, NoClassIsReported) {
    EXPECT_FALSE(util.FindAndRenameDuplicatedItems({L"c"}, {}, {L"l"}, {}, &qb, nullptr, 1, 2, true));
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              (Warnings{L"MepQbaseUtil::FindAndRenameDuplicatedItems: qpdClassId 为空"}));
}

TEST_F(NameRepair, WithoutBothSidesNothingIsRenamed) {
    Make(L"c", L"A");
    Make(L"l", L"A");
    EXPECT_FALSE(Repair({}, {}, {L"l"}, {L"missing"}));
    EXPECT_FALSE(Repair({L"c"}, {L"missing"}, {}, {}));
    EXPECT_EQ(Name(L"l"), L"A");
}

TEST_F(NameRepair, ALocalRecordGivesWayToTheCloudsName) {
    Make(L"c", L"A");
    Make(L"l", L"A");
    EXPECT_TRUE(Repair({L"c"}, {}, {L"l"}, {}));
    EXPECT_EQ(Name(L"c"), L"A");
    EXPECT_EQ(Name(L"l"), L"A(1)");
}

TEST_F(NameRepair, AddedAndModifiedMeetCreatedAndEdited) {
    Make(L"c1", L"A");
    Make(L"c2", L"B");
    Make(L"l1", L"B");
    Make(L"l2", L"A");
    EXPECT_TRUE(Repair({L"c1"}, {L"c2"}, {L"l1"}, {L"l2"}));
    EXPECT_EQ(Name(L"l1"), L"B(1)");
    EXPECT_EQ(Name(L"l2"), L"A(1)");
}

TEST_F(NameRepair, TakenNumbersAreSteppedOver) {
    Make(L"c", L"A");
    Make(L"x", L"A(1)");
    Make(L"y", L"A(2)");
    Make(L"l", L"A");
    EXPECT_TRUE(Repair({L"c"}, {}, {L"l"}, {}));
    EXPECT_EQ(Name(L"l"), L"A(3)");
}

TEST_F(NameRepair, TheNumberIsAppendedToTheOldName) {
    Make(L"c", L"A(1)");
    Make(L"x", L"A(1)(1)");
    Make(L"l", L"A(1)");
    EXPECT_TRUE(Repair({L"c"}, {}, {L"l"}, {}));
    EXPECT_EQ(Name(L"l"), L"A(1)(2)");
}

TEST_F(NameRepair, ANameOfAnotherTypeOrDisciplineIsFree) {
    Make(L"c", L"A");
    Make(L"x", L"A(1)", 2, 2);
    Make(L"y", L"A(1)", 1, 1);
    MakeRecord("MTS", L"z", L"A(1)", 1, 2);
    Make(L"l", L"A");
    EXPECT_TRUE(Repair({L"c"}, {}, {L"l"}, {}));
    EXPECT_EQ(Name(L"l"), L"A(1)");
}

TEST_F(NameRepair, ACloudRecordOfAnotherDisciplineIsComparedAllTheSame) {
    Make(L"c", L"A", 1, 1);
    Make(L"l", L"A");
    EXPECT_TRUE(Repair({L"c"}, {}, {L"l"}, {}));
    EXPECT_EQ(Name(L"l"), L"A(1)");
}

TEST_F(NameRepair, NamesAreComparedExactly) {
    Make(L"c", L"Steel");
    Make(L"l1", L"steel");
    Make(L"l2", L"Steel ");
    EXPECT_FALSE(Repair({L"c"}, {}, {L"l1", L"l2"}, {}));
    EXPECT_EQ(Name(L"l1"), L"steel");
}

TEST_F(NameRepair, UntouchedRecordsAreNotRenamed) {
    Make(L"c", L"A");
    Make(L"x", L"A");
    Make(L"l", L"B");
    EXPECT_FALSE(Repair({L"c"}, {}, {L"l"}, {}));
    EXPECT_EQ(Name(L"x"), L"A");
}

TEST_F(NameRepair, TwoLocalRecordsOfOneNameTheFirstIsRenamedAndTheSecondReported) {
    Make(L"c", L"A");
    Make(L"z", L"A");
    Make(L"a", L"A");
    EXPECT_TRUE(Repair({L"c"}, {}, {L"z"}, {L"a"}));
    EXPECT_EQ(Name(L"z"), L"A(1)");
    EXPECT_EQ(Name(L"a"), L"A");
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              (Warnings{L"MepQbaseUtil::FindAndRenameDuplicatedItems: 本地修改的存在重名的条目: aA"}));
}

TEST_F(NameRepair, TwoCloudRecordsOfOneNameAreReportedAndNotRepaired) {
    Make(L"c1", L"A");
    Make(L"c2", L"A");
    Make(L"l", L"B");
    EXPECT_FALSE(Repair({L"c1"}, {L"c2"}, {L"l"}, {}));
    EXPECT_EQ(Name(L"c2"), L"A");
    EXPECT_EQ(TakeDebugWarnings(), (Warnings{L"云端下载的存在重名的条目: c2A"}));
}

TEST_F(NameRepair, MissingRecordsAreReportedWhereThatIsAskedFor) {
    Make(L"c", L"A");
    Make(L"l", L"A");
    EXPECT_TRUE(Repair({L"gone", L"c"}, {}, {L"away", L"l"}, {}));
    EXPECT_EQ(TakeDebugWarnings(), (Warnings{L"云端下载的此条目没找到: gone", L"本地修改的此条目没找到: away"}));
    EXPECT_EQ(Name(L"l"), L"A(1)");
}

TEST_F(NameRepair, MissingRecordsAreQuietWhereTheListsMixTwoClasses) {
    Make(L"c", L"A");
    EXPECT_FALSE(Repair({L"gone", L"c"}, {}, {L"away"}, {}, false));
}

TEST_F(NameRepair, ARecordWithoutANameIsReportedAlways) {
    for (const wchar_t* id : {L"c", L"l"}) {
        ASSERT_TRUE(qb.createRec("PSI", id));
        ASSERT_TRUE(qb.saveRec());
    }
    EXPECT_FALSE(Repair({L"c"}, {}, {L"l"}, {}, false));
    EXPECT_EQ(TakeDebugWarnings(), (Warnings{L"此条目没有name字段: c", L"此条目没有name字段: l"}));
}

TEST_F(NameRepair, ALocalIdThatTheCloudSentTooIsTheCloudsOwn) {
    Make(L"own", L"A");
    EXPECT_FALSE(Repair({L"own"}, {}, {L"own"}, {}));
    EXPECT_EQ(Name(L"own"), L"A");
}

TEST_F(NameRepair, ALocalRecordGivesWayAlsoToAnOwnRecordThatTheCloudSent) {
    Make(L"own", L"A");
    Make(L"l", L"A");
    EXPECT_TRUE(Repair({L"own"}, {}, {L"own", L"l"}, {}));
    EXPECT_EQ(Name(L"own"), L"A");
    EXPECT_EQ(Name(L"l"), L"A(1)");
}

TEST_F(NameRepair, EntriesAreRenamedInOrderOfId) {
    Make(L"c1", L"A");
    Make(L"c2", L"A(1)");
    Make(L"l2", L"A");
    Make(L"l1", L"A(1)");
    EXPECT_TRUE(Repair({L"c1", L"c2"}, {}, {L"l2", L"l1"}, {}));
    EXPECT_EQ(Name(L"l1"), L"A(1)(1)");
    EXPECT_EQ(Name(L"l2"), L"A(2)");
}

TEST_F(NameRepair, ARenamedRecordKeepsItsOtherAttributes) {
    Make(L"c", L"A");
    Make(L"l", L"A");
    qb.setWsz(schema::kMaterialId, L"m", -1);
    ASSERT_TRUE(qb.saveRec());
    EXPECT_TRUE(Repair({L"c"}, {}, {L"l"}, {}));
    EXPECT_EQ(Text("PSI", L"l", schema::kMaterialId), L"m");
    EXPECT_TRUE(TakeLogLines().empty());
}

TEST_F(NameRepair, TheFiltersOfTheLastSearchStay) {
    Make(L"c", L"A");
    Make(L"l", L"A");
    EXPECT_TRUE(Repair({L"c"}, {}, {L"l"}, {}));
    ASSERT_TRUE(qb.fetchFirstMember("PSI"));
    CWsz id;
    ASSERT_TRUE(qb.getObjId(id));
    EXPECT_EQ(id.str(), L"l");
    EXPECT_FALSE(qb.fetchNextMember());
    qb.resetFilters();
}

TEST_F(NameRepair, FiltersOfAnEarlierStepDoNotMatter) {
    Make(L"c", L"A");
    Make(L"x", L"A(1)");
    Make(L"l", L"A");
    qb.setFilter(schema::kName, "=", L"nothing");
    EXPECT_TRUE(Repair({L"c"}, {}, {L"l"}, {}));
    EXPECT_EQ(Name(L"l"), L"A(2)");
}

} // namespace
} // namespace tolmtest
