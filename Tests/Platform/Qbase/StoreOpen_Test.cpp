#include "StoreFixture.h"

#include <sys/stat.h>

namespace qbasetest {
namespace {

using StoreOpen = StoreTest;

TEST_F(StoreOpen, OnlyCreateLetsAFileComeIntoBeing) {
    CQbase qb;
    EXPECT_FALSE(Open(qb, false));
    EXPECT_EQ(ErrorOf(qb), QbaseError::NotFound);
    EXPECT_FALSE(Stands(m_path));
    EXPECT_TRUE(Open(qb, true));
    EXPECT_TRUE(Stands(m_path));
}

TEST_F(StoreOpen, ANewFileHasItsSchemaWhenTheOpenReturns) {
    CQbase qb;
    ASSERT_TRUE(Open(qb));
    EXPECT_EQ(
        Sql(m_path, "SELECT group_concat(name) FROM (SELECT name FROM sqlite_schema WHERE type='table' ORDER BY 1)"),
        "000,AAA,BBB");
    EXPECT_EQ(Sql(m_path, "PRAGMA application_id"), std::to_string(0x544F4C4D));
    EXPECT_EQ(Sql(m_path, "PRAGMA user_version"), "1");
    EXPECT_EQ(Sql(m_path, "PRAGMA journal_mode"), "delete");
    EXPECT_FALSE(Stands(m_path + L"-journal"));
    qb.abandon();
    CQbase again;
    EXPECT_TRUE(Open(again, false));
}

TEST_F(StoreOpen, AnEmptyFileIsAsGoodAsNone) {
    WriteText(m_path, "");
    CQbase qb;
    EXPECT_FALSE(Open(qb, false));
    EXPECT_EQ(ErrorOf(qb), QbaseError::NotFound);
    EXPECT_EQ(ReadBytes(m_path), "");
    EXPECT_TRUE(Open(qb, true));
    EXPECT_TRUE(qb.lockForUpdate());
}

TEST_F(StoreOpen, CreateOpensAStoreThatStands) {
    Change([](CQbase& qb) { Add(qb, "AAA", L"x"); });
    Change([](CQbase& qb) { EXPECT_TRUE(qb.existRec("AAA", L"x")); });
}

TEST_F(StoreOpen, AJournalBesideNoFileIsNoHarm) {
    WriteText(m_path + L"-journal", std::string(2000, 'j'));
    Change([](CQbase& qb) { Add(qb, "AAA", L"x"); });
    Look([](CQbase& qb) { EXPECT_TRUE(qb.existRec("AAA", L"x")); });
    EXPECT_FALSE(Stands(m_path + L"-journal"));
}

TEST_F(StoreOpen, ArgumentsThatCannotBeAreRefused) {
    CQbase qb;
    EXPECT_FALSE(qb.openDatabase(L"", m_path, true));
    EXPECT_EQ(ErrorOf(qb), QbaseError::BadArgument);
    EXPECT_FALSE(qb.openDatabase(m_definition, L"", true));
    EXPECT_EQ(ErrorOf(qb), QbaseError::BadArgument);
    EXPECT_FALSE(qb.openDatabase(m_definition, m_path + std::wstring(1, L'\0') + L"x", true));
    EXPECT_EQ(ErrorOf(qb), QbaseError::BadArgument);
    EXPECT_FALSE(Stands(m_path));
    EXPECT_FALSE(qb.openDatabase(m_definition, m_path + std::wstring(5000, L'x'), true));
    EXPECT_FALSE(qb.openDatabase(m_definition, m_folder.File(L"no/such/folder.db"), true));
    EXPECT_NE(ErrorOf(qb), QbaseError::None);
}

TEST_F(StoreOpen, AnOpenHandleIsNotOpenedAgain) {
    CQbase qb;
    ASSERT_TRUE(Open(qb));
    EXPECT_FALSE(Open(qb));
    EXPECT_EQ(ErrorOf(qb), QbaseError::WrongState);
    EXPECT_TRUE(qb.lockForUpdate());
}

TEST_F(StoreOpen, AClosedHandleMayBeOpenedAgain) {
    CQbase qb;
    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(Open(qb) && qb.lockForUpdate() && qb.createRec("AAA", std::to_wstring(i)) && qb.saveRec());
        ASSERT_TRUE(qb.closeDatabase());
    }
    ASSERT_TRUE(Open(qb));
    EXPECT_EQ(Walk(qb, "AAA"), (Ids{L"0", L"1", L"2"}));
}

TEST_F(StoreOpen, AFolderIsNoStore) {
    CQbase qb;
    EXPECT_FALSE(qb.openDatabase(m_definition, m_folder.Path(), true));
    EXPECT_EQ(ErrorOf(qb), QbaseError::NotAStore);
}

TEST_F(StoreOpen, APipeIsNoStoreAndIsNotWaitedFor) {
    ASSERT_EQ(mkfifo(Native(m_path).c_str(), 0600), 0);
    CQbase qb;
    EXPECT_FALSE(Open(qb));
    EXPECT_EQ(ErrorOf(qb), QbaseError::NotAStore);
}

TEST_F(StoreOpen, PathsMayHoldAnyCharacter) {
    const std::wstring path = m_folder.File(L"设 置%41?#&=' \"x\".db");
    CQbase qb;
    ASSERT_TRUE(qb.openDatabase(m_definition, path, true));
    ASSERT_TRUE(qb.lockForUpdate() && qb.createRec("AAA", L"x") && qb.saveRec());
    CQbase beside;
    ASSERT_TRUE(beside.openBeside(qb, m_definition, path + L"2", true));
    ASSERT_TRUE(beside.createRec("AAA", L"y") && beside.saveRec() && beside.closeDatabase());
    ASSERT_TRUE(qb.closeDatabase());
    EXPECT_TRUE(Stands(path) && Stands(path + L"2"));
    EXPECT_EQ(Sql(path + L"2", "SELECT id FROM AAA"), "y");
}

TEST_F(StoreOpen, ALinkLeadsToTheFile) {
    Change([](CQbase& qb) { Add(qb, "AAA", L"x"); });
    const std::wstring link = m_folder.File(L"link.db");
    std::filesystem::create_symlink(Native(m_path), Native(link));
    CQbase qb;
    ASSERT_TRUE(qb.openDatabase(m_definition, link, false));
    EXPECT_TRUE(qb.existRec("AAA", L"x"));
    ASSERT_TRUE(qb.lockForUpdate());
    CQbase other;
    EXPECT_FALSE(Open(other)) << "one file, whatever path leads to it";
    EXPECT_EQ(ErrorOf(other), QbaseError::Locked);
}

TEST_F(StoreOpen, ADefinitionThatCannotBeReadFails) {
    CQbase qb;
    EXPECT_FALSE(qb.openDatabase(m_folder.File(L"none.ddq"), m_path, true));
    EXPECT_EQ(ErrorOf(qb), QbaseError::BadDefinition);
    WriteText(m_definition, "no definition");
    EXPECT_FALSE(Open(qb));
    EXPECT_EQ(ErrorOf(qb), QbaseError::BadDefinition);
    EXPECT_FALSE(Stands(m_path));
}

TEST_F(StoreOpen, NoFileIsLeftBesideAStore) {
    Change([](CQbase& qb) { Add(qb, "AAA", L"x"); });
    Look([](CQbase& qb) { EXPECT_TRUE(qb.fetchFirstMember("AAA")); });
    int files = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(Native(m_folder.Path())))
        ++files;
    EXPECT_EQ(files, 2) << "the definition and the store";
}

