#include "StoreFixture.h"

namespace qbasetest {
namespace {

class StoreFiles : public StoreTest {
protected:
    StoreFiles() {
        Change([](CQbase& qb) {
            for (const wchar_t* id : {L"a", L"gone", L"b"})
                Add(qb, "AAA", id, 1);
            ASSERT_TRUE(qb.deleteRec("AAA", L"gone"));
        });
        CQbase::setLockTimeout(50);
    }
    static std::string NumbersIn(const std::wstring& path) {
        return Sql(path, "SELECT group_concat(seq||id) FROM (SELECT * FROM AAA ORDER BY seq)");
    }
};

TEST_F(StoreFiles, RemoveStoreRemovesTheFileAndItsJournal) {
    WriteText(m_path + L"-journal", "stale");
    EXPECT_TRUE(CQbase::removeStore(m_path));
    EXPECT_FALSE(Stands(m_path) || Stands(m_path + L"-journal"));
    EXPECT_TRUE(CQbase::removeStore(m_path)) << "none stands there";
}

TEST_F(StoreFiles, RemoveStoreRemovesAJournalWithoutItsFile) {
    WriteText(m_second + L"-journal", "stale");
    EXPECT_TRUE(CQbase::removeStore(m_second));
    EXPECT_FALSE(Stands(m_second + L"-journal"));
}

TEST_F(StoreFiles, RemoveStoreRemovesWhatIsNoStore) {
    WriteText(m_second, "text");
    EXPECT_TRUE(CQbase::removeStore(m_second));
    EXPECT_FALSE(Stands(m_second));
}

TEST_F(StoreFiles, RemoveStoreRefusesAFolder) {
    EXPECT_FALSE(CQbase::removeStore(m_folder.Path()));
    EXPECT_FALSE(CQbase::removeStore(L""));
    EXPECT_TRUE(Stands(m_path));
}

TEST_F(StoreFiles, RemoveStoreLeavesAStoreThatSomebodyElseWorksOn) {
    const Turn held;
    const Turn done;
    const pid_t child = fork();
    if (child == 0) {
        CQbase qb;
        const bool ok = Open(qb, false) && qb.lockForRead();
        held.Give();
        done.Await();
        _exit(ok ? 0 : 1);
    }
    held.Await();
    EXPECT_FALSE(CQbase::removeStore(m_path));
    EXPECT_TRUE(Stands(m_path));
    done.Give();
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    EXPECT_TRUE(CQbase::removeStore(m_path));
}

TEST_F(StoreFiles, WhoHoldsTheUpdateLockMayRemoveTheStore) {
    CQbase::setLockTimeout(60000);
    CQbase qb;
    ASSERT_TRUE(Open(qb) && qb.lockForUpdate());
    EXPECT_TRUE(CQbase::removeStore(m_path));
    EXPECT_FALSE(Stands(m_path));
    EXPECT_TRUE(qb.closeDatabase()) << "it changed nothing";
}

TEST_F(StoreFiles, WhoHoldsAReadLockMayNot) {
    CQbase::setLockTimeout(60000);
    CQbase qb;
    ASSERT_TRUE(Open(qb) && qb.lockForRead());
    EXPECT_FALSE(CQbase::removeStore(m_path));
    EXPECT_TRUE(Stands(m_path));
}

TEST_F(StoreFiles, ACopyHasTheRecordsWithTheirNumbers) {
    ASSERT_TRUE(CQbase::copyStore(m_path, m_second));
    EXPECT_EQ(NumbersIn(m_second), "1a,3b");
    EXPECT_FALSE(Stands(m_second + L"-journal"));
    CQbase qb;
    ASSERT_TRUE(qb.openDatabase(m_definition, m_second, false) && qb.lockForUpdate());
    Add(qb, "AAA", L"c");
    ASSERT_TRUE(qb.closeDatabase());
    EXPECT_EQ(NumbersIn(m_second), "1a,3b,4c");
    EXPECT_EQ(NumbersIn(m_path), "1a,3b");
}

TEST_F(StoreFiles, ACopyReplacesWhatStandsThere) {
    for (const std::string& before : {std::string(), std::string("text"), std::string(100000, 'x')}) {
        WriteText(m_second, before);
        ASSERT_TRUE(CQbase::copyStore(m_path, m_second));
        EXPECT_EQ(NumbersIn(m_second), "1a,3b");
    }
    CQbase qb;
    ASSERT_TRUE(qb.openDatabase(m_definition, m_second, false) && qb.lockForUpdate());
    for (int i = 0; i < 200; ++i)
        Add(qb, "BBB", std::to_wstring(i).c_str());
    ASSERT_TRUE(qb.closeDatabase());
    ASSERT_TRUE(CQbase::copyStore(m_path, m_second));
    EXPECT_EQ(Sql(m_second, "SELECT count(*) FROM BBB"), "0");
    EXPECT_EQ(Sql(m_second, "PRAGMA integrity_check"), "ok");
}

TEST_F(StoreFiles, ACopyOfAStoreThatACrashLeftIsWhole) {
    EXPECT_FALSE(InChild([&] {
        auto qb = std::make_unique<CQbase>();
        if (!Open(*qb) || !qb->lockForUpdate())
            _exit(0);
        const std::string large(16 * 1000, 'p');
        for (int i = 0; i < 400; ++i) {
            qb->createRec("AAA", std::to_wstring(i));
            qb->setBinaryArray(kPipes, large.data(), 1000, 0);
            qb->saveRec();
        }
        qb.release();
        _exit(7);
        return true;
    }));
    ASSERT_TRUE(Stands(m_path + L"-journal"));
    ASSERT_TRUE(CQbase::copyStore(m_path, m_second));
    EXPECT_EQ(NumbersIn(m_second), "1a,3b");
}

TEST_F(StoreFiles, OnlyAStoreIsCopied) {
    const std::wstring target = m_folder.File(L"copy.db");
    WriteText(m_second, "text");
    EXPECT_FALSE(CQbase::copyStore(m_second, target));
    EXPECT_FALSE(CQbase::copyStore(m_folder.File(L"none.db"), target));
    EXPECT_FALSE(CQbase::copyStore(m_folder.Path(), target));
    EXPECT_FALSE(CQbase::copyStore(L"", target));
    WriteText(m_second, "");
    EXPECT_FALSE(CQbase::copyStore(m_second, target));
    EXPECT_FALSE(Stands(target));
    EXPECT_FALSE(CQbase::copyStore(m_path, m_path));
    EXPECT_FALSE(CQbase::copyStore(m_path, m_folder.Path()));
    EXPECT_FALSE(CQbase::copyStore(m_path, m_folder.File(L"no/such/folder.db")));
    EXPECT_EQ(NumbersIn(m_path), "1a,3b");
}

TEST_F(StoreFiles, TwoStoresAreCopiedWhileBothAreLockedForReading) {
    ASSERT_TRUE(CQbase::copyStore(m_path, m_second));
    CQbase first;
    CQbase second;
    ASSERT_TRUE(Open(first) && first.lockForRead());
    ASSERT_TRUE(second.openDatabase(m_definition, m_second, false) && second.lockForRead());
    EXPECT_TRUE(first.copyTo(m_folder.File(L"copy1.db")) && second.copyTo(m_folder.File(L"copy2.db")));
    EXPECT_TRUE(first.existRec("AAA", L"a") && first.closeDatabase() && second.closeDatabase());
    EXPECT_EQ(NumbersIn(m_folder.File(L"copy1.db")), "1a,3b");
    EXPECT_EQ(NumbersIn(m_folder.File(L"copy2.db")), "1a,3b");
}

TEST_F(StoreFiles, ACopyThatFailsLeavesTheHandleAsItWas) {
    CQbase qb;
    ASSERT_TRUE(Open(qb) && qb.lockForUpdate());
    Add(qb, "AAA", L"c");
    EXPECT_FALSE(qb.copyTo(m_path));
    EXPECT_EQ(ErrorOf(qb), QbaseError::BadArgument);
    EXPECT_FALSE(qb.copyTo(L""));
    EXPECT_FALSE(qb.copyTo(m_folder.File(L"no/such/folder.db")));
    EXPECT_EQ(ErrorOf(qb), QbaseError::Disk);
    EXPECT_TRUE(qb.closeDatabase());
    EXPECT_EQ(NumbersIn(m_path), "1a,3b,4c");
}

TEST_F(StoreFiles, ACopyWithoutALockTakesOneForItself) {
    CQbase qb;
    ASSERT_TRUE(Open(qb) && qb.copyTo(m_second));
    EXPECT_EQ(NumbersIn(m_second), "1a,3b");
    CQbase::setLockTimeout(60000);
    CQbase holder;
    ASSERT_TRUE(Open(holder) && holder.lockForUpdate());
    EXPECT_FALSE(qb.copyTo(m_second));
    EXPECT_EQ(ErrorOf(qb), QbaseError::Locked);
    EXPECT_TRUE(holder.closeDatabase() && qb.closeDatabase()) << "nothing was lost";
}

TEST_F(StoreFiles, ATargetThatTheThreadHoldsIsRefusedAtOnce) {
    ASSERT_TRUE(CQbase::copyStore(m_path, m_second));
    CQbase::setLockTimeout(60000);
    CQbase holder;
    ASSERT_TRUE(holder.openDatabase(m_definition, m_second, false) && holder.lockForRead());
    EXPECT_FALSE(CQbase::copyStore(m_path, m_second));
    ASSERT_TRUE(holder.closeDatabase() && holder.openDatabase(m_definition, m_path, false) && holder.lockForUpdate());
    EXPECT_FALSE(CQbase::copyStore(m_path, m_second));
}

} // namespace
} // namespace qbasetest
