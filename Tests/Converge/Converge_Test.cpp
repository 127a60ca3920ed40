#include "Converge/ConvergeFixture.h"
#include "Converge/HostHistories.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>

namespace tolmtest {
namespace {

using nlohmann::json;

/// Histories of all shards together, unless TOLM_HOST_HISTORIES says otherwise.
constexpr std::uint64_t kHistories = 1'000;
constexpr int kShards = 4;

/// A number of the environment; `otherwise` when it is not set.
std::uint64_t Setting(const char* name, std::uint64_t otherwise) {
    const char* text = std::getenv(name);
    return text != nullptr ? std::strtoull(text, nullptr, 10) : otherwise;
}

/// Where there is room in memory, the datasets stand there: what a crash leaves of them is not the matter here, and a
/// disk would make each history ten times as long. TMPDIR has the first word.
class InMemory : public testing::Environment {
public:
    void SetUp() override {
        constexpr std::uintmax_t enough = 256U << 20U;
        std::error_code error;
        const auto space = std::filesystem::space("/dev/shm", error);
        if (!error && space.available >= enough && access("/dev/shm", W_OK) == 0)
            setenv("TMPDIR", "/dev/shm", 0);
    }
};
const auto* const kInMemory = testing::AddGlobalTestEnvironment(new InMemory);

class Converge : public ConvergeFixture {};

/// Shares of the histories, so that they can be played side by side.
class ConvergeShare : public ConvergeFixture, public testing::WithParamInterface<int> {
protected:
    void TearDown() override {
        std::cout << counts.fates[Fate::Landed] << " edits landed, " << counts.fates[Fate::Overridden]
                  << " were overridden, " << counts.fates[Fate::Nothing] << " came to nothing, " << counts.skipped
                  << " could not be made; " << counts.lostAnswers << " answers were lost; " << counts.refused
                  << " rounds were tried again;";
        for (const auto& [step, count] : counts.steps)
            std::cout << " " << count << " " << step;
        std::cout << "\n";
    }
};

TEST_P(ConvergeShare, AfterTheLastSynchronisationAllHostsHoldWhatTheServiceHoldsAndNoEditIsLost) {
    const auto first = Setting("TOLM_HOST_HISTORY_SEED", 1);
    const auto count = Setting("TOLM_HOST_HISTORIES", kHistories);
    for (auto seed = first + static_cast<std::uint64_t>(GetParam()); seed < first + count && !HasFailure();
         seed += kShards) {
        SCOPED_TRACE("again with TOLM_HOST_HISTORY_SEED=" + std::to_string(seed) + " TOLM_HOST_HISTORIES=1");
        Play(HostHistoryMaker(seed).History(), "seed" + std::to_string(seed));
    }
}
INSTANTIATE_TEST_SUITE_P(Histories, ConvergeShare, testing::Range(0, kShards));

TEST_F(Converge, ASeedAlwaysGivesTheSameHistoryAndAnotherSeedAnotherOne) {
    EXPECT_EQ(HostHistoryMaker(5).History(), HostHistoryMaker(5).History());
    EXPECT_NE(HostHistoryMaker(5).History(), HostHistoryMaker(6).History());
}

} // namespace
} // namespace tolmtest
