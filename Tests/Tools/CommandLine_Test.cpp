#include "Tools/ToolTesting.h"

#include <fstream>

using namespace tolmtest;
using tolmcli::Done;
using tolmcli::Failed;
using tolmcli::Misused;
using tolmcli::Refused;

TEST(CommandLine, HelpNamesEveryCommandAndSucceeds) {
    const auto run = Tolm({"--help"});
    EXPECT_EQ(run.code, Done);
    for (const char* word : {"new", "info", "compare", "pull", "sync", "push", "merge", "list", "show", "changes",
                             "add", "edit", "delete", "doctor"})
        EXPECT_TRUE(Contains(run.out, word)) << word;
}

TEST(CommandLine, HelpOfACommandHasAnExample) {
    for (const char* word : {"new", "info", "compare", "pull", "sync", "push", "merge", "list", "show", "changes",
                             "add", "edit", "delete", "doctor"}) {
        const auto run = Tolm({word, "--help"});
        EXPECT_EQ(run.code, Done);
        EXPECT_TRUE(Contains(run.out, std::string("tolm ") + word)) << run.out;
    }
}

TEST(CommandLine, WrongUseIsExitCodeTwo) {
    EXPECT_EQ(Tolm({}).code, Misused);
    EXPECT_EQ(Tolm({"conquer"}).code, Misused);
    EXPECT_EQ(Tolm({"list", "x.db"}).code, Misused);
    EXPECT_EQ(Tolm({"list", "x.db", "pipes"}).code, Misused);
}

TEST(CommandLine, APathWithoutAnExtensionIsRefused) {
    const TempFolder folder;
    const auto run = Tolm({"new", vorn::StringUtil::ToString(folder.File(L"office"))});
    EXPECT_EQ(run.code, Misused);
    EXPECT_TRUE(Contains(run.err, "extension")) << run.err;
}

TEST(CommandLine, AMissingDatasetIsAClearError) {
    const TempFolder folder;
    const auto run = Tolm({"info", vorn::StringUtil::ToString(folder.File(L"office.db"))});
    EXPECT_EQ(run.code, Failed);
    EXPECT_TRUE(Contains(run.err, "tolm new")) << run.err;
}

TEST_F(LocalTool, NewDoesNotOverwriteADataset) {
    const auto run = Tolm({"new", m_dataset});
    EXPECT_EQ(run.code, Failed);
    EXPECT_TRUE(Contains(run.err, "already")) << run.err;
}

TEST_F(LocalTool, InfoOfAFreshDatasetSaysThatItWasNeverSynchronised) {
    EXPECT_TRUE(Contains(On("info").out, "never synchronised"));
    EXPECT_EQ(On("info", {"--json"}).Json().at("localVersion"), -1);
}

TEST_F(LocalTool, PullWithoutAServiceTellsWhatIsMissing) {
    const auto run = On("pull");
    EXPECT_EQ(run.code, Misused);
    EXPECT_TRUE(Contains(run.err, "--server")) << run.err;
}

TEST_F(LocalTool, AFileThatIsNoStoreIsAClearError) {
    std::ofstream(m_dataset) << "this was a dataset once, and now it is some text that fills more than a header";
    for (const char* command : {"info", "changes"}) {
        const auto run = On(command);
        if (std::string(command) == "info") {
            EXPECT_EQ(run.code, Failed);
            EXPECT_TRUE(Contains(run.err, "cannot open")) << run.err;
        }
    }
    const auto added = On("add", {"material", "--kind", "duct", "--name", "Zinc"});
    EXPECT_EQ(added.code, Failed);
    EXPECT_TRUE(Contains(added.err, "not stored")) << added.err;
}

TEST_F(LocalTool, AddedRecordsAreListedShownAndNoted) {
    const std::string id = AddCopper();
    const auto list = On("list", {"sizes", "--kind", "plumbing-pipe"});
    EXPECT_TRUE(Contains(list.out, "Copper tube")) << list.out;
    EXPECT_TRUE(Contains(list.out, "1 size tables")) << list.out;
    const auto shown = On("show", {"size", "Copper tube", "--json"}).Json();
    EXPECT_EQ(shown.at("id"), id);
    EXPECT_EQ(shown.at("material").at("name"), "Copper");
    EXPECT_EQ(shown.at("roughness"), 0.0015);
    ASSERT_EQ(shown.at("sizes").size(), 2U);
    EXPECT_EQ(shown.at("sizes")[1].at("OD"), 22.0);
    const auto changes = On("changes", {"--json"}).Json();
    ASSERT_EQ(changes.size(), 2U);
    EXPECT_EQ(changes[0].at("change"), "created");
    EXPECT_EQ(changes[0].at("what"), "material");
    EXPECT_EQ(changes[1].at("what"), "size table");
    EXPECT_EQ(changes[1].at("name"), "Copper tube");
}

