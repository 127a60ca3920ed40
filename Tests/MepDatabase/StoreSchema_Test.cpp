#include "MepDatabase/StoreSchema.h"

#include "Qbase/Qbase.h"
#include "Support/TempFolder.h"
#include "Vorn/Text.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <algorithm>
#include <charconv>
#include <map>
#include <set>
#include <string>

namespace tolm {
namespace {

/// Bytes of a binary or of one entry: "binary(12)" gives 12.
std::size_t EntrySize(std::string_view type) {
    std::size_t size = 0;
    const auto digits = type.substr(type.find('(') + 1);
    std::from_chars(digits.data(), digits.data() + digits.size(), size);
    return size;
}

/// A new store under the project's definition file.
class StoreSchema : public testing::Test {
protected:
    StoreSchema() {
        EXPECT_TRUE(m_store.openDatabase(
            vorn::StringUtil::ToWString(TOLM_SOURCE_DIR "/Db/TolmDataSet/MepDatabase/ProjectSettings.ddq"), m_path,
            true));
        EXPECT_TRUE(m_store.lockForUpdate());
    }

    /// Sets the attribute of the current record through the setter of its type; lists get two entries.
    bool Set(const schema::AttributeRow& row) {
        const float floats[2] = {1, 2};
        const std::string bytes(400, 'b');
        CWszArray texts;
        texts.append(L"t");
        const std::map<std::string_view, bool (*)(CQbase&, short)> setters = {
            {"byte", [](CQbase& qb, short id) { return qb.setByte(id, 1); }},
            {"short", [](CQbase& qb, short id) { return qb.setShort(id, 1); }},
            {"long", [](CQbase& qb, short id) { return qb.setLong(id, 1); }},
            {"float", [](CQbase& qb, short id) { return qb.setFloat(id, 1); }},
            {"double", [](CQbase& qb, short id) { return qb.setDouble(id, 1); }},
            {"text", [](CQbase& qb, short id) { return qb.setWsz(id, L"t", -1); }},
        };
        if (const auto setter = setters.find(row.type); setter != setters.end())
            return setter->second(m_store, row.id);
        if (row.type == "float[]")
            return m_store.setFloatArray(row.id, floats, 2);
        if (row.type == "text[]")
            return m_store.setWszArray(row.id, texts, -1);
        return row.type.ends_with("[]") ? m_store.setBinaryArray(row.id, bytes.data(), 2, 0)
                                        : m_store.setBinary(row.id, bytes.data(), 0);
    }

    /// The first column of the first row.
    std::string Sql(const std::string& sql) {
        sqlite3* database = nullptr;
        sqlite3_stmt* statement = nullptr;
        EXPECT_EQ(sqlite3_open(vorn::StringUtil::ToString(m_path).c_str(), &database), SQLITE_OK);
        EXPECT_EQ(sqlite3_prepare_v2(database, sql.c_str(), -1, &statement, nullptr), SQLITE_OK) << sql;
        std::string value;
        if (sqlite3_step(statement) == SQLITE_ROW && sqlite3_column_type(statement, 0) != SQLITE_NULL)
            value = reinterpret_cast<const char*>(sqlite3_column_text(statement, 0));
        sqlite3_finalize(statement);
        sqlite3_close(database);
        return value;
    }

