#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <string>

namespace tolmtest {

/// The number that this environment variable asks for, at least 1; `otherwise` where it is not set.
inline long AskedFor(const char* variable, long otherwise) {
    const char* const text = std::getenv(variable);
    return text == nullptr ? otherwise : std::max(1L, std::atol(text));
}

/// In how many ways by chance a power cut tears what was not synced, at each point.
inline long TornWays() {
    return AskedFor("TOLM_CRASH_SEEDS", 1);
}
/// Between the seeds of these ways, so that none meets that of another point.
constexpr long kSeedStep = 100'003;

/// Prints how many points a test tried, in the form that `scripts/lib.sh` sums up. `kind` is "faults" or "power cuts".
/// A test stops at the first point that fails.
inline void TellTriedPoints(const char* kind, const std::string& work, long points) {
    std::cout << kind << " in " << work << ": " << points << " points, " << (testing::Test::HasFailure() ? 1 : 0)
              << " failures" << std::endl;
}

} // namespace tolmtest
