#include "StoreSupport/DatasetWorks.h"
#include "StoreSupport/FaultLoop.h"
#include "StoreSupport/WorkFixture.h"
#include "Support/ChildProcess.h"
#include "Support/TriedPoints.h"
#include "Vorn/Text.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>

namespace tolmtest {
namespace {

/// How many of the points are tried: every one with 1.
long Stride(long ofFaults) {
    const char* const text = std::getenv("TOLM_CRASH_STRIDE");
    return text == nullptr ? 7 + ofFaults : std::max(1L, std::atol(text));
}

/// An operation on a dataset during which the power is cut, again and again, each time before another change of its
/// files; and cut again while the next process finds what was left.
class PowerCuts : public WorkFixture, public testing::WithParamInterface<PreparedWork> {
protected:
    PowerCuts() { Prepare(GetParam()); }

    /// Exit code, or minus the signal that ended it.
    int Run(const std::string& work, long change, const std::string& unsynced, long seed) {
        ChildProcess process({TOLM_BINARY_DIR "/bin/tolm-crash-process", work,
                              vorn::StringUtil::ToString(folder.Path()), vorn::StringUtil::ToString(server.Address()),
                              std::to_string(change), unsynced, std::to_string(seed)});
        m_changes = std::atol(process.ReadLine().c_str());
        return process.Wait();
    }

    /// The dataset must be as it was or as it is to be; from then on it stays so. Where it is as it is to be, so is
    /// what belongs to it.
    void ExpectOldOrNew(const std::string& where) {
        const Facts facts = DatasetFacts(path);
        if (facts == m_after) {
            EXPECT_TRUE(Same(m_companionsAfter, CompanionFacts(path))) << where;
        }
        if (facts != m_after && std::ranges::find(m_between, facts) == m_between.end()) {
            EXPECT_TRUE(Same(m_before, facts)) << where;
        }
    }

    /// The states that the operation passes through by design.
    void PlayStages(const FolderContent& start) {
        start.PutBack();
        for (const char* const stage : GetParam().stages) {
            ASSERT_EQ(Run(stage, 0, "kept", 0), 0) << stage;
            m_between.push_back(DatasetFacts(path));
        }
    }

    void CutInEachWay(const FolderContent& start, long change) {
        for (const char* const unsynced : {"kept", "dropped", "torn"})
            CutOnce(start, change, unsynced, change);
    }

    void CutOnce(const FolderContent& start, long change, const std::string& unsynced, long seed) {
        const std::string where = std::string(GetParam().name) + ", change " + std::to_string(change) + ", " +
                                  unsynced + ", seed " + std::to_string(seed);
        start.PutBack();
        ASSERT_EQ(Run(GetParam().name, change, unsynced, seed), -SIGKILL) << where;
        const FolderContent wreck(folder.Path());
        ExpectOldOrNew(where);
        if (change > m_wholeChanges) {
            EXPECT_TRUE(Same(m_after, DatasetFacts(path))) << where << ": said true";
        }
        for (long again = 1; !HasFailure(); ++again) { // the recovery is interrupted too
            wreck.PutBack();
            if (Run("read", again, unsynced, seed + again) >= 0)
                break;
            ++m_points;
            ExpectOldOrNew(where + ", again at " + std::to_string(again));
        }
        ++m_points;
        wreck.PutBack();
        const Facts left = DatasetFacts(path);
        EXPECT_EQ(Run(GetParam().name, 0, unsynced, seed), left == m_before || GetParam().mayBeRepeated ? 0 : 1)
            << where;
        const Facts facts = DatasetFacts(path);
        const bool stays = GetParam().mayStay && facts == left && left != m_before;
        EXPECT_TRUE(stays || Same(m_after, facts)) << where;
        EXPECT_TRUE(Same(m_companionsAfter, CompanionFacts(path))) << where;
    }

    Facts m_before;
    Facts m_after;
    Facts m_companionsAfter;
    std::vector<Facts> m_between;
    long m_changes = 0;
    long m_wholeChanges = 0; ///< of the operation without a cut
    long m_points = 0;
};

TEST_P(PowerCuts, LeaveTheOldOrTheNew) {
    const FolderContent start(folder.Path());
    m_before = DatasetFacts(path);
    ASSERT_EQ(Run(GetParam().name, 0, "kept", 0), 0);
    m_wholeChanges = m_changes;
    ASSERT_GT(m_wholeChanges, 0);
    m_after = DatasetFacts(path);
    m_companionsAfter = CompanionFacts(path);
    PlayStages(start);
    const long stride = Stride(GetParam().tryOneOf);
    for (long change = 1; change <= m_wholeChanges && !HasFailure(); change += stride)
        CutInEachWay(start, change);
    CutInEachWay(start, m_wholeChanges + 1); // when it has said true
    TellTriedPoints("power cuts", GetParam().title, m_points);
}

INSTANTIATE_TEST_SUITE_P(Each, PowerCuts, testing::ValuesIn(PreparedWorks()), PreparedWorkName);

} // namespace
} // namespace tolmtest
