#include "MepDatabase/WireText.h"

#include "Support/DebugWarnings.h"

#include <cpprest/json.h>
#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>

using namespace tolm;

namespace {

constexpr double Infinity = std::numeric_limits<double>::infinity();
constexpr double NotANumber = std::numeric_limits<double>::quiet_NaN();

TEST(WireText, ConvertsBothWaysWithoutLoss) {
    const std::wstring text = L"管径 \U0001F600 é";
    EXPECT_EQ(ToWire(text), "管径 \xF0\x9F\x98\x80 é");
    EXPECT_EQ(FromWire(ToWire(text)), text);
}

TEST(WireText, PutsTheReplacementCharacterInPlaceOfIllFormedText) {
    EXPECT_EQ(ToWire(std::wstring{L'a', static_cast<wchar_t>(0xD800)}), "a\xEF\xBF\xBD");
    EXPECT_EQ(FromWire("a\xFF"), L"a\uFFFD");
}

TEST(WireText, ReadsOnlyStringsAsText) {
    EXPECT_EQ(WideText(web::json::value::string("管")), L"管");
    EXPECT_THROW(WideText(web::json::value::number(1)), web::json::json_exception);
    EXPECT_THROW(WideText(web::json::value::null()), web::json::json_exception);
}

TEST(WireText, ClampsNumbersThatDoNotFit) {
    EXPECT_EQ(ClampToInt32(7.9), 7);
    EXPECT_EQ(ClampToInt32(-7.9), -7);
    EXPECT_EQ(ClampToInt32(1e300), std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(ClampToInt32(-Infinity), std::numeric_limits<std::int32_t>::lowest());
    EXPECT_EQ(ClampToInt32(NotANumber), 0);
    EXPECT_EQ(FiniteFloat(NotANumber), 0.0F);
    EXPECT_EQ(FiniteFloat(1e300), std::numeric_limits<float>::max());
    EXPECT_EQ(FiniteFloat(-1e300), std::numeric_limits<float>::lowest());
    EXPECT_EQ(FiniteNumber(Infinity), std::numeric_limits<double>::max());
    EXPECT_EQ(FiniteNumber(NotANumber), 0.0);
    EXPECT_EQ(FiniteNumber(-2.5), -2.5);
}

TEST(WireText, ClampsTo64BitsWithoutOverflow) {
    constexpr auto most = std::numeric_limits<std::int64_t>::max();
    constexpr auto least = std::numeric_limits<std::int64_t>::lowest();
    EXPECT_EQ(ClampToInt64(-7.9), -7);
    EXPECT_EQ(ClampToInt64(9223372036854774784.0), 9223372036854774784);
    EXPECT_EQ(ClampToInt64(9223372036854775808.0), most);
    EXPECT_EQ(ClampToInt64(Infinity), most);
    EXPECT_EQ(ClampToInt64(-9223372036854775808.0), least);
    EXPECT_EQ(ClampToInt64(-1e300), least);
    EXPECT_EQ(ClampToInt64(NotANumber), 0);
}

TEST(WireText, ReadsAnOverflowingNumberAsTheLargest) {
    EXPECT_EQ(WholeNumber(web::json::value::parse("1e999")), std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(FiniteNumber(web::json::value::parse("-1e999")), std::numeric_limits<double>::lowest());
    EXPECT_EQ(FiniteFloat(web::json::value::parse("2.5")), 2.5F);
    EXPECT_THROW(WholeNumber(web::json::value::string("1")), web::json::json_exception);
}

TEST(WireText, WritesListsOfTextsInTheirOrder) {
    EXPECT_EQ(JsonTexts({L"b", L"a"}).serialize(), R"(["b","a"])");
    EXPECT_EQ(JsonTexts({}).serialize(), "[]");
}

std::wstring TextOfThrown(const auto& thrown) {
    try {
        throw thrown;
    } catch (...) {
        return CurrentExceptionText();
    }
}

TEST(WireText, TellsWhatAnExceptionSays) {
    EXPECT_EQ(TextOfThrown(std::runtime_error("no place")), L"no place");
    EXPECT_EQ(TextOfThrown(std::runtime_error("")), L"Unknown exception");
    EXPECT_EQ(TextOfThrown(5), L"Unknown exception");
}

TEST(WireText, WritesLinesToTheDefaultLog) {
    DumpLogLine(L"发送失败!");
    EXPECT_EQ(tolmtest::TakeLogLines(), (std::vector<std::wstring>{L"发送失败!"}));
}

} // namespace
