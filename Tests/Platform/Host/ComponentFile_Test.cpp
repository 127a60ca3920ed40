#include "Host/Components.h"

#include "Platform/Support/ComponentSamples.h"
#include "Support/TempFolder.h"
#include "Vorn/Files.h"
#include "Vorn/Text.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <filesystem>
#include <fstream>
#include <future>
#include <thread>

namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;
using tolm::TolmComponentSqlUtil;
using tolmtest::CodeOnly;
using tolmtest::Components;
using tolmtest::MakeComponent;
using tolmtest::MakeListProduct;
using Ids = std::vector<std::wstring>;

/// A second user of the file.
class Database {
public:
    explicit Database(const std::wstring& path) {
        sqlite3_open(vorn::StringUtil::ToString(path).c_str(), &m_handle);
        sqlite3_busy_timeout(m_handle, 5000);
    }
    ~Database() { sqlite3_close(m_handle); }
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    bool Run(const std::string& text) const {
        return sqlite3_exec(m_handle, text.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK;
    }
    /// First column of the first row.
    std::string Ask(const std::string& query) const {
        sqlite3_stmt* statement = nullptr;
        sqlite3_prepare_v2(m_handle, query.c_str(), -1, &statement, nullptr);
        std::string answer;
        if (sqlite3_step(statement) == SQLITE_ROW)
            answer = reinterpret_cast<const char*>(sqlite3_column_text(statement, 0));
        sqlite3_finalize(statement);
        return answer;
    }

private:
    sqlite3* m_handle = nullptr;
};

class ComponentDatabase : public testing::Test {
protected:
    std::string Bytes() const {
        std::ifstream in(vorn::StringUtil::ToString(m_path), std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }
    bool Save(const std::string& bytes) const {
        return vorn::FileUtility::SaveInBinaryMode(m_path, bytes.data(), bytes.size(), false);
    }
    bool Insert() const {
        Ids newIds;
        return TolmComponentSqlUtil::InsertCombinedProduct(m_path, {MakeListProduct(L"p")}, newIds);
    }

    /// Every operation fails, nothing comes out and the file stays as it is.
    void ExpectRefused() const {
        const std::string before = Bytes();
        const CodeOnly category(L"E");
        std::map<std::wstring, Components> map;
        EXPECT_FALSE(TolmComponentSqlUtil::ReadComponentList(m_path, {&category}, map, true));
        Components list;
        EXPECT_FALSE(TolmComponentSqlUtil::ReadComponentListWithCondition(m_path, &category, {}, list, true));
        EXPECT_TRUE(TolmComponentSqlUtil::ReadOneComponent(m_path, &category, 0, {1}).empty());
        std::vector<tolm::TolmCombinedProduct> products;
        EXPECT_FALSE(TolmComponentSqlUtil::ReadCombinedProductList(m_path, L"", products));
        EXPECT_TRUE(map.empty() && list.empty() && products.empty());
        EXPECT_FALSE(Insert());
        EXPECT_FALSE(TolmComponentSqlUtil::RemoveCombinedProduct(m_path, L"16353515", L"", {L"p"}));
        std::map<std::wstring, std::wstring> renames{{L"a", L"b"}};
        EXPECT_FALSE(TolmComponentSqlUtil::UpdateAllComponentId(m_path, renames, renames));
        EXPECT_FALSE(TolmComponentSqlUtil::Import(m_path, {}, {}, {MakeComponent(L"a", L"E")}));
        EXPECT_EQ(Bytes(), before);
    }

    std::size_t EntryCount() const {
        return static_cast<std::size_t>(
            std::distance(fs::directory_iterator(vorn::StringUtil::ToString(m_folder.Path())), {}));
    }

    tolmtest::TempFolder m_folder;
    std::wstring m_path = m_folder.File(L"components.db");
};

TEST_F(ComponentDatabase, BearsItsApplicationAndVersion) {
    ASSERT_TRUE(Insert());
    const Database database(m_path);
    EXPECT_EQ(database.Ask("PRAGMA application_id"), std::to_string(0x544F4C43));
    EXPECT_EQ(database.Ask("PRAGMA user_version"), "1");
    EXPECT_EQ(database.Ask("PRAGMA journal_mode"), "delete");
}

TEST_F(ComponentDatabase, AnswersAPersonsQuestion) {
    ASSERT_TRUE(Insert());
    EXPECT_EQ(Database(m_path).Ask("select Name from combined_products where Id = 'p'"), "组合 p");
}

TEST_F(ComponentDatabase, LeavesNoCompanionFile) {
    ASSERT_TRUE(Insert());
    EXPECT_EQ(EntryCount(), 1U);
}

TEST_F(ComponentDatabase, AnEmptyFileIsAsGoodAsNone) {
    ASSERT_TRUE(Save(""));
    EXPECT_TRUE(tolmtest::ReadProducts(m_path).empty());
    EXPECT_EQ(Bytes(), "");
    EXPECT_TRUE(Insert());
    EXPECT_EQ(tolmtest::ProductIds(m_path), (Ids{L"p"}));
}

TEST_F(ComponentDatabase, AFileThatIsNoDatabaseIsRefused) {
    ASSERT_TRUE(Save("{\"components\": [], \"but\": \"this is no database\"}"));
    ExpectRefused();
}

TEST_F(ComponentDatabase, AnotherProgramsDatabaseIsRefused) {
    ASSERT_TRUE(Database(m_path).Run("CREATE TABLE notes(Text); INSERT INTO notes VALUES('mine')"));
    ExpectRefused();
}

TEST_F(ComponentDatabase, AnEmptyDatabaseWithAnotherMarkIsRefused) {
    ASSERT_TRUE(Database(m_path).Run("PRAGMA application_id = 7"));
    ExpectRefused();
}

TEST_F(ComponentDatabase, ANewerOneIsRefused) {
    ASSERT_TRUE(Insert());
    ASSERT_TRUE(Database(m_path).Run("PRAGMA user_version = 2"));
    ExpectRefused();
}

TEST_F(ComponentDatabase, ADamagedOneIsRefused) {
    ASSERT_TRUE(Insert());
    std::string bytes = Bytes();
    ASSERT_GT(bytes.size(), 8192U);
    std::fill(bytes.begin() + 100, bytes.end(), '\x5A');
    ASSERT_TRUE(Save(bytes));
    ExpectRefused();
}

TEST_F(ComponentDatabase, ATruncatedOneIsRefusedOrReadInPart) {
    ASSERT_TRUE(Insert());
    ASSERT_TRUE(Save(Bytes().substr(0, 4096)));
    ExpectRefused();
}

TEST_F(ComponentDatabase, AFolderAtThePathIsRefused) {
    ASSERT_TRUE(vorn::FileSystem::CreateDirectories(m_path));
    std::vector<tolm::TolmCombinedProduct> products;
    EXPECT_FALSE(TolmComponentSqlUtil::ReadCombinedProductList(m_path, L"", products));
    EXPECT_FALSE(Insert());
}

TEST_F(ComponentDatabase, APathThatCanNameNoFileIsNeverMade) {
    for (const std::wstring& path : {L""s, m_folder.File(L"cut\0here"s), m_folder.File(std::wstring(300, L'x'))}) {
        Ids newIds;
        EXPECT_FALSE(TolmComponentSqlUtil::InsertCombinedProduct(path, {MakeListProduct(L"p")}, newIds));
        EXPECT_TRUE(newIds.empty());
        EXPECT_TRUE(tolmtest::ReadProducts(path).empty());
    }
    EXPECT_EQ(EntryCount(), 0U);
}

TEST_F(ComponentDatabase, NamesThatSqliteKnowsAreFilesLikeOthers) {
    const fs::path before = fs::current_path();
    fs::current_path(vorn::StringUtil::ToString(m_folder.Path()));
    Ids newIds;
    EXPECT_TRUE(TolmComponentSqlUtil::InsertCombinedProduct(L":memory:", {MakeListProduct(L"p")}, newIds));
    EXPECT_EQ(tolmtest::ProductIds(L":memory:"), (Ids{L"p"}));
    fs::current_path(before);
    EXPECT_TRUE(vorn::FileInfo(m_folder.File(L":memory:")).IsRegularFile());
}

TEST_F(ComponentDatabase, BackslashesSeparateFolders) {
    ASSERT_TRUE(vorn::FileSystem::CreateDirectories(m_folder.File(L"sub")));
    Ids newIds;
    EXPECT_TRUE(
        TolmComponentSqlUtil::InsertCombinedProduct(m_folder.Path() + L"\\sub\\c.db", {MakeListProduct(L"p")}, newIds));
    EXPECT_EQ(tolmtest::ProductIds(m_folder.File(L"sub/c.db")), (Ids{L"p"}));
}

TEST_F(ComponentDatabase, AnOperationThatFailsHalfWayChangesNothing) {
    ASSERT_TRUE(Insert());
    ASSERT_TRUE(Database(m_path).Run("CREATE TRIGGER refuse BEFORE INSERT ON combined_components WHEN new.ComponentId ="
                                     " 'bad-id' BEGIN SELECT RAISE(ABORT, 'refused'); END"));
    auto bad = MakeListProduct(L"r");
    bad.components = {tolmtest::MakeReference(L"bad")};
    Ids newIds;
    EXPECT_FALSE(TolmComponentSqlUtil::InsertCombinedProduct(m_path, {MakeListProduct(L"q"), bad}, newIds));
    EXPECT_TRUE(newIds.empty());
    EXPECT_EQ(tolmtest::ProductIds(m_path), (Ids{L"p"}));
}

TEST_F(ComponentDatabase, WhatACrashLeavesHalfWrittenIsUndoneByTheNextReader) {
    ASSERT_TRUE(Insert());
    const Database writer(m_path);
    ASSERT_TRUE(writer.Run("PRAGMA cache_size = 1; BEGIN IMMEDIATE;"
                           "UPDATE combined_products SET Name = 'half';"
                           "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 500)"
                           " INSERT INTO combined_products(Id, Name) SELECT 'n' || i, hex(zeroblob(100)) FROM n"));
    const std::wstring crashed = m_folder.File(L"crashed.db");
    ASSERT_TRUE(vorn::FileUtility::Copy(m_path, crashed));
    ASSERT_TRUE(vorn::FileUtility::Copy(m_path + L"-journal", crashed + L"-journal"));
    ASSERT_GT(vorn::FileInfo(crashed).Size(), 65'536U); // the writer's pages are in the file already
    EXPECT_EQ(tolmtest::ReadProducts(crashed), (std::vector<tolm::TolmCombinedProduct>{MakeListProduct(L"p")}));
}

TEST_F(ComponentDatabase, AReaderIsNotDisturbedByAWriterAtWork) {
    ASSERT_TRUE(Insert());
    const Database writer(m_path);
    ASSERT_TRUE(writer.Run("BEGIN IMMEDIATE; DELETE FROM combined_products"));
    EXPECT_EQ(tolmtest::ProductIds(m_path), (Ids{L"p"}));
    ASSERT_TRUE(writer.Run("ROLLBACK"));
}

TEST_F(ComponentDatabase, AWriterWaitsForAnother) {
    ASSERT_TRUE(Insert());
    const Database other(m_path);
    ASSERT_TRUE(other.Run("BEGIN IMMEDIATE"));
    std::promise<void> started;
    auto insertion = std::async(std::launch::async, [&] {
        started.set_value();
        Ids newIds;
        return TolmComponentSqlUtil::InsertCombinedProduct(m_path, {MakeListProduct(L"q")}, newIds);
    });
    started.get_future().wait();
    ASSERT_TRUE(other.Run("INSERT INTO combined_products(Id) VALUES('o'); COMMIT"));
    EXPECT_TRUE(insertion.get());
    EXPECT_EQ(tolmtest::ProductIds(m_path), (Ids{L"o", L"p", L"q"}));
}

TEST_F(ComponentDatabase, ThreadsWriteOneAfterTheOther) {
    std::vector<std::future<bool>> writers;
    for (int i = 0; i < 4; ++i) {
        writers.push_back(std::async(std::launch::async, [&, i] {
            Ids newIds;
            return TolmComponentSqlUtil::InsertCombinedProduct(m_path, {MakeListProduct(std::to_wstring(i))}, newIds) &&
                   newIds.size() == 1;
        }));
    }
    for (auto& writer : writers)
        EXPECT_TRUE(writer.get());
    EXPECT_EQ(tolmtest::ProductIds(m_path), (Ids{L"0", L"1", L"2", L"3"}));
}

TEST_F(ComponentDatabase, NumbersOutOfRangeAreClamped) {
    ASSERT_TRUE(Insert());
    ASSERT_TRUE(Database(m_path).Run("UPDATE combined_products SET Spacing = 5000000000"));
    EXPECT_EQ(tolmtest::ReadProducts(m_path).at(0).spacing, 2'147'483'647);
}

TEST_F(ComponentDatabase, TextThatIsNoUtf8IsReadWithReplacements) {
    ASSERT_TRUE(Insert());
    ASSERT_TRUE(Database(m_path).Run("UPDATE combined_products SET Name = CAST(x'41FF42' AS TEXT)"));
    EXPECT_EQ(tolmtest::ReadProducts(m_path).at(0).Name, L"A\uFFFDB");
}

} // namespace
