#include "StoreFixture.h"

#include <stdexcept>

namespace qbasetest {
namespace {

class StoreTransaction : public StoreTest {
protected:
    StoreTransaction() {
        Change([](CQbase& qb) { Add(qb, "AAA", L"x", 1); });
    }
    std::string Ids() { return Sql(m_path, "SELECT group_concat(id) FROM (SELECT id FROM AAA ORDER BY seq)"); }
};

TEST_F(StoreTransaction, CloseDatabaseCommits) {
    CQbase qb;
    ASSERT_TRUE(Open(qb) && qb.lockForUpdate());
    Add(qb, "AAA", L"y");
    ASSERT_TRUE(qb.closeDatabase());
    EXPECT_EQ(Ids(), "x,y");
}

TEST_F(StoreTransaction, DestructionCommits) {
    {
        CQbase qb;
        ASSERT_TRUE(Open(qb) && qb.lockForUpdate());
        Add(qb, "AAA", L"y");
    }
    EXPECT_EQ(Ids(), "x,y");
}

TEST_F(StoreTransaction, DestructionCommitsAlsoWhileAnExceptionIsUnderWay) {
    EXPECT_THROW(
        {
            CQbase qb;
            ASSERT_TRUE(Open(qb) && qb.lockForUpdate());
            Add(qb, "AAA", L"y");
            throw std::runtime_error("under way");
        },
        std::runtime_error);
    EXPECT_EQ(Ids(), "x,y");
}

TEST_F(StoreTransaction, AbandonKeepsNothing) {
    CQbase qb;
    ASSERT_TRUE(Open(qb) && qb.lockForUpdate());
    Add(qb, "AAA", L"y");
    ASSERT_TRUE(qb.deleteRec("AAA", L"x"));
    qb.abandon();
    EXPECT_EQ(Ids(), "x");
    EXPECT_TRUE(Open(qb, false)) << "an abandoned handle may be opened again";
}

TEST_F(StoreTransaction, NothingOfATransactionIsSeenBeforeItsEnd) {
    const std::string before = ReadBytes(m_path);
    Child child([&] { return ReadBytes(m_path) == before; });
    CQbase qb;
    ASSERT_TRUE(Open(qb) && qb.lockForUpdate());
    Add(qb, "AAA", L"y");
    EXPECT_TRUE(child.Run());
    qb.abandon();
    EXPECT_EQ(ReadBytes(m_path), before);
}

TEST_F(StoreTransaction, ACrashLeavesTheFileAsItWas) {
    const std::string before = ReadBytes(m_path);
    EXPECT_FALSE(InChild([&] {
        auto qb = std::make_unique<CQbase>();
        if (!Open(*qb) || !qb->lockForUpdate())
            _exit(0);
        for (int i = 0; i < 500; ++i) {
            qb->createRec("AAA", std::to_wstring(i));
            qb->saveRec();
        }
        qb.release(); // nobody closes it
        _exit(7);
        return true;
    }));
    EXPECT_EQ(ReadBytes(m_path), before);
    EXPECT_EQ(Ids(), "x");
}

TEST_F(StoreTransaction, ACrashAfterPagesWereWrittenIsRolledBack) {
    EXPECT_FALSE(InChild([&] {
        auto qb = std::make_unique<CQbase>();
        if (!Open(*qb) || !qb->lockForUpdate())
            _exit(0);
        const std::string large(16 * 1000, 'p');
        for (int i = 0; i < 400; ++i) { // more than the cache holds, so that pages are written before the commit
            qb->createRec("AAA", std::to_wstring(i));
            qb->setBinaryArray(kPipes, large.data(), 1000, 0);
            qb->saveRec();
        }
        qb.release();
        _exit(7);
        return true;
    }));
    ASSERT_TRUE(Stands(m_path + L"-journal")) << "the crash left a journal that must be played back";
    Look([](CQbase& qb) { EXPECT_EQ(Walk(qb, "AAA"), (qbasetest::Ids{L"x"})); });
    EXPECT_FALSE(Stands(m_path + L"-journal"));
    EXPECT_EQ(Sql(m_path, "PRAGMA integrity_check"), "ok");
}

TEST_F(StoreTransaction, WithoutALockEachSaveIsOnDiskByItself) {
    CQbase qb;
    ASSERT_TRUE(Open(qb));
    Add(qb, "AAA", L"y");
    EXPECT_EQ(Ids(), "x,y");
    ASSERT_TRUE(qb.deleteRec("AAA", L"x"));
    EXPECT_EQ(Ids(), "y");
    ASSERT_TRUE(qb.fetchEqualRec("AAA", L"y") && qb.setShort(kMEPType, 8) && qb.saveRec());
    EXPECT_EQ(Sql(m_path, "SELECT MEPType FROM AAA"), "8");
}

TEST_F(StoreTransaction, WithoutALockAnIdThatCameMeanwhileIsNotOverwritten) {
    CQbase qb;
    ASSERT_TRUE(Open(qb) && qb.createRec("AAA", L"y") && qb.setShort(kMEPType, 5));
    Sql(m_path, "INSERT INTO AAA(seq,id,MEPType) VALUES(9,'y',6)");
    EXPECT_FALSE(qb.saveRec());
    EXPECT_EQ(ErrorOf(qb), QbaseError::BadArgument);
    EXPECT_EQ(Sql(m_path, "SELECT MEPType FROM AAA WHERE id='y'"), "6");
    EXPECT_TRUE(qb.closeDatabase()) << "nothing was wrong with the disk";
}

TEST_F(StoreTransaction, WithoutALockARecordThatWentMeanwhileIsNotSaved) {
    CQbase qb;
    ASSERT_TRUE(Open(qb) && qb.fetchEqualRec("AAA", L"x") && qb.setShort(kMEPType, 5));
    Sql(m_path, "DELETE FROM AAA");
    EXPECT_FALSE(qb.saveRec());
    EXPECT_EQ(ErrorOf(qb), QbaseError::NotFound);
    EXPECT_TRUE(qb.closeDatabase());
}

TEST_F(StoreTransaction, WithoutALockNumbersGoOnFromTheFile) {
    CQbase qb;
    ASSERT_TRUE(Open(qb));
    Add(qb, "AAA", L"y");
    Sql(m_path, "INSERT INTO BBB(seq,id) VALUES(70,'b')");
    Add(qb, "AAA", L"z");
    EXPECT_EQ(Sql(m_path, "SELECT seq FROM AAA WHERE id='z'"), "71");
}

TEST_F(StoreTransaction, BeginTransactionGathersWhatComesAfterIt) {
    CQbase qb;
    ASSERT_TRUE(Open(qb));
    Add(qb, "AAA", L"y");
    ASSERT_TRUE(qb.beginTransaction());
    Add(qb, "AAA", L"z");
    qb.abandon();
    EXPECT_EQ(Ids(), "x,y");
    ASSERT_TRUE(Open(qb) && qb.beginTransaction());
    Add(qb, "AAA", L"z");
    ASSERT_TRUE(qb.closeDatabase());
    EXPECT_EQ(Ids(), "x,y,z");
}

TEST_F(StoreTransaction, BeginTransactionFailsUnderAReadLock) {
    CQbase qb;
    ASSERT_TRUE(Open(qb) && qb.lockForRead());
    EXPECT_FALSE(qb.beginTransaction());
    EXPECT_EQ(ErrorOf(qb), QbaseError::NotLockedForUpdate);
}

TEST_F(StoreTransaction, ALockLosesNothingOfTheCurrentRecord) {
    CQbase qb;
    ASSERT_TRUE(Open(qb) && qb.fetchEqualRec("AAA", L"x") && qb.setShort(kMEPType, 5) && qb.lockForUpdate());
    EXPECT_EQ(IdOf(qb), L"x");
    EXPECT_TRUE(qb.saveRec() && qb.closeDatabase());
    EXPECT_EQ(Sql(m_path, "SELECT MEPType FROM AAA"), "5");
}

} // namespace
} // namespace qbasetest
