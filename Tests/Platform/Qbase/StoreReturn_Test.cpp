#include "StoreFixture.h"

namespace qbasetest {
namespace {

using StoreReturn = StoreTest;

std::wstring NameOf(CQbase& qb) {
    CWsz name;
    return qb.getWsz(kName, name, 1) ? name.str() : std::wstring(L"none");
}

void Rename(CQbase& qb, const wchar_t* name) {
    EXPECT_TRUE(qb.setWsz(kName, name, -1));
    EXPECT_TRUE(qb.saveRec());
}

TEST_F(StoreReturn, ARecordThatWasLeftIsCurrentAgainWithAllItHas) {
    Change([](CQbase& qb) {
        for (const wchar_t* id : {L"a", L"b", L"c"})
            Add(qb, "AAA", id);
        Add(qb, "BBB", L"a");
    });
    Look([](CQbase& qb) {
        ASSERT_TRUE(qb.fetchFirstMember("AAA"));
        const std::wstring name = NameOf(qb);
        for (const wchar_t* other : {L"b", L"c", L"b", L"c"}) {
            ASSERT_TRUE(qb.fetchEqualRec("AAA", other));
            EXPECT_EQ(IdOf(qb), other);
            ASSERT_TRUE(qb.fetchEqualRec("BBB", L"a"));
            EXPECT_EQ(IdOf(qb), L"a");
            EXPECT_EQ(NameOf(qb), L"none");
        }
        ASSERT_TRUE(qb.fetchEqualRec("AAA", L"a"));
        EXPECT_EQ(NameOf(qb), name);
        ASSERT_TRUE(qb.fetchNextMember());
        EXPECT_EQ(IdOf(qb), L"b");
    });
}

TEST_F(StoreReturn, WhatWasSetAndNotSavedIsGone) {
    Change([](CQbase& qb) {
        Add(qb, "AAA", L"a");
        Add(qb, "AAA", L"b");
        ASSERT_TRUE(qb.fetchEqualRec("AAA", L"a"));
        Rename(qb, L"old");
        ASSERT_TRUE(qb.fetchEqualRec("AAA", L"b"));
        ASSERT_TRUE(qb.fetchEqualRec("AAA", L"a"));
        ASSERT_TRUE(qb.setWsz(kName, L"never saved", -1));
        ASSERT_TRUE(qb.fetchEqualRec("AAA", L"b"));
        ASSERT_TRUE(qb.fetchEqualRec("AAA", L"a"));
        EXPECT_EQ(NameOf(qb), L"old");
        ASSERT_TRUE(qb.removeAttribute(kName));
        ASSERT_TRUE(qb.fetchEqualRec("AAA", L"b"));
        ASSERT_TRUE(qb.fetchEqualRec("AAA", L"a"));
        EXPECT_EQ(NameOf(qb), L"old");
    });
}

TEST_F(StoreReturn, WhatWasSavedMeanwhileIsSeen) {
    Change([](CQbase& qb) {
        Add(qb, "AAA", L"a");
        Add(qb, "AAA", L"b");
    });
    Change([](CQbase& qb) {
        ASSERT_TRUE(qb.fetchEqualRec("AAA", L"a"));
        ASSERT_TRUE(qb.fetchEqualRec("AAA", L"b"));
        ASSERT_TRUE(qb.fetchFirstMember("AAA")); // the same record once more, past the one that was left
        Rename(qb, L"new");
        ASSERT_TRUE(qb.fetchEqualRec("AAA", L"b"));
        ASSERT_TRUE(qb.fetchEqualRec("AAA", L"a"));
        EXPECT_EQ(NameOf(qb), L"new");
    });
}

TEST_F(StoreReturn, ARecordThatWasDeletedIsNotFoundAgain) {
    Change([](CQbase& qb) {
        Add(qb, "AAA", L"a");
        Add(qb, "AAA", L"b");
    });
    Change([](CQbase& qb) {
        ASSERT_TRUE(qb.fetchEqualRec("AAA", L"a"));
        ASSERT_TRUE(qb.fetchEqualRec("AAA", L"b"));
        ASSERT_TRUE(qb.deleteRec("AAA", L"a"));
        EXPECT_FALSE(qb.fetchEqualRec("AAA", L"a"));
        EXPECT_EQ(IdOf(qb), L"b");
        ASSERT_TRUE(qb.createRec("AAA", L"a"));
        ASSERT_TRUE(qb.saveRec());
        ASSERT_TRUE(qb.fetchEqualRec("AAA", L"b"));
        ASSERT_TRUE(qb.fetchEqualRec("AAA", L"a"));
        EXPECT_EQ(NameOf(qb), L"none");
    });
}

TEST_F(StoreReturn, WhatSomebodyElseSavedBeforeTheLockIsSeen) {
    Change([](CQbase& qb) {
        Add(qb, "AAA", L"a");
        Add(qb, "AAA", L"b");
    });
    CQbase reader;
    ASSERT_TRUE(Open(reader, false));
    ASSERT_TRUE(reader.fetchEqualRec("AAA", L"a"));
    ASSERT_TRUE(reader.fetchEqualRec("AAA", L"b"));
    ASSERT_TRUE(reader.fetchEqualRec("AAA", L"a"));
    Change([](CQbase& qb) {
        ASSERT_TRUE(qb.fetchEqualRec("AAA", L"a"));
        Rename(qb, L"new");
    });
    ASSERT_TRUE(reader.lockForRead());
    ASSERT_TRUE(reader.fetchEqualRec("AAA", L"b"));
    ASSERT_TRUE(reader.fetchEqualRec("AAA", L"a"));
    EXPECT_EQ(NameOf(reader), L"new");
}

TEST_F(StoreReturn, WithoutALockEachFetchLooksAtTheFile) {
    Change([](CQbase& qb) {
        Add(qb, "AAA", L"a");
        Add(qb, "AAA", L"b");
    });
    CQbase reader;
    ASSERT_TRUE(Open(reader, false));
    ASSERT_TRUE(reader.fetchEqualRec("AAA", L"a"));
    ASSERT_TRUE(reader.fetchEqualRec("AAA", L"b"));
    Change([](CQbase& qb) { ASSERT_TRUE(qb.deleteRec("AAA", L"a")); });
    EXPECT_FALSE(reader.fetchEqualRec("AAA", L"a"));
}

} // namespace
} // namespace qbasetest