    tolmtest::TempFolder m_folder;
    std::wstring m_path = m_folder.File(L"set.db");
    CQbase m_store;
};

TEST_F(StoreSchema, EveryAttributeStandsInTheColumnOfItsName) {
    for (const auto& row : schema::kAttributes) {
        const std::wstring id = std::to_wstring(row.id);
        ASSERT_TRUE(m_store.createRec(row.classCode, id)) << row.classCode << row.id;
        EXPECT_TRUE(Set(row)) << row.classCode << ' ' << row.id << ' ' << row.type;
        ASSERT_TRUE(m_store.saveRec());
    }
    ASSERT_TRUE(m_store.closeDatabase());
    for (const auto& row : schema::kAttributes) {
        const std::string from =
            " FROM \"" + std::string(row.classCode) + "\" WHERE id='" + std::to_string(row.id) + "'";
        EXPECT_EQ(Sql("SELECT \"" + std::string(row.name) + "\" IS NOT NULL" + from), "1") << row.classCode << row.id;
        if (row.type.starts_with("binary")) {
            const std::size_t entries = row.type.ends_with("[]") ? 2 : 1;
            EXPECT_EQ(Sql("SELECT length(\"" + std::string(row.name) + "\")" + from),
                      std::to_string(EntrySize(row.type) * entries))
                << row.id;
        }
    }
}

TEST_F(StoreSchema, TheDefinitionHasNoOtherClassesAndAttributes) {
    std::map<std::string, std::size_t> counts;
    for (const auto& row : schema::kAttributes)
        ++counts[row.classCode];
    ASSERT_TRUE(m_store.closeDatabase());
    EXPECT_EQ(Sql("SELECT count(*) FROM sqlite_schema WHERE type='table'"), std::to_string(counts.size()));
    for (const auto& [code, count] : counts)
        EXPECT_EQ(Sql("SELECT count(*) FROM pragma_table_info('" + code + "')"), std::to_string(count + 2)) << code;
}

TEST_F(StoreSchema, TheDefinitionTakesNoOtherType) {
    for (const auto& row : schema::kAttributes) {
        ASSERT_TRUE(m_store.createRec(row.classCode, L"x"));
        int taken = 0;
        for (const char* type :
             {"byte", "short", "long", "float", "double", "text", "float[]", "text[]", "binary", "binary[]"})
            taken += Set({row.classCode, row.id, type, row.name}) ? 1 : 0;
        EXPECT_EQ(taken, 1) << row.classCode << row.id;
    }
}

TEST(StoreSchemaNumbers, NoRowStandsTwice) {
    std::set<std::pair<std::string, short>> rows;
    for (const auto& row : schema::kAttributes)
        EXPECT_TRUE(rows.emplace(row.classCode, row.id).second) << row.classCode << row.id;
}

TEST(StoreSchemaNumbers, TheFirstDigitsOfANumberTellItsType) {
    const std::map<int, std::set<std::string_view>> typesOf = {
        {10, {"byte"}}, {11, {"short"}}, {12, {"long"}}, {13, {"float", "float[]"}}, {14, {"double"}}, {15, {"text"}}};
    for (const auto& row : schema::kAttributes) {
        if (row.id < 1600) {
            ASSERT_TRUE(typesOf.contains(row.id / 100)) << row.id;
            EXPECT_TRUE(typesOf.at(row.id / 100).contains(row.type)) << row.id;
        }
    }
}

TEST(StoreSchemaNumbers, TheNumbersFrom1600HaveTheirOwnTypes) {
    const std::map<short, std::string_view> typesOf = {
        {1600, "text"},         {1601, "text"},          {1607, "text[]"},       {1609, "text"},
        {1610, "text[]"},       {1611, "binary(106)[]"}, {1612, "binary(4)[]"},  {1613, "binary(6)[]"},
        {1614, "binary(16)[]"}, {1615, "binary(8)[]"},   {1616, "binary(56)[]"}, {1617, "binary(12)"},
        {1621, "binary(10)[]"}};
    std::set<short> seen;
    for (const auto& row : schema::kAttributes) {
        if (row.id < 1600)
            continue;
        ASSERT_TRUE(typesOf.contains(row.id)) << row.id;
        EXPECT_EQ(row.type, typesOf.at(row.id)) << row.id;
        seen.insert(row.id);
    }
    EXPECT_EQ(seen.size(), typesOf.size());
}

TEST(StoreSchemaNumbers, EntrySizesAreThoseOfTheTypes) {
    const std::map<short, std::size_t> sizes = {{schema::kFittingList, schema::kFittingEntrySize},
                                                {schema::kCircularMaxSizes, schema::kCircularMaxSizeEntrySize},
                                                {schema::kRectMaxSizes, schema::kRectMaxSizeEntrySize},
                                                {schema::kPipeSizeList, schema::kPipeSizeEntrySize},
                                                {schema::kDuctSizeList, schema::kDuctSizeEntrySize},
                                                {schema::kCableSpecificationList, schema::kCableSpecificationEntrySize},
                                                {schema::kLastUpdateTimePoint, schema::kTimePointSize},
                                                {schema::kDimensionMethods, schema::kDimensionMethodEntrySize}};
    for (const auto& [id, size] : sizes) {
        const auto row = std::ranges::find(schema::kAttributes, id, &schema::AttributeRow::id);
        ASSERT_NE(row, schema::kAttributes.end());
        EXPECT_EQ(EntrySize(row->type), size) << id;
    }
    EXPECT_EQ(schema::kCableTraySizeEntrySize, sizeof(float));
    EXPECT_EQ(schema::kPackedListCapacity, 300u);
}

TEST(StoreSchemaNumbers, TrackedClassesCanBearAStatus) {
    for (const std::string_view code : {"SYS", "MTS", "PSI", "SMS", "MSG"}) {
        for (const short id : {schema::kStatus, schema::kMEPType, schema::kDisciplineId}) {
            EXPECT_TRUE(std::ranges::any_of(schema::kAttributes,
                                            [&](const auto& row) { return row.classCode == code && row.id == id; }))
                << code << id;
        }
    }
}

} // namespace
} // namespace tolm
