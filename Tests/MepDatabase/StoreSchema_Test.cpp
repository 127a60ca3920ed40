#include "MepDatabase/StoreSchema.h"

#include "Qbase/DefinitionInternal.h"
#include "Vorn/Text.h"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>
#include <tuple>

namespace tolm {
namespace {

using qbase::AttributeType;

const qbase::Definition& TheDefinition() {
    static const auto definition = qbase::Definition::Load(
        vorn::StringUtil::ToWString(TOLM_SOURCE_DIR "/Db/TolmDataSet/MepDatabase/ProjectSettings.ddq"));
    return *definition;
}

std::string TypeText(const qbase::Attribute& attribute) {
    const std::string size = std::to_string(attribute.entrySize);
    switch (attribute.type) {
    case AttributeType::Byte:
        return "byte";
    case AttributeType::Short:
        return "short";
    case AttributeType::Long:
        return "long";
    case AttributeType::Float:
        return "float";
    case AttributeType::FloatArray:
        return "float[]";
    case AttributeType::Double:
        return "double";
    case AttributeType::Text:
        return "text";
    case AttributeType::TextArray:
        return "text[]";
    case AttributeType::Binary:
        return "binary(" + size + ")";
    case AttributeType::BinaryArray:
        return "binary(" + size + ")[]";
    }
    return "";
}

using Row = std::tuple<std::string, short, std::string, std::string>;

std::set<Row> RowsOfTheFile() {
    std::set<Row> rows;
    for (const auto& definition : TheDefinition().Classes()) {
        for (const auto& attribute : definition.attributes)
            rows.emplace(definition.code, attribute.id, TypeText(attribute), attribute.name);
    }
    return rows;
}

std::set<Row> RowsOfTheHeader() {
    std::set<Row> rows;
    for (const auto& row : schema::kAttributes)
        rows.emplace(row.classCode, row.id, row.type, row.name);
    return rows;
}

TEST(StoreSchema, HeaderAndDefinitionFileSayTheSame) {
    EXPECT_EQ(RowsOfTheFile(), RowsOfTheHeader());
    EXPECT_EQ(RowsOfTheHeader().size(), std::size(schema::kAttributes)) << "no row stands twice";
}

TEST(StoreSchema, TheFirstDigitsOfANumberTellItsType) {
    const std::map<short, std::set<std::string>> typesOf = {
        {10, {"byte"}}, {11, {"short"}}, {12, {"long"}}, {13, {"float", "float[]"}}, {14, {"double"}}, {15, {"text"}}};
    for (const auto& row : schema::kAttributes) {
        if (const auto types = typesOf.find(static_cast<short>(row.id / 100)); types != typesOf.end()) {
            EXPECT_TRUE(types->second.contains(std::string(row.type))) << row.id;
        }
    }
}

TEST(StoreSchema, TheNumbersFrom1600HaveTheirOwnTypes) {
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

TEST(StoreSchema, EntrySizesAreThoseOfTheDefinition) {
    const std::map<short, std::size_t> sizes = {{schema::kFittingList, schema::kFittingEntrySize},
                                                {schema::kCircularMaxSizes, schema::kCircularMaxSizeEntrySize},
                                                {schema::kRectMaxSizes, schema::kRectMaxSizeEntrySize},
                                                {schema::kPipeSizeList, schema::kPipeSizeEntrySize},
                                                {schema::kDuctSizeList, schema::kDuctSizeEntrySize},
                                                {schema::kCableSpecificationList, schema::kCableSpecificationEntrySize},
                                                {schema::kLastUpdateTimePoint, schema::kTimePointSize},
                                                {schema::kDimensionMethods, schema::kDimensionMethodEntrySize}};
    for (const auto& [id, size] : sizes) {
        const auto* attribute = TheDefinition().FindAttribute(id);
        ASSERT_NE(attribute, nullptr);
        EXPECT_EQ(static_cast<std::size_t>(attribute->entrySize), size) << id;
    }
    EXPECT_EQ(schema::kCableTraySizeEntrySize, sizeof(float));
    EXPECT_EQ(schema::kPackedListCapacity, 300u);
}

TEST(StoreSchema, TrackedClassesCanBearAStatus) {
    for (const char* code : {schema::kSystemType, schema::kMaterial, schema::kSizeModule, schema::kMaterialSerie,
                             schema::kMaterialSerieGroup}) {
        const int position = TheDefinition().Find(code);
        ASSERT_GE(position, 0) << code;
        const auto& definition = TheDefinition().Classes()[static_cast<std::size_t>(position)];
        for (const short id : {schema::kStatus, schema::kMEPType, schema::kDisciplineId})
            EXPECT_GE(definition.Find(id), 0) << code << ' ' << id;
    }
}

TEST(StoreSchema, EveryClassOfTheFileHasACode) {
    std::set<std::string> codes;
    for (const auto& definition : TheDefinition().Classes())
        codes.insert(definition.code);
    EXPECT_EQ(codes,
              (std::set<std::string>{"SYS", "COS", "MTS", "PSI", "SMS", "MSG", "CRT", "BMD", "ISS", "PSM", "000"}));
}

} // namespace
} // namespace tolm
