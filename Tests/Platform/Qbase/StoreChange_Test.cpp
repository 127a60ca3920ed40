#include "StoreFixture.h"

namespace qbasetest {
namespace {

using StoreChange = StoreTest;

TEST_F(StoreChange, NothingIsStoredBeforeSaveRec) {
    Change([](CQbase& qb) {
        ASSERT_TRUE(qb.createRec("AAA", L"x"));
        ASSERT_TRUE(qb.setShort(kMEPType, 1));
        EXPECT_EQ(IdOf(qb), L"x");
        EXPECT_FALSE(qb.existRec("AAA", L"x"));
        long count = -1;
        EXPECT_TRUE(qb.getNmbOfRecs(count) && count == 0);
    });
    Look([](CQbase& qb) { EXPECT_FALSE(qb.existRec("AAA", L"x")); });
}

TEST_F(StoreChange, AnotherFetchDropsWhatWasNotSaved) {
    Change([](CQbase& qb) {
        Add(qb, "AAA", L"x", 1);
        ASSERT_TRUE(qb.setShort(kMEPType, 2));
        ASSERT_TRUE(qb.fetchEqualRec("AAA", L"x"));
        short value = 0;
        EXPECT_TRUE(qb.getShort(kMEPType, value) && value == 1);
    });
}

TEST_F(StoreChange, CreateRecOfAnIdThatStandsIsFalseAndMovesNothing) {
    Change([](CQbase& qb) {
        Add(qb, "AAA", L"x", 1);
        Add(qb, "AAA", L"y", 2);
        EXPECT_FALSE(qb.createRec("AAA", L"x"));
        EXPECT_EQ(IdOf(qb), L"y");
        ASSERT_TRUE(qb.fetchEqualRec("AAA", L"x"));
        short value = 0;
        EXPECT_TRUE(qb.getShort(kMEPType, value) && value == 1);
    });
}

TEST_F(StoreChange, CreateRecTakesNarrowIds) {
    Change([](CQbase& qb) {
        ASSERT_TRUE(qb.createRec("000", "FileHeader"));
        ASSERT_TRUE(qb.saveRec());
        EXPECT_TRUE(qb.existRec("000", L"FileHeader"));
        EXPECT_FALSE(qb.createRec("AAA", static_cast<const char*>(nullptr)));
    });
}

TEST_F(StoreChange, AnEmptyIdIsRefused) {
    Change([](CQbase& qb) {
        EXPECT_FALSE(qb.createRec("AAA", L""));
        EXPECT_EQ(ErrorOf(qb), QbaseError::BadArgument);
        EXPECT_FALSE(qb.createRec("AAA", static_cast<const wchar_t*>(nullptr)));
    });
}

TEST_F(StoreChange, OneIdMayStandInTwoClasses) {
    Change([](CQbase& qb) {
        Add(qb, "AAA", L"x", 1);
        Add(qb, "BBB", L"x", 2);
        ASSERT_TRUE(qb.fetchEqualRec("AAA", L"x"));
        short value = 0;
        EXPECT_TRUE(qb.getShort(kMEPType, value) && value == 1);
    });
}

TEST_F(StoreChange, IdsDifferByCase) {
    Change([](CQbase& qb) {
        Add(qb, "AAA", L"x", 1);
        Add(qb, "AAA", L"X", 2);
        EXPECT_EQ(Walk(qb, "AAA"), (Ids{L"x", L"X"}));
    });
}

TEST_F(StoreChange, SaveRecKeepsWhatWasNotSetAnew) {
    Change([](CQbase& qb) {
        ASSERT_TRUE(qb.createRec("AAA", L"x") && qb.setShort(kMEPType, 1) && qb.setWsz(kName, L"n", -1));
        ASSERT_TRUE(qb.saveRec());
    });
    Change([](CQbase& qb) { ASSERT_TRUE(qb.fetchEqualRec("AAA", L"x") && qb.setShort(kMEPType, 2) && qb.saveRec()); });
    Look([](CQbase& qb) {
        ASSERT_TRUE(qb.fetchEqualRec("AAA", L"x"));
        CWsz name;
        short type = 0;
        EXPECT_TRUE(qb.getWsz(kName, name, 1) && name.str() == L"n");
        EXPECT_TRUE(qb.getShort(kMEPType, type) && type == 2);
    });
}

TEST_F(StoreChange, SaveRecMayBeCalledAgain) {
    Change([](CQbase& qb) {
        Add(qb, "AAA", L"x", 1);
        EXPECT_TRUE(qb.saveRec());
        ASSERT_TRUE(qb.setShort(kMEPType, 5));
        EXPECT_TRUE(qb.saveRec());
        EXPECT_EQ(Walk(qb, "AAA"), (Ids{L"x"}));
    });
    EXPECT_EQ(Sql(m_path, "SELECT MEPType FROM AAA"), "5");
}

TEST_F(StoreChange, SaveRecWithoutACurrentRecordFails) {
    Change([](CQbase& qb) {
        EXPECT_FALSE(qb.saveRec());
        EXPECT_EQ(ErrorOf(qb), QbaseError::WrongState);
    });
}

TEST_F(StoreChange, AnEditKeepsThePlaceInTheOrder) {
    Change([](CQbase& qb) {
        for (const wchar_t* id : {L"a", L"b", L"c"})
            Add(qb, "AAA", id);
        ASSERT_TRUE(qb.fetchEqualRec("AAA", L"a") && qb.setShort(kMEPType, 9) && qb.saveRec());
        EXPECT_EQ(Walk(qb, "AAA"), (Ids{L"a", L"b", L"c"}));
    });
}

TEST_F(StoreChange, DeleteRecRemovesTheRecord) {
    Change([](CQbase& qb) {
        Add(qb, "AAA", L"x");
        EXPECT_TRUE(qb.deleteRec("AAA", L"x"));
        EXPECT_FALSE(qb.existRec("AAA", L"x"));
        EXPECT_FALSE(qb.deleteRec("AAA", L"x"));
        EXPECT_EQ(ErrorOf(qb), QbaseError::NotFound);
        EXPECT_FALSE(qb.deleteRec("AAA", nullptr));
    });
}

TEST_F(StoreChange, DeleteRecOfAnotherRecordKeepsTheCurrentOne) {
    Change([](CQbase& qb) {
        Add(qb, "AAA", L"x");
        Add(qb, "AAA", L"y");
        EXPECT_TRUE(qb.deleteRec("AAA", L"x"));
        EXPECT_EQ(IdOf(qb), L"y");
    });
}

TEST_F(StoreChange, SaveRecOfADeletedRecordFails) {
    Change([](CQbase& qb) {
        Add(qb, "AAA", L"x");
        ASSERT_TRUE(qb.deleteRec("AAA", L"x"));
        EXPECT_FALSE(qb.saveRec());
        EXPECT_EQ(ErrorOf(qb), QbaseError::NotFound);
        EXPECT_FALSE(qb.existRec("AAA", L"x"));
    });
}

TEST_F(StoreChange, ADeletedIdMayComeAgainAtTheEnd) {
    Change([](CQbase& qb) {
        Add(qb, "AAA", L"x");
        Add(qb, "AAA", L"y");
        ASSERT_TRUE(qb.deleteRec("AAA", L"x"));
        Add(qb, "AAA", L"x");
        EXPECT_EQ(Walk(qb, "AAA"), (Ids{L"y", L"x"}));
    });
}

TEST_F(StoreChange, ANumberIsNotGivenTwiceWithinAHandle) {
    Change([](CQbase& qb) {
        Add(qb, "AAA", L"x");
        Add(qb, "AAA", L"y");
        ASSERT_TRUE(qb.deleteRec("AAA", L"y"));
        Add(qb, "AAA", L"z");
        EXPECT_TRUE(qb.fetchEqualRec("AAA", L"x") && qb.fetchNextMember());
        EXPECT_EQ(IdOf(qb), L"z");
    });
    EXPECT_EQ(Sql(m_path, "SELECT seq FROM AAA WHERE id='z'"), "3");
}

TEST_F(StoreChange, NumbersRunThroughAllClasses) {
    Change([](CQbase& qb) {
        Add(qb, "AAA", L"1");
        Add(qb, "BBB", L"2");
    });
    Change([](CQbase& qb) { Add(qb, "AAA", L"3"); });
    EXPECT_EQ(Sql(m_path, "SELECT seq FROM AAA WHERE id='3'"), "3");
}

TEST_F(StoreChange, AfterTheHighestNumberThereIsNoOther) {
    Change([](CQbase& qb) { Add(qb, "AAA", L"x"); });
    Sql(m_path, "UPDATE AAA SET seq=9223372036854775807");
    CQbase qb;
    ASSERT_TRUE(Open(qb) && qb.lockForUpdate() && qb.createRec("AAA", L"y"));
    EXPECT_FALSE(qb.saveRec());
    EXPECT_FALSE(qb.closeDatabase());
}

TEST_F(StoreChange, ChangesFailUnderAReadLock) {
    Change([](CQbase& qb) { Add(qb, "AAA", L"x", 1); });
    Look([](CQbase& qb) {
        EXPECT_FALSE(qb.createRec("AAA", L"y"));
        EXPECT_EQ(ErrorOf(qb), QbaseError::NotLockedForUpdate);
        EXPECT_FALSE(qb.deleteRec("AAA", L"x"));
        EXPECT_EQ(ErrorOf(qb), QbaseError::NotLockedForUpdate);
        ASSERT_TRUE(qb.fetchEqualRec("AAA", L"x"));
        ASSERT_TRUE(qb.setShort(kMEPType, 2));
        EXPECT_FALSE(qb.saveRec());
        EXPECT_EQ(ErrorOf(qb), QbaseError::NotLockedForUpdate);
    });
    EXPECT_EQ(Sql(m_path, "SELECT MEPType FROM AAA"), "1");
}

TEST_F(StoreChange, AClosedHandleDoesNothing) {
    CQbase qb;
    long count = 0;
    CWsz id;
    EXPECT_FALSE(qb.lockForRead() || qb.lockForUpdate() || qb.beginTransaction());
    EXPECT_EQ(ErrorOf(qb), QbaseError::WrongState);
    EXPECT_FALSE(qb.getNmbOfRecs(count) || qb.existRec("AAA", L"x") || qb.fetchEqualRec("AAA", L"x"));
    EXPECT_FALSE(qb.fetchFirstMember("AAA") || qb.fetchNextMember() || qb.fetchNextRec());
    EXPECT_FALSE(qb.setFilter(kMEPType, "=", short{1}) || qb.createRec("AAA", L"x") || qb.saveRec());
    EXPECT_FALSE(qb.deleteRec("AAA", L"x") || qb.getObjId(id) || qb.removeAttribute(kMEPType));
    EXPECT_EQ(ErrorOf(qb), QbaseError::WrongState);
    qb.resetFilters();
    qb.abandon();
    EXPECT_TRUE(qb.closeDatabase());
    EXPECT_EQ(ErrorOf(qb), QbaseError::None);
}

} // namespace
} // namespace qbasetest
