#pragma once

#include <gtest/gtest.h>

#include <iostream>
#include <string>

namespace tolmtest {

/// Prints how many points a test tried, in the form that `scripts/lib.sh` sums up. `kind` is "faults" or "power cuts".
/// A test stops at the first point that fails.
inline void TellTriedPoints(const char* kind, const std::string& work, long points) {
    std::cout << kind << " in " << work << ": " << points << " points, " << (testing::Test::HasFailure() ? 1 : 0)
              << " failures" << std::endl;
}

} // namespace tolmtest
