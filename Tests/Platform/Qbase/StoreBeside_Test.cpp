#include "StoreFixture.h"

namespace qbasetest {
namespace {

class StoreBeside : public StoreTest {
protected:
    StoreBeside() { CQbase::setLockTimeout(50); }

    bool OpenSecond(CQbase& beside, CQbase& primary, bool create = true) {
        return beside.openBeside(primary, m_definition, m_second, create);
    }

    /// Gives both files a record "x".
    void MakeBoth() {
        Change([&](CQbase& qb) {
            CQbase beside;
            ASSERT_TRUE(OpenSecond(beside, qb));
            Add(qb, "AAA", L"x", 1);
            Add(beside, "AAA", L"x", 1);
        });
    }

    static std::string IdsIn(const std::wstring& path) {
        return Sql(path, "SELECT group_concat(id) FROM (SELECT id FROM AAA ORDER BY seq)");
    }
};

TEST_F(StoreBeside, BothFilesAreCommittedAtTheClose) {
    MakeBoth();
    EXPECT_EQ(IdsIn(m_path), "x");
    EXPECT_EQ(IdsIn(m_second), "x");
    EXPECT_EQ(Sql(m_second, "PRAGMA user_version"), "1");
}

TEST_F(StoreBeside, NeitherFileIsChangedWhenThePrimaryIsAbandoned) {
    MakeBoth();
    CQbase qb;
    CQbase beside;
    ASSERT_TRUE(Open(qb) && qb.lockForUpdate() && OpenSecond(beside, qb));
    Add(qb, "AAA", L"y");
    Add(beside, "AAA", L"y");
    ASSERT_TRUE(beside.closeDatabase());
    qb.abandon();
    EXPECT_EQ(IdsIn(m_path), "x");
    EXPECT_EQ(IdsIn(m_second), "x");
}

TEST_F(StoreBeside, TheClosingOfACompanionCommitsNothing) {
    MakeBoth();
    Child child([&] { return IdsIn(m_second) == "x"; });
    CQbase qb;
    ASSERT_TRUE(Open(qb));
    {
        CQbase beside;
        ASSERT_TRUE(OpenSecond(beside, qb) && qb.lockForUpdate());
        Add(beside, "AAA", L"y");
    }
    qb.abandon();
    EXPECT_TRUE(child.Run());
}

TEST_F(StoreBeside, ItMayJoinBeforeTheLock) {
    Change([](CQbase&) {});
    CQbase qb;
    CQbase beside;
    ASSERT_TRUE(Open(qb) && OpenSecond(beside, qb) && qb.lockForUpdate());
    Add(qb, "AAA", L"a");
    Add(beside, "AAA", L"b");
    ASSERT_TRUE(beside.closeDatabase() && qb.closeDatabase());
    EXPECT_EQ(IdsIn(m_path), "a");
    EXPECT_EQ(IdsIn(m_second), "b");
}

TEST_F(StoreBeside, ItMayJoinAfterChangesOfThePrimary) {
    MakeBoth();
    Change([&](CQbase& qb) {
        Add(qb, "AAA", L"y");
        CQbase beside;
        ASSERT_TRUE(OpenSecond(beside, qb));
        Add(beside, "AAA", L"z");
        ASSERT_TRUE(beside.closeDatabase());
        Add(qb, "AAA", L"w");
    });
    EXPECT_EQ(IdsIn(m_path), "x,y,w");
    EXPECT_EQ(IdsIn(m_second), "x,z");
}

TEST_F(StoreBeside, TheSameFileMayJoinAgainInOneTransaction) {
    Change([&](CQbase& qb) {
        for (const wchar_t* id : {L"a", L"b", L"c"}) {
            Add(qb, "AAA", id);
            CQbase beside;
            ASSERT_TRUE(OpenSecond(beside, qb));
            Add(beside, "AAA", id);
            ASSERT_TRUE(beside.closeDatabase());
        }
        CQbase beside;
        ASSERT_TRUE(OpenSecond(beside, qb, false));
        EXPECT_EQ(Walk(beside, "AAA"), (Ids{L"a", L"b", L"c"}));
    });
    EXPECT_EQ(IdsIn(m_second), "a,b,c");
}

TEST_F(StoreBeside, TheSameFileMayJoinAgainAndAgainWithoutALock) {
    MakeBoth();
    CQbase qb;
    ASSERT_TRUE(Open(qb));
    for (int i = 0; i < 30; ++i) {
        CQbase beside;
        ASSERT_TRUE(OpenSecond(beside, qb));
        ASSERT_TRUE(beside.existRec("AAA", L"x"));
    }
}

TEST_F(StoreBeside, ItsRecordsAndNumbersAreItsOwn) {
    Change([&](CQbase& qb) {
        CQbase beside;
        ASSERT_TRUE(OpenSecond(beside, qb));
        Add(qb, "AAA", L"a");
        Add(qb, "AAA", L"b");
        Add(beside, "AAA", L"c");
        EXPECT_FALSE(beside.existRec("AAA", L"a"));
        EXPECT_FALSE(qb.existRec("AAA", L"c"));
        long count = 0;
        EXPECT_TRUE(beside.getNmbOfRecs(count) && count == 1);
        EXPECT_EQ(Walk(qb, "AAA"), (Ids{L"a", L"b"}));
    });
    EXPECT_EQ(Sql(m_second, "SELECT seq FROM AAA"), "1");
}

TEST_F(StoreBeside, AWalkInOneFileGoesOnWhileTheOtherIsChanged) {
    Change([&](CQbase& qb) {
        for (const wchar_t* id : {L"a", L"b", L"c"})
            Add(qb, "AAA", id);
        CQbase beside;
        ASSERT_TRUE(OpenSecond(beside, qb));
        Ids seen;
        for (bool found = qb.fetchFirstMember("AAA"); found; found = qb.fetchNextMember()) {
            seen.push_back(IdOf(qb));
            Add(beside, "AAA", seen.back().c_str());
        }
        EXPECT_EQ(seen, (Ids{L"a", L"b", L"c"}));
    });
}

TEST_F(StoreBeside, WithoutCreateAFileThatDoesNotStandDoesNotOpen) {
    Change([&](CQbase& qb) {
        Add(qb, "AAA", L"x");
        CQbase beside;
        EXPECT_FALSE(OpenSecond(beside, qb, false));
        EXPECT_EQ(ErrorOf(beside), QbaseError::NotFound);
    });
    EXPECT_FALSE(Stands(m_second));
    EXPECT_EQ(IdsIn(m_path), "x") << "the first file's change stands";
}

TEST_F(StoreBeside, AFileThatIsNoStoreDoesNotOpenAndThePrimaryStands) {
    WriteText(m_second, std::string(5000, 'z'));
    Change([&](CQbase& qb) {
        Add(qb, "AAA", L"x");
        CQbase beside;
        EXPECT_FALSE(OpenSecond(beside, qb));
        EXPECT_EQ(ErrorOf(beside), QbaseError::NotAStore);
        Add(qb, "AAA", L"y");
    });
    EXPECT_EQ(ReadBytes(m_second), std::string(5000, 'z'));
    EXPECT_EQ(IdsIn(m_path), "x,y");
}

TEST_F(StoreBeside, ADamagedStoreDoesNotOpenAndThePrimaryStands) {
    MakeBoth();
    std::filesystem::resize_file(Native(m_second), 4096);
    const std::string before = ReadBytes(m_second);
    Change([&](CQbase& qb) {
        Add(qb, "AAA", L"y");
        CQbase beside;
        EXPECT_FALSE(OpenSecond(beside, qb));
        EXPECT_EQ(ErrorOf(beside), QbaseError::NotAStore);
        Add(qb, "AAA", L"z");
    });
    EXPECT_EQ(ReadBytes(m_second), before);
    EXPECT_EQ(IdsIn(m_path), "x,y,z");
}

TEST_F(StoreBeside, ALaterVersionDoesNotOpenAndThePrimaryStands) {
    MakeBoth();
    Sql(m_second, "PRAGMA user_version=9");
    Change([&](CQbase& qb) {
        CQbase beside;
        EXPECT_FALSE(OpenSecond(beside, qb));
        EXPECT_EQ(ErrorOf(beside), QbaseError::NewerVersion);
        Add(qb, "AAA", L"y");
    });
    EXPECT_EQ(IdsIn(m_path), "x,y");
}

TEST_F(StoreBeside, AnEmptyFileIsFilledAtTheCommit) {
    WriteText(m_second, "");
    Change([&](CQbase& qb) {
        CQbase beside;
        EXPECT_FALSE(OpenSecond(beside, qb, false));
        EXPECT_EQ(ErrorOf(beside), QbaseError::NotFound);
        ASSERT_TRUE(OpenSecond(beside, qb, true));
        EXPECT_EQ(Walk(beside, "AAA"), Ids{});
    });
    CQbase qb;
    EXPECT_TRUE(qb.openDatabase(m_definition, m_second, false));
}

TEST_F(StoreBeside, AFileThatCameIntoBeingInAnAbandonedTransactionIsAsGoodAsNone) {
    Change([](CQbase&) {});
    CQbase qb;
    CQbase beside;
    ASSERT_TRUE(Open(qb) && qb.lockForUpdate() && OpenSecond(beside, qb));
    Add(beside, "AAA", L"y");
    ASSERT_TRUE(beside.closeDatabase());
    qb.abandon();
    EXPECT_FALSE(qb.openDatabase(m_definition, m_second, false));
    EXPECT_EQ(ErrorOf(qb), QbaseError::NotFound);
}

TEST_F(StoreBeside, ItIsLockedForUpdateWithThePrimary) {
    MakeBoth();
    const auto isLocked = [&] {
        CQbase qb;
        return !qb.openDatabase(m_definition, m_second, false) && ErrorOf(qb) == QbaseError::Locked;
    };
    Child before(isLocked);
    Child after(isLocked);
    CQbase qb;
    CQbase beside;
    ASSERT_TRUE(Open(qb) && OpenSecond(beside, qb) && qb.lockForUpdate());
    EXPECT_TRUE(before.Run());
    ASSERT_TRUE(beside.closeDatabase() && qb.closeDatabase());
    ASSERT_TRUE(Open(qb) && qb.lockForUpdate() && OpenSecond(beside, qb));
    EXPECT_TRUE(after.Run()) << "also where it joined after the lock, and before any change";
}

TEST_F(StoreBeside, TheLocksEndWithThePrimary) {
    MakeBoth();
    for (const bool joinFirst : {true, false}) {
        Child child([&] {
            CQbase first;
            CQbase second;
            return Open(first) && first.lockForUpdate() && second.openDatabase(m_definition, m_second, false) &&
                   second.lockForUpdate();
        });
        CQbase qb;
        CQbase beside;
        ASSERT_TRUE(Open(qb));
        ASSERT_TRUE(joinFirst ? OpenSecond(beside, qb) && qb.lockForUpdate()
                              : qb.lockForUpdate() && OpenSecond(beside, qb));
        ASSERT_TRUE(beside.fetchFirstMember("AAA"));
        ASSERT_TRUE(beside.closeDatabase() && qb.closeDatabase());
        EXPECT_TRUE(child.Run()) << joinFirst;
    }
}

TEST_F(StoreBeside, AReaderOfTheCompanionKeepsItOutAndThePrimaryStands) {
    MakeBoth();
    const Turn held;
    const Turn done;
    const pid_t child = fork();
    if (child == 0) {
        CQbase reader;
        const bool ok = reader.openDatabase(m_definition, m_second, false) && reader.lockForRead();
        held.Give();
        done.Await();
        _exit(ok && reader.existRec("AAA", L"x") ? 0 : 1);
    }
    held.Await();
    {
        CQbase qb;
        ASSERT_TRUE(Open(qb) && qb.lockForUpdate());
        Add(qb, "AAA", L"y");
        for (int i = 0; i < 15; ++i) {
            CQbase beside;
            EXPECT_FALSE(OpenSecond(beside, qb));
            EXPECT_EQ(ErrorOf(beside), QbaseError::Locked);
        }
        Add(qb, "AAA", L"z");
        EXPECT_TRUE(qb.closeDatabase()) << "a commit does not fail for a reader of the companion";
    }
    done.Give();
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(IdsIn(m_path), "x,y,z");
    EXPECT_EQ(IdsIn(m_second), "x");
}

TEST_F(StoreBeside, ItIsHadOnceItsReaderIsGone) {
    MakeBoth();
    const Turn held;
    const Turn done;
    const pid_t child = fork();
    if (child == 0) {
        CQbase reader;
        const bool ok = reader.openDatabase(m_definition, m_second, false) && reader.lockForRead();
        held.Give();
        done.Await();
        _exit(ok && reader.closeDatabase() ? 0 : 1);
    }
    held.Await();
    CQbase qb;
    ASSERT_TRUE(Open(qb) && qb.lockForUpdate());
    CQbase beside;
    EXPECT_FALSE(OpenSecond(beside, qb));
    done.Give();
    int status = 0;
    waitpid(child, &status, 0);
    ASSERT_TRUE(OpenSecond(beside, qb));
    Add(beside, "AAA", L"y");
    ASSERT_TRUE(beside.closeDatabase() && qb.closeDatabase());
    EXPECT_EQ(IdsIn(m_second), "x,y");
}

TEST_F(StoreBeside, AReaderOfTheCompanionKeepsThePrimaryFromTheLockWhereBothAreOpen) {
    MakeBoth();
    CQbase qb;
    CQbase beside;
    CQbase reader;
    ASSERT_TRUE(Open(qb) && OpenSecond(beside, qb));
    ASSERT_TRUE(reader.openDatabase(m_definition, m_second, false) && reader.lockForRead());
    EXPECT_FALSE(qb.lockForUpdate());
    EXPECT_EQ(ErrorOf(qb), QbaseError::Locked);
    ASSERT_TRUE(reader.closeDatabase());
    EXPECT_TRUE(qb.lockForUpdate());
}

TEST_F(StoreBeside, ItSharesThePrimarysReadLock) {
    MakeBoth();
    Child child([&] {
        CQbase qb;
        return qb.openDatabase(m_definition, m_second, false) && !qb.lockForUpdate() &&
               ErrorOf(qb) == QbaseError::Locked && qb.lockForRead();
    });
    CQbase qb;
    CQbase beside;
    ASSERT_TRUE(Open(qb) && qb.lockForRead() && OpenSecond(beside, qb));
    EXPECT_TRUE(beside.fetchFirstMember("AAA"));
    EXPECT_FALSE(beside.createRec("AAA", L"y"));
    EXPECT_EQ(ErrorOf(beside), QbaseError::NotLockedForUpdate);
    EXPECT_TRUE(child.Run());
}

TEST_F(StoreBeside, ItComesIntoBeingAlsoBesideAReadLock) {
    Change([](CQbase&) {});
    CQbase qb;
    CQbase beside;
    ASSERT_TRUE(Open(qb) && qb.lockForRead());
    ASSERT_TRUE(OpenSecond(beside, qb));
    EXPECT_FALSE(beside.fetchFirstMember("AAA"));
    EXPECT_EQ(ErrorOf(beside), QbaseError::NotFound);
}

TEST_F(StoreBeside, WithoutALockEachSaveIsOnDiskByItself) {
    MakeBoth();
    CQbase qb;
    CQbase beside;
    ASSERT_TRUE(Open(qb) && OpenSecond(beside, qb));
    Add(beside, "AAA", L"y");
    EXPECT_EQ(IdsIn(m_second), "x,y");
}

TEST_F(StoreBeside, AThreadThatHoldsItIsRefusedAtOnce) {
    MakeBoth();
    CQbase::setLockTimeout(60000);
    CQbase qb;
    CQbase beside;
    ASSERT_TRUE(Open(qb) && qb.lockForUpdate() && OpenSecond(beside, qb));
    CQbase other;
    EXPECT_FALSE(other.openDatabase(m_definition, m_second, false));
    EXPECT_EQ(ErrorOf(other), QbaseError::Locked);
    EXPECT_FALSE(OpenSecond(other, qb)) << "it is in use";
    EXPECT_EQ(ErrorOf(other), QbaseError::Locked);
    EXPECT_FALSE(other.openBeside(qb, m_definition, m_path, false)) << "a file beside itself";
    EXPECT_EQ(ErrorOf(other), QbaseError::Locked);
}

TEST_F(StoreBeside, AFileThatTheThreadHoldsElsewhereIsRefusedAtOnce) {
    MakeBoth();
    CQbase::setLockTimeout(60000);
    CQbase holder;
    ASSERT_TRUE(holder.openDatabase(m_definition, m_second, false) && holder.lockForUpdate());
    CQbase qb;
    CQbase beside;
    ASSERT_TRUE(Open(qb) && qb.lockForUpdate());
    EXPECT_FALSE(OpenSecond(beside, qb));
    EXPECT_EQ(ErrorOf(beside), QbaseError::Locked);
    Add(qb, "AAA", L"y");
    EXPECT_TRUE(qb.closeDatabase());
}

TEST_F(StoreBeside, ThePrimaryMustBeOpen) {
    CQbase qb;
    CQbase beside;
    EXPECT_FALSE(OpenSecond(beside, qb));
    EXPECT_EQ(ErrorOf(beside), QbaseError::WrongState);
    ASSERT_TRUE(Open(qb));
    ASSERT_TRUE(OpenSecond(beside, qb));
    EXPECT_FALSE(OpenSecond(beside, qb));
    EXPECT_EQ(ErrorOf(beside), QbaseError::WrongState);
    CQbase other;
    EXPECT_FALSE(other.openBeside(qb, m_definition, L"", true));
    EXPECT_EQ(ErrorOf(other), QbaseError::BadArgument);
    EXPECT_FALSE(other.openBeside(qb, m_folder.File(L"none.ddq"), m_folder.File(L"third.db"), true));
    EXPECT_EQ(ErrorOf(other), QbaseError::BadDefinition);
    EXPECT_TRUE(other.openBeside(qb, m_definition, m_folder.File(L"third.db"), true)) << "there may be several";
}

TEST_F(StoreBeside, ACompanionThatOutlivesItsPrimaryDoesNothing) {
    MakeBoth();
    CQbase beside;
    {
        CQbase qb;
        ASSERT_TRUE(Open(qb) && qb.lockForUpdate() && OpenSecond(beside, qb));
        Add(beside, "AAA", L"y");
        ASSERT_TRUE(qb.closeDatabase());
    }
    EXPECT_FALSE(beside.existRec("AAA", L"y"));
    EXPECT_EQ(ErrorOf(beside), QbaseError::Doomed);
    EXPECT_FALSE(beside.closeDatabase());
    EXPECT_EQ(IdsIn(m_second), "x,y");
}

TEST_F(StoreBeside, AbandoningTheCompanionGivesUpBoth) {
    MakeBoth();
    CQbase qb;
    CQbase beside;
    ASSERT_TRUE(Open(qb) && qb.lockForUpdate() && OpenSecond(beside, qb));
    Add(qb, "AAA", L"y");
    Add(beside, "AAA", L"y");
    beside.abandon();
    EXPECT_FALSE(qb.createRec("AAA", L"z"));
    EXPECT_FALSE(qb.closeDatabase());
    EXPECT_EQ(IdsIn(m_path), "x");
    EXPECT_EQ(IdsIn(m_second), "x");
}

TEST_F(StoreBeside, ACompanionMayLockForBoth) {
    MakeBoth();
    CQbase qb;
    CQbase beside;
    ASSERT_TRUE(Open(qb) && OpenSecond(beside, qb) && beside.lockForUpdate());
    Add(qb, "AAA", L"y");
    EXPECT_TRUE(beside.closeDatabase() && qb.closeDatabase());
    EXPECT_EQ(IdsIn(m_path), "x,y");
}

TEST_F(StoreBeside, AFileThatWentMeanwhileKeepsBothFromTheLock) {
    MakeBoth();
    CQbase qb;
    CQbase beside;
    ASSERT_TRUE(Open(qb) && OpenSecond(beside, qb));
    ASSERT_TRUE(CQbase::removeStore(m_second));
    EXPECT_FALSE(qb.lockForUpdate());
    EXPECT_EQ(ErrorOf(qb), QbaseError::NotFound);
}

TEST_F(StoreBeside, ACompanionThatWasClosedIsLetGoOf) {
    MakeBoth();
    CQbase qb;
    CQbase third;
    ASSERT_TRUE(Open(qb));
    {
        CQbase beside;
        ASSERT_TRUE(OpenSecond(beside, qb) && third.openBeside(qb, m_definition, m_folder.File(L"third.db"), true));
    }
    ASSERT_TRUE(CQbase::removeStore(m_second));
    EXPECT_TRUE(qb.lockForUpdate());
    EXPECT_TRUE(third.createRec("AAA", L"y") && third.saveRec() && third.closeDatabase() && qb.closeDatabase());
}

TEST_F(StoreBeside, ACrashLeavesBothAsTheyWere) {
    MakeBoth();
    EXPECT_FALSE(InChild([&] {
        auto qb = std::make_unique<CQbase>();
        auto beside = std::make_unique<CQbase>();
        if (!Open(*qb) || !qb->lockForUpdate() || !OpenSecond(*beside, *qb))
            _exit(0);
        Add(*qb, "AAA", L"y");
        Add(*beside, "AAA", L"y");
        beside.release();
        qb.release();
        _exit(7);
        return true;
    }));
    EXPECT_EQ(IdsIn(m_path), "x");
    EXPECT_EQ(IdsIn(m_second), "x");
}

} // namespace
} // namespace qbasetest
