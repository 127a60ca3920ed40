#include "Tolm/Backoff.h"

#include <gtest/gtest.h>

#include <set>

using namespace std::chrono_literals;
using tolmcli::Backoff;

TEST(Backoff, EachPauseIsFromHalfToOneAndAHalfOfADoublingOne) {
    for (std::uint32_t seed = 0; seed < 50; ++seed) {
        Backoff backoff(400ms, seed);
        for (auto full = 400ms; full <= 25600ms; full *= 2) {
            const auto pause = backoff.Next();
            EXPECT_GE(pause, full / 2) << "seed " << seed;
            EXPECT_LE(pause, full * 3 / 2) << "seed " << seed;
        }
    }
}

TEST(Backoff, NoPauseIsLongerThanThreeQuartersOfAMinute) {
    Backoff backoff(20s, 7);
    for (int i = 0; i < 100; ++i)
        EXPECT_LE(backoff.Next(), 45s);
}

TEST(Backoff, TwoUsersDoNotPauseTheSame) {
    std::set<std::chrono::milliseconds> pauses;
    for (std::uint32_t seed = 0; seed < 50; ++seed)
        pauses.insert(Backoff(10s, seed).Next());
    EXPECT_GT(pauses.size(), 40U);
}

TEST(Backoff, WithoutAFirstPauseThereIsNone) {
    Backoff backoff(0ms);
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(backoff.Next(), 0ms);
}
