#include "StoreFixture.h"
#include "Support/FailingDisk.h"
#include "Support/FileSizeLimit.h"
#include "Vorn/Files.h"

#include <filesystem>
#include <thread>

namespace qbasetest {
namespace {

/// Two stores, and copies of them that are worked on.
class StoreWorkingCopies : public StoreTest {
protected:
    StoreWorkingCopies() { RestoreStores(); }

    /// Makes both stores anew.
    void RestoreStores() {
        ASSERT_TRUE(CQbase::removeStore(m_path) && CQbase::removeStore(m_second));
        ChangeAt(m_path, [](CQbase& qb) {
            Add(qb, "AAA", L"a", 1);
            Add(qb, "BBB", L"b", 2);
            Add(qb, "AAA", L"c", 3);
        });
        ChangeAt(m_second, [](CQbase& qb) { Add(qb, "AAA", L"noted", 1); });
    }

    void ChangeAt(const std::wstring& path, const std::function<void(CQbase&)>& work) {
        CQbase qb;
        ASSERT_TRUE(qb.openDatabase(m_definition, path, true));
        ASSERT_TRUE(qb.lockForUpdate());
        work(qb);
        ASSERT_TRUE(qb.closeDatabase());
    }

    bool Make() { return m_copies.make({m_path, m_copy}, {m_second, m_secondCopy}); }
    QbaseError Error() const { return static_cast<QbaseError>(m_copies.getLastError()); }

    /// All records of both classes with their numbers, "AAA 1 a 1".
    static std::string Rows(const std::wstring& path) {
        return Sql(path, "SELECT group_concat(row,';') FROM (SELECT 'AAA '||seq||' '||id||' '||ifnull(MEPType,'-') AS "
                         "row FROM AAA UNION ALL SELECT 'BBB '||seq||' '||id||' '||ifnull(MEPType,'-') FROM BBB)");
    }
    static std::string Integrity(const std::wstring& path) { return Sql(path, "PRAGMA integrity_check"); }

    /// What a merge may do to the copies.
    void ChangeCopies() {
        ChangeAt(m_copy, [](CQbase& qb) {
            ASSERT_TRUE(qb.deleteRec("AAA", L"a"));
            ASSERT_TRUE(qb.fetchEqualRec("BBB", L"b"));
            ASSERT_TRUE(qb.setShort(kMEPType, 20) && qb.saveRec());
            Add(qb, "AAA", L"d", 4);
        });
        ChangeAt(m_secondCopy, [](CQbase& qb) { ASSERT_TRUE(qb.deleteRec("AAA", L"noted")); });
    }

    void PutAnotherInPlaceOfTheCopy() {
        const std::wstring theirs = m_folder.File(L"theirs.db");
        ASSERT_TRUE(CQbase::copyStore(m_path, theirs));
        std::filesystem::rename(Native(theirs), Native(m_copy));
    }

    const std::wstring m_copy = m_folder.File(L"set_temp.db");
    const std::wstring m_secondCopy = m_folder.File(L"set_Status_temp.db");
    CQbaseWorkingCopies m_copies;

