#include "Host/Components.h"

#include "Platform/Support/ComponentSamples.h"
#include "Support/FaultyFiles.h"
#include "Support/FolderContent.h"
#include "Support/TempFolder.h"
#include "Support/TriedPoints.h"
#include "Vorn/Text.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <filesystem>
#include <functional>
#include <optional>
#include <ostream>

/// Each operation on a component database with a fault at each of its file calls in turn.
namespace tolmtest {
namespace {

using tolm::TolmComponentSqlUtil;
using Ids = std::vector<std::wstring>;
using Texts = std::vector<std::string>;

/// All rows of all tables; none of a file that is not there.
Texts RowsOf(const std::wstring& path) {
    Texts rows;
    const std::string native = vorn::StringUtil::ToString(path);
    if (!std::filesystem::exists(native))
        return rows;
    sqlite3* handle = nullptr;
    EXPECT_EQ(sqlite3_open_v2(native.c_str(), &handle, SQLITE_OPEN_READWRITE, nullptr), SQLITE_OK);
    const auto add = [](void* list, int count, char** values, char**) {
        std::string row;
        for (int i = 0; i < count; ++i)
            row += std::string(values[i] != nullptr ? values[i] : "NULL") + '|';
        static_cast<Texts*>(list)->push_back(row);
        return 0;
    };
    Texts tables;
    EXPECT_EQ(sqlite3_exec(handle, "SELECT name FROM sqlite_schema WHERE type = 'table'", add, &tables, nullptr),
              SQLITE_OK);
    for (const auto& table : tables) {
        rows.push_back("table " + table);
        const auto all = "SELECT * FROM \"" + table.substr(0, table.size() - 1) + "\" ORDER BY 1, 2";
        EXPECT_EQ(sqlite3_exec(handle, all.c_str(), add, &rows, nullptr), SQLITE_OK) << all;
    }
    EXPECT_EQ(sqlite3_exec(handle, "PRAGMA integrity_check", add, &rows, nullptr), SQLITE_OK);
    sqlite3_close(handle);
    return rows;
}

bool Import(const std::wstring& path) {
    auto component = MakeComponent(L"c1", L"k2");
    component.attributes = {{L"DN", L"15"}, {L"colour", L"red"}};
    return TolmComponentSqlUtil::Import(path, {{L"d2", L"电气", L"electrical"}}, {{L"k2", L"", L"d2", L"灯", L"lamps"}},
                                        {component, MakeComponent(L"c9", L"k2")});
}
bool Insert(const std::wstring& path) {
    Ids ids{L"old"};
    const bool done = TolmComponentSqlUtil::InsertCombinedProduct(
        path, {MakeListProduct(L"p1"), MakeListProduct(L"p9"), MakeEquipmentProduct(L"e9")}, ids);
    EXPECT_EQ(ids.empty(), !done) << "nothing new comes out of a failure";
    return done;
}
bool Remove(const std::wstring& path) {
    return TolmComponentSqlUtil::RemoveCombinedProduct(path, L"16353515", L"", {L"p1"});
}
bool Rename(const std::wstring& path) {
    std::map<std::wstring, std::wstring> ids{{L"c1", L"c2"}, {L"c2", L"c1"}};
    std::map<std::wstring, std::wstring> types{{L"type-c1", L"type-new"}};
    return TolmComponentSqlUtil::UpdateAllComponentId(path, ids, types);
}

/// All that can be read, appended to what is there.
struct Reading {
    std::vector<tolm::TolmCombinedProduct> products;
    Components withCondition;
    std::map<std::wstring, Components> byCategory;

