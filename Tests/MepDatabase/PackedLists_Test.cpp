#include "MepDatabase/PackedLists.h"

#include "Support/DebugWarnings.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <string_view>

namespace {

using namespace tolm;
using std::string_literals::operator""s;

/// Bytes in hexadecimal, one blank between two fields being no part of them.
std::string Hex(const std::vector<char>& bytes) {
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (const char byte : bytes) {
        text += kDigits[static_cast<unsigned char>(byte) >> 4];
        text += kDigits[static_cast<unsigned char>(byte) & 0xF];
    }
    return text;
}

std::string Text(const std::vector<char>& bytes, std::size_t at, std::size_t length) {
    return {bytes.data() + at, length};
}

template <class Entry> std::vector<Entry> Again(const PackedLayout<Entry>& layout, const std::vector<Entry>& list) {
    const auto bytes = Pack(layout, list);
    return Unpack(layout, bytes.data(), static_cast<int>(bytes.size()));
}

TEST(PackedLists, APipeSizeIsNominalOuterInnerThickness) {
    const ProjectSettingPipeSize size{1.0F, 2.0F, -3.5F, 0.25F}; // inner, outer, nominal, thickness
    EXPECT_EQ(Hex(Pack(kPipeSizeLayout, {size})), "000060c0"
                                                  "00000040"
                                                  "0000803f"
                                                  "0000803e");
    EXPECT_EQ(Again(kPipeSizeLayout, {size, {}, size}), (std::vector<ProjectSettingPipeSize>{size, {}, size}));
}

TEST(PackedLists, ADuctSizeIsSizeThickness) {
    const ProjectSettingDuctSize size{320.0F, 0.75F};
    EXPECT_EQ(Hex(Pack(kDuctSizeLayout, {size})), "0000a043"
                                                  "0000403f");
    EXPECT_EQ(Again(kDuctSizeLayout, {size}), (std::vector{size}));
}

TEST(PackedLists, ACableSpecIsFiftyBytesOfAreaThenCurrentThenTemperature) {
    const ProjectSettingCableSpec spec{L"2.5", 0x01020304, EnvironmentTemperature::Celsius40};
    const auto bytes = Pack(kCableSpecLayout, {spec});
    ASSERT_EQ(bytes.size(), 56U);
    EXPECT_EQ(Text(bytes, 0, 50), "2.5"s + std::string(47, '\0'));
    EXPECT_EQ(Hex({bytes.begin() + 50, bytes.end()}), "04030201"
                                                      "0300");
    EXPECT_EQ(Again(kCableSpecLayout, {spec}), (std::vector{spec}));
}

TEST(PackedLists, OfACableTemperatureTheLowSixteenBitsAreKept) {
    const ProjectSettingCableSpec spec{L"", -1, static_cast<EnvironmentTemperature>(0x12345678)};
    const auto bytes = Pack(kCableSpecLayout, {spec});
    EXPECT_EQ(Hex({bytes.begin() + 50, bytes.end()}), "ffffffff"
                                                      "7856");
    EXPECT_EQ(static_cast<int>(Again(kCableSpecLayout, {spec})[0].temperature), 0x5678);
}

TEST(PackedLists, AnAreaKeepsFortyNineBytesAndAZero) {
    const ProjectSettingCableSpec spec{wstring(60, L'a'), 0, EnvironmentTemperature::Celsius25};
    const auto bytes = Pack(kCableSpecLayout, {spec});
    EXPECT_EQ(Text(bytes, 0, 50), std::string(49, 'a') + '\0');
    EXPECT_EQ(Again(kCableSpecLayout, {spec})[0].area, wstring(49, L'a'));
}

TEST(PackedLists, AnAreaIsCutBetweenCharacters) {
    const ProjectSettingCableSpec spec{wstring(20, L'平'), 0, EnvironmentTemperature::Celsius25};
    EXPECT_EQ(Again(kCableSpecLayout, {spec})[0].area, wstring(16, L'平'));
}

TEST(PackedLists, ATextEndsAtItsFirstZero) {
    const ProjectSettingCableSpec spec{L"ab\0cd"s, 0, EnvironmentTemperature::Celsius25};
    EXPECT_EQ(Text(Pack(kCableSpecLayout, {spec}), 0, 6), "ab\0\0\0\0"s);
}

TEST(PackedLists, AFittingIsCategoryPartTypeRuleGroupProductBounds) {
    const PackedFitting fitting{
        L"16302510", FittingPartType::Tee, RoutingPreferenceRuleGroupType::RoundTransitions, L"p-1", 1.0F, 2.0F};
    const auto bytes = Pack(kFittingLayout, {fitting});
    ASSERT_EQ(bytes.size(), 106U);
    EXPECT_EQ(Text(bytes, 0, 50), "16302510"s + std::string(42, '\0'));
    EXPECT_EQ(Hex({bytes.begin() + 50, bytes.begin() + 58}), "02000000"
                                                             "0b000000");
    EXPECT_EQ(Text(bytes, 58, 40), "p-1"s + std::string(37, '\0'));
    EXPECT_EQ(Hex({bytes.begin() + 98, bytes.end()}), "0000803f"
                                                      "00000040");
    EXPECT_EQ(Again(kFittingLayout, {fitting}), (std::vector{fitting}));
}

TEST(PackedLists, TheTextsOfAFittingFillTheirFieldsWithoutATerminator) {
    PackedFitting fitting;
    fitting.categoryCode = wstring(60, L'c');
    fitting.partType = static_cast<FittingPartType>(-1);
    fitting.productId = wstring(60, L'p');
    const auto bytes = Pack(kFittingLayout, {fitting});
    EXPECT_EQ(Text(bytes, 0, 50), std::string(50, 'c'));
    EXPECT_EQ(Text(bytes, 58, 40), std::string(40, 'p'));
    const PackedFitting read = Again(kFittingLayout, {fitting})[0];
    EXPECT_EQ(read.categoryCode, wstring(50, L'c'));
    EXPECT_EQ(static_cast<int>(read.partType), -1);
    EXPECT_EQ(read.productId, wstring(40, L'p'));
}

TEST(PackedLists, TheTextsOfAFittingAreCutBetweenCharacters) {
    PackedFitting fitting;
    fitting.categoryCode = wstring(20, L'类');
    fitting.productId = wstring(20, L'品');
    const PackedFitting read = Again(kFittingLayout, {fitting})[0];
    EXPECT_EQ(read.categoryCode, wstring(16, L'类'));
    EXPECT_EQ(read.productId, wstring(13, L'品'));
}

TEST(PackedLists, ACircularSizeIsTheFirstAndTheThirdNumber) {
    const DataSetInsulationMaxSize size{1, 2, -3};
    EXPECT_EQ(Hex(Pack(kCircularSizeLayout, {size})), "0100fdff");
    EXPECT_EQ(Again(kCircularSizeLayout, {size}), (std::vector<DataSetInsulationMaxSize>{{1, 0, -3}}));
}

TEST(PackedLists, ARectangularSizeIsAllThreeNumbers) {
    const DataSetInsulationMaxSize size{1, 2, -3};
    EXPECT_EQ(Hex(Pack(kRectSizeLayout, {size})), "01000200fdff");
    EXPECT_EQ(Again(kRectSizeLayout, {size}), (std::vector{size}));
}

TEST(PackedLists, ADimensionMethodIsAShortAndTwoFloats) {
    const DataSetDimensionMethodItem item{-2, 1.0F, 2.0F};
    EXPECT_EQ(Hex(Pack(kDimensionMethodLayout, {item})), "feff"
                                                         "0000803f"
                                                         "00000040");
    EXPECT_EQ(Again(kDimensionMethodLayout, {item}), (std::vector{item}));
}

TEST(PackedLists, AnEmptyListHasNoBytes) {
    EXPECT_TRUE(Pack(kDuctSizeLayout, {}).empty());
}

TEST(PackedLists, ThreeHundredEntriesPass) {
    const std::vector<ProjectSettingDuctSize> list(300, {1.0F, 2.0F});
    EXPECT_EQ(Pack(kDuctSizeLayout, list).size(), 2400U);
    EXPECT_EQ(Again(kDuctSizeLayout, list), list);
}

TEST(PackedLists, OneMoreIsRefused) {
    EXPECT_THROW(Pack(kDuctSizeLayout, std::vector<ProjectSettingDuctSize>(301)), std::length_error);
}

TEST(PackedLists, ARemainderThatIsNoEntryIsPassedOver) {
    const auto bytes = Pack(kDuctSizeLayout, {{1.0F, 2.0F}, {3.0F, 4.0F}});
    EXPECT_EQ(Unpack(kDuctSizeLayout, bytes.data(), 15).size(), 1U);
    EXPECT_EQ(Unpack(kDuctSizeLayout, bytes.data(), 7).size(), 0U);
}

TEST(PackedLists, NoBytesAndImpossibleCountsGiveAnEmptyList) {
    const std::vector<char> bytes(8);
    EXPECT_TRUE(Unpack(kDuctSizeLayout, nullptr, 8).empty());
    EXPECT_TRUE(Unpack(kDuctSizeLayout, bytes.data(), 0).empty());
    EXPECT_TRUE(Unpack(kDuctSizeLayout, bytes.data(), -8).empty());
    EXPECT_TRUE(Unpack(kDuctSizeLayout, bytes.data(), std::numeric_limits<int>::min()).empty());
}

TEST(PackedLists, MoreEntriesThanAnyWriterMakesAreRead) {
    const std::vector<char> bytes(8 * 1000);
    EXPECT_EQ(Unpack(kDuctSizeLayout, bytes.data(), 8000).size(), 1000U);
}

TEST(PackedLists, IllFormedTextIsReadWithReplacements) {
    std::vector<char> bytes(56, '\xff');
    EXPECT_EQ(Unpack(kCableSpecLayout, bytes.data(), 56)[0].area, wstring(50, L'\xFFFD'));
}

} // namespace
