#include "ServiceTesting.h"

#include "Service/Base64Text.h"

namespace tolmtest {
namespace {

using service::Answer;

void ExpectIllFormed(const std::string& text) {
    RefusalOf(Answer::IllFormed, [&] { service::ParseJson(text); });
}

TEST(JsonText, WhatIsNoJsonIsRefused) {
    for (const auto* text :
         {"", " ", "{", "}", "{\"a\":}", "[1,]", "nul", "'a'", "{a:1}", "1 2", "NaN", "\"\n\"", "01"})
        ExpectIllFormed(text);
}

TEST(JsonText, WhatIsNoUtf8IsRefused) {
    for (const auto* text : {"\"\xff\"", "\"\xc0\x80\"", "\"\xed\xa0\x80\"", "\"\xf5\x80\x80\x80\"", "\"\xe4\xb8\"",
                             "\"\\ud800\"", "\"\\udc00\\ud800\""})
        ExpectIllFormed(text);
}

TEST(JsonText, ANumberOutOfRangeIsRefused) {
    ExpectIllFormed("1e999");
    ExpectIllFormed("[-1e999]");
}

TEST(JsonText, WhatIsNestedTooDeeplyIsRefused) {
    const std::string deep(service::kDeepestJson, '[');
    const std::string end(service::kDeepestJson, ']');
    EXPECT_NO_THROW(service::ParseJson(deep + end));
    ExpectIllFormed("[" + deep + end + "]");
    ExpectIllFormed(std::string(1'000'000, '['));
    ExpectIllFormed(std::string(100'000, '[') + std::string(100'000, ']'));
}

TEST(JsonText, WholeNumbersAndDoublesStayApart) {
    EXPECT_EQ(service::CompactJson(service::ParseJson("[1, 1.0, 18446744073709551615, -1]")),
              "[1,1.0,18446744073709551615,-1]");
}

TEST(JsonText, QuotingReplacesWhatIsNoUtf8) {
    EXPECT_EQ(service::QuotedJson("a\"b\n"), "\"a\\\"b\\n\"");
    EXPECT_EQ(service::QuotedJson("\xff"), "\"\xef\xbf\xbd\"");
}

TEST(Base64Text, IsWrittenWithPadding) {
    EXPECT_EQ(service::ToBase64(""), "");
    EXPECT_EQ(service::ToBase64("f"), "Zg==");
    EXPECT_EQ(service::ToBase64("fo"), "Zm8=");
    EXPECT_EQ(service::ToBase64("foo"), "Zm9v");
    EXPECT_EQ(service::ToBase64("\xff\xfe\xfd\x3e"), "//79Pg==");
}

TEST(Base64Text, TellsTheSizeOfWhatItStandsFor) {
    for (std::size_t size = 0; size < 20; ++size)
        EXPECT_EQ(service::SizeOfBase64(service::ToBase64(std::string(size, 'x'))), size);
}

TEST(Base64Text, WhatIsNoneHasNoSize) {
    for (const auto* text : {"A", "AA", "AAA", "AAAAA", "A===", "====", "AA=A", "AAA-", "AA==AAAA", "AA A", "AAA\n"})
        EXPECT_EQ(service::SizeOfBase64(text), std::string::npos) << text;
}

TEST(Answer, SuccessIsWrappedAroundThePayload) {
    EXPECT_EQ(service::SuccessEnvelope("[1]"), R"({"code":"10000","data":[1]})");
}

TEST(Answer, ARefusalHasItsCodeAsTextAndNoData) {
    EXPECT_EQ(service::RefusalEnvelope(Answer::NameClash, "\"N\""), R"({"code":"10003","data":null,"msg":"\"N\""})");
    EXPECT_EQ(service::RowOf(Answer::Busy).code, "200100");
}

TEST(Answer, UploadRefusalsThatAClientKnowsHaveHttp200) {
    EXPECT_EQ(service::RowOf(Answer::NameClash).httpStatus, 200);
    EXPECT_EQ(service::RowOf(Answer::Busy).httpStatus, 200);
}

} // namespace
} // namespace tolmtest