    static constexpr const char* kOld = "AAA 1 a 1;AAA 3 c 3;BBB 2 b 2";
    static constexpr const char* kOldSecond = "AAA 1 noted 1";
    static constexpr const char* kNew = "AAA 3 c 3;AAA 4 d 4;BBB 2 b 20";
};

TEST_F(StoreWorkingCopies, CopiesHoldWhatTheStoresHold) {
    ASSERT_TRUE(Make());
    EXPECT_EQ(Rows(m_copy), kOld);
    EXPECT_EQ(Rows(m_secondCopy), kOldSecond);
    EXPECT_EQ(Error(), QbaseError::None);
}

TEST_F(StoreWorkingCopies, BothStoresGetTheContentsOfTheirCopiesWithTheNumbers) {
    ASSERT_TRUE(Make());
    ChangeCopies();
    EXPECT_EQ(Rows(m_path), kOld);
    ASSERT_TRUE(m_copies.putBack());
    EXPECT_EQ(Rows(m_path), kNew);
    EXPECT_EQ(Rows(m_second), "");
    EXPECT_EQ(Integrity(m_path) + Integrity(m_second), "okok");
    EXPECT_TRUE(Stands(m_copy) && Stands(m_secondCopy)) << "the copies stay";
}

TEST_F(StoreWorkingCopies, EveryKindOfAttributeIsPutBack) {
    const std::string pipes(32, 'p');
    ChangeAt(m_path, [](CQbase& qb) {
        ASSERT_TRUE(qb.fetchEqualRec("AAA", L"c"));
        ASSERT_TRUE(qb.setWsz(kName, L"goes", -1) && qb.saveRec());
    });
    ASSERT_TRUE(Make());
    ChangeAt(m_copy, [&](CQbase& qb) {
        CWszArray ids;
        ids.append(L"x");
        const float sizes[] = {1.5F, 2.5F};
        ASSERT_TRUE(qb.fetchEqualRec("AAA", L"c"));
        ASSERT_TRUE(qb.removeAttribute(kName) && qb.removeAttribute(kMEPType));
        ASSERT_TRUE(qb.setByte(kFlag, 7) && qb.setLong(kVersion, 8) && qb.setFloat(kSize, 0.1F));
        ASSERT_TRUE(qb.setDouble(kRoughness, 0.25) && qb.setWsz(kMaterialId, L"", -1) && qb.setWszArray(kIds, ids, -1));
        ASSERT_TRUE(qb.setFloatArray(kSizes, sizes, 2) && qb.setBinary(kTime, "twelve bytes", 0));
        ASSERT_TRUE(qb.setBinaryArray(kPipes, pipes.data(), 2, 0) && qb.saveRec());
    });
    ASSERT_TRUE(m_copies.putBack());
    const char* const all = "SELECT seq||quote(MEPType)||quote(Flag)||quote(Version)||quote(Size)||quote(Roughness)||"
                            "quote(Name)||quote(MaterialId)||quote(Ids)||quote(Sizes)||quote(Time)||quote(Pipes) "
                            "FROM AAA WHERE id='c'";
    EXPECT_EQ(Sql(m_path, all), Sql(m_copy, all));
    EXPECT_EQ(Sql(m_path, all).substr(0, 7), "3NULL78");
}

TEST_F(StoreWorkingCopies, ANumberMayPassToAnotherIdAndAnIdToAnotherNumber) {
    ASSERT_TRUE(Make());
    Sql(m_copy,
        "UPDATE AAA SET id='t' WHERE seq=1;UPDATE AAA SET id='a' WHERE seq=3;UPDATE AAA SET id='c' WHERE seq=1");
    ASSERT_TRUE(m_copies.putBack());
    EXPECT_EQ(Rows(m_path), "AAA 1 c 1;AAA 3 a 3;BBB 2 b 2");
    EXPECT_EQ(Integrity(m_path), "ok");
}

TEST_F(StoreWorkingCopies, WhatIsEqualIsNotWrittenAgain) {
    ChangeAt(m_path, [](CQbase& qb) {
        const std::string list(16 * 200, 'p');
        for (int i = 0; i < 300; ++i) {
            ASSERT_TRUE(qb.createRec("AAA", L"many" + std::to_wstring(i)));
            ASSERT_TRUE(qb.setBinaryArray(kPipes, list.data(), 200, 0) && qb.saveRec());
        }
    });
    ASSERT_TRUE(Make());
    ChangeAt(m_copy, [](CQbase& qb) { Add(qb, "BBB", L"new"); });
    const std::string before = ReadBytes(m_path);
    ASSERT_TRUE(m_copies.putBack());
    const std::string after = ReadBytes(m_path);
    ASSERT_EQ(before.size(), after.size());
    constexpr std::size_t page = 4096;
    int changed = 0;
    for (std::size_t at = 0; at < before.size(); at += page)
        changed += before.compare(at, page, after, at, page) != 0;
    EXPECT_LE(changed, 4) << "of " << before.size() / page << " pages";
    EXPECT_GT(changed, 0);
}

TEST_F(StoreWorkingCopies, NothingChangedPutsNothingBack) {
    ASSERT_TRUE(Make());
    const std::string before = ReadBytes(m_path);
    ASSERT_TRUE(m_copies.putBack());
    EXPECT_EQ(ReadBytes(m_path), before);
}

TEST_F(StoreWorkingCopies, AnEmptiedStoreIsStillAStore) {
    ASSERT_TRUE(Make());
    ChangeCopies();
    ASSERT_TRUE(m_copies.putBack());
    CQbase qb;
    long count = -1;
    ASSERT_TRUE(qb.openDatabase(m_definition, m_second, false) && qb.getNmbOfRecs(count));
    EXPECT_EQ(count, 0);
}

// --- who else uses the stores --------------------------------------------------------------------------------------

TEST_F(StoreWorkingCopies, AStoreThatChangedSinceIsNotOverwritten) {
    for (const auto* changed : {&m_path, &m_second}) {
        ASSERT_TRUE(Make());
        ChangeCopies();
        ChangeAt(*changed, [](CQbase& qb) { Add(qb, "AAA", L"meanwhile"); });
        const std::string first = Rows(m_path);
        const std::string second = Rows(m_second);
        EXPECT_FALSE(m_copies.putBack());
        EXPECT_EQ(Error(), QbaseError::Changed);
        EXPECT_EQ(Rows(m_path) + Rows(m_second), first + second);
        ChangeAt(*changed, [](CQbase& qb) { ASSERT_TRUE(qb.deleteRec("AAA", L"meanwhile")); });
    }
}

TEST_F(StoreWorkingCopies, AChangeThatWasTakenBackIsAChange) {
    ASSERT_TRUE(Make());
    ChangeAt(m_second, [](CQbase& qb) { Add(qb, "AAA", L"meanwhile"); });
    ChangeAt(m_second, [](CQbase& qb) { ASSERT_TRUE(qb.deleteRec("AAA", L"meanwhile")); });
    EXPECT_FALSE(m_copies.putBack());
    EXPECT_EQ(Error(), QbaseError::Changed);
}

TEST_F(StoreWorkingCopies, AnotherProcessesChangeIsSeen) {
    Child other([&] {
        CQbase qb;
        return qb.openDatabase(m_definition, m_path, false) && qb.lockForUpdate() && qb.createRec("AAA", L"other") &&
               qb.saveRec() && qb.closeDatabase();
    });
    ASSERT_TRUE(Make());
    ASSERT_TRUE(other.Run());
    EXPECT_FALSE(m_copies.putBack());
    EXPECT_EQ(Error(), QbaseError::Changed);
    EXPECT_EQ(Sql(m_path, "SELECT count(*) FROM AAA"), "3");
}

TEST_F(StoreWorkingCopies, AStoreThatIsAnotherFileNowIsNotOverwritten) {
    for (const auto* moved : {&m_path, &m_second}) {
        ASSERT_TRUE(Make());
        ASSERT_TRUE(CQbase::removeStore(*moved));
        ChangeAt(*moved, [](CQbase& qb) { Add(qb, "AAA", L"other file"); });
        EXPECT_FALSE(m_copies.putBack());
        EXPECT_EQ(Error(), QbaseError::Changed);
        EXPECT_EQ(Rows(*moved), "AAA 1 other file 0");
    }
}

/// As when two processes work on the same stores, whose copies bear the same names.
TEST_F(StoreWorkingCopies, SomebodyElsesCopyIsNotPutBack) {
    ASSERT_TRUE(Make());
    ChangeCopies();
    CQbaseWorkingCopies others;
    ASSERT_TRUE(CQbase::removeStore(m_copy) && CQbase::removeStore(m_secondCopy));
    ASSERT_TRUE(others.make({m_path, m_copy}, {m_second, m_secondCopy}));
    EXPECT_FALSE(m_copies.putBack());
    EXPECT_EQ(Error(), QbaseError::Changed);
    EXPECT_EQ(Rows(m_path), kOld);
    EXPECT_EQ(Rows(m_second), kOldSecond);
    ChangeCopies();
    EXPECT_TRUE(others.putBack()) << "the other one goes on";
    EXPECT_EQ(Rows(m_path), kNew);
}

/// What was meant for a copy must not come into that of another process, which would put it back as its own.
TEST_F(StoreWorkingCopies, AnotherProcessesCopyInTheSamePlaceDoesNotOpen) {
    ASSERT_TRUE(Make());
    PutAnotherInPlaceOfTheCopy();
    CQbase copy;
    EXPECT_FALSE(copy.openDatabase(m_definition, m_copy, false));
    EXPECT_FALSE(CQbase::removeStore(m_copy)) << "they may be at work on it";
    EXPECT_TRUE(Stands(m_copy));
    EXPECT_FALSE(m_copies.putBack());
    EXPECT_EQ(Error(), QbaseError::Changed);
    CQbaseWorkingCopies others;
    ASSERT_TRUE(others.make({m_path, m_copy}, {m_second, m_secondCopy})) << "a new copy replaces it";
    EXPECT_TRUE(copy.openDatabase(m_definition, m_copy, false));
}

TEST_F(StoreWorkingCopies, ACopyThatIsGoneIsNotPutBack) {
    ASSERT_TRUE(Make());
    ChangeCopies();
    ASSERT_TRUE(CQbase::removeStore(m_secondCopy));
    EXPECT_FALSE(m_copies.putBack());
    EXPECT_EQ(Rows(m_path), kOld);
    EXPECT_EQ(Rows(m_second), kOldSecond);
}

TEST_F(StoreWorkingCopies, AReadingInBetweenIsNoChange) {
    ASSERT_TRUE(Make());
    ChangeCopies();
    Look([](CQbase& qb) { EXPECT_TRUE(qb.existRec("AAA", L"a")); });
    EXPECT_TRUE(m_copies.putBack());
    EXPECT_EQ(Rows(m_path), kNew);
}

TEST_F(StoreWorkingCopies, TheStoresAreFreeInBetween) {
    ASSERT_TRUE(Make());
    CQbase::setLockTimeout(0);
    CQbase qb;
    EXPECT_TRUE(Open(qb, false) && qb.lockForUpdate());
}

TEST_F(StoreWorkingCopies, AReaderOfEitherStoreIsWaitedForInBounds) {
    CQbase::setLockTimeout(0);
    for (const auto* read : {&m_path, &m_second}) {
        ASSERT_TRUE(Make());
        ChangeCopies();
        const Turn locked;
        const Turn tried;
        std::thread reader([&] {
            CQbase qb;
            EXPECT_TRUE(qb.openDatabase(m_definition, *read, false) && qb.lockForRead());
            locked.Give();
            tried.Await();
        });
        locked.Await();
        EXPECT_FALSE(m_copies.putBack());
        EXPECT_EQ(Error(), QbaseError::Locked);
        tried.Give();
        reader.join();
        EXPECT_EQ(Rows(m_path), kOld);
        EXPECT_EQ(Rows(m_second), kOldSecond);
    }
}

TEST_F(StoreWorkingCopies, AWriterOfEitherStoreIsWaitedForInBounds) {
    CQbase::setLockTimeout(0);
    for (const auto* written : {&m_path, &m_second}) {
        const Turn locked;
        const Turn tried;
        std::thread writer([&] {
            CQbase qb;
            EXPECT_TRUE(qb.openDatabase(m_definition, *written, false) && qb.lockForUpdate());
            locked.Give();
            tried.Await();
        });
        locked.Await();
        EXPECT_FALSE(Make());
        EXPECT_EQ(Error(), QbaseError::Locked);
        tried.Give();
        writer.join();
    }
}

TEST_F(StoreWorkingCopies, AThreadThatHoldsAStoreIsRefusedAtOnce) {
    CQbase held;
    ASSERT_TRUE(Open(held, false) && held.lockForUpdate());
    EXPECT_FALSE(Make());
    EXPECT_EQ(Error(), QbaseError::Locked);
    ASSERT_TRUE(held.closeDatabase());

    ASSERT_TRUE(Make());
    ChangeCopies();
    CQbase reading;
    ASSERT_TRUE(Open(reading, false) && reading.lockForRead());
    EXPECT_FALSE(m_copies.putBack());
    EXPECT_EQ(Error(), QbaseError::Locked);
    EXPECT_EQ(Rows(m_path), kOld);
}

TEST_F(StoreWorkingCopies, ACopyThatIsStillHeldIsRefusedAtOnce) {
    ASSERT_TRUE(Make());
    CQbase copy;
    ASSERT_TRUE(copy.openDatabase(m_definition, m_copy, false) && copy.lockForUpdate());
    EXPECT_FALSE(m_copies.putBack());
    EXPECT_EQ(Error(), QbaseError::Locked);
    EXPECT_EQ(Rows(m_path), kOld);
}

// --- arguments and order of calls ----------------------------------------------------------------------------------

TEST_F(StoreWorkingCopies, NothingIsPutBackBeforeACopyOrTwice) {
    EXPECT_FALSE(m_copies.putBack());
    EXPECT_EQ(Error(), QbaseError::WrongState);
    ASSERT_TRUE(Make());
    ASSERT_TRUE(m_copies.putBack());
    EXPECT_FALSE(m_copies.putBack());
    EXPECT_EQ(Error(), QbaseError::WrongState);
}

TEST_F(StoreWorkingCopies, FourDifferentFilesAreNeeded) {
    const CQbaseWorkingCopies::Pair good{m_second, m_secondCopy};
    for (const CQbaseWorkingCopies::Pair& bad : {CQbaseWorkingCopies::Pair{L"", m_copy},
                                                 {m_path, L""},
                                                 {m_path, m_path},
                                                 {m_path, m_second},
                                                 {m_second, m_copy},
                                                 {m_path, m_secondCopy}}) {
        EXPECT_FALSE(m_copies.make(bad, good));
        EXPECT_EQ(Error(), QbaseError::BadArgument);
        EXPECT_FALSE(m_copies.make(good, bad));
        EXPECT_EQ(Error(), QbaseError::BadArgument);
    }
    EXPECT_EQ(Rows(m_path), kOld);
    EXPECT_EQ(Rows(m_second), kOldSecond);
}

TEST_F(StoreWorkingCopies, AMissingStoreCannotBeCopied) {
    ASSERT_TRUE(CQbase::removeStore(m_second));
    EXPECT_FALSE(Make());
    EXPECT_FALSE(m_copies.putBack());
}

TEST_F(StoreWorkingCopies, CopiesThatCannotBeWrittenFail) {
    EXPECT_FALSE(m_copies.make({m_path, m_folder.File(L"no folder/set.db")}, {m_second, m_secondCopy}));
    EXPECT_EQ(Error(), QbaseError::Disk);
    EXPECT_EQ(Rows(m_path), kOld);
}

TEST_F(StoreWorkingCopies, AnOldCopyIsOverwritten) {
    ChangeAt(m_copy, [](CQbase& qb) { Add(qb, "AAA", L"leftover"); });
    WriteText(m_secondCopy, "no store at all, left by somebody");
    ASSERT_TRUE(Make());
    EXPECT_EQ(Rows(m_copy), kOld);
    EXPECT_EQ(Rows(m_secondCopy), kOldSecond);
}

// --- files that are no stores --------------------------------------------------------------------------------------

TEST_F(StoreWorkingCopies, AFileThatIsNoStoreIsCopiedAsItIsAndNothingCanBePutBack) {
    for (const std::string& content : {std::string("no store"), std::string()}) {
        WriteText(m_second, content);
        ASSERT_TRUE(Make());
        EXPECT_EQ(ReadBytes(m_secondCopy), content);
        EXPECT_EQ(Rows(m_copy), kOld);
        EXPECT_FALSE(m_copies.putBack());
        EXPECT_EQ(Error(), QbaseError::WrongState);
    }
}

TEST_F(StoreWorkingCopies, AnotherFileIsNotTakenForACopyThatNothingIsPutBackFrom) {
    WriteText(m_second, "");
    ASSERT_TRUE(Make());
    CQbase copy;
    EXPECT_TRUE(copy.openDatabase(m_definition, m_copy, false) && copy.closeDatabase());
    PutAnotherInPlaceOfTheCopy();
    EXPECT_FALSE(copy.openDatabase(m_definition, m_copy, false));
    EXPECT_EQ(ErrorOf(copy), QbaseError::Locked);
    EXPECT_FALSE(m_copies.putBack());
    EXPECT_TRUE(copy.openDatabase(m_definition, m_copy, false)) << "free after it";
}

TEST_F(StoreWorkingCopies, ANewerStoreIsCopiedAsItIsAndNothingCanBePutBack) {
    Sql(m_path, "PRAGMA user_version=99");
    ASSERT_TRUE(Make());
    EXPECT_EQ(ReadBytes(m_copy), ReadBytes(m_path));
    EXPECT_FALSE(m_copies.putBack());
}

TEST_F(StoreWorkingCopies, ACopyThatIsNoStoreAnyMoreIsRefused) {
    const std::function<void()> damages[] = {
        [&] { Sql(m_copy, "PRAGMA user_version=99"); },
        [&] { Sql(m_copy, "PRAGMA application_id=1"); },
        [&] { WriteText(m_copy, "no store"); },
        [&] { ASSERT_TRUE(CQbase::removeStore(m_copy)); },
        [&] { ASSERT_TRUE(CQbase::removeStore(m_secondCopy)); },
    };
    for (const auto& damage : damages) {
        ASSERT_TRUE(Make());
        ChangeAt(m_copy, [](CQbase& qb) { Add(qb, "AAA", L"x"); });
        damage();
        EXPECT_FALSE(m_copies.putBack());
        EXPECT_EQ(Rows(m_path), kOld);
        EXPECT_EQ(Rows(m_second), kOldSecond);
    }
}

TEST_F(StoreWorkingCopies, ACopyWithMoreColumnsClassesAndIndexesBringsThemAlong) {
    Sql(m_path, "CREATE TABLE old(x)");
    Sql(m_path, "DROP INDEX AAA_MaterialId");
    Sql(m_path, "DROP TABLE \"000\"");
    ASSERT_TRUE(Make());
    WriteText(m_definition, std::string(kDefinition) + "1300 float More\nclass CCC\n1104 short MEPType\n1601 text "
                                                       "Name\nindex Name\n");
    ChangeAt(m_copy, [](CQbase& qb) {
        Add(qb, "CCC", L"of a new class");
        ASSERT_TRUE(qb.createRec("000", L"h") && qb.setFloat(1300, 2.5F) && qb.saveRec());
        ASSERT_TRUE(qb.fetchEqualRec("AAA", L"a") && qb.setShort(kMEPType, 9) && qb.saveRec());
    });
    Sql(m_copy, "CREATE INDEX AAA_MaterialId ON AAA(MaterialId)");
    Sql(m_copy, "DROP TABLE old");
    ASSERT_TRUE(m_copies.putBack());
    const char* const schema = "SELECT group_concat(sql) FROM (SELECT sql FROM sqlite_schema ORDER BY name)";
    EXPECT_EQ(Sql(m_path, schema), Sql(m_copy, schema));
    EXPECT_EQ(Sql(m_path, "SELECT More FROM \"000\""), "2.5");
    EXPECT_EQ(Sql(m_path, "SELECT id FROM CCC"), "of a new class");
    EXPECT_EQ(Sql(m_path, "SELECT MEPType FROM AAA WHERE id='a'"), "9");
    EXPECT_EQ(Integrity(m_path), "ok");
}

TEST_F(StoreWorkingCopies, ATableWithAnotherShapeIsReplacedWhole) {
    ASSERT_TRUE(Make());
    Sql(m_copy, "ALTER TABLE BBB ADD COLUMN Later TEXT");
    Sql(m_copy, "UPDATE BBB SET Later='l'");
    ASSERT_TRUE(m_copies.putBack());
    EXPECT_EQ(Sql(m_path, "SELECT id||Later FROM BBB"), "bl");
}

TEST_F(StoreWorkingCopies, ATableWithoutNumbersIsReplacedWhole) {
    Sql(m_path, "CREATE TABLE \"od\"\"d\"(x,\"y \"\" y\")");
    Sql(m_path, "INSERT INTO \"od\"\"d\" VALUES(1,2),(1,2)");
    ASSERT_TRUE(Make());
    Sql(m_copy, "INSERT INTO \"od\"\"d\" VALUES(3,4)");
    ASSERT_TRUE(m_copies.putBack());
    EXPECT_EQ(Sql(m_path, "SELECT count(*)||':'||sum(x) FROM \"od\"\"d\""), "3:5");
}

TEST_F(StoreWorkingCopies, AFullDiskLeavesBothStoresAsTheyWere) {
    ASSERT_TRUE(Make());
    ChangeCopies();
    ChangeAt(m_copy, [](CQbase& qb) {
        const std::string list(16 * 200, 'p');
        for (int i = 0; i < 100; ++i) {
            ASSERT_TRUE(qb.createRec("AAA", L"many" + std::to_wstring(i)));
            ASSERT_TRUE(qb.setBinaryArray(kPipes, list.data(), 200, 0) && qb.saveRec());
        }
    });
    {
        const tolmtest::FileSizeLimit limit(60000);
        EXPECT_FALSE(m_copies.putBack());
    }
    EXPECT_EQ(Error(), QbaseError::Disk);
    EXPECT_EQ(Rows(m_path), kOld);
    EXPECT_EQ(Rows(m_second), kOldSecond);
    EXPECT_EQ(Integrity(m_path) + Integrity(m_second), "okok");
}

TEST_F(StoreWorkingCopies, AFailureAtAnyPointPutsNothingBackAndIsTold) {
    tolmtest::FailingDisk disk;
    for (const int code : {SQLITE_FULL, SQLITE_IOERR_WRITE}) {
        bool wentThrough = false;
        for (int operations = 1; !wentThrough; ++operations) {
            ASSERT_TRUE(Make());
            ChangeCopies();
            disk.FailAfter(operations, code);
            const bool done = m_copies.putBack();
            wentThrough = !disk.HasFailed();
            disk.Heal();
            EXPECT_EQ(Rows(m_path), done ? kNew : kOld) << operations;
            EXPECT_EQ(Rows(m_second), done ? "" : kOldSecond) << operations;
            EXPECT_EQ(Integrity(m_path) + Integrity(m_second), "okok");
            if (done)
                RestoreStores();
        }
    }
}

TEST_F(StoreWorkingCopies, ACrashAtAnyPointLeavesBothAsTheyWereOrBothNew) {
    int deaths = 0;
    bool wentThrough = false;
    for (int operations = 1; !wentThrough; ++operations) {
        const pid_t child = fork();
        if (child == 0) {
            tolmtest::FailingDisk disk;
            if (!Make())
                _exit(1);
            ChangeCopies();
            disk.DieAfter(operations);
            _exit(m_copies.putBack() ? 0 : 1);
        }
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        wentThrough = WIFEXITED(status);
        EXPECT_TRUE(wentThrough ? WEXITSTATUS(status) == 0 : WTERMSIG(status) == SIGKILL);
        deaths += wentThrough ? 0 : 1;
        const std::string second = operations % 2 == 0 ? Rows(m_second) : ""; // either may be opened first
        const bool isNew = Rows(m_path) == kNew;
        EXPECT_EQ(Rows(m_path), isNew ? kNew : kOld) << operations;
        EXPECT_EQ(Rows(m_second), isNew ? "" : kOldSecond) << operations;
        if (operations % 2 == 0) {
            EXPECT_EQ(Rows(m_second), second);
        }
        EXPECT_EQ(Integrity(m_path) + Integrity(m_second), "okok");
        EXPECT_TRUE(isNew || !wentThrough);
        RestoreStores();
    }
    EXPECT_GT(deaths, 10) << "journals, pages and syncs of two files";
}

} // namespace
} // namespace qbasetest
