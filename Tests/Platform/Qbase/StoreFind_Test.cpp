#include "StoreFixture.h"

namespace qbasetest {
namespace {

using StoreFind = StoreTest;

TEST_F(StoreFind, ARecordIsFoundByClassAndId) {
    Change([](CQbase& qb) {
        Add(qb, "AAA", L"x");
        EXPECT_TRUE(qb.existRec("AAA", L"x"));
        EXPECT_FALSE(qb.existRec("BBB", L"x"));
        EXPECT_FALSE(qb.existRec("AAA", L"y"));
        EXPECT_EQ(ErrorOf(qb), QbaseError::NotFound);
    });
}

TEST_F(StoreFind, ExistRecKeepsTheCurrentRecord) {
    Change([](CQbase& qb) {
        Add(qb, "AAA", L"x");
        Add(qb, "AAA", L"y");
        ASSERT_TRUE(qb.fetchEqualRec("AAA", L"x"));
        EXPECT_TRUE(qb.existRec("AAA", L"y"));
        EXPECT_EQ(IdOf(qb), L"x");
    });
}

TEST_F(StoreFind, AWalkGoesInOrderOfCreation) {
    Change([](CQbase& qb) {
        for (const wchar_t* id : {L"z", L"a", L"m"})
            Add(qb, "AAA", id);
        EXPECT_EQ(Walk(qb, "AAA"), (Ids{L"z", L"a", L"m"}));
    });
    Look([](CQbase& qb) { EXPECT_EQ(Walk(qb, "AAA"), (Ids{L"z", L"a", L"m"})); });
}

TEST_F(StoreFind, AWalkGoesOnFromTheCurrentRecordWhateverWasFetchedInBetween) {
    Change([](CQbase& qb) {
        for (const wchar_t* id : {L"a", L"b", L"c"})
            Add(qb, "AAA", id);
        Add(qb, "BBB", L"other");
        ASSERT_TRUE(qb.fetchFirstMember("AAA"));
        ASSERT_TRUE(qb.fetchEqualRec("BBB", L"other"));
        ASSERT_TRUE(qb.fetchEqualRec("AAA", L"a"));
        ASSERT_TRUE(qb.fetchNextMember());
        EXPECT_EQ(IdOf(qb), L"b");
        ASSERT_TRUE(qb.fetchEqualRec("AAA", L"a"));
        ASSERT_TRUE(qb.fetchNextMember());
        EXPECT_EQ(IdOf(qb), L"b");
        ASSERT_TRUE(qb.fetchEqualRec("AAA", L"b"));
        ASSERT_TRUE(qb.fetchNextMember());
        EXPECT_EQ(IdOf(qb), L"c");
    });
}

TEST_F(StoreFind, TheNextMemberIsOfTheCurrentRecordsClass) {
    Change([](CQbase& qb) {
        Add(qb, "AAA", L"a");
        Add(qb, "BBB", L"b1");
        Add(qb, "AAA", L"a2");
        Add(qb, "BBB", L"b2");
        ASSERT_TRUE(qb.fetchFirstMember("AAA"));
        ASSERT_TRUE(qb.fetchEqualRec("BBB", L"b1"));
        ASSERT_TRUE(qb.fetchNextMember());
        EXPECT_EQ(IdOf(qb), L"b2");
    });
}

TEST_F(StoreFind, AFetchThatFailsLeavesTheCurrentRecord) {
    Change([](CQbase& qb) {
        Add(qb, "AAA", L"a");
        ASSERT_TRUE(qb.fetchFirstMember("AAA"));
        EXPECT_FALSE(qb.fetchNextMember());
        EXPECT_EQ(IdOf(qb), L"a");
        EXPECT_FALSE(qb.fetchFirstMember("BBB"));
        EXPECT_EQ(IdOf(qb), L"a");
        EXPECT_FALSE(qb.fetchEqualRec("AAA", L"none"));
        EXPECT_EQ(IdOf(qb), L"a");
        EXPECT_FALSE(qb.fetchNextRec());
        EXPECT_EQ(IdOf(qb), L"a");
        EXPECT_FALSE(qb.fetchNextMember());
    });
}

TEST_F(StoreFind, TheEndOfAWalkIsNoEndForRecordsThatComeLater) {
    Change([](CQbase& qb) {
        Add(qb, "AAA", L"a");
        ASSERT_TRUE(qb.fetchFirstMember("AAA"));
        EXPECT_FALSE(qb.fetchNextMember());
        Add(qb, "AAA", L"b");
        ASSERT_TRUE(qb.fetchEqualRec("AAA", L"a"));
        EXPECT_TRUE(qb.fetchNextMember());
        EXPECT_EQ(IdOf(qb), L"b");
    });
}

TEST_F(StoreFind, ARecordThatIsNotSavedStandsBehindAllOthers) {
    Change([](CQbase& qb) {
        for (const wchar_t* id : {L"a", L"b"})
            Add(qb, "AAA", id);
        ASSERT_TRUE(qb.createRec("AAA", L"new"));
        EXPECT_FALSE(qb.fetchNextMember());
        EXPECT_FALSE(qb.fetchNextRec());
        EXPECT_EQ(IdOf(qb), L"new");
        ASSERT_TRUE(qb.fetchFirstMember("AAA"));
        EXPECT_EQ(IdOf(qb), L"a");
    });
}

TEST_F(StoreFind, FetchNextRecCrossesClassesInOrderOfCreation) {
    Change([](CQbase& qb) {
        Add(qb, "AAA", L"1");
        Add(qb, "BBB", L"2");
        Add(qb, "AAA", L"3");
        ASSERT_TRUE(qb.createRec("000", "4"));
        ASSERT_TRUE(qb.saveRec());
        Add(qb, "BBB", L"5");
        Ids ids;
        for (bool found = qb.fetchFirstMember("AAA"); found; found = qb.fetchNextRec())
            ids.push_back(IdOf(qb));
        EXPECT_EQ(ids, (Ids{L"1", L"2", L"3", L"4", L"5"}));
        ASSERT_TRUE(qb.fetchFirstMember("BBB"));
        ASSERT_TRUE(qb.fetchNextRec());
        EXPECT_EQ(IdOf(qb), L"3");
        ASSERT_TRUE(qb.fetchEqualRec("AAA", L"1"));
        ASSERT_TRUE(qb.fetchNextRec());
        EXPECT_EQ(IdOf(qb), L"2");
    });
}

TEST_F(StoreFind, FetchNextRecWorksWithoutALock) {
    Change([](CQbase& qb) {
        Add(qb, "AAA", L"1");
        Add(qb, "BBB", L"2");
        Add(qb, "AAA", L"3");
    });
    CQbase qb;
    ASSERT_TRUE(Open(qb, false));
    ASSERT_TRUE(qb.fetchFirstMember("AAA"));
    ASSERT_TRUE(qb.fetchNextRec());
    EXPECT_EQ(IdOf(qb), L"2");
    ASSERT_TRUE(qb.fetchNextRec());
    EXPECT_EQ(IdOf(qb), L"3");
    EXPECT_FALSE(qb.fetchNextRec());
}

TEST_F(StoreFind, NextWithoutACurrentRecordFails) {
    Change([](CQbase& qb) {
        EXPECT_FALSE(qb.fetchNextMember());
        EXPECT_EQ(ErrorOf(qb), QbaseError::WrongState);
        EXPECT_FALSE(qb.fetchNextRec());
        EXPECT_EQ(ErrorOf(qb), QbaseError::WrongState);
    });
}

TEST_F(StoreFind, FiltersAccumulateUntilReset) {
    Change([](CQbase& qb) {
        const auto add = [&](const wchar_t* id, short type, short discipline) {
            ASSERT_TRUE(qb.createRec("AAA", id));
            ASSERT_TRUE(qb.setShort(kMEPType, type));
            ASSERT_TRUE(qb.setShort(kDisciplineId, discipline));
            ASSERT_TRUE(qb.saveRec());
        };
        add(L"a", 1, 1);
        add(L"b", 1, 2);
        add(L"c", 2, 2);
        add(L"d", 1, 2);
        ASSERT_TRUE(qb.setFilter(kMEPType, "=", short{1}));
        EXPECT_EQ(Walk(qb, "AAA"), (Ids{L"a", L"b", L"d"}));
        ASSERT_TRUE(qb.setFilter(kDisciplineId, "=", short{2}));
        EXPECT_EQ(Walk(qb, "AAA"), (Ids{L"b", L"d"}));
        EXPECT_TRUE(qb.existRec("AAA", L"c"));
        EXPECT_TRUE(qb.fetchEqualRec("AAA", L"c"));
        qb.resetFilters();
        EXPECT_EQ(Walk(qb, "AAA"), (Ids{L"a", L"b", L"c", L"d"}));
    });
}

TEST_F(StoreFind, TwoFiltersOnOneAttributeBothHold) {
    Change([](CQbase& qb) {
        Add(qb, "AAA", L"a", 1);
        ASSERT_TRUE(qb.setFilter(kMEPType, "=", short{1}));
        ASSERT_TRUE(qb.setFilter(kMEPType, "=", short{2}));
        EXPECT_FALSE(qb.fetchFirstMember("AAA"));
    });
}

TEST_F(StoreFind, AFilterSetDuringAWalkHoldsForTheNextStep) {
    Change([](CQbase& qb) {
        Add(qb, "AAA", L"a", 1);
        Add(qb, "AAA", L"b", 1);
        Add(qb, "AAA", L"c", 2);
        ASSERT_TRUE(qb.fetchFirstMember("AAA"));
        ASSERT_TRUE(qb.setFilter(kMEPType, "=", short{2}));
        ASSERT_TRUE(qb.fetchNextMember());
        EXPECT_EQ(IdOf(qb), L"c");
        qb.resetFilters();
        ASSERT_TRUE(qb.setFilter(kMEPType, "=", short{1}));
        EXPECT_FALSE(qb.fetchNextMember());
    });
}

TEST_F(StoreFind, ATextFilterComparesExactly) {
    Change([](CQbase& qb) {
        for (const wchar_t* name : {L"钢管", L"Pipe", L"pipe", L"pipe "}) {
            ASSERT_TRUE(qb.createRec("AAA", name));
            ASSERT_TRUE(qb.setWsz(kName, name, -1));
            ASSERT_TRUE(qb.saveRec());
        }
        ASSERT_TRUE(qb.setFilter(kName, "=", L"pipe"));
        EXPECT_EQ(Walk(qb, "AAA"), (Ids{L"pipe"}));
        qb.resetFilters();
        ASSERT_TRUE(qb.setFilter(kName, "=", L"钢管"));
        EXPECT_EQ(Walk(qb, "AAA"), (Ids{L"钢管"}));
    });
}

TEST_F(StoreFind, AMissingAttributePassesNoFilter) {
    Change([](CQbase& qb) {
        ASSERT_TRUE(qb.createRec("AAA", L"a"));
        ASSERT_TRUE(qb.saveRec());
        ASSERT_TRUE(qb.setFilter(kMEPType, "=", short{0}));
        EXPECT_FALSE(qb.fetchFirstMember("AAA"));
        EXPECT_EQ(ErrorOf(qb), QbaseError::NotFound);
    });
}

TEST_F(StoreFind, AClassWithoutTheFilteredAttributeHasNoPassingRecord) {
    Change([](CQbase& qb) {
        Add(qb, "AAA", L"a", 1);
        Add(qb, "BBB", L"b", 1);
        ASSERT_TRUE(qb.createRec("AAA", L"c"));
        ASSERT_TRUE(qb.setShort(kDisciplineId, 1));
        ASSERT_TRUE(qb.saveRec());
        ASSERT_TRUE(qb.setFilter(kDisciplineId, "=", short{1}));
        EXPECT_FALSE(qb.fetchFirstMember("BBB"));
        EXPECT_EQ(ErrorOf(qb), QbaseError::NotFound);
        ASSERT_TRUE(qb.fetchEqualRec("AAA", L"a"));
        ASSERT_TRUE(qb.fetchNextRec());
        EXPECT_EQ(IdOf(qb), L"c");
        ASSERT_TRUE(qb.fetchEqualRec("BBB", L"b"));
        EXPECT_FALSE(qb.fetchNextMember());
        EXPECT_TRUE(qb.fetchNextRec());
    });
}

TEST_F(StoreFind, AFilterThatCannotBeIsRefused) {
    Change([](CQbase& qb) {
        EXPECT_FALSE(qb.setFilter(kMEPType, "<", short{1}));
        EXPECT_EQ(ErrorOf(qb), QbaseError::BadArgument);
        EXPECT_FALSE(qb.setFilter(kMEPType, nullptr, short{1}));
        EXPECT_FALSE(qb.setFilter(short{1999}, "=", short{1}));
        EXPECT_FALSE(qb.setFilter(kName, "=", short{1}));
        EXPECT_FALSE(qb.setFilter(kMEPType, "=", L"1"));
        EXPECT_FALSE(qb.setFilter(kName, "=", static_cast<const wchar_t*>(nullptr)));
        EXPECT_FALSE(qb.setFilter(kIds, "=", L"x"));
        Add(qb, "AAA", L"a", 5);
        EXPECT_EQ(Walk(qb, "AAA"), (Ids{L"a"}));
    });
}

TEST_F(StoreFind, GetNmbOfRecsCountsTheWholeFileWhateverTheFilters) {
    Change([](CQbase& qb) {
        long count = -1;
        ASSERT_TRUE(qb.getNmbOfRecs(count));
        EXPECT_EQ(count, 0);
        Add(qb, "AAA", L"a", 1);
        Add(qb, "BBB", L"a", 1);
        Add(qb, "BBB", L"b", 1);
        ASSERT_TRUE(qb.setFilter(kMEPType, "=", short{7}));
        ASSERT_TRUE(qb.getNmbOfRecs(count));
        EXPECT_EQ(count, 3);
    });
}

TEST_F(StoreFind, AnUnknownClassIsAnError) {
    Change([](CQbase& qb) {
        EXPECT_FALSE(qb.fetchFirstMember("ZZZ"));
        EXPECT_EQ(ErrorOf(qb), QbaseError::BadArgument);
        EXPECT_FALSE(qb.existRec("ZZZ", L"a"));
        EXPECT_FALSE(qb.fetchEqualRec(nullptr, L"a"));
        EXPECT_FALSE(qb.fetchEqualRec("AAA", nullptr));
        EXPECT_FALSE(qb.createRec("ZZZ", L"a"));
        EXPECT_FALSE(qb.deleteRec("ZZZ", L"a"));
        EXPECT_EQ(ErrorOf(qb), QbaseError::BadArgument);
    });
}

TEST_F(StoreFind, TwoNestedWalksOfOneClassKeepTheirPlaces) {
    Change([](CQbase& qb) {
        for (const wchar_t* id : {L"a", L"b", L"c"})
            Add(qb, "AAA", id);
        int pairs = 0;
        for (bool outer = qb.fetchFirstMember("AAA"); outer; outer = qb.fetchNextMember()) {
            const std::wstring place = IdOf(qb);
            for (bool inner = qb.fetchFirstMember("AAA"); inner; inner = qb.fetchNextMember())
                ++pairs;
            ASSERT_TRUE(qb.fetchEqualRec("AAA", place));
        }
        EXPECT_EQ(pairs, 9);
    });
}

TEST_F(StoreFind, AWalkSeesWhatIsChangedAheadOfIt) {
    Change([](CQbase& qb) {
        for (const wchar_t* id : {L"a", L"b", L"c"})
            Add(qb, "AAA", id, 1);
        ASSERT_TRUE(qb.setFilter(kMEPType, "=", short{1}));
        ASSERT_TRUE(qb.fetchFirstMember("AAA"));
        ASSERT_TRUE(qb.deleteRec("AAA", L"b"));
        Add(qb, "AAA", L"d", 1);
        ASSERT_TRUE(qb.fetchEqualRec("AAA", L"a"));
        ASSERT_TRUE(qb.fetchNextMember());
        EXPECT_EQ(IdOf(qb), L"c");
        ASSERT_TRUE(qb.fetchNextMember());
        EXPECT_EQ(IdOf(qb), L"d");
    });
}

TEST_F(StoreFind, AWalkGoesOnFromARecordThatWasDeleted) {
    Change([](CQbase& qb) {
        for (const wchar_t* id : {L"a", L"b", L"c"})
            Add(qb, "AAA", id);
        Ids seen;
        for (bool found = qb.fetchFirstMember("AAA"); found; found = qb.fetchNextMember()) {
            seen.push_back(IdOf(qb));
            ASSERT_TRUE(qb.deleteRec("AAA", seen.back()));
        }
        EXPECT_EQ(seen, (Ids{L"a", L"b", L"c"}));
        EXPECT_FALSE(qb.fetchFirstMember("AAA"));
    });
}

} // namespace
} // namespace qbasetest