TEST_F(StoreOpen, AFileOfALaterVersionIsNotOpenedAndStaysAsItIs) {
    Change([](CQbase& qb) { Add(qb, "AAA", L"x"); });
    Sql(m_path, "PRAGMA user_version=2");
    const std::string before = ReadBytes(m_path);
    CQbase qb;
    EXPECT_FALSE(Open(qb));
    EXPECT_EQ(ErrorOf(qb), QbaseError::NewerVersion);
    EXPECT_EQ(ReadBytes(m_path), before);
    EXPECT_TRUE(qb.closeDatabase());
}

TEST_F(StoreOpen, AForeignDatabaseIsNotOpenedAndStaysAsItIs) {
    for (const char* sql : {"CREATE TABLE AAA(seq INTEGER PRIMARY KEY,id TEXT)", "PRAGMA user_version=1",
                            "PRAGMA application_id=7;PRAGMA user_version=1;CREATE TABLE t(x)"}) {
        std::filesystem::remove(Native(m_path));
        Sql(m_path, sql);
        const std::string before = ReadBytes(m_path);
        CQbase qb;
        EXPECT_FALSE(Open(qb)) << sql;
        EXPECT_EQ(ErrorOf(qb), QbaseError::NotAStore);
        EXPECT_EQ(ReadBytes(m_path), before);
    }
}

TEST_F(StoreOpen, AStoreThatWasTurnedToAnotherJournalIsNotOpened) {
    Change([](CQbase& qb) { Add(qb, "AAA", L"x"); });
    Sql(m_path, "PRAGMA journal_mode=WAL");
    CQbase qb;
    EXPECT_FALSE(Open(qb));
    EXPECT_EQ(ErrorOf(qb), QbaseError::NotAStore);
    EXPECT_FALSE(Stands(m_path + L"-wal"));
    Sql(m_path, "PRAGMA journal_mode=DELETE");
    EXPECT_TRUE(Open(qb));
}

TEST_F(StoreOpen, TriggersOfTheFileDoNotRun) {
    Change([](CQbase& qb) { Add(qb, "AAA", L"x"); });
    Sql(m_path, "CREATE TRIGGER t AFTER INSERT ON AAA BEGIN DELETE FROM AAA; END");
    Change([](CQbase& qb) { Add(qb, "AAA", L"y"); });
    Look([](CQbase& qb) { EXPECT_EQ(Walk(qb, "AAA"), (Ids{L"x", L"y"})); });
}

TEST_F(StoreOpen, AViewInPlaceOfATableIsNone) {
    Change([](CQbase& qb) { Add(qb, "AAA", L"x"); });
    Sql(m_path, "ALTER TABLE AAA RENAME TO B; CREATE VIEW AAA AS SELECT * FROM B");
    Look([](CQbase& qb) { EXPECT_FALSE(qb.fetchFirstMember("AAA")); });
}

TEST_F(StoreOpen, ATableOfAnotherShapeDoomsTheHandle) {
    Change([](CQbase& qb) { Add(qb, "AAA", L"x"); });
    Sql(m_path, "DROP TABLE AAA; CREATE TABLE AAA(x)");
    CQbase qb;
    ASSERT_TRUE(Open(qb));
    EXPECT_FALSE(qb.existRec("AAA", L"x"));
    EXPECT_EQ(ErrorOf(qb), QbaseError::NotAStore);
    EXPECT_FALSE(qb.existRec("BBB", L"x"));
    EXPECT_EQ(ErrorOf(qb), QbaseError::Doomed);
    EXPECT_FALSE(qb.closeDatabase());
}

} // namespace
} // namespace qbasetest
