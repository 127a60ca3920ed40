#include "StoreSupport/UploadRecords.h"

#include "MepDatabase/Encoders.h"
#include "StoreSupport/IngestFixture.h"

#include <limits>

namespace tolmtest {
namespace {

using tolm::GetCreatedOrEditedMateriaListJasonValue;
using tolm::GetCreatedOrEditedMaterieSerieGroupJasonValue;
using tolm::GetCreatedOrEditedSizeModelListJasonValue;
using web::json::value;

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

value SizeRow(SizeModulePtr size, int kind) {
    return OnlyRow(GetCreatedOrEditedSizeModelListJasonValue(false, true, L"g", kind, {Shared(std::move(size))}));
}

value SizeContent(SizeModulePtr size, int kind) {
    return SizeRow(std::move(size), kind).at("content");
}

SizeModulePtr PipeOf(float length) {
    auto size = SizeModule(L"s", L"n");
    size->AddPipeSize({length, length, length, length});
    return size;
}

SizeModulePtr DuctOf(float length) {
    auto size = SizeModule(L"s", L"n", Type::Duct, Discipline::HVAC);
    size->AddDuctSize({length, length});
    return size;
}

const value& FirstEntry(const value& content) {
    return content.at("sizeList").at(0);
}

/// The number under each key, which must be a double in memory.
std::vector<double> Doubles(const value& object, const std::vector<std::string>& keys) {
    std::vector<double> numbers;
    for (const auto& key : keys) {
        EXPECT_TRUE(object.at(key).is_double()) << key;
        numbers.push_back(object.at(key).as_double());
    }
    return numbers;
}

std::vector<std::string> Keys(const value& object) {
    std::vector<std::string> keys;
    for (const auto& [key, unused] : object.as_object())
        keys.push_back(key);
    std::sort(keys.begin(), keys.end());
    return keys;
}

// --- the row of "ConfigTree"
// ------------------------------------------------------------------------------------------

TEST(TreeRow, OfAMaterialHasTheKeysOfItsNodeAndAnEmptyContent) {
    const auto material = Shared(Material(L"m1", L"钢", Type::Pipe, Discipline::Plumbing, 1'700'000'000'123));
    EXPECT_EQ(GetCreatedOrEditedMateriaListJasonValue(false, true, L"MaterialSeries", {material}),
              Row("{'rows':[{'ID':'m1','text':'钢','groupName':'MaterialSeries','CreateTime':1700000000123,'nodeID':'',"
                  "'tableName':'','order':0,'display':1,'Nodes':'[]','Children':'[]','parentID':'','content':{}}]}"));
}

TEST(TreeRow, OfAGroupIsLikeThatOfAMaterial) {
    const auto group = Shared(Group(L"g1", L"Group", Type::Duct, Discipline::HVAC, 7));
    EXPECT_EQ(GetCreatedOrEditedMaterieSerieGroupJasonValue(false, true, L"ductFittingGroup", {group}),
              Row("{'rows':[{'ID':'g1','text':'Group','groupName':'ductFittingGroup','CreateTime':7,'nodeID':'',"
                  "'tableName':'','order':0,'display':1,'Nodes':'[]','Children':'[]','parentID':'','content':{}}]}"));
}

TEST(TreeRow, OfASizeTableHasItsMaterialAsParent) {
    auto size = SizeModule(L"s1", L"Sizes", Type::Conduit, Discipline::Electrical, 8);
    size->SetMaterial(Material(L"m1", L"Steel"));
    EXPECT_EQ(SizeRow(std::move(size), 4),
              Row("{'ID':'s1','text':'Sizes','groupName':'g','CreateTime':8,'nodeID':'','tableName':'','order':0,"
                  "'display':1,'Nodes':'[]','Children':'[]','parentID':'m1','content':{'sizeList':[]}}"));
}

TEST(TreeRow, HasTextsNumbersAndAnObject) {
    const auto row = SizeRow(FullSize(Type::Pipe, Discipline::Plumbing), 1);
    for (const char* key : {"ID", "text", "groupName", "nodeID", "tableName", "Nodes", "Children", "parentID"})
        EXPECT_TRUE(row.at(key).is_string()) << key;
    for (const char* key : {"CreateTime", "order", "display"})
        EXPECT_TRUE(row.at(key).is_integer()) << key;
    EXPECT_TRUE(row.at("content").is_object());
    EXPECT_EQ(Keys(row).size(), 12U);
}

TEST(TreeRow, WritesItsTimeAsAnUnsigned64BitNumber) {
    const auto time = [](std::int64_t created) {
        const auto material = Shared(Material(L"m", L"n", Type::Pipe, Discipline::Plumbing, created));
        const auto encoded = GetCreatedOrEditedMateriaListJasonValue(false, true, L"g", {material});
        return OnlyRow(encoded).at("CreateTime").serialize();
    };
    EXPECT_EQ(time(0), "0");
    EXPECT_EQ(time(std::numeric_limits<std::int64_t>::max()), "9223372036854775807");
    EXPECT_EQ(time(-1), "18446744073709551615");
}

TEST(TreeRow, OfASizeTableWithoutMaterialHasNoParent) {
    const auto row = SizeRow(SizeModule(L"s", L"n", Type::Duct, Discipline::HVAC), 2);
    EXPECT_EQ(row.at("parentID"), value::string(""));
    EXPECT_EQ(row.at("content").at("series"), value::string(""));
}

// --- the rows of a list
// -----------------------------------------------------------------------------------------------

TEST(EncodedRows, StandInTheOrderOfTheList) {
    const auto encoded = GetCreatedOrEditedMateriaListJasonValue(
        false, true, L"g", {Shared(Material(L"b", L"")), Shared(Material(L"a", L"")), Shared(Material(L"c", L""))});
    EXPECT_EQ(RowIds(encoded.at("rows")), (std::vector<std::string>{"b", "a", "c"}));
}

TEST(EncodedRows, OfAnEmptyListAreAnEmptyArray) {
    const auto nothing = Row("{'rows':[]}");
    EXPECT_EQ(GetCreatedOrEditedSizeModelListJasonValue(false, true, L"g", 1, {}), nothing);
    EXPECT_EQ(GetCreatedOrEditedMateriaListJasonValue(true, false, L"g", {}), nothing);
    EXPECT_EQ(GetCreatedOrEditedMaterieSerieGroupJasonValue(false, false, L"g", {}), nothing);
}

TEST(EncodedRows, AreWrappedOnlyWhenWrappingIsAskedForAndNothingWasCreated) {
    const auto size = Shared(SizeModule(L"s1", L"n"));
    const auto material = Shared(Material(L"m1", L"n"));
    const auto group = Shared(Group(L"g1", L"n"));
    const auto all = [&](bool wrap, bool created) {
        return std::vector<value>{OnlyRow(GetCreatedOrEditedSizeModelListJasonValue(wrap, created, L"g", 1, {size})),
                                  OnlyRow(GetCreatedOrEditedMateriaListJasonValue(wrap, created, L"g", {material})),
                                  OnlyRow(GetCreatedOrEditedMaterieSerieGroupJasonValue(wrap, created, L"g", {group}))};
    };
    const auto bare = all(false, false);
    EXPECT_EQ(all(false, true), bare);
    EXPECT_EQ(all(true, true), bare);
    const auto wrapped = all(true, false);
    for (std::size_t at = 0; at < bare.size(); ++at) {
        auto expected = value::object();
        expected["id"] = bare[at].at("ID");
        expected["data"] = bare[at];
        EXPECT_EQ(wrapped[at], expected);
    }
}

TEST(EncodedRows, AreLostWithANullRecord) {
    const auto size = Shared(SizeModule(L"s", L"n"));
    EXPECT_TRUE(GetCreatedOrEditedSizeModelListJasonValue(false, true, L"g", 1, {size, nullptr, size}).is_null());
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"GetCreatedOrEditedSizeModelListJasonValue: pSize为空！"}));
    const auto material = Shared(Material(L"m", L"n"));
    EXPECT_TRUE(GetCreatedOrEditedMateriaListJasonValue(false, true, L"g", {material, nullptr}).is_null());
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"GetCreatedOrEditedMateriaListJasonValue: pMaterial为空"}));
    EXPECT_TRUE(GetCreatedOrEditedMaterieSerieGroupJasonValue(false, true, L"g", {nullptr}).is_null());
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              (Warnings{L"GetCreatedOrEditedMaterieSerieGroupJasonValue: pGroup为空"}));
}

