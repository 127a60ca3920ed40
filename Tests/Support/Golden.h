#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

namespace tolmtest {

/// Compares a text with a file below Tests, to the byte. Where the change is meant, the same test writes the file when
/// it runs with TOLM_UPDATE_GOLDEN set; `what` says what changes with it.
inline void ExpectGolden(const std::string& name, const std::string& actual, const std::string& what) {
    const std::string path = std::string(TOLM_SOURCE_DIR) + "/Tests/" + name;
    if (std::getenv("TOLM_UPDATE_GOLDEN") != nullptr) {
        std::ofstream(path, std::ios::binary) << actual;
        return;
    }
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file.is_open()) << path;
    const std::string expected{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    EXPECT_EQ(actual, expected) << what << " is not that of " << name
                                << ". If the change is meant, run this test with TOLM_UPDATE_GOLDEN=1";
}

} // namespace tolmtest
