#include "StoreFixture.h"

#include <atomic>
#include <chrono>
#include <thread>

namespace qbasetest {
namespace {

using Clock = std::chrono::steady_clock;

class StoreLock : public StoreTest {
protected:
    StoreLock() {
        Change([](CQbase& qb) { Add(qb, "AAA", L"x", 1); });
        CQbase::setLockTimeout(50);
    }

    /// Runs the work while another process holds the store in the way that `take` takes it.
    void WhileAnotherProcessHolds(bool (CQbase::*take)(), const std::function<void()>& work) {
        const Turn held;
        const Turn done;
        const pid_t child = fork();
        if (child == 0) {
            CQbase qb;
            const bool ok = Open(qb, false) && (qb.*take)();
            held.Give();
            done.Await();
            qb.abandon();
            _exit(ok ? 0 : 1);
        }
        held.Await();
        work();
        done.Give();
        int status = 0;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
    }

    QbaseError TryLock(bool (CQbase::*take)()) {
        CQbase qb;
        if (!Open(qb, false) || !(qb.*take)())
            return ErrorOf(qb);
        return QbaseError::None;
    }

    /// Runs the work on a thread of its own.
    static void OnAnotherThread(const std::function<void()>& work) { std::thread(work).join(); }
};

TEST_F(StoreLock, ReadersDoNotDisturbEachOther) {
    WhileAnotherProcessHolds(&CQbase::lockForRead, [&] { EXPECT_EQ(TryLock(&CQbase::lockForRead), QbaseError::None); });
    Look([&](CQbase&) { OnAnotherThread([&] { EXPECT_EQ(TryLock(&CQbase::lockForRead), QbaseError::None); }); });
}

TEST_F(StoreLock, TheUpdateLockIsExclusiveAtOnce) {
    WhileAnotherProcessHolds(&CQbase::lockForUpdate, [&] {
        EXPECT_EQ(TryLock(&CQbase::lockForRead), QbaseError::Locked);
        EXPECT_EQ(TryLock(&CQbase::lockForUpdate), QbaseError::Locked);
    });
    EXPECT_EQ(TryLock(&CQbase::lockForUpdate), QbaseError::None);
}

TEST_F(StoreLock, AReaderKeepsWritersOut) {
    WhileAnotherProcessHolds(&CQbase::lockForRead, [&] {
        EXPECT_EQ(TryLock(&CQbase::lockForUpdate), QbaseError::Locked);
        EXPECT_EQ(TryLock(&CQbase::beginTransaction), QbaseError::Locked);
    });
}

TEST_F(StoreLock, TheReadLockIsReallyTaken) {
    Child during([&] { return TryLock(&CQbase::lockForUpdate) == QbaseError::Locked; });
    Child after([&] { return TryLock(&CQbase::lockForUpdate) == QbaseError::None; });
    CQbase reader;
    ASSERT_TRUE(Open(reader, false) && reader.lockForRead());
    EXPECT_TRUE(during.Run());
    ASSERT_TRUE(reader.closeDatabase());
    EXPECT_TRUE(after.Run());
}

TEST_F(StoreLock, AHandleWithoutALockHoldsNone) {
    Child child([&] { return TryLock(&CQbase::lockForUpdate) == QbaseError::None; });
    CQbase qb;
    ASSERT_TRUE(Open(qb, false) && qb.fetchFirstMember("AAA"));
    EXPECT_TRUE(child.Run());
}

TEST_F(StoreLock, TheWaitIsBoundedAndUsed) {
    CQbase::setLockTimeout(300);
    WhileAnotherProcessHolds(&CQbase::lockForRead, [&] {
        CQbase qb;
        ASSERT_TRUE(Open(qb, false));
        const auto start = Clock::now();
        EXPECT_FALSE(qb.lockForUpdate());
        EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(300));
        EXPECT_EQ(ErrorOf(qb), QbaseError::Locked);
        EXPECT_TRUE(qb.lockForRead()) << "a lock that was not to be had dooms nothing";
        EXPECT_TRUE(qb.closeDatabase());
    });
}

TEST_F(StoreLock, TheWaitEndsWhenTheLockIsFree) {
    CQbase::setLockTimeout(60000);
    std::atomic<bool> locked = false;
    std::thread waiting;
    {
        CQbase holder;
        ASSERT_TRUE(Open(holder, false) && holder.lockForRead());
        CQbase qb;
        waiting = std::thread([&] { locked = TryLock(&CQbase::lockForUpdate) == QbaseError::None; });
    }
    waiting.join();
    EXPECT_TRUE(locked);
}

TEST_F(StoreLock, OpeningWaitsForAWriterToo) {
    WhileAnotherProcessHolds(&CQbase::lockForUpdate, [&] {
        CQbase qb;
        EXPECT_FALSE(Open(qb, false));
        EXPECT_EQ(ErrorOf(qb), QbaseError::Locked);
    });
}

TEST_F(StoreLock, AThreadThatHoldsTheUpdateLockIsRefusedAtOnce) {
    CQbase::setLockTimeout(60000);
    CQbase other;
    ASSERT_TRUE(Open(other, false));
    CQbase holder;
    ASSERT_TRUE(Open(holder, false) && holder.lockForUpdate());
    CQbase qb;
    EXPECT_FALSE(Open(qb, false));
    EXPECT_EQ(ErrorOf(qb), QbaseError::Locked);
    EXPECT_FALSE(other.lockForRead());
    EXPECT_EQ(ErrorOf(other), QbaseError::Locked);
    EXPECT_FALSE(other.lockForUpdate());
    EXPECT_EQ(ErrorOf(other), QbaseError::Locked);
    EXPECT_FALSE(other.existRec("AAA", L"x")) << "a read without a lock would wait for ever too";
    ASSERT_TRUE(holder.closeDatabase());
    EXPECT_TRUE(Open(qb, false) && qb.lockForUpdate());
}

TEST_F(StoreLock, AThreadThatHoldsAReadLockIsRefusedTheUpdateLockAtOnce) {
    CQbase::setLockTimeout(60000);
    CQbase reader;
    ASSERT_TRUE(Open(reader, false) && reader.lockForRead());
    CQbase qb;
    ASSERT_TRUE(Open(qb, false));
    EXPECT_FALSE(qb.lockForUpdate());
    EXPECT_EQ(ErrorOf(qb), QbaseError::Locked);
    EXPECT_TRUE(qb.lockForRead());
}

TEST_F(StoreLock, AskingAgainForWhatAHandleHasIsTrue) {
    CQbase qb;
    ASSERT_TRUE(Open(qb, false) && qb.lockForUpdate());
    EXPECT_TRUE(qb.lockForUpdate() && qb.lockForRead() && qb.beginTransaction());
    EXPECT_TRUE(qb.closeDatabase());
    ASSERT_TRUE(Open(qb, false) && qb.lockForRead());
    EXPECT_TRUE(qb.lockForRead());
    EXPECT_FALSE(qb.lockForUpdate()) << "two readers that both want to write would wait for each other";
    EXPECT_EQ(ErrorOf(qb), QbaseError::NotLockedForUpdate);
    EXPECT_TRUE(qb.fetchFirstMember("AAA"));
}

TEST_F(StoreLock, ALockedHandleSeesOneState) {
    CQbase reader;
    ASSERT_TRUE(Open(reader, false) && reader.lockForRead());
    OnAnotherThread([&] {
        CQbase writer;
        EXPECT_TRUE(Open(writer, false));
        EXPECT_FALSE(writer.lockForUpdate());
    });
    EXPECT_TRUE(reader.existRec("AAA", L"x"));
}

TEST_F(StoreLock, AfterTheLockAHandleWorksOnTheFileAtThePath) {
    CQbase qb;
    ASSERT_TRUE(Open(qb, false));
    ASSERT_TRUE(CQbase::removeStore(m_path));
    Change([](CQbase& other) { Add(other, "AAA", L"new"); });
    ASSERT_TRUE(qb.lockForUpdate());
    EXPECT_TRUE(qb.existRec("AAA", L"new"));
    EXPECT_FALSE(qb.existRec("AAA", L"x"));
    ASSERT_TRUE(qb.createRec("AAA", L"more") && qb.saveRec() && qb.closeDatabase());
    Look([](CQbase& look) { EXPECT_EQ(Walk(look, "AAA"), (Ids{L"new", L"more"})); });
}

TEST_F(StoreLock, ALockOnAFileThatIsGoneFailsWithoutCreate) {
    for (const auto take : {&CQbase::lockForRead, &CQbase::lockForUpdate}) {
        Change([](CQbase&) {});
        CQbase qb;
        ASSERT_TRUE(Open(qb, false));
        ASSERT_TRUE(CQbase::removeStore(m_path));
        EXPECT_FALSE((qb.*take)());
        EXPECT_EQ(ErrorOf(qb), QbaseError::NotFound);
        EXPECT_FALSE(Stands(m_path));
    }
}

TEST_F(StoreLock, ALockOnAFileThatIsGoneMakesItAnewWithCreate) {
    CQbase qb;
    ASSERT_TRUE(Open(qb, true));
    ASSERT_TRUE(CQbase::removeStore(m_path));
    ASSERT_TRUE(qb.lockForUpdate() && qb.createRec("AAA", L"y") && qb.saveRec() && qb.closeDatabase());
    Look([](CQbase& look) { EXPECT_EQ(Walk(look, "AAA"), (Ids{L"y"})); });
}

TEST_F(StoreLock, AWriteWithoutALockToAFileThatIsGoneDoomsTheHandle) {
    CQbase qb;
    ASSERT_TRUE(Open(qb, false) && qb.createRec("AAA", L"y"));
    ASSERT_TRUE(CQbase::removeStore(m_path));
    EXPECT_FALSE(qb.saveRec());
    EXPECT_EQ(ErrorOf(qb), QbaseError::Disk);
    EXPECT_FALSE(qb.closeDatabase());
}

TEST_F(StoreLock, AWriteWithoutALockThatMustWaitTooLongDoomsTheHandle) {
    CQbase qb;
    ASSERT_TRUE(Open(qb, false) && qb.fetchEqualRec("AAA", L"x") && qb.setShort(kMEPType, 2));
    WhileAnotherProcessHolds(&CQbase::lockForRead, [&] {
        EXPECT_FALSE(qb.saveRec());
        EXPECT_EQ(ErrorOf(qb), QbaseError::Locked);
    });
    EXPECT_FALSE(qb.saveRec());
    EXPECT_EQ(ErrorOf(qb), QbaseError::Doomed);
    EXPECT_FALSE(qb.lockForRead());
    EXPECT_EQ(ErrorOf(qb), QbaseError::Doomed);
    EXPECT_FALSE(qb.closeDatabase());
    EXPECT_EQ(Sql(m_path, "SELECT MEPType FROM AAA"), "1");
}

TEST_F(StoreLock, AReadThatMustWaitTooLongIsNotTakenForNoSuchRecord) {
    CQbase qb;
    ASSERT_TRUE(Open(qb, false));
    WhileAnotherProcessHolds(&CQbase::lockForUpdate, [&] {
        EXPECT_FALSE(qb.existRec("AAA", L"x"));
        EXPECT_EQ(ErrorOf(qb), QbaseError::Locked);
    });
    EXPECT_FALSE(qb.closeDatabase());
}

TEST_F(StoreLock, TheWaitingTimeIsToldAsItWasSet) {
    EXPECT_EQ(CQbase::lockTimeout(), 50);
    CQbase::setLockTimeout(60000);
    EXPECT_EQ(CQbase::lockTimeout(), 60000);
}

TEST_F(StoreLock, ManyThreadsChangeOneStoreInTurn) {
    CQbase::setLockTimeout(60000);
    constexpr int threads = 4;
    constexpr int rounds = 10;
    std::vector<std::thread> workers;
    for (int t = 0; t < threads; ++t) {
        workers.emplace_back([&, t] {
            for (int i = 0; i < rounds; ++i) {
                CQbase qb;
                EXPECT_TRUE(Open(qb) && qb.lockForUpdate());
                EXPECT_TRUE(qb.createRec("BBB", std::to_wstring(t * rounds + i)) && qb.saveRec());
                EXPECT_TRUE(qb.closeDatabase());
            }
        });
    }
    for (auto& worker : workers)
        worker.join();
    Look([](CQbase& qb) { EXPECT_EQ(Walk(qb, "BBB").size(), std::size_t{threads * rounds}); });
    EXPECT_EQ(Sql(m_path, "SELECT count(DISTINCT seq) FROM BBB"), std::to_string(threads * rounds));
}

TEST_F(StoreLock, AThreadKnowsWhichStoresItHolds) {
    EXPECT_FALSE(CQbase::isHeldByThisThread(m_path));
    for (const auto take : {&CQbase::lockForRead, &CQbase::lockForUpdate}) {
        CQbase qb;
        ASSERT_TRUE(Open(qb, false));
        EXPECT_FALSE(CQbase::isHeldByThisThread(m_path)) << "open, but not locked";
        ASSERT_TRUE((qb.*take)());
        EXPECT_TRUE(CQbase::isHeldByThisThread(m_path));
        OnAnotherThread([&] { EXPECT_FALSE(CQbase::isHeldByThisThread(m_path)); });
        ASSERT_TRUE(qb.closeDatabase());
        EXPECT_FALSE(CQbase::isHeldByThisThread(m_path));
    }
    EXPECT_FALSE(CQbase::isHeldByThisThread(m_folder.File(L"none.db")));
    EXPECT_FALSE(CQbase::isHeldByThisThread(L""));
}

// --- whether somebody else committed -------------------------------------------------------------------------------

class ContentVersion : public StoreLock {
protected:
    static long Of(CQbase& qb) {
        long version = 0;
        EXPECT_TRUE(qb.getContentVersion(version));
        return version;
    }
};

TEST_F(ContentVersion, StaysUntilSomebodyElseCommits) {
    CQbase qb;
    ASSERT_TRUE(Open(qb, false));
    const long before = Of(qb);
    Look([](CQbase& other) { EXPECT_TRUE(other.fetchFirstMember("AAA")); });
    EXPECT_EQ(Of(qb), before) << "a reading";
    {
        CQbase other;
        ASSERT_TRUE(Open(other, false) && other.lockForUpdate());
        Add(other, "AAA", L"given up", 1);
        other.abandon();
    }
    EXPECT_EQ(Of(qb), before) << "a change that was given up";
    Change([](CQbase& other) { Add(other, "AAA", L"y", 2); });
    const long after = Of(qb);
    EXPECT_NE(after, before);
    ASSERT_TRUE(qb.lockForUpdate());
    EXPECT_EQ(Of(qb), after) << "the same under the lock";
}

TEST_F(ContentVersion, SeesAnotherProcessesCommit) {
    Child child([&] {
        Change([](CQbase& other) { Add(other, "AAA", L"y", 2); });
        return true;
    });
    CQbase qb;
    ASSERT_TRUE(Open(qb, false));
    const long before = Of(qb);
    EXPECT_TRUE(child.Run());
    EXPECT_NE(Of(qb), before);
}

TEST_F(ContentVersion, DoesNotChangeWithOnesOwnCommit) {
    CQbase qb;
    ASSERT_TRUE(Open(qb, false));
    const long before = Of(qb);
    Add(qb, "AAA", L"y", 2);
    EXPECT_EQ(Of(qb), before);
}

TEST_F(ContentVersion, IsAnotherOneForAnotherFileAtThePath) {
    CQbase qb;
    ASSERT_TRUE(Open(qb, false));
    const long before = Of(qb);
    ASSERT_TRUE(CQbase::removeStore(m_path));
    Change([](CQbase& other) { Add(other, "AAA", L"x", 1); });
    ASSERT_TRUE(qb.lockForUpdate());
    EXPECT_NE(Of(qb), before);
}

TEST_F(ContentVersion, OfAClosedHandleIsNone) {
    CQbase qb;
    long version = 7;
    EXPECT_FALSE(qb.getContentVersion(version));
    EXPECT_EQ(version, 7);
}

} // namespace
} // namespace qbasetest
