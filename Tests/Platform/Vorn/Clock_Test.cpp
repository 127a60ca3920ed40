#include "Vorn/Clock.h"

#include "Vorn/Constants.h"

#include <gtest/gtest.h>

namespace {

using vorn::Clock;

constexpr std::time_t kMoment = 1'718'105'045;

std::chrono::system_clock::time_point FixedMoment() {
    return std::chrono::system_clock::from_time_t(kMoment);
}

TEST(Clock, TimeIsFormattedWithSlashesAndTwoDigits) {
    std::tm time{};
    time.tm_year = 124;
    time.tm_mon = 0;
    time.tm_mday = 2;
    time.tm_hour = 3;
    time.tm_min = 4;
    time.tm_sec = 5;
    EXPECT_EQ(Clock::Format(time), L"2024/01/02 03:04:05");
}

TEST(Clock, AnotherSourceTakesThePlaceOfTheSystemsUntilNull) {
    Clock::SetSource(&FixedMoment);
    EXPECT_EQ(Clock::Now(), FixedMoment());
    std::tm local = Clock::LocalNow();
    EXPECT_EQ(std::mktime(&local), kMoment);
    Clock::SetSource(nullptr);
    EXPECT_GT(Clock::Now(), FixedMoment());
}

TEST(Clock, WithoutASourceItIsTheSystemsTime) {
    const auto before = std::chrono::system_clock::now();
    const auto now = Clock::Now();
    EXPECT_LE(before, now);
    EXPECT_LE(now, std::chrono::system_clock::now());
}

TEST(Constants, LargestModelSizeIsWholeAsAFloat) {
    EXPECT_GT(vorn::Constants::MAX_MODEL_SIZE, 0.0);
    EXPECT_EQ(static_cast<double>(static_cast<float>(vorn::Constants::MAX_MODEL_SIZE)),
              vorn::Constants::MAX_MODEL_SIZE);
}

} // namespace
