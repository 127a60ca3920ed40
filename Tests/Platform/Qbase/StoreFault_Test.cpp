#include "StoreFixture.h"

#include <map>

namespace qbasetest {
namespace {

/// Stands before SQLite's file layer and lets the n-th write, sync or deletion from now on fail, and all after it.
class FailingDisk {
public:
    FailingDisk() : m_real(*sqlite3_vfs_find(nullptr)), m_shim(m_real) {
        s_disk = this;
        m_shim.zName = "failing-disk";
        m_shim.pNext = nullptr;
        m_shim.xOpen = Open;
        m_shim.xDelete = Delete;
        sqlite3_vfs_register(&m_shim, 1);
    }
    ~FailingDisk() {
        sqlite3_vfs_unregister(&m_shim);
        s_disk = nullptr;
    }
    FailingDisk(const FailingDisk&) = delete;
    FailingDisk& operator=(const FailingDisk&) = delete;

    /// `code` is what the failing operations report.
    void FailAfter(int operations, int code) {
        m_left = operations;
        m_code = code;
    }
    void Heal() { m_left = -1; }
    bool HasFailed() const { return m_left == 0; }

private:
    bool Fails() {
        if (m_left > 0)
            --m_left;
        return m_left == 0;
    }

    static int Open(sqlite3_vfs*, const char* name, sqlite3_file* file, int flags, int* out) {
        const int code = s_disk->m_real.xOpen(&s_disk->m_real, name, file, flags, out);
        if (code == SQLITE_OK && file->pMethods != nullptr) {
            s_disk->m_methods = *file->pMethods;
            static std::map<const sqlite3_io_methods*, sqlite3_io_methods> shims;
            sqlite3_io_methods& shim = shims[file->pMethods];
            shim = *file->pMethods;
            shim.xWrite = Write;
            shim.xSync = Sync;
            shim.xTruncate = Truncate;
            file->pMethods = &shim;
        }
        return code;
    }
    static int Delete(sqlite3_vfs*, const char* name, int sync) {
        return s_disk->Fails() ? SQLITE_IOERR_DELETE : s_disk->m_real.xDelete(&s_disk->m_real, name, sync);
    }
    static int Write(sqlite3_file* file, const void* bytes, int count, sqlite3_int64 at) {
        return s_disk->Fails() ? s_disk->m_code : s_disk->m_methods.xWrite(file, bytes, count, at);
    }
    static int Sync(sqlite3_file* file, int flags) {
        return s_disk->Fails() ? SQLITE_IOERR_FSYNC : s_disk->m_methods.xSync(file, flags);
    }
    static int Truncate(sqlite3_file* file, sqlite3_int64 size) {
        return s_disk->Fails() ? SQLITE_IOERR_TRUNCATE : s_disk->m_methods.xTruncate(file, size);
    }

    static inline FailingDisk* s_disk = nullptr;
    sqlite3_vfs m_real;
    sqlite3_vfs m_shim;
    sqlite3_io_methods m_methods{};
    int m_left = -1;
    int m_code = SQLITE_IOERR_WRITE;
};

class StoreFault : public StoreTest {
protected:
    static std::string IdsIn(const std::wstring& path) {
        return Sql(path, "SELECT group_concat(id) FROM (SELECT id FROM AAA ORDER BY seq)");
    }

    FailingDisk m_disk;
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
