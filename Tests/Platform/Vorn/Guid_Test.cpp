#include "Vorn/Guid.h"

#include <gtest/gtest.h>

#include <array>
#include <regex>
#include <set>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

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

TEST(Guid, AForkedProcessMakesOthers) {
    GuidUtils::Generate(); // so that the parent has bytes left over
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe(ends.data()), 0);
    const pid_t child = fork();
    ASSERT_NE(child, -1);
    if (child == 0) {
        const Guid made = GuidUtils::Generate();
        const bool sent = write(ends[1], made.bytes.data(), made.bytes.size()) == ssize_t{16};
        _exit(sent ? 0 : 1);
    }
    Guid ofChild;
    EXPECT_EQ(read(ends[0], ofChild.bytes.data(), ofChild.bytes.size()), ssize_t{16});
    int status = 1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_NE(ofChild, GuidUtils::Generate());
    close(ends[0]);
    close(ends[1]);
}

TEST(Guid, ThreadsMakeDifferentOnes) {
    std::vector<Guid> made(4);
    std::vector<std::thread> threads;
    for (Guid& guid : made)
        threads.emplace_back([&guid] { guid = GuidUtils::Generate(); });
    for (auto& thread : threads)
        thread.join();
    std::set<std::wstring> texts;
    for (const Guid& guid : made)
        texts.insert(GuidUtils::ToString(guid, false, false));
    EXPECT_EQ(texts.size(), made.size());
}

TEST(Guid, AnotherGeneratorTakesThePlaceOfTheSystemsUntilNull) {
    GuidUtils::SetGenerator(&Counting);
    EXPECT_EQ(GuidUtils::Generate(), Counting());
    GuidUtils::SetGenerator(nullptr);
    EXPECT_NE(GuidUtils::Generate(), Counting());
}

} // namespace
