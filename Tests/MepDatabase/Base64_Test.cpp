#include "TolmDataSet/Base64.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace {

std::string Encode(const std::string& bytes) {
    return base64_encode(reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<unsigned int>(bytes.size()));
}

struct Vector {
    const char* bytes;
    const char* text;
};

// The test vectors of RFC 4648, section 10.
constexpr Vector kVectors[] = {
    {"", ""},
    {"f", "Zg=="},
    {"fo", "Zm8="},
    {"foo", "Zm9v"},
    {"foob", "Zm9vYg=="},
    {"fooba", "Zm9vYmE="},
    {"foobar", "Zm9vYmFy"},
};

TEST(Base64, EncodesTheVectorsOfTheStandard) {
    for (const Vector& vector : kVectors)
        EXPECT_EQ(Encode(vector.bytes), vector.text);
}

TEST(Base64, DecodesTheVectorsOfTheStandard) {
    for (const Vector& vector : kVectors)
        EXPECT_EQ(base64_decode(vector.text), vector.bytes);
}

TEST(Base64, UsesTheStandardAlphabetInItsOrder) {
    std::string bytes;
    for (unsigned int i = 0; i < 64; i += 4) {
        const unsigned int group = (i << 18U) | ((i + 1) << 12U) | ((i + 2) << 6U) | (i + 3);
        for (const unsigned int shift : {16U, 8U, 0U})
            bytes += static_cast<char>((group >> shift) & 0xFFU);
    }
    EXPECT_EQ(Encode(bytes), "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/");
}

TEST(Base64, WhatIsEncodedDecodesToTheSame) {
    std::mt19937 random(20240607);
    for (std::size_t length = 0; length < 300; ++length) {
        std::string bytes(length, '\0');
        for (char& byte : bytes)
            byte = static_cast<char>(random() & 0xFFU);
        const std::string text = Encode(bytes);
        ASSERT_EQ(text.size(), (length + 2) / 3 * 4) << "length " << length;
        ASSERT_EQ(base64_decode(text), bytes) << "length " << length;
    }
}

TEST(Base64, DecodingStopsAtTheFirstPadding) {
    EXPECT_EQ(base64_decode("Zg==Zm9v"), "f");
    EXPECT_EQ(base64_decode("=Zm9v"), "");
}

TEST(Base64, DecodingStopsAtTheFirstForeignCharacter) {
    EXPECT_EQ(base64_decode("Zm9v\nYmFy"), "foo");
    EXPECT_EQ(base64_decode("Zm9vYm-y"), "foob");
    EXPECT_EQ(base64_decode("Zm9v\xC3\xA4YmFy"), "foo");
    EXPECT_EQ(base64_decode(std::string("Zm9v\0YmFy", 9)), "foo");
}

TEST(Base64, ALastGroupOfTwoOrThreeCharactersGivesOneOrTwoBytes) {
    EXPECT_EQ(base64_decode("Zm9vYg"), "foob");
    EXPECT_EQ(base64_decode("Zm9vYmE"), "fooba");
}

TEST(Base64, ALastGroupOfOneCharacterGivesNothing) {
    EXPECT_EQ(base64_decode("Z"), "");
    EXPECT_EQ(base64_decode("Zm9vY"), "foo");
}

TEST(Base64, ZeroBytesSurvive) {
    const std::string bytes("a\0\0b", 4);
    EXPECT_EQ(base64_decode(Encode(bytes)), bytes);
}

TEST(Base64, NoBytesGiveNoText) {
    EXPECT_EQ(base64_encode(nullptr, 0), "");
}

} // namespace