TEST(EncodedRows, AreUtf8WhateverTheTextHolds) {
    const auto material = Shared(Material(L"m", L"a\"\\\n\x1F600" + wstring(1, wchar_t(0xD800))));
    const auto encoded = GetCreatedOrEditedMateriaListJasonValue(false, true, L"g", {material});
    EXPECT_EQ(OnlyRow(Json(encoded.serialize())).at("text"), value::string("a\"\\\n😀\uFFFD"));
}

// --- content by kind
// --------------------------------------------------------------------------------------------------

TEST(SizeContent, OfAPipe) {
    const auto content = SizeContent(FullSize(Type::Pipe, Discipline::Plumbing), 1);
    EXPECT_EQ(Keys(content), (std::vector<std::string>{"roughness", "sizeList"}));
    EXPECT_EQ(Doubles(content, {"roughness"}), (std::vector<double>{0.1234}));
    ASSERT_EQ(content.at("sizeList").size(), 2U);
    const std::vector<std::string> keys{"DN", "OD", "ID", "Thickness"};
    EXPECT_EQ(Doubles(content.at("sizeList").at(0), keys), (std::vector<double>{15.0, 21.3, 16.1, 2.6}));
    EXPECT_EQ(Doubles(content.at("sizeList").at(1), keys), (std::vector<double>{20.75, 0.0, 12.345, 0.1}));
    EXPECT_EQ(content.at("sizeList").at(0).size(), 4U);
}

