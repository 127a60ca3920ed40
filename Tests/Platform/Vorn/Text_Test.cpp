#include "Vorn/Text.h"

#include "Vorn/UnicodeInternal.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>

namespace {

using namespace std::string_literals;
using vorn::StringUtil;

struct Sample {
    std::wstring wide;
    std::string narrow;
};

const std::vector<Sample>& WellFormedSamples() {
    static const std::vector<Sample> samples{
        {L"", ""},
        {L"DN 25", "DN 25"},
        {L"\u007F\u0080", "\x7F\xC2\x80"},
        {L"\u07FF\u0800", "\xDF\xBF\xE0\xA0\x80"},
        {L"材料", "\xE6\x9D\x90\xE6\x96\x99"},
        {L"\uD7FF\uE000\uFFFF", "\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF"},
        {L"\U00010000\U0010FFFF", "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"},
        {L"a\0b"s, "a\0b"s},
    };
    return samples;
}

TEST(Text, ALetterBeyondAsciiIsFoundAtEachPlace) {
    for (std::size_t length = 1; length < 20; ++length) {
        for (std::size_t at = 0; at < length; ++at) {
            std::wstring wide(length, L'x');
            wide[at] = L'\u00E9';
            const std::string narrow = std::string(at, 'x') + "\xC3\xA9" + std::string(length - at - 1, 'x');
            EXPECT_EQ(StringUtil::ToString(wide), narrow);
            EXPECT_EQ(StringUtil::ToWString(narrow), wide);
        }
    }
}

TEST(Text, WellFormedTextGoesBothWaysUnchanged) {
    for (const Sample& sample : WellFormedSamples()) {
        EXPECT_EQ(StringUtil::ToString(sample.wide), sample.narrow);
        EXPECT_EQ(StringUtil::ToWString(sample.narrow), sample.wide);
        EXPECT_TRUE(StringUtil::IsValidUtf8(sample.narrow));
    }
}

struct IllFormed {
    std::string narrow;
    std::wstring wide;
};

TEST(Text, IllFormedUtf8BecomesReplacementCharacters) {
    const std::vector<IllFormed> cases{
        {"\x80", L"\uFFFD"},                               // a continuation alone
        {"a\xFF"s + "b", L"a\uFFFDb"},                     // no lead byte
        {"\xC0\xAF", L"\uFFFD\uFFFD"},                     // an overlong slash
        {"\xE0\x80\xAF", L"\uFFFD\uFFFD\uFFFD"},           // the same in three bytes
        {"\xED\xA0\x80", L"\uFFFD\uFFFD\uFFFD"},           // a surrogate
        {"\xF4\x90\x80\x80", L"\uFFFD\uFFFD\uFFFD\uFFFD"}, // beyond the last character
        {"\xE6\x9D", L"\uFFFD"},                           // cut off at the end: one character
        {"\xE6\x9D"
         "A",
         L"\uFFFDA"}, // cut off by another
        {"\xF0\x90\x80", L"\uFFFD"},
        {"\xF5\x80", L"\uFFFD\uFFFD"},
    };
    for (const IllFormed& sample : cases) {
        EXPECT_EQ(StringUtil::ToWString(sample.narrow), sample.wide);
        EXPECT_FALSE(StringUtil::IsValidUtf8(sample.narrow));
    }
}

TEST(Text, WideUnitsThatAreNoCharactersBecomeReplacementCharacters) {
    const std::wstring loneSurrogate{L'a', static_cast<wchar_t>(0xD800), L'b'};
    EXPECT_EQ(StringUtil::ToString(loneSurrogate), "a\xEF\xBF\xBD"
                                                   "b");
    if constexpr (sizeof(wchar_t) > 2) {
        EXPECT_EQ(StringUtil::ToString(std::wstring{static_cast<wchar_t>(0x110000)}), "\xEF\xBF\xBD");
        EXPECT_EQ(StringUtil::ToString(std::wstring{static_cast<wchar_t>(0xFFFFFFFF)}), "\xEF\xBF\xBD");
    }
}

std::u32string CharactersOf(std::u16string_view text) {
    std::u32string characters;
    for (std::size_t at = 0; at < text.size();)
        characters += vorn::TakeCharacter(text, at);
    return characters;
}

TEST(Text, InSixteenBitUnitsACharacterMayBeAPair) {
    std::u16string text;
    for (const char32_t character : U"a材\U00010000\U0010FFFF"s)
        vorn::AppendCharacter(text, character);
    EXPECT_EQ(text, u"a材\U00010000\U0010FFFF");
    EXPECT_EQ(CharactersOf(text), U"a材\U00010000\U0010FFFF");
}

TEST(Text, InSixteenBitUnitsHalfAPairBecomesAReplacementCharacter) {
    const char16_t high = 0xD83D;
    const char16_t low = 0xDE00;
    EXPECT_EQ(CharactersOf(std::u16string{high}), U"\uFFFD");
    EXPECT_EQ(CharactersOf(std::u16string{low, high, u'a'}), U"\uFFFD\uFFFDa");
    EXPECT_EQ(CharactersOf(std::u16string{high, high, low}), U"\uFFFD\U0001F600");
}

TEST(Text, AnyBytesConvertToTextThatIsWellFormedAndStable) {
    std::mt19937 random(20240611);
    for (int round = 0; round < 2000; ++round) {
        std::string bytes(random() % 12, '\0');
        for (char& byte : bytes)
            byte = static_cast<char>(random());
        const std::wstring wide = StringUtil::ToWString(bytes);
        const std::string clean = StringUtil::ToString(wide);
        ASSERT_TRUE(StringUtil::IsValidUtf8(clean));
        ASSERT_EQ(StringUtil::ToWString(clean), wide);
        ASSERT_EQ(clean == bytes, StringUtil::IsValidUtf8(bytes));
    }
}

TEST(Text, CutKeepsWholeCharactersOnly) {
    const std::string text = "a\xC3\xA9\xE6\x9D\x90\xF0\x90\x80\x80"; // 1, 2, 3 and 4 bytes
    const std::vector<std::size_t> kept{0, 1, 1, 3, 3, 3, 6, 6, 6, 6, 10, 10, 10};
    for (std::size_t limit = 0; limit < kept.size(); ++limit)
        EXPECT_EQ(StringUtil::CutUtf8(text, limit), text.substr(0, kept[limit])) << "limit " << limit;
}

TEST(Text, CutTakesOffACharacterThatTheTextItselfLeavesIncomplete) {
    EXPECT_EQ(StringUtil::CutUtf8("ab\xE6\x9D", 50), "ab");
}

TEST(Text, CutOfBytesThatAreNoCharactersIsPlain) {
    EXPECT_EQ(StringUtil::CutUtf8("\x80\x80\x80\x80\x80\x80", 5), "\x80\x80\x80\x80\x80");
    EXPECT_EQ(StringUtil::CutUtf8("ab\xFFz", 3), "ab\xFF");
    EXPECT_EQ(StringUtil::CutUtf8("", 0), "");
}

TEST(Text, TrimTakesWhiteSpaceOfAllKindsFromBothEnds) {
    EXPECT_EQ(StringUtil::TrimSpace(L" \t\r\n\v\f给 水\u3000\u00A0\u2003\u2028\u1680\u0085\u205F\u202F"), L"给 水");
    EXPECT_EQ(StringUtil::TrimSpace(L"\u3000 "), L"");
    EXPECT_EQ(StringUtil::TrimSpace(L""), L"");
    EXPECT_EQ(StringUtil::TrimSpace(L"x"), L"x");
}

TEST(Text, TrimLeavesWhatIsNoWhiteSpace) {
    const std::wstring zeroWidth = L"\u200B\uFEFFx\0"s;
    EXPECT_EQ(StringUtil::TrimSpace(zeroWidth), zeroWidth);
}

TEST(StrICmp, LettersOfAllScriptsCompareWithoutCase) {
    EXPECT_EQ(vorn::StrICmp(L"AbC", L"aBc"), 0);
    EXPECT_EQ(vorn::StrICmp(L"ÄÖÜ ΔΩ Ж", L"äöü δω ж"), 0);
    EXPECT_EQ(vorn::StrICmp(L"材料", L"材料"), 0);
    EXPECT_NE(vorn::StrICmp(L"材料", L"材质"), 0);
}

TEST(StrICmp, OrderGoesByTheFirstDifferenceAndThenByLength) {
    EXPECT_LT(vorn::StrICmp(L"a", L"B"), 0);
    EXPECT_GT(vorn::StrICmp(L"b", L"A"), 0);
    EXPECT_LT(vorn::StrICmp(L"ab", L"ABC"), 0);
    EXPECT_GT(vorn::StrICmp(L"ABC", L"ab"), 0);
    EXPECT_LT(vorn::StrICmp(L"_", L"a"), 0); // compared as small letters
}

TEST(StrICmp, ANullPointerCountsAsEmpty) {
    EXPECT_EQ(vorn::StrICmp(nullptr, nullptr), 0);
    EXPECT_EQ(vorn::StrICmp(nullptr, L""), 0);
    EXPECT_LT(vorn::StrICmp(nullptr, L"a"), 0);
    EXPECT_GT(vorn::StrICmp(L"a", nullptr), 0);
}

} // namespace
