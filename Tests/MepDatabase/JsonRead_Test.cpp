#include <gtest/gtest.h>

#include "MepDatabase/JsonRead.h" // after the test framework, which its macro U would break

#include <limits>
#include <string>

namespace tolm::jsonread {
namespace {

using web::json::value;

constexpr auto kInt32Max = std::numeric_limits<std::int32_t>::max();
constexpr auto kInt32Min = std::numeric_limits<std::int32_t>::min();
constexpr auto kFloatMax = std::numeric_limits<float>::max();

float Cell(const std::string& json, CellText text) {
    const value row = value::parse("{\"c\":" + json + "}");
    return FloatCell(row.as_object(), "c", text);
}

TEST(JsonRead, FindGivesTheMemberOrNothing) {
    const value row = value::parse(R"({"a":1,"b":null})");
    ASSERT_NE(Find(row.as_object(), "a"), nullptr);
    ASSERT_NE(Find(row.as_object(), "b"), nullptr);
    EXPECT_TRUE(Find(row.as_object(), "b")->is_null());
    EXPECT_EQ(Find(row.as_object(), "c"), nullptr);
    EXPECT_EQ(Find(row.as_object(), wstring(L"c")), nullptr);
}

TEST(JsonRead, AMissingMemberIsKeyNotFound) {
    const value row = value::object();
    try {
        Text(row.as_object(), "ID");
        FAIL() << "nothing was thrown";
    } catch (const web::json::json_exception& error) {
        EXPECT_STREQ(error.what(), "Key not found");
    }
}

TEST(JsonRead, AMemberOfAnotherTypeThrows) {
    const value row = value::parse(R"({"t":"1","n":1,"z":null})");
    EXPECT_THROW(Text(row.as_object(), "n"), web::json::json_exception);
    EXPECT_THROW(Text(row.as_object(), "z"), web::json::json_exception);
    EXPECT_THROW(Short(row.as_object(), "t"), web::json::json_exception);
    EXPECT_THROW(Int(row.as_object(), "z"), web::json::json_exception);
}

TEST(JsonRead, TextIsUtf8) {
    const value row = value::parse(R"({"t":"\u98ce管😀"})");
    EXPECT_EQ(Text(row.as_object(), "t"), L"风管😀");
}

TEST(JsonRead, ADoubleIsCutOffWhereAnIntegerIsReadDirectly) {
    EXPECT_EQ(ShortOf(value::number(2.9)), 2);
    EXPECT_EQ(ShortOf(value::number(-2.9)), -2);
}

TEST(JsonRead, IntegersThatDoNotFitAreClamped) {
    EXPECT_EQ(ShortOf(value::number(32768)), 32767);
    EXPECT_EQ(ShortOf(value::number(-32769)), -32768);
    EXPECT_EQ(ShortOf(value::number(1e300)), 32767);
    EXPECT_EQ(ShortOf(value::number(std::numeric_limits<double>::quiet_NaN())), 0);
    EXPECT_EQ(Int64Of(value::number(std::numeric_limits<std::uint64_t>::max())),
              std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(Int64Of(value::number(-1e300)), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(UInt64Of(value::number(-1)), 0U);
    EXPECT_EQ(UInt64Of(value::number(1e300)), std::numeric_limits<std::uint64_t>::max());
}

TEST(JsonRead, IntegersThatFitAreExact) {
    EXPECT_EQ(Int64Of(value::number(std::int64_t{9007199254740993})), 9007199254740993);
    EXPECT_EQ(UInt64Of(value::number(std::numeric_limits<std::uint64_t>::max())),
              std::numeric_limits<std::uint64_t>::max());
}

TEST(JsonRead, ACellTakesADoubleOrAnInteger) {
    EXPECT_EQ(Cell("12.5", CellText::AsInteger), 12.5F);
    EXPECT_EQ(Cell("12", CellText::AsFloat), 12.0F);
    EXPECT_EQ(Cell("3000000000", CellText::AsFloat), 3000000000.0F);
}

TEST(JsonRead, ACellTakesTextTrimmed) {
    EXPECT_EQ(Cell("\"25 \"", CellText::AsInteger), 25.0F);
    EXPECT_EQ(Cell("\" \\t25\"", CellText::AsInteger), 25.0F);
    EXPECT_EQ(Cell("\" 26.9 \"", CellText::AsFloat), 26.9F);
}

TEST(JsonRead, TextIsAnIntegerOrAFloatByItsColumn) {
    EXPECT_EQ(Cell("\"26.9\"", CellText::AsInteger), 26.0F);
    EXPECT_EQ(Cell("\"26.9\"", CellText::AsFloat), 26.9F);
}

TEST(JsonRead, ACellOfAnyOtherTypeIsZero) {
    for (const char* json : {"null", "true", "[]", "{}", "[1]"})
        EXPECT_EQ(Cell(json, CellText::AsFloat), 0.0F) << json;
    EXPECT_EQ(FloatCell(value::object().as_object(), "c", CellText::AsFloat), 0.0F);
}

TEST(JsonRead, ACellThatNoFloatHoldsIsClamped) {
    EXPECT_EQ(Cell("1e300", CellText::AsFloat), kFloatMax);
    EXPECT_EQ(Cell("-1e300", CellText::AsFloat), -kFloatMax);
    EXPECT_EQ(Cell("\"1e999\"", CellText::AsFloat), kFloatMax);
    EXPECT_EQ(Cell("\"-1e999\"", CellText::AsFloat), -kFloatMax);
    EXPECT_EQ(Cell("\"1e-999\"", CellText::AsFloat), 0.0F);
    EXPECT_EQ(Cell("\"99999999999\"", CellText::AsInteger), static_cast<float>(kInt32Max));
}

TEST(JsonRead, ParsesTheNumberThatATextBeginsWith) {
    EXPECT_EQ(ParseInteger("25mm"), 25);
    EXPECT_EQ(ParseInteger("-7"), -7);
    EXPECT_EQ(ParseInteger("+7"), 7);
    EXPECT_EQ(ParseFloat("2.5e2x"), 250.0F);
    EXPECT_EQ(ParseFloat("+.5"), 0.5F);
    EXPECT_EQ(ParseFloat("-.5"), -0.5F);
}

TEST(JsonRead, TextThatIsNoNumberIsZero) {
    for (const char* text : {"", "DN25", "+-3", "--3", "inf", "nan", "\xE9\xA3\x8E"}) {
        EXPECT_EQ(ParseInteger(text), 0) << text;
        EXPECT_EQ(ParseFloat(text), 0.0F) << text;
    }
}

TEST(JsonRead, ParsedIntegersAreClamped) {
    EXPECT_EQ(ParseInteger("2147483647"), kInt32Max);
    EXPECT_EQ(ParseInteger("2147483648"), kInt32Max);
    EXPECT_EQ(ParseInteger("-99999999999999999999"), kInt32Min);
}

TEST(JsonRead, ManyDigitsAreClampedOrVanish) {
    EXPECT_EQ(ParseFloat(std::string(400, '9')), kFloatMax);
    EXPECT_EQ(ParseFloat("-" + std::string(400, '9')), -kFloatMax);
    EXPECT_EQ(ParseFloat("0." + std::string(400, '0') + "1"), 0.0F);
}

TEST(JsonRead, AnIntegerCellTakesNumbersAndText) {
    const value row = value::parse(R"({"d":10.9,"i":-3,"t":" 17 ","big":1e12,"bad":"x","n":null,"a":[]})");
    const auto& fields = row.as_object();
    EXPECT_EQ(IntCell(fields, "d"), 10);
    EXPECT_EQ(IntCell(fields, "i"), -3);
    EXPECT_EQ(IntCell(fields, "t"), 17);
    EXPECT_EQ(IntCell(fields, "big"), kInt32Max);
    EXPECT_EQ(IntCell(fields, "bad"), 0);
    EXPECT_EQ(IntCell(fields, "n"), 0);
    EXPECT_EQ(IntCell(fields, "a"), 0);
    EXPECT_EQ(IntCell(fields, "missing"), 0);
}

TEST(JsonRead, TakenElementsAreInOrder) {
    value array = value::parse(R"([1,"b",null])");
    const auto elements = TakeElements(array.as_array());
    ASSERT_EQ(elements.size(), 3U);
    EXPECT_EQ(elements[0].as_integer(), 1);
    EXPECT_EQ(elements[1].as_string(), "b");
    EXPECT_TRUE(elements[2].is_null());
}

} // namespace
} // namespace tolm::jsonread
