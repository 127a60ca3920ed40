// What is recorded of a working copy puts back the same as the comparison of all rows.
#include "StoreFixture.h"
#include "Support/FailingDisk.h"

#include <rapidcheck.h>

#include <array>

namespace qbasetest {
namespace {

const char* const kMore = "1300 float More\nclass CCC\n1104 short MEPType\n1601 text Name\nindex Name\n";

/// One step of the work on copies, by any of a few handles.
struct Step {
    int kind = 0;
    int handle = 0;
    int number = 0; ///< chooses file, class and record
    short value = 0;
};

std::ostream& operator<<(std::ostream& out, const Step& step) {
    return out << "{" << step.kind << "," << step.handle << "," << step.number << "," << step.value << "}";
}

rc::Gen<Step> AnyStep() {
    return rc::gen::build<Step>(rc::gen::set(&Step::kind, rc::gen::inRange(0, 16)),
                                rc::gen::set(&Step::handle, rc::gen::inRange(0, 3)),
                                rc::gen::set(&Step::number, rc::gen::inRange(0, 64)),
                                rc::gen::set(&Step::value, rc::gen::inRange<short>(0, 4)));
}

/// Schema, marks and all rows with their numbers, as one text.
std::string Dump(const std::wstring& path) {
    std::string all = Sql(path, "SELECT group_concat(sql,';') FROM (SELECT sql FROM sqlite_schema ORDER BY name)") +
                      Sql(path, "PRAGMA application_id") + "/" + Sql(path, "PRAGMA user_version");
    for (const char* table : {"AAA", "BBB", "000", "CCC"}) {
        const std::string name = std::string("\"") + table + "\"";
        if (Sql(path, std::string("SELECT name FROM sqlite_schema WHERE name='") + table + "'").empty())
            continue;
        const std::string columns = Sql(path, std::string("SELECT group_concat('quote(\"'||name||'\")','||'' ''||') "
                                                          "FROM pragma_table_info('") +
                                                  table + "')");
        all +=
            "\n" + name +
            Sql(path, "SELECT group_concat(r,';') FROM (SELECT " + columns + " AS r FROM " + name + " ORDER BY seq)");
    }
    return all;
}

/// Two stores with copies, on which steps are done.
class Worked {
public:
    /// `filled` are stores that nobody has open.
    Worked(const tolmtest::TempFolder& folder, const std::wstring& name, const std::array<std::wstring, 2>& filled)
        : m_definition(folder.File(L"test.ddq")),
          m_laterDefinition(folder.File(L"later.ddq")), m_stores{folder.File(name + L".db"),
                                                                 folder.File(name + L"_Status.db")},
          m_paths{folder.File(name + L"_temp.db"), folder.File(name + L"_Status_temp.db")} {
        WriteText(m_laterDefinition, std::string(kDefinition) + kMore);
        for (std::size_t i = 0; i < filled.size(); ++i)
            std::filesystem::copy_file(Native(filled[i]), Native(m_stores[i]),
                                       std::filesystem::copy_options::overwrite_existing);
        RC_ASSERT(m_copies.make({m_stores[0], m_paths[0]}, {m_stores[1], m_paths[1]}));
    }

    static void Write(CQbase& handle, const Step& step) {
        if (!handle.createRec(ClassOf(step), IdOf(step)) && !handle.fetchEqualRec(ClassOf(step), IdOf(step)))
            return;
        if (step.value == 0)
            handle.removeAttribute(kMEPType);
        else
            handle.setShort(kMEPType, step.value);
        handle.setWsz(kName, std::to_wstring(step.value).c_str(), -1); // which not each class has
        handle.saveRec();
    }

    void Do(const Step& step) {
        auto& handle = m_handles[static_cast<std::size_t>(step.handle)];
        switch (step.kind) {
        case 0:
        case 1:
            return Open(handle, step, m_definition, true);
        case 2:
            return Open(handle, step, m_laterDefinition, true);
        case 3:
            return Open(handle, step, m_definition, false); // each change is committed by itself
        case 4:
            handle.closeDatabase();
            return;
        case 5:
            handle.abandon();
            return;
        case 6:
            handle.openBeside(m_handles[0], m_definition, m_paths[1], true);
            return;
        case 7:
        case 8:
            handle.deleteRec(ClassOf(step), IdOf(step));
            return;
        case 9:
            handle.deleteRec(ClassOf(step), IdOf(step));
            [[fallthrough]]; // and made anew, under another number
        default:
            return Write(handle, step);
        }
    }

