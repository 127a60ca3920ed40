#include "StoreFixture.h"

namespace qbasetest {
namespace {

constexpr const char* kOlder = R"(store-definition 1
class AAA
1104 short MEPType
1601 text Name
)";

class StoreUpgrade : public StoreTest {
protected:
    StoreUpgrade() {
        WriteText(m_older, kOlder);
        CQbase qb;
        EXPECT_TRUE(qb.openDatabase(m_older, m_path, true) && qb.lockForUpdate());
        for (const wchar_t* id : {L"a", L"b"})
            Add(qb, "AAA", id, 1);
        EXPECT_TRUE(qb.closeDatabase());
    }

    std::wstring m_older = m_folder.File(L"older.ddq");
};

TEST_F(StoreUpgrade, AnOlderFileIsReadAsItIs) {
    const std::string before = ReadBytes(m_path);
    Look([](CQbase& qb) {
        EXPECT_EQ(Walk(qb, "AAA"), (Ids{L"a", L"b"}));
        double value = 3;
        EXPECT_FALSE(qb.getDouble(kRoughness, value));
        EXPECT_EQ(ErrorOf(qb), QbaseError::NotFound);
        EXPECT_FALSE(qb.fetchFirstMember("BBB"));
        EXPECT_EQ(ErrorOf(qb), QbaseError::NotFound);
        EXPECT_FALSE(qb.existRec("BBB", L"x"));
        long count = 0;
        EXPECT_TRUE(qb.getNmbOfRecs(count) && count == 2);
    });
    EXPECT_EQ(ReadBytes(m_path), before);
}

TEST_F(StoreUpgrade, AFilterOnAColumnThatAnOlderFileLacksLetsNothingPass) {
    Look([](CQbase& qb) {
        ASSERT_TRUE(qb.setFilter(kDisciplineId, "=", short{1}));
        EXPECT_FALSE(qb.fetchFirstMember("AAA"));
        EXPECT_EQ(ErrorOf(qb), QbaseError::NotFound);
        qb.resetFilters();
        ASSERT_TRUE(qb.fetchFirstMember("AAA"));
        ASSERT_TRUE(qb.setFilter(kDisciplineId, "=", short{1}));
        EXPECT_FALSE(qb.fetchNextMember());
        EXPECT_FALSE(qb.fetchNextRec());
        EXPECT_EQ(IdOf(qb), L"a");
    });
}

TEST_F(StoreUpgrade, AFilterOnAMissingColumnIsNotTakenForTheTextOfItsName) {
    Look([](CQbase& qb) {
        ASSERT_TRUE(qb.setFilter(kMaterialId, "=", L"MaterialId"));
        EXPECT_FALSE(qb.fetchFirstMember("AAA"));
        EXPECT_EQ(ErrorOf(qb), QbaseError::NotFound);
    });
}

TEST_F(StoreUpgrade, WithoutALockAnotherHandleMayAddTheColumnsFirst) {
    CQbase first;
    CQbase second;
    ASSERT_TRUE(Open(first, false) && Open(second, false));
    ASSERT_TRUE(first.fetchEqualRec("AAA", L"a") && second.fetchEqualRec("AAA", L"b"));
    EXPECT_FALSE(first.existRec("BBB", L"x"));
    Add(second, "BBB", L"x");
    ASSERT_TRUE(second.fetchEqualRec("AAA", L"b") && second.setDouble(kRoughness, 0.25) && second.saveRec());
    ASSERT_TRUE(first.setDouble(kRoughness, 0.5));
    EXPECT_TRUE(first.saveRec());
    EXPECT_TRUE(first.createRec("BBB", L"y") && first.saveRec());
    ASSERT_TRUE(first.fetchEqualRec("AAA", L"b"));
    double value = 0;
    EXPECT_TRUE(first.getDouble(kRoughness, value) && value == 0.25);
    ASSERT_TRUE(first.closeDatabase() && second.closeDatabase());
    Look([](CQbase& qb) { EXPECT_EQ(Walk(qb, "BBB"), (Ids{L"x", L"y"})); });
}

TEST_F(StoreUpgrade, AfterTheLockAHandleSeesWhatAnotherAddedMeanwhile) {
    CQbase qb;
    ASSERT_TRUE(Open(qb, false) && qb.fetchFirstMember("AAA"));
    EXPECT_FALSE(qb.existRec("BBB", L"x"));
    Change([](CQbase& other) {
        Add(other, "BBB", L"x");
        ASSERT_TRUE(other.fetchEqualRec("AAA", L"b") && other.setDouble(kRoughness, 0.5) && other.saveRec());
    });
    ASSERT_TRUE(qb.lockForRead());
    EXPECT_TRUE(qb.existRec("BBB", L"x"));
    ASSERT_TRUE(qb.fetchNextMember());
    double value = 0;
    EXPECT_TRUE(qb.getDouble(kRoughness, value) && value == 0.5);
    ASSERT_TRUE(qb.fetchEqualRec("AAA", L"b"));
    EXPECT_TRUE(qb.getDouble(kRoughness, value));
}

TEST_F(StoreUpgrade, AnOlderFileGetsItsMissingColumnsWithTheFirstChange) {
    Change([](CQbase& qb) {
        ASSERT_TRUE(qb.fetchEqualRec("AAA", L"a"));
        ASSERT_TRUE(qb.setDouble(kRoughness, 0.5) && qb.saveRec());
        ASSERT_TRUE(qb.fetchFirstMember("AAA") && qb.fetchNextMember());
        EXPECT_EQ(IdOf(qb), L"b");
        Add(qb, "BBB", L"x");
    });
    Look([](CQbase& qb) {
        double value = 0;
        EXPECT_TRUE(qb.fetchEqualRec("AAA", L"a") && qb.getDouble(kRoughness, value) && value == 0.5);
        EXPECT_TRUE(qb.existRec("BBB", L"x"));
    });
    EXPECT_EQ(Sql(m_path, "SELECT count(*) FROM sqlite_schema WHERE name='AAA_MEPType_DisciplineId'"), "1");
}

TEST_F(StoreUpgrade, AWalkGoesOnWhileColumnsAreAdded) {
    Change([](CQbase& qb) {
        ASSERT_TRUE(qb.setFilter(kMEPType, "=", short{1}));
        Ids seen;
        for (bool found = qb.fetchFirstMember("AAA"); found; found = qb.fetchNextMember()) {
            seen.push_back(IdOf(qb));
            ASSERT_TRUE(qb.setDouble(kRoughness, 0.5) && qb.saveRec());
        }
        EXPECT_EQ(seen, (Ids{L"a", L"b"}));
    });
}

TEST_F(StoreUpgrade, AnAbandonedChangeLeavesAnOlderFileAsItWas) {
    const std::string before = ReadBytes(m_path);
    CQbase qb;
    ASSERT_TRUE(Open(qb) && qb.lockForUpdate());
    Add(qb, "BBB", L"x");
    ASSERT_TRUE(qb.fetchEqualRec("AAA", L"a") && qb.setDouble(kRoughness, 0.5) && qb.saveRec());
    qb.abandon();
    EXPECT_EQ(ReadBytes(m_path), before);
}

TEST_F(StoreUpgrade, AnOlderDefinitionLeavesAloneWhatItDoesNotKnow) {
    Change([](CQbase& qb) {
        ASSERT_TRUE(qb.fetchEqualRec("AAA", L"a") && qb.setDouble(kRoughness, 0.5) && qb.saveRec());
    });
    CQbase qb;
    ASSERT_TRUE(qb.openDatabase(m_older, m_path, false) && qb.lockForUpdate());
    ASSERT_TRUE(qb.fetchEqualRec("AAA", L"a") && qb.setShort(kMEPType, 7) && qb.saveRec());
    Add(qb, "AAA", L"c");
    ASSERT_TRUE(qb.closeDatabase());
    EXPECT_EQ(Sql(m_path, "SELECT Roughness FROM AAA WHERE MEPType=7"), "0.5");
}

TEST_F(StoreUpgrade, ACompanionGetsItsMissingColumnsToo) {
    CQbase qb;
    CQbase beside;
    ASSERT_TRUE(qb.openDatabase(m_definition, m_second, true) && qb.lockForUpdate());
    ASSERT_TRUE(beside.openBeside(qb, m_definition, m_path, false));
    ASSERT_TRUE(beside.fetchEqualRec("AAA", L"a") && beside.setDouble(kRoughness, 0.5) && beside.saveRec());
    Add(beside, "BBB", L"x");
    ASSERT_TRUE(beside.closeDatabase() && qb.closeDatabase());
    EXPECT_EQ(Sql(m_path, "SELECT Roughness FROM AAA WHERE id='a'"), "0.5");
}

} // namespace
} // namespace qbasetest
