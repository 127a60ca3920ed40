#include "StoreFixture.h"

#include "Support/DebugWarnings.h"

#include <thread>

namespace qbasetest {
namespace {

class StoreDefinition : public StoreTest {
protected:
    /// Opens a store under a definition of this text.
    bool OpensUnder(const std::string& text) {
        WriteText(m_definition, text);
        CQbase qb;
        return Open(qb) && qb.closeDatabase();
    }

    /// What the log says of the text, without the file's name; empty when it is a definition.
    std::string FaultOf(const std::string& text) {
        tolmtest::TakeLogLines();
        EXPECT_FALSE(OpensUnder(text)) << text;
        EXPECT_FALSE(Stands(m_path));
        const auto lines = tolmtest::TakeLogLines();
        const std::wstring head = L"definition file " + m_definition + L": ";
        if (lines.size() != 1 || lines[0].find(head) != 0)
            return "(no line in the log)";
        return Native(lines[0].substr(head.size()));
    }

    std::string ColumnsOf(const std::string& classCode) {
        return Sql(m_path, "SELECT group_concat(name||' '||type,',') FROM pragma_table_info('" + classCode + "')");
    }
    std::string IndexesOf(const std::string& classCode) {
        return Sql(m_path,
                   "SELECT ifnull(group_concat(sql,';'),'') FROM sqlite_schema WHERE type='index' AND tbl_name='" +
                       classCode + "'");
    }
};

TEST_F(StoreDefinition, ItsClassesAndAttributesAreTablesAndColumnsInItsOrder) {
    ASSERT_TRUE(OpensUnder(kDefinition));
    EXPECT_EQ(ColumnsOf("AAA"), "seq INTEGER,id TEXT,MEPType INT,DisciplineId INT,Flag INT,Version INT,Size REAL,"
                                "Roughness REAL,Name TEXT,MaterialId TEXT,Ids TEXT,Sizes BLOB,Time BLOB,Pipes BLOB");
    EXPECT_EQ(ColumnsOf("000"), "seq INTEGER,id TEXT,LocalVersion INT");
}

TEST_F(StoreDefinition, ItSaysWhatIsIndexed) {
    ASSERT_TRUE(OpensUnder(kDefinition));
    EXPECT_EQ(IndexesOf("AAA"), "CREATE INDEX \"AAA_MaterialId\" ON \"AAA\"(\"MaterialId\");"
                                "CREATE INDEX \"AAA_MEPType_DisciplineId\" ON \"AAA\"(\"MEPType\",\"DisciplineId\")");
    EXPECT_EQ(IndexesOf("BBB"), "");
}

TEST_F(StoreDefinition, OneIdMayBearTwoNames) {
    Change([](CQbase& qb) {
        for (const char* classCode : {"AAA", "BBB"})
            ASSERT_TRUE(qb.createRec(classCode, L"x") && qb.setWsz(kName, L"n", -1) && qb.saveRec());
    });
    EXPECT_EQ(Sql(m_path, "SELECT Name FROM AAA") + Sql(m_path, "SELECT Title FROM BBB"), "nn");
}

TEST_F(StoreDefinition, CommentsSpacesAndLineEndsDoNotMatter) {
    ASSERT_TRUE(OpensUnder("# first\r\n\r\nstore-definition\t1 # here\r\n  class  A # letters\r\n"
                           "\t7   short \t X\r\nindex X"));
    EXPECT_EQ(ColumnsOf("A"), "seq INTEGER,id TEXT,X INT");
    EXPECT_EQ(IndexesOf("A"), "CREATE INDEX \"A_X\" ON \"A\"(\"X\")");
}

TEST_F(StoreDefinition, NamesMayBeWordsOfSql) {
    ASSERT_TRUE(OpensUnder("store-definition 1\nclass SELECT\n7 short Order\n8 text Group\nindex Order Group"));
    CQbase qb;
    ASSERT_TRUE(Open(qb) && qb.lockForUpdate() && qb.createRec("SELECT", L"x") && qb.setShort(7, 3) && qb.saveRec());
    ASSERT_TRUE(qb.setFilter(7, "=", short{3}) && qb.fetchFirstMember("SELECT"));
}

TEST_F(StoreDefinition, AFaultIsToldInTheLogWithItsLine) {
    const std::string head = "store-definition 1\n";
    const std::string longName(61, 'X');
    const std::vector<std::pair<std::string, std::string>> faults = {
        {"", "line 0: there is no class"},
        {head, "line 1: there is no class"},
        {"class A", "line 1: this is no definition of a store"},
        {"store-definition 2\nclass A", "line 1: '2' is no number from 1 to 1"},
        {head + "class", "line 2: a class has one code"},
        {head + "class A B", "line 2: a class has one code"},
        {head + "class A\nclass a", "line 3: class 'a' cannot stand here"},
        {head + "class sqlite_x", "line 2: class 'sqlite_x' cannot stand here"},
        {head + "class A\"B", "line 2: 'A\"B' is no name"},
        {head + "1 short X", "line 2: no class has begun"},
        {head + "class A\n1 short", "line 3: an attribute has a number, a type and a name"},
        {head + "class A\n1 short X Y", "line 3: an attribute has a number, a type and a name"},
        {head + "class A\nx short X", "line 3: 'x' is no number from 1 to 32767"},
        {head + "class A\n0 short X", "line 3: '0' is no number from 1 to 32767"},
        {head + "class A\n40000 short X", "line 3: '40000' is no number from 1 to 32767"},
        {head + "class A\n1 shorts X", "line 3: 'shorts' is no type"},
        {head + "class A\n1 binary X", "line 3: 'binary' is no type"},
        {head + "class A\n1 binary(0) X", "line 3: '0' is no number from 1 to 1048576"},
        {head + "class A\n1 binary(x)[] X", "line 3: 'x' is no number from 1 to 1048576"},
        {head + "class A\n1 binary(4 X", "line 3: 'binary(4' is no type"},
        {head + "class A\n1 short 1X", "line 3: '1X' is no name"},
        {head + "class A\n1 short X-Y", "line 3: 'X-Y' is no name"},
        {head + "class A\n1 short " + longName, "line 3: '" + longName + "' is no name"},
        {head + "class A\n1 short X\n2 short x", "line 4: attribute 'x' stands twice"},
        {head + "class A\n1 short X\n1 short Y", "line 4: attribute 'Y' stands twice"},
        {head + "class A\n1 short Id", "line 3: attribute 'Id' stands twice"},
        {head + "class A\n1 short X\nclass B\n1 long X", "line 5: attribute 1 has another type in another class"},
        {head + "class A\n1 binary(4) X\nclass B\n1 binary(5) X",
         "line 5: attribute 1 has another type in another class"},
        {head + "class A\nindex X", "line 3: index over 'X', which is no attribute of the class"},
        {head + "class A\nindex", "line 3: an index names its attributes"},
    };
    for (const auto& [text, fault] : faults)
        EXPECT_EQ(FaultOf(text), fault);
}

TEST_F(StoreDefinition, NoTwoTablesOrIndexesOfAStoreBearOneName) {
    const std::string head = "store-definition 1\nclass A\n1 short B\n2 short B_C\n";
    const std::string end = ": two tables or indexes of a store would be named ";
    EXPECT_EQ(FaultOf(head + "index B\nclass A_B"), "line 6" + end + "'a_b'");
    EXPECT_EQ(FaultOf(head + "index B_C\nclass a_b\n3 short C\nindex C"), "line 8" + end + "'a_b_c'");
    EXPECT_EQ(FaultOf(head + "index B\nindex B"), "line 6" + end + "'a_b'");
    EXPECT_EQ(FaultOf("store-definition 1\nclass A_B\nclass A\n1 short B\nindex B"), "line 5" + end + "'a_b'");
    EXPECT_TRUE(OpensUnder(head + "index B\nindex B B_C\nclass A_X\n"));
}

TEST_F(StoreDefinition, ItHoldsNoMoreThanAStoreCan) {
    std::string text = "store-definition 1\nclass A\n";
    for (int i = 1; i <= 500; ++i)
        text += std::to_string(i) + " short X" + std::to_string(i) + "\n";
    EXPECT_EQ(FaultOf(text + "501 short X501"), "line 503: the class has more than 500 attributes");
    std::string classes = "store-definition 1\n";
    for (int i = 1; i <= 500; ++i)
        classes += "class C" + std::to_string(i) + "\n";
    EXPECT_EQ(FaultOf(classes + "class D"), "line 502: there are more than 500 classes");
    EXPECT_TRUE(OpensUnder(text));
    EXPECT_TRUE(OpensUnder(classes));
}

TEST_F(StoreDefinition, AChangeOfTheFileIsSeenByTheNextOpen) {
    ASSERT_TRUE(OpensUnder(kDefinition));
    ASSERT_TRUE(OpensUnder(std::string(kDefinition) + "class NEW\n7 short X\n"));
    CQbase qb;
    ASSERT_TRUE(Open(qb) && qb.lockForUpdate());
    EXPECT_TRUE(qb.createRec("NEW", L"x") && qb.setShort(7, 1) && qb.saveRec());
}

TEST_F(StoreDefinition, AFaultIsNoLongerOneWhenItIsMended) {
    EXPECT_FALSE(OpensUnder(""));
    EXPECT_TRUE(OpensUnder(kDefinition));
}

TEST_F(StoreDefinition, AFolderIsNone) {
    CQbase qb;
    EXPECT_FALSE(qb.openDatabase(m_folder.Path(), m_path, true));
    EXPECT_EQ(ErrorOf(qb), QbaseError::BadDefinition);
}

TEST_F(StoreDefinition, AStoreThatIsOpenKeepsItsDefinition) {
    CQbase qb;
    ASSERT_TRUE(Open(qb) && qb.lockForUpdate());
    WriteText(m_definition, "store-definition 1\nclass ZZZ\n1 short X\n");
    Add(qb, "AAA", L"x");
    EXPECT_TRUE(qb.closeDatabase());
}

TEST_F(StoreDefinition, ManyThreadsMayReadItAtOnce) {
    Change([](CQbase&) {});
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < 20; ++round) {
                CQbase qb;
                EXPECT_TRUE(Open(qb, false) && qb.lockForRead());
            }
        });
    }
    for (auto& thread : threads)
        thread.join();
}

} // namespace
} // namespace qbasetest
