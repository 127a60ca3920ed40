#include "Vorn/Guid.h"

#include <gtest/gtest.h>

#include <regex>
#include <set>

namespace {

using vorn::Guid;
using vorn::GuidUtils;

Guid Counting() {
    Guid guid;
    for (std::size_t i = 0; i < guid.bytes.size(); ++i)
        guid.bytes[i] = static_cast<std::uint8_t>(i * 0x11);
    return guid;
}

TEST(Guid, TextWithoutFlagsIsThirtySixSmallCharacters) {
    EXPECT_EQ(GuidUtils::ToString(Counting(), false, false), L"00112233-4455-6677-8899-aabbccddeeff");
}

TEST(Guid, FlagsGiveBracesAndCapitals) {
    EXPECT_EQ(GuidUtils::ToString(Counting(), true, false), L"{00112233-4455-6677-8899-aabbccddeeff}");
    EXPECT_EQ(GuidUtils::ToString(Counting(), false, true), L"00112233-4455-6677-8899-AABBCCDDEEFF");
    EXPECT_EQ(GuidUtils::ToString(Counting(), true, true), L"{00112233-4455-6677-8899-AABBCCDDEEFF}");
}

TEST(Guid, AnIdentityHasTheTextOfItsGuid) {
    EXPECT_EQ(GuidUtils::ToString(vorn::UniIdentity(Counting()), true, false),
              GuidUtils::ToString(Counting(), true, false));
}

TEST(Guid, GeneratedOnesAreRandomOfVersionFour) {
    const std::wregex form(L"[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}");
    std::set<std::wstring> texts;
    for (int i = 0; i < 1000; ++i) {
        const std::wstring text = GuidUtils::ToString(GuidUtils::Generate(), false, false);
        EXPECT_TRUE(std::regex_match(text, form));
        texts.insert(text);
    }
    EXPECT_EQ(texts.size(), 1000U);
}

TEST(Guid, AnotherGeneratorTakesThePlaceOfTheSystemsUntilNull) {
    GuidUtils::SetGenerator(&Counting);
    EXPECT_EQ(GuidUtils::Generate(), Counting());
    GuidUtils::SetGenerator(nullptr);
    EXPECT_NE(GuidUtils::Generate(), Counting());
}

} // namespace