TEST(SizeContent, OfADuct) {
    const auto content = SizeContent(FullSize(Type::Duct, Discipline::HVAC), 2);
    EXPECT_EQ(Keys(content), (std::vector<std::string>{"series", "shape", "sizeList", "systemPress"}));
    EXPECT_EQ(content.at("shape").serialize(), "1");
    EXPECT_EQ(content.at("series"), value::string("Steel"));
    EXPECT_EQ(content.at("systemPress").serialize(), "3");
    ASSERT_EQ(content.at("sizeList").size(), 2U);
    EXPECT_EQ(Doubles(content.at("sizeList").at(0), {"Size", "Thickness"}), (std::vector<double>{0.1F, 0.75}));
    EXPECT_EQ(Doubles(content.at("sizeList").at(1), {"Size", "Thickness"}), (std::vector<double>{1250.0, 1.2F}));
    EXPECT_EQ(content.at("sizeList").at(0).size(), 2U);
}

TEST(SizeContent, OfACableTray) {
    const auto content = SizeContent(FullSize(Type::CableTray, Discipline::Electrical), 3);
    EXPECT_EQ(Keys(content), (std::vector<std::string>{"sizeList", "type"}));
    EXPECT_EQ(content.at("type").serialize(), "2");
    EXPECT_EQ(content.at("sizeList"), Row("[{'Size':0.1},{'Size':1250.0}]"));
}

TEST(SizeContent, OfAConduitHasWholeNominalDiametersAndNoThickness) {
    const auto content = SizeContent(FullSize(Type::Conduit, Discipline::Electrical), 4);
    EXPECT_EQ(content, Row("{'sizeList':[{'DN':15,'OD':21.3,'ID':16.1},{'DN':20,'OD':0.0,'ID':12.345}]}"));
    EXPECT_TRUE(FirstEntry(content).at("DN").is_integer());
    Doubles(FirstEntry(content), {"OD", "ID"});
}

TEST(SizeContent, OfAWireAndItsTypeNameAsText) {
    const auto row = SizeRow(FullSize(Type::Wire, Discipline::Electrical), 5);
    EXPECT_EQ(row.at("text"), value::string("BV-500"));
    EXPECT_EQ(row.at("content"), Row("{'series':1,'currentUseTemperature':2,'sizeList':["
                                     "{'area':'2.5','current':24,'temperature':0},"
                                     "{'area':'4²','current':31,'temperature':3}]}"));
    for (const char* key : {"series", "currentUseTemperature"})
        EXPECT_TRUE(row.at("content").at(key).is_integer()) << key;
}

TEST(SizeContent, NamesAWireByItsTypeNameAlone) {
    auto size = SizeModule(L"s", L"A", Type::Wire, Discipline::Electrical);
    wstring name = L"B";
    size->SetCableSpecTypeName(name);
    EXPECT_EQ(SizeRow(std::move(size), 5).at("text"), value::string("B"));
    EXPECT_EQ(SizeRow(SizeModule(L"s", L"A", Type::Wire, Discipline::Electrical), 5).at("text"), value::string(""));
}

TEST(SizeContent, IsByTheKindAndNotByTheRecordsObjectType) {
    EXPECT_EQ(Keys(SizeContent(FullSize(Type::Wire, Discipline::Electrical), 1)),
              (std::vector<std::string>{"roughness", "sizeList"}));
}

TEST(SizeContent, OfAnUnknownKindIsNull) {
    for (const int kind : {-1, 0, 6, 99})
        EXPECT_TRUE(SizeContent(FullSize(Type::Pipe, Discipline::Plumbing), kind).is_null()) << kind;
}

TEST(SizeContent, OfAnEmptyListHasAnEmptyArray) {
    for (int kind = 1; kind <= 5; ++kind)
        EXPECT_EQ(SizeContent(SizeModule(L"s", L"n"), kind).at("sizeList"), value::array()) << kind;
}