    /// Past the library.
    void DoUnseen(const std::string& sql) {
        CloseAll();
        Sql(m_paths[0], sql);
    }

    void PutBack() {
        CloseAll();
        RC_ASSERT(m_copies.putBack());
        for (std::size_t i = 0; i < m_stores.size(); ++i) {
            RC_ASSERT(Dump(m_stores[i]) == Dump(m_paths[i]));
            RC_ASSERT(Sql(m_stores[i], "PRAGMA integrity_check") == "ok");
        }
    }
    std::string Result() const { return Dump(m_stores[0]) + Dump(m_stores[1]); }

private:
    static const char* ClassOf(const Step& step) { return std::array{"AAA", "BBB", "AAA", "CCC"}[step.number % 4]; }
    static std::wstring IdOf(const Step& step) { return L"id " + std::to_wstring(step.number / 4); }

    void Open(CQbase& handle, const Step& step, const std::wstring& definition, bool locked) {
        handle.closeDatabase();
        if (handle.openDatabase(definition, m_paths[static_cast<std::size_t>(step.number % 2)], true) && locked)
            handle.lockForUpdate(); // refused while another handle has it
    }

    void CloseAll() {
        for (auto handle = m_handles.rbegin(); handle != m_handles.rend(); ++handle)
            handle->closeDatabase(); // companions first
    }

    std::wstring m_definition;
    std::wstring m_laterDefinition;
    std::array<std::wstring, 2> m_stores;
    std::array<std::wstring, 2> m_paths;
    CQbaseWorkingCopies m_copies;
    std::array<CQbase, 3> m_handles;
};

/// Reaches the SQLite connections that the library opens meanwhile, the last one of them.
class OpenedConnection {
public:
    OpenedConnection() { sqlite3_auto_extension(Entry()); }
    ~OpenedConnection() { sqlite3_cancel_auto_extension(Entry()); }
    OpenedConnection(const OpenedConnection&) = delete;
    OpenedConnection& operator=(const OpenedConnection&) = delete;

    void Run(const std::string& sql) const {
        EXPECT_EQ(sqlite3_exec(s_last, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK) << sqlite3_errmsg(s_last);
    }

private:
    static int Take(sqlite3* database, const char**, const sqlite3_api_routines*) {
        s_last = database;
        return SQLITE_OK;
    }
    static void (*Entry())() { return reinterpret_cast<void (*)()>(Take); }

    static inline sqlite3* s_last = nullptr;
};

class StoreCopyRecord : public StoreTest {
protected:
    /// A store of some megabytes, and one beside it.
    void FillBoth() {
        Change([](CQbase& qb) {
            const std::string list(16 * 300, 'p');
            for (int i = 0; i < 1000; ++i) {
                ASSERT_TRUE(qb.createRec("AAA", L"many" + std::to_wstring(i)));
                ASSERT_TRUE(qb.setBinaryArray(kPipes, list.data(), 300, 0) && qb.saveRec());
            }
        });
        CQbase second;
        ASSERT_TRUE(second.openDatabase(m_definition, m_second, true));
    }
    /// Two stores of a few rows for `Worked`.
    std::array<std::wstring, 2> FillSmall() {
        for (const auto& store : {m_path, m_second}) {
            CQbase qb;
            EXPECT_TRUE(qb.openDatabase(m_definition, store, true) && qb.lockForUpdate());
            for (int i = 0; i < 24; ++i)
                Worked::Write(qb, {10, 0, i, static_cast<short>(i % 4)});
            EXPECT_TRUE(qb.closeDatabase());
        }
        return {m_path, m_second};
    }
    bool Make() { return m_copies.make({m_path, m_copy}, {m_second, m_secondCopy}); }
    /// SQL through the connection of a handle that has the copy open for update, with the commit of that handle.
    void ChangeCopyBySql(const std::string& sql) {
        const OpenedConnection opened;
        ChangeCopy([&](CQbase&) { opened.Run(sql); });
    }
    void ExpectFewReadAndAllPutBack() {
        EXPECT_LT(ReadByPutBack(), SizeOfStore() / 10);
        EXPECT_EQ(Dump(m_path), Dump(m_copy));
        EXPECT_EQ(Dump(m_second), Dump(m_secondCopy));
        EXPECT_EQ(Sql(m_path, "PRAGMA integrity_check"), "ok");
    }
    void ExpectAllReadAndPutBack() {
        EXPECT_GT(ReadByPutBack(), SizeOfStore());
        EXPECT_EQ(Dump(m_path), Dump(m_copy));
        EXPECT_EQ(Sql(m_path, "PRAGMA integrity_check"), "ok");
    }
    void ChangeCopy(const std::function<void(CQbase&)>& work) {
        CQbase qb;
        ASSERT_TRUE(qb.openDatabase(m_definition, m_copy, false) && qb.lockForUpdate());
        work(qb);
        ASSERT_TRUE(qb.closeDatabase());
    }