TEST_F(LocalTool, EveryKindOfSizeTableTakesItsRows) {
    struct Case {
        const char* kind;
        const char* row;
        const char* column;
        nlohmann::json value;
    };
    for (const Case& c :
         {Case{"plumbing-pipe", "15,21.3,16.1,2.6", "Thickness", 2.6}, Case{"hvac-pipe", "15,21.3,16.1", "ID", 16.1},
          Case{"duct", "500,0.6", "Thickness", 0.6}, Case{"cable-tray", "200", "Size", 200.0},
          Case{"conduit", "20,20,17.6", "DN", 20.0}, Case{"wire", "2.5,24,1", "current", 24}}) {
        const auto run = On("add", {"size", "--kind", c.kind, "--name", "Table", "--row", c.row});
        ASSERT_EQ(run.code, Done) << c.kind << ": " << run.err;
        const auto shown = On("show", {"size", "Table", "--kind", c.kind, "--json"}).Json();
        EXPECT_EQ(shown.at("kind"), c.kind);
        ASSERT_EQ(shown.at("sizes").size(), 1U) << c.kind;
        EXPECT_EQ(shown.at("sizes")[0].at(c.column), c.value) << c.kind;
    }
}

TEST_F(LocalTool, ARowOfTheWrongFormNamesTheColumns) {
    for (const char* row : {"15", "15,x,3,1", "1,2,3,4,5", ""}) {
        const auto run = On("add", {"size", "--kind", "plumbing-pipe", "--name", "Table", "--row", row});
        EXPECT_EQ(run.code, Misused) << row;
    }
    EXPECT_TRUE(
        Contains(On("add", {"size", "--kind", "wire", "--name", "T", "--row", "1"}).err, "area,current,temperature"));
    EXPECT_EQ(On("list", {"sizes", "--json"}).Json().size(), 0U);
}

TEST_F(LocalTool, AnOptionOfAnotherKindIsRefused) {
    const auto run = On("add", {"size", "--kind", "wire", "--name", "T", "--roughness", "1"});
    EXPECT_EQ(run.code, Misused);
    EXPECT_TRUE(Contains(run.err, "--roughness means nothing")) << run.err;
}

TEST_F(LocalTool, AnEditChangesWhatWasNamedAndNothingElse) {
    const std::string id = AddCopper();
    const auto run = On("edit", {"size", id, "--remove-row", "1", "--row", "25,28,25.6,1.2", "--name", "Copper 2"});
    ASSERT_EQ(run.code, Done) << run.err;
    const auto shown = On("show", {"size", id, "--json"}).Json();
    EXPECT_EQ(shown.at("name"), "Copper 2");
    EXPECT_EQ(shown.at("roughness"), 0.0015);
    ASSERT_EQ(shown.at("sizes").size(), 2U);
    EXPECT_EQ(shown.at("sizes")[0].at("DN"), 20.0);
    EXPECT_EQ(shown.at("sizes")[1].at("DN"), 25.0);
    EXPECT_EQ(On("show", {"material", "Copper", "--json"}).Json().at("kind"), "plumbing-pipe");
}

TEST_F(LocalTool, AnEditOfAnHVACTableKeepsItsMaterialsDiscipline) {
    ASSERT_EQ(On("add", {"material", "--kind", "hvac-pipe", "--name", "Steel"}).code, Done);
    ASSERT_EQ(On("add", {"size", "--kind", "hvac-pipe", "--name", "Pipe", "--material", "Steel"}).code, Done);
    ASSERT_EQ(On("edit", {"size", "Pipe", "--roughness", "0.05"}).code, Done);
    EXPECT_EQ(On("show", {"material", "Steel", "--json"}).Json().at("kind"), "hvac-pipe");
}