    bool ReadAll(const std::wstring& path) {
        const CodeOnly category(L"k1");
        const bool first = TolmComponentSqlUtil::ReadCombinedProductList(path, L"", products);
        EXPECT_EQ(products.size(), first ? 2U : 0U);
        const bool second = TolmComponentSqlUtil::ReadComponentListWithCondition(path, &category, {{L"DN", L"15"}},
                                                                                 withCondition, true);
        EXPECT_EQ(withCondition.size(), second ? 1U : 0U);
        const bool third = TolmComponentSqlUtil::ReadComponentList(path, {&category}, byCategory, true);
        EXPECT_EQ(byCategory.size(), third ? 1U : 0U);
        const auto one = TolmComponentSqlUtil::ReadOneComponent(path, &category, 7, {1});
        return first && second && third && one.size() == 1;
    }
};
bool Read(const std::wstring& path) {
    return Reading().ReadAll(path);
}

struct Work {
    const char* title;
    bool (*run)(const std::wstring& path);
    bool onAFile = true; ///< false: it makes the file
};

void PrintTo(const Work& work, std::ostream* out) {
    *out << work.title;
}

class ComponentFaults : public testing::TestWithParam<Work> {
protected:
    void SetUp() override {
        if (GetParam().onAFile)
            MakeFile();
        m_start.emplace(m_folder.Path());
        m_before = RowsOf(m_path);
        ASSERT_TRUE(GetParam().run(m_path));
        m_after = RowsOf(m_path);
    }

    void MakeFile() {
        auto component = MakeComponent(L"c1", L"k1");
        component.attributes = {{L"DN", L"15"}};
        component.productId = 7;
        ASSERT_TRUE(TolmComponentSqlUtil::Import(m_path, {{L"d1", L"给排水", L"plumbing"}},
                                                 {{L"k1", L"", L"d1", L"弯头", L"elbows"}},
                                                 {component, MakeComponent(L"c2", L"k1")}));
        Ids ids;
        ASSERT_TRUE(TolmComponentSqlUtil::InsertCombinedProduct(
            m_path, {MakeListProduct(L"p1"), MakeEquipmentProduct(L"e1")}, ids));
    }

    /// True when the fault was met.
    bool TryWith(const std::function<void()>& arm, const std::string& where) {
        m_start->PutBack();
        arm();
        const bool said = GetParam().run(m_path);
        const bool met = m_files.HasFailed();
        m_files.Rest();
        EXPECT_TRUE(said || met) << where;
        const Texts rows = RowsOf(m_path);
        if (said) {
            EXPECT_EQ(rows, m_after) << where;
        } else {
            EXPECT_TRUE(rows == m_before || IsAsGoodAsNone()) << where;
        }
        if (!said) {
            EXPECT_TRUE(GetParam().run(m_path)) << where << ": next try";
            EXPECT_EQ(RowsOf(m_path), m_after) << where << ": next try";
        }
        return met;
    }

    /// What is left of a file that was to be made.
    bool IsAsGoodAsNone() const {
        return !GetParam().onAFile && std::filesystem::file_size(vorn::StringUtil::ToString(m_path)) == 0;
    }

    TempFolder m_folder;
    const std::wstring m_path = m_folder.File(L"components.db");
    FaultyFiles m_files{m_folder.Path()};
    std::optional<FolderContent> m_start;
    Texts m_before;
    Texts m_after;
};

TEST_P(ComponentFaults, LeaveTheOldOrTheNewAndAreTold) {
    using Lasts = FaultyFiles::Lasts;
    int met = 0;
    for (const Lasts lasts : {Lasts::Once, Lasts::ForGood}) {
        const std::string how = lasts == Lasts::Once ? "once, " : "for good, ";
        for (long call = 1; TryWith([&] { m_files.FailAt(call, lasts); }, how + std::to_string(call)) && !HasFailure();
             ++call)
            ++met;
    }
    for (long bytes = 0;
         TryWith([&] { m_files.FillDiskAfter(bytes); }, "full disk, " + std::to_string(bytes)) && !HasFailure();
         bytes += 512)
        ++met;
    EXPECT_GT(met, 5);
    TellTriedPoints("faults", std::string("component databases, ") + GetParam().title, met);
}

INSTANTIATE_TEST_SUITE_P(Each, ComponentFaults,
                         testing::Values(Work{"Import", Import}, Work{"FirstImport", Import, false},
                                         Work{"Insertion", Insert}, Work{"FirstInsertion", Insert, false},
                                         Work{"Removal", Remove}, Work{"NewIds", Rename}, Work{"Reading", Read}),
                         [](const auto& work) { return std::string(work.param.title); });

} // namespace
} // namespace tolmtest