    /// Bytes that this process read from files while it put the copies back.
    long ReadByPutBack() {
        const long before = BytesRead();
        EXPECT_TRUE(m_copies.putBack());
        return BytesRead() - before;
    }
    static long BytesRead() {
        std::ifstream counters("/proc/self/io");
        std::string name;
        long bytes = -1;
        counters >> name >> bytes;
        EXPECT_EQ(name, "rchar:");
        return bytes;
    }
    long SizeOfStore() const { return static_cast<long>(std::filesystem::file_size(Native(m_path))); }

    const std::wstring m_copy = m_folder.File(L"set_temp.db");
    const std::wstring m_secondCopy = m_folder.File(L"set_Status_temp.db");
    CQbaseWorkingCopies m_copies;
};

TEST_F(StoreCopyRecord, AnyWorkIsPutBackAsTheComparisonOfAllRowsWouldDoIt) {
    const auto filled = FillSmall();
    const bool holds = rc::check([&] {
        const auto steps = *rc::gen::container<std::vector<Step>>(AnyStep());
        Worked recorded(m_folder, L"recorded", filled);
        Worked compared(m_folder, L"compared", filled);
        for (const Step& step : steps) {
            recorded.Do(step);
            compared.Do(step);
        }
        compared.DoUnseen("PRAGMA user_version=1");
        recorded.PutBack();
        compared.PutBack();
        RC_ASSERT(recorded.Result() == compared.Result());
    });
    EXPECT_TRUE(holds);
}

TEST_F(StoreCopyRecord, WorkPastTheLibraryAmongOtherWorkIsPutBackToo) {
    const auto filled = FillSmall();
    const bool holds = rc::check([&] {
        const auto before = *rc::gen::container<std::vector<Step>>(AnyStep());
        const auto after = *rc::gen::container<std::vector<Step>>(AnyStep());
        Worked worked(m_folder, L"worked", filled);
        for (const Step& step : before)
            worked.Do(step);
        worked.DoUnseen(*rc::gen::element<std::string>("UPDATE AAA SET MEPType=77", "DELETE FROM AAA",
                                                       "REPLACE INTO BBB(seq,id) VALUES(2,'id 1')", "DROP TABLE BBB",
                                                       "CREATE INDEX more ON BBB(Title)"));
        for (const Step& step : after)
            worked.Do(step);
        worked.PutBack(); // compares the store with the copy
    });
    EXPECT_TRUE(holds);
}

TEST_F(StoreCopyRecord, RowsThatWereNotChangedAreNotRead) {
    FillBoth();
    ASSERT_TRUE(Make());
    ChangeCopy([](CQbase& qb) {
        ASSERT_TRUE(qb.deleteRec("AAA", L"many5"));
        ASSERT_TRUE(qb.fetchEqualRec("AAA", L"many500") && qb.setShort(kMEPType, 7) && qb.saveRec());
        Add(qb, "BBB", L"new");
    });
    ExpectFewReadAndAllPutBack();
}

TEST_F(StoreCopyRecord, EveryWayInWhichSqlChangesRowsIsRecorded) {
    const char* const ways[] = {
        "REPLACE INTO BBB(seq,id,Title) VALUES(7,'b1','in place of b1'),(2003,'other','in place of 2003')",
        "INSERT INTO BBB(seq,id) VALUES(9,'b2') ON CONFLICT(id) DO UPDATE SET seq=excluded.seq,Title='moved'",
        "INSERT OR IGNORE INTO BBB(seq,id) VALUES(8,'b1'),(8,'new')",
        "UPDATE BBB SET seq=seq+500",
        "UPDATE OR REPLACE BBB SET id='b3' WHERE id='b1'",
        "UPDATE OR REPLACE BBB SET seq=2003 WHERE id='b1'",
        "DELETE FROM BBB",
        "DELETE FROM BBB; INSERT INTO BBB(seq,id) VALUES(1,'alone')",
        "UPDATE BBB SET id='t' WHERE id='b1'; UPDATE BBB SET id='b1' WHERE id='b2'; UPDATE BBB SET id='b2' WHERE "
        "id='t'",
        "SAVEPOINT s; DELETE FROM BBB; ROLLBACK TO s; UPDATE BBB SET Title='after' WHERE id='b2'; RELEASE s",
        "SAVEPOINT s; REPLACE INTO BBB(seq,id) VALUES(9,'b1'); SAVEPOINT t; DELETE FROM BBB; RELEASE t; ROLLBACK TO s; "
        "RELEASE s",
        "WITH r AS (SELECT 1 AS i UNION ALL SELECT i+1 FROM r WHERE i<50) INSERT INTO BBB(id) SELECT 'r'||i FROM r",
        "UPDATE BBB SET Title=x'00',MEPType=NULL; UPDATE BBB SET Title=MEPType WHERE id='b1'"};
    FillBoth();
    for (const char* const way : ways) {
        SCOPED_TRACE(way);
        Change([](CQbase& qb) {
            for (const auto* id : {L"b1", L"b2", L"b3"}) {
                qb.deleteRec("BBB", id);
                Add(qb, "BBB", id, 3);
            }
        });
        ASSERT_TRUE(Make());
        ChangeCopyBySql(way);
        ExpectFewReadAndAllPutBack();
    }
}

TEST_F(StoreCopyRecord, WhatWasGivenUpIsNoChange) {
    FillBoth();
    ASSERT_TRUE(Make());
    CQbase qb;
    ASSERT_TRUE(qb.openDatabase(m_definition, m_copy, false) && qb.lockForUpdate());
    ASSERT_TRUE(qb.deleteRec("AAA", L"many5"));
    qb.abandon();
    ChangeCopy([](CQbase& again) { Add(again, "BBB", L"b"); });
    const std::string before = Sql(m_path, "SELECT seq FROM AAA WHERE id='many5'");
    ExpectFewReadAndAllPutBack();
    EXPECT_EQ(Sql(m_path, "SELECT seq FROM AAA WHERE id='many5'"), before);
}

TEST_F(StoreCopyRecord, CopiesThatAreOpenBesideOtherStoresAreRecorded) {
    FillBoth();
    const std::wstring apart = m_folder.File(L"apart.db");
    ASSERT_TRUE(Make());
    {
        CQbase qb;
        CQbase beside;
        CQbase secondBeside;
        ASSERT_TRUE(qb.openDatabase(m_definition, apart, true) && qb.lockForUpdate());
        ASSERT_TRUE(beside.openBeside(qb, m_definition, m_copy, false));
        ASSERT_TRUE(secondBeside.openBeside(qb, m_definition, m_secondCopy, false));
        Add(qb, "BBB", L"in none of them");
        Add(beside, "BBB", L"b");
        ASSERT_TRUE(beside.deleteRec("AAA", L"many9"));
        Add(secondBeside, "AAA", L"noted");
        ASSERT_TRUE(secondBeside.closeDatabase() && beside.closeDatabase() && qb.closeDatabase());
    }
    ExpectFewReadAndAllPutBack();
    EXPECT_EQ(Sql(m_second, "SELECT id FROM AAA"), "noted");
}

TEST_F(StoreCopyRecord, EachHandleOfTheProcessIsRecordedWhateverPathLeadsToTheCopy) {
    FillBoth();
    ASSERT_TRUE(Make());
    const std::wstring link = m_folder.File(L"link.db");
    std::filesystem::create_hard_link(Native(m_copy), Native(link));
    CQbase first;
    CQbase second;
    ASSERT_TRUE(first.openDatabase(m_definition, m_copy, false) && second.openDatabase(m_definition, link, false));
    ASSERT_TRUE(first.createRec("BBB", L"of the first") && first.saveRec()); // each is a commit
    ASSERT_TRUE(second.deleteRec("AAA", L"many3"));
    ASSERT_TRUE(first.deleteRec("AAA", L"many4"));
    ASSERT_TRUE(first.closeDatabase() && second.closeDatabase());
    ExpectFewReadAndAllPutBack();
}

TEST_F(StoreCopyRecord, ACopyToWhichSomebodyElseCommittedIsComparedWhole) {
    FillBoth();
    Child other([&] {
        CQbase qb;
        return qb.openDatabase(m_definition, m_copy, false) && qb.lockForUpdate() && qb.deleteRec("AAA", L"many7") &&
               qb.closeDatabase();
    });
    ASSERT_TRUE(Make());
    ASSERT_TRUE(other.Run());
    ChangeCopy([](CQbase& qb) { ASSERT_TRUE(qb.deleteRec("AAA", L"many5")); });
    ExpectAllReadAndPutBack();
}

TEST_F(StoreCopyRecord, ACopyThatSomebodyElseReplacedByItsLikeIsRefused) {
    FillBoth();
    ASSERT_TRUE(Make());
    ChangeCopy([](CQbase& qb) { ASSERT_TRUE(qb.deleteRec("AAA", L"many5")); });
    const std::string before = Dump(m_path);
    const std::wstring like = m_folder.File(L"like.db");
    std::filesystem::copy_file(Native(m_copy), Native(like)); // the change counter is the same
    std::filesystem::rename(Native(like), Native(m_copy));
    EXPECT_FALSE(m_copies.putBack());
    EXPECT_EQ(static_cast<QbaseError>(m_copies.getLastError()), QbaseError::Changed);
    EXPECT_EQ(Dump(m_path), before);
}

TEST_F(StoreCopyRecord, AStoreThatChangedSinceIsRefused) {
    FillBoth();
    ASSERT_TRUE(Make());
    ChangeCopy([](CQbase& qb) { ASSERT_TRUE(qb.deleteRec("AAA", L"many5")); });
    Change([](CQbase& qb) { ASSERT_TRUE(qb.deleteRec("AAA", L"many6")); });
    const std::string before = Dump(m_path);
    EXPECT_FALSE(m_copies.putBack());
    EXPECT_EQ(static_cast<QbaseError>(m_copies.getLastError()), QbaseError::Changed);
    EXPECT_EQ(Dump(m_path), before);
}

/// Of which SQLite tells nothing.
TEST_F(StoreCopyRecord, ChangesOfTheSchemaAmongRecordedWorkArePutBackByComparison) {
    const char* const ways[] = {"DROP TABLE BBB; CREATE TABLE BBB(seq INTEGER PRIMARY KEY,id TEXT NOT NULL UNIQUE)",
                                "CREATE INDEX more ON BBB(id)", "ALTER TABLE AAA RENAME TO DDD",
                                "ALTER TABLE AAA DROP COLUMN Roughness", "REINDEX; DROP INDEX AAA_MaterialId"};
    for (const char* const way : ways) {
        SCOPED_TRACE(way);
        ASSERT_TRUE(CQbase::removeStore(m_path) && CQbase::removeStore(m_second));
        FillBoth();
        ASSERT_TRUE(Make());
        ChangeCopyBySql("DELETE FROM AAA WHERE id='many5';" + std::string(way));
        ExpectAllReadAndPutBack();
    }
}

/// SQLite does not count a commit that writes no page.
TEST_F(StoreCopyRecord, AChangeToTheSameContentHidesNobodyElsesCommit) {
    FillBoth();
    Change([](CQbase& qb) { Add(qb, "BBB", L"b", 7); });
    ASSERT_TRUE(Make());
    ChangeCopy(
        [](CQbase& qb) { ASSERT_TRUE(qb.fetchEqualRec("BBB", L"b") && qb.setShort(kMEPType, 7) && qb.saveRec()); });
    Sql(m_copy, "DELETE FROM AAA WHERE id='many7'");
    ASSERT_TRUE(m_copies.putBack());
    EXPECT_EQ(Dump(m_path), Dump(m_copy));
}

TEST_F(StoreCopyRecord, AColumnThatWasAddedIsPutBackByComparison) {
    FillBoth();
    ASSERT_TRUE(Make());
    WriteText(m_definition, std::string(kDefinition) + kMore);
    ChangeCopy([](CQbase& qb) { Add(qb, "CCC", L"of a new class"); });
    ExpectAllReadAndPutBack();
}

TEST_F(StoreCopyRecord, ATableOfAnotherShapeIsComparedWhole) {
    Change([](CQbase& qb) { Add(qb, "AAA", L"a"); });
    Sql(m_path, "DROP TABLE BBB");
    Sql(m_path, "CREATE TABLE BBB(seq INTEGER PRIMARY KEY DESC,id TEXT NOT NULL UNIQUE,MEPType INT,Title TEXT)");
    Sql(m_path, "INSERT INTO BBB(seq,id) VALUES(50,'x'),(40,'y')");
    Sql(m_path, "DROP TABLE \"000\"");
    Sql(m_path, "CREATE TABLE \"000\"(seq INTEGER PRIMARY KEY,id TEXT NOT NULL UNIQUE,LocalVersion INT)WITHOUT ROWID");
    CQbase second;
    ASSERT_TRUE(second.openDatabase(m_definition, m_second, true) && second.closeDatabase());
    ASSERT_TRUE(Make());
    ChangeCopy([](CQbase& qb) {
        ASSERT_TRUE(qb.deleteRec("BBB", L"x"));
        Add(qb, "BBB", L"z", 3);
        ASSERT_TRUE(qb.createRec("000", L"header") && qb.setLong(1200, 5) && qb.saveRec());
    });
    ASSERT_TRUE(m_copies.putBack());
    EXPECT_EQ(Dump(m_path), Dump(m_copy));
    EXPECT_EQ(Sql(m_path, "SELECT group_concat(id) FROM (SELECT id FROM BBB ORDER BY id)"), "y,z");
    EXPECT_EQ(Sql(m_path, "SELECT LocalVersion FROM \"000\""), "5");
}

TEST_F(StoreCopyRecord, ACommitThatFailedIsNotTakenForOne) {
    tolmtest::FailingDisk disk;
    bool wentThrough = false;
    for (int operations = 1; !wentThrough; ++operations) {
        ASSERT_TRUE(CQbase::removeStore(m_path) && CQbase::removeStore(m_second));
        Change([](CQbase& qb) { Add(qb, "AAA", L"a"); });
        CQbase second;
        ASSERT_TRUE(second.openDatabase(m_definition, m_second, true) && second.closeDatabase());
        ASSERT_TRUE(Make());
        CQbase qb;
        disk.FailAfter(operations, SQLITE_IOERR_WRITE);
        const bool done = qb.openDatabase(m_definition, m_copy, false) && qb.lockForUpdate() &&
                          qb.createRec("AAA", L"b") && qb.saveRec() && qb.closeDatabase();
        wentThrough = !disk.HasFailed();
        EXPECT_TRUE(done || !wentThrough);
        qb.abandon();
        disk.Heal();
        ChangeCopy([](CQbase& again) { Add(again, "BBB", L"c"); });
        ASSERT_TRUE(m_copies.putBack());
        EXPECT_EQ(Dump(m_path), Dump(m_copy)) << operations;
    }
}

} // namespace
} // namespace qbasetest
