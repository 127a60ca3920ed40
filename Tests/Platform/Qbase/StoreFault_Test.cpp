#include "StoreFixture.h"
#include "Support/FailingDisk.h"

namespace qbasetest {
namespace {

class StoreFault : public StoreTest {
protected:
    static std::string IdsIn(const std::wstring& path) {
        return Sql(path, "SELECT group_concat(id) FROM (SELECT id FROM AAA ORDER BY seq)");
    }

    tolmtest::FailingDisk m_disk;
};

TEST_F(StoreFault, AFailureAtAnyPointOfACommitKeepsNothingAndIsTold) {
    Change([](CQbase& qb) { Add(qb, "AAA", L"x"); });
    for (const int code : {SQLITE_FULL, SQLITE_IOERR_WRITE}) {
        bool wentThrough = false;
        for (int operations = 1; !wentThrough; ++operations) {
            CQbase qb;
            ASSERT_TRUE(Open(qb) && qb.lockForUpdate());
            m_disk.FailAfter(operations, code);
            const bool saved = qb.createRec("AAA", L"y") && qb.saveRec();
            const bool closed = qb.closeDatabase();
            wentThrough = !m_disk.HasFailed();
            m_disk.Heal();
            EXPECT_TRUE(saved || !closed);
            EXPECT_EQ(IdsIn(m_path), closed ? "x,y" : "x") << operations;
            EXPECT_EQ(Sql(m_path, "PRAGMA integrity_check"), "ok");
            if (closed)
                Change([](CQbase& again) { ASSERT_TRUE(again.deleteRec("AAA", L"y")); });
            ASSERT_LT(operations, 100);
        }
    }
}

TEST_F(StoreFault, AFailureAtAnyPointOfACommitOfTwoFilesKeepsBothOrNeither) {
    const auto begin = [&](CQbase& qb, CQbase& beside) {
        ASSERT_TRUE(Open(qb) && qb.lockForUpdate() && beside.openBeside(qb, m_definition, m_second, true));
    };
    {
        CQbase qb;
        CQbase beside;
        begin(qb, beside);
        Add(qb, "AAA", L"x");
        Add(beside, "AAA", L"x");
    }
    bool failed = true;
    for (int operations = 1; failed; ++operations) {
        CQbase qb;
        CQbase beside;
        begin(qb, beside);
        m_disk.FailAfter(operations, SQLITE_IOERR_WRITE);
        const bool saved =
            qb.createRec("AAA", L"y") && qb.saveRec() && beside.createRec("AAA", L"y") && beside.saveRec();
        beside.closeDatabase();
        const bool closed = qb.closeDatabase();
        failed = m_disk.HasFailed();
        m_disk.Heal();
        EXPECT_TRUE(closed || failed);
        EXPECT_TRUE(saved || !closed);
        EXPECT_EQ(IdsIn(m_path), closed ? "x,y" : "x") << operations;
        EXPECT_EQ(IdsIn(m_second), closed ? "x,y" : "x") << operations;
        if (closed) {
            begin(qb, beside);
            ASSERT_TRUE(qb.deleteRec("AAA", L"y") && beside.deleteRec("AAA", L"y"));
        }
        ASSERT_LT(operations, 100);
    }
}

TEST_F(StoreFault, AFailureWhileAFileComesIntoBeingLeavesNoneOrAWholeOne) {
    bool created = false;
    for (int operations = 1; !created; ++operations) {
        ASSERT_TRUE(CQbase::removeStore(m_path));
        CQbase qb;
        m_disk.FailAfter(operations, SQLITE_FULL);
        created = Open(qb, true);
        const bool failed = m_disk.HasFailed();
        m_disk.Heal();
        if (!created) {
            EXPECT_TRUE(failed);
            EXPECT_EQ(ErrorOf(qb), QbaseError::Disk);
            EXPECT_TRUE(Open(qb, true)) << "what is left is no hindrance";
        }
        EXPECT_TRUE(qb.closeDatabase());
        ASSERT_LT(operations, 1000);
    }
}

TEST_F(StoreFault, AFailedWriteDoomsTheHandle) {
    Change([](CQbase& qb) { Add(qb, "AAA", L"x"); });
    CQbase qb;
    ASSERT_TRUE(Open(qb) && qb.createRec("AAA", L"y"));
    m_disk.FailAfter(1, SQLITE_FULL);
    EXPECT_FALSE(qb.saveRec());
    EXPECT_EQ(ErrorOf(qb), QbaseError::Disk);
    m_disk.Heal();
    short value = 0;
    CWsz id;
    EXPECT_FALSE(qb.saveRec() || qb.existRec("AAA", L"x") || qb.getObjId(id) || qb.getShort(kMEPType, value));
    EXPECT_FALSE(qb.lockForRead() || qb.createRec("AAA", L"z"));
    EXPECT_EQ(ErrorOf(qb), QbaseError::Doomed);
    EXPECT_FALSE(qb.closeDatabase());
    EXPECT_EQ(ErrorOf(qb), QbaseError::Doomed);
    EXPECT_EQ(IdsIn(m_path), "x");
    EXPECT_TRUE(Open(qb)) << "a closed handle starts anew";
}

TEST_F(StoreFault, TheRemovalOfAStoreThatFailsIsTold) {
    Change([](CQbase& qb) { Add(qb, "AAA", L"x"); });
    m_disk.FailAfter(1, SQLITE_FULL);
    EXPECT_FALSE(CQbase::removeStore(m_path));
    m_disk.Heal();
    EXPECT_EQ(IdsIn(m_path), "x");
}

} // namespace
} // namespace qbasetest
