#include "StoreFixture.h"
#include "Support/FaultyFiles.h"

#include <csignal>

namespace qbasetest {
namespace {

/// Another process removes the second of two stores, makes it anew, and is killed before one of the changes of its
/// files, while this one has the old file open. The journal that is left belongs to the new file.
class StoreMoved : public StoreTest {
protected:
    using Work = std::function<void()>;

    bool Note(const std::wstring& id) {
        CQbase qb;
        CQbase beside;
        if (!Open(qb) || !qb.lockForUpdate() || !beside.openBeside(qb, m_definition, m_second, true))
            return false;
        for (CQbase* each : {&qb, &beside}) {
            if (!each->createRec("AAA", id) || !each->saveRec())
                return false;
        }
        return beside.closeDatabase() && qb.closeDatabase();
    }

    bool RemoveSecond() {
        CQbase qb;
        return Open(qb) && qb.lockForUpdate() && CQbase::removeStore(m_second) && qb.closeDatabase();
    }

    /// Before each change that the other process makes: `opens` runs before, `meets` after its end. Whatever they do,
    /// the stores are whole then, and can be written.
    void ExpectWholeStores(const Work& opens, const Work& meets) {
        ASSERT_TRUE(Note(L"first"));
        const std::pair<std::wstring, std::string> files[] = {{m_path, ReadBytes(m_path)},
                                                              {m_second, ReadBytes(m_second)}};
        bool isKilled = true;
        int kills = 0;
        for (long change = 1; isKilled; ++change) {
            SCOPED_TRACE(change);
            for (const auto& [path, bytes] : files) {
                std::filesystem::remove(Native(path));
                WriteText(path, bytes);
            }
            const Turn start;
            const pid_t other = fork();
            if (other == 0)
                MakeAnewUntil(change, start);
            opens();
            start.Give();
            int status = 0;
            ASSERT_EQ(waitpid(other, &status, 0), other);
            isKilled = WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
            kills += isKilled ? 1 : 0;
            EXPECT_TRUE(isKilled || (WIFEXITED(status) && WEXITSTATUS(status) == 0)) << status;
            meets();
            EXPECT_TRUE(Note(L"last"));
            EXPECT_TRUE(Note(L"once more"));
            EXPECT_EQ(Sql(m_path, "PRAGMA integrity_check"), "ok");
            EXPECT_EQ(Sql(m_second, "PRAGMA integrity_check"), "ok");
        }
        EXPECT_GT(kills, 20);
    }

private:
    [[noreturn]] void MakeAnewUntil(long change, const Turn& start) {
        start.Await();
        tolmtest::FaultyFiles files(m_folder.Path());
        if (!RemoveSecond())
            _exit(1);
        files.CutPowerAt(change, tolmtest::FaultyFiles::Unsynced::Kept, 0);
        _exit(Note(L"second") ? 0 : 2);
    }
};

TEST_F(StoreMoved, ALockOnTheOldFileLeavesTheJournalOfTheNewOneAlone) {
    for (const bool isUpdate : {false, true}) {
        std::unique_ptr<CQbase> old;
        ASSERT_TRUE(CQbase::removeStore(m_path) && CQbase::removeStore(m_second));
        ExpectWholeStores(
            [&] {
                old = std::make_unique<CQbase>();
                ASSERT_TRUE(old->openDatabase(m_definition, m_second, false));
            },
            [&] {
                static_cast<void>(isUpdate ? old->lockForUpdate() : old->lockForRead());
                old.reset();
            });
    }
}

TEST_F(StoreMoved, NobodyElseHasTheOldFileOpen) {
    ExpectWholeStores([] {}, [] {});
}

TEST_F(StoreMoved, WorkingCopiesOfTheOldFileLeaveTheJournalOfTheNewOneAlone) {
    std::unique_ptr<CQbaseWorkingCopies> copies;
    ExpectWholeStores(
        [&] {
            copies = std::make_unique<CQbaseWorkingCopies>();
            ASSERT_TRUE(
                copies->make({m_path, m_folder.File(L"copy.db")}, {m_second, m_folder.File(L"second copy.db")}));
        },
        [&] {
            EXPECT_FALSE(copies->putBack());
            copies.reset();
        });
}

} // namespace
} // namespace qbasetest
