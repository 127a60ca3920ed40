#include "MepDatabase/AnswerGuard.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <stdexcept>

namespace {

using tolm::AnswerGuard;
using namespace std::chrono_literals;

class Answer : public testing::Test {
protected:
    const AnswerGuard::Clock::time_point start = AnswerGuard::Clock::now();
    static constexpr std::uint64_t kMostBytes = std::uint64_t{1} << 30;
    AnswerGuard guard{1s, {kMostBytes, 60}, start};
};

TEST_F(Answer, MayGrowAndStandStill) {
    for (const std::uint64_t bytes : {0ULL, 0ULL, 1ULL, 1ULL, 65'536ULL, 1'000'000ULL})
        EXPECT_NO_THROW(guard.Check(bytes, start));
}

TEST_F(Answer, NeverShrinks) {
    guard.Check(100, start);
    EXPECT_THROW(guard.Check(99, start), std::runtime_error);
}

TEST_F(Answer, IsNotEndless) {
    EXPECT_NO_THROW(guard.Check(kMostBytes, start));
    EXPECT_THROW(guard.Check(kMostBytes + 1, start), std::runtime_error);
    EXPECT_THROW(guard.Check(std::numeric_limits<std::uint64_t>::max() - 1, start), std::runtime_error);
}

TEST_F(Answer, BringsItsShareInEachTimeOut) {
    EXPECT_NO_THROW(guard.Check(0, start));
    EXPECT_NO_THROW(guard.Check(10, start + 1s));
    EXPECT_THROW(guard.Check(10, start + 1001ms), std::runtime_error);
    EXPECT_NO_THROW(guard.Check(65'536, start + 2s));
    EXPECT_THROW(guard.Check(65'536, start + 2001ms), std::runtime_error);
    EXPECT_NO_THROW(guard.Check(10 * 65'536, start + 11s));
    EXPECT_THROW(guard.Check(10 * 65'536, start + 11'001ms), std::runtime_error);
}

TEST_F(Answer, IsGivenUpInTheEndHoweverMuchItBrings) {
    EXPECT_NO_THROW(guard.Check(0, start));
    EXPECT_NO_THROW(guard.Check(kMostBytes, start + 60s));
    EXPECT_THROW(guard.Check(kMostBytes, start + 60'001ms), std::runtime_error);
}

TEST_F(Answer, CountsTheTimeFromTheBeginningOfTheCall) {
    AnswerGuard brief(1s, {100, 4}, start);
    EXPECT_NO_THROW(brief.CheckSent(start + 4s));
    EXPECT_THROW(brief.CheckSent(start + 4001ms), std::runtime_error);
    EXPECT_NO_THROW(brief.Check(0, start + 3900ms));
    EXPECT_THROW(brief.Check(1, start + 4001ms), std::runtime_error);
}

TEST_F(Answer, MayTakeTheLongestTimeOutThatThereIs) {
    AnswerGuard patient(std::chrono::microseconds(std::numeric_limits<int>::max()), {kMostBytes, 60}, start);
    EXPECT_NO_THROW(patient.Check(0, start));
    EXPECT_NO_THROW(patient.Check(kMostBytes, start + 35h));
}

} // namespace