TEST_F(LocalTool, AnEditOfAWireTableKeepsItsTemperature) {
    ASSERT_EQ(On("add", {"size", "--kind", "wire", "--name", "BV", "--temperature", "1", "--row", "2.5,24,1"}).code,
              Done);
    ASSERT_EQ(On("edit", {"size", "BV", "--row", "4,32,1"}).code, Done);
    EXPECT_EQ(On("show", {"size", "BV", "--json"}).Json().at("environmentTemperature"), 1);
}

TEST_F(LocalTool, ATakenNameIsRefused) {
    AddCopper();
    const auto run = On("add", {"material", "--kind", "plumbing-pipe", "--name", "Copper"});
    EXPECT_EQ(run.code, Refused);
    EXPECT_TRUE(Contains(run.err, "is taken")) << run.err;
    EXPECT_EQ(On("add", {"material", "--kind", "hvac-pipe", "--name", "Copper"}).code, Done);
}

TEST_F(LocalTool, AnAmbiguousNameAsksForTheId) {
    AddCopper();
    ASSERT_EQ(On("add", {"material", "--kind", "hvac-pipe", "--name", "Copper"}).code, Done);
    EXPECT_TRUE(Contains(On("show", {"material", "Copper"}).err, "more than one"));
    EXPECT_EQ(On("show", {"material", "Copper", "--kind", "hvac-pipe"}).code, Done);
}

TEST_F(LocalTool, AMaterialInUseIsDeletedByForceOnly) {
    AddCopper();
    const auto run = On("delete", {"material", "Copper"});
    EXPECT_EQ(run.code, Refused);
    EXPECT_TRUE(Contains(run.err, "Copper tube")) << run.err;
    EXPECT_EQ(On("delete", {"material", "Copper", "--force"}).code, Done);
    EXPECT_EQ(On("list", {"materials", "--json"}).Json().size(), 0U);
}

TEST_F(LocalTool, ASizeTableThatNothingUsesIsDeleted) {
    AddCopper();
    EXPECT_EQ(On("delete", {"size", "Copper tube"}).code, Done);
    EXPECT_EQ(On("list", {"sizes", "--json"}).Json().size(), 0U);
    EXPECT_EQ(On("delete", {"size", "Copper tube"}).code, Failed);
}

TEST_F(LocalTool, ASizeTableInUseIsDeletedByForceOnly) {
    const std::wstring id = vorn::StringUtil::ToWString(AddCopper());
    CQbase store;
    ASSERT_TRUE(OpenStore(store) && store.lockForUpdate() && store.createRec("SMS", L"series"));
    store.setWsz(1601, L"Cold water", -1);
    store.setShort(1104, 1);
    store.setShort(1181, 2);
    store.setWsz(1506, id.c_str(), -1);
    ASSERT_TRUE(store.saveRec() && store.closeDatabase());
    const auto run = On("delete", {"size", "Copper tube"});
    EXPECT_EQ(run.code, Refused);
    EXPECT_TRUE(Contains(run.err, "Cold water")) << run.err;
    EXPECT_EQ(On("delete", {"size", "Copper tube", "--force"}).code, Done);
}

TEST_F(LocalTool, ASizeTableIsNotDeletedWhereNobodyCanLookWhetherItIsUsed) {
    AddCopper();
    CQbase reader;
    ASSERT_TRUE(OpenStore(reader) && reader.lockForRead());
    const auto run = On("delete", {"size", "Copper tube"});
    EXPECT_EQ(run.code, Failed);
    EXPECT_TRUE(Contains(run.err, "could not look")) << run.err;
    ASSERT_TRUE(reader.closeDatabase());
    EXPECT_EQ(On("list", {"sizes", "--json"}).Json().size(), 1U);
}

TEST_F(LocalTool, WhatWasAddedAndDeletedLeavesNoChange) {
    AddCopper();
    ASSERT_EQ(On("delete", {"size", "Copper tube"}).code, Done);
    ASSERT_EQ(On("delete", {"material", "Copper"}).code, Done);
    EXPECT_TRUE(Contains(On("changes").out, "No local changes"));
}

TEST_F(LocalTool, NamesWithControlCharactersCannotRewriteTheTerminal) {
    ASSERT_EQ(On("add", {"material", "--kind", "duct", "--name", "evil\x1b[2Jname"}).code, Done);
    EXPECT_FALSE(Contains(On("list", {"materials"}).out, "\x1b"));
}