TEST(SizeContent, HasADiameterOf25AsADoubleForPipesAndAsAWholeNumberForConduits) {
    const auto pipe = FirstEntry(SizeContent(PipeOf(25.0F), 1)).at("DN");
    EXPECT_TRUE(pipe.is_double());
    EXPECT_EQ(pipe.as_double(), 25.0);
    const auto conduit = FirstEntry(SizeContent(PipeOf(25.0F), 4)).at("DN");
    EXPECT_TRUE(conduit.is_integer());
    EXPECT_EQ(conduit.as_integer(), 25);
}

// --- rounding
// ---------------------------------------------------------------------------------------------------------

struct Rounding {
    float length;
    double inDouble;
};

constexpr Rounding kRoundings[] = {
    {12.3456F, 12.345},
    {-0.0004F, 0.0},
    {0.0F, 0.0},
    {0.1F, 0.1},
    {-12.3456F, -12.345},
    {2.6F, 2.6},
    {0.0009999F, 0.0},
    {0.001F, 0.001},
    {1234.5678F, 1234.567},
    {kNaN, 0.0},
    {kInfinity, 2147483.647},
    {-kInfinity, -2147483.648},
    {3.0e38F, 2147483.647},
    {-3.0e9F, -2147483.648},
};

TEST(SizeRounding, CutsLengthsToThousandthsAndDividesInDoublePrecision) {
    for (const auto& [length, expected] : kRoundings) {
        const auto pipe = SizeContent(PipeOf(length), 1);
        EXPECT_EQ(Doubles(FirstEntry(pipe), {"DN", "OD", "ID", "Thickness"}), std::vector<double>(4, expected));
        const auto tray = SizeContent(DuctOf(length), 3);
        EXPECT_EQ(Doubles(FirstEntry(tray), {"Size"}), std::vector<double>(1, expected));
        const auto conduit = SizeContent(PipeOf(length), 4);
        EXPECT_EQ(Doubles(FirstEntry(conduit), {"OD", "ID"}), std::vector<double>(2, expected));
    }
}

TEST(SizeRounding, DividesInSinglePrecisionForDucts) {
    for (const auto& [length, inDouble] : kRoundings) {
        const auto entry = FirstEntry(SizeContent(DuctOf(length), 2));
        const double single = static_cast<float>(inDouble);
        EXPECT_EQ(Doubles(entry, {"Size", "Thickness"}), (std::vector<double>{single, single})) << length;
    }
    EXPECT_EQ(FirstEntry(SizeContent(DuctOf(0.1F), 2)).at("Size").serialize(), "0.10000000149011612");
    EXPECT_EQ(FirstEntry(SizeContent(DuctOf(0.1F), 3)).at("Size").serialize(), "0.10000000000000001");
}

/// 8.2 in single precision is a little less; only the product in single precision comes out as 8200 again.
TEST(SizeRounding, MultipliesInSinglePrecision) {
    const float length = 8.2F;
    ASSERT_LT(double{length} * 1000.0, 8200.0);
    EXPECT_EQ(FirstEntry(SizeContent(PipeOf(length), 1)).at("DN").as_double(), 8.2);
}

TEST(SizeRounding, NeverSendsANegativeZero) {
    EXPECT_EQ(FirstEntry(SizeContent(DuctOf(-0.0004F), 2)).at("Size").serialize(), "0");
    EXPECT_EQ(FirstEntry(SizeContent(PipeOf(-0.0F), 1)).at("DN").serialize(), "0");
}

TEST(SizeRounding, CutsTheNominalDiameterOfConduitsToAWholeNumber) {
    const std::pair<float, int> cases[] = {
        {25.9F, 25}, {-25.9F, -25},        {0.9F, 0},
        {kNaN, 0},   {3.0e9F, 2147483647}, {-kInfinity, std::numeric_limits<int>::min()}};
    for (const auto& [length, expected] : cases)
        EXPECT_EQ(FirstEntry(SizeContent(PipeOf(length), 4)).at("DN"), value::number(expected)) << length;
}

TEST(SizeRounding, CutsTheRoughnessToTenThousandths) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    const std::pair<double, double> cases[] = {{0.12345, 0.1234},
                                               {1.0, 1.0},
                                               {-0.00009, 0.0},
                                               {-0.12349, -0.1234},
                                               {300000.00019, 300000.0001},
                                               {kNaN, 0.0},
                                               {infinity, 922337203685477.5807},
                                               {-1e300, -922337203685477.5808}};
    for (const auto& [roughness, expected] : cases) {
        auto size = SizeModule(L"s", L"n");
        size->SetRoughness(roughness);
        EXPECT_EQ(Doubles(SizeContent(std::move(size), 1), {"roughness"}), std::vector<double>{expected}) << roughness;
    }
}

} // namespace
} // namespace tolmtest
