#include "Abi/RunCommand.h"

#include <gtest/gtest.h>

namespace {

TEST(Unloading, ClearsTheFactoryThatLoadingInstalled) {
    EXPECT_EQ(tolmtest::OutputOf(TOLM_UNLOAD_PROBE " " TOLM_DATASET_LIBRARY), "before: none\n"
                                                                              "loaded: factory\n"
                                                                              "initialised: factory\n"
                                                                              "uninitialised: factory\n"
                                                                              "closed: none\n"
                                                                              "library: gone\n");
}

} // namespace
