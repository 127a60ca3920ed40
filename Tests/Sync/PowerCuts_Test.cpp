#include "StoreSupport/DatasetWorks.h"
#include "StoreSupport/FaultLoop.h"
#include "StoreSupport/WorkFixture.h"
#include "Support/ChildProcess.h"
#include "Support/TriedPoints.h"
#include "Vorn/Text.h"

#include <algorithm>
#include <csignal>

namespace tolmtest {
namespace {

constexpr const char* kTorn = "torn";

/// What finds a wreck: the two stores are rolled back in the one order or in the other.
constexpr const char* kReaders[] = {"read", "read status first"};

/// How many of the points are tried: every one with 1.
long Stride(long ofFaults) {
    return AskedFor("TOLM_CRASH_STRIDE", 7 + ofFaults);
}

/// Where the power is cut, and what becomes of what was not synced.
struct Cut {
    long change;
    std::string unsynced;
    long seed;

    const char* Reader() const { return kReaders[static_cast<std::size_t>(seed + (unsynced == kTorn ? 1 : 0)) % 2]; }
};

/// A process that does one operation on the dataset in a folder.
class CrashProcess : public WorkFixture {
protected:
    /// Exit code, or minus the signal that ended it.
    int Run(const std::string& work, const Cut& cut) {
        ChildProcess process({TOLM_BINARY_DIR "/bin/tolm-crash-process", work,
                              vorn::StringUtil::ToString(folder.Path()), vorn::StringUtil::ToString(server.Address()),
                              std::to_string(cut.change), cut.unsynced, std::to_string(cut.seed)});
        m_changes = std::atol(process.ReadLine().c_str());
        m_functions = process.ReadLine();
        return process.Wait();
    }
    int RunWhole(const std::string& work) { return Run(work, {0, "kept", 0}); }

    long m_changes = 0;
    std::string m_functions; ///< of the system, which changed files past SQLite
};

/// An operation on a dataset during which the power is cut, again and again, each time before another change of its
/// files; and cut again while the next process finds what was left.
class PowerCuts : public CrashProcess, public testing::WithParamInterface<PreparedWork> {
protected:
    PowerCuts() { Prepare(GetParam()); }

    /// The dataset must be as it was or as it is to be; from then on it stays so. Where it is as it is to be, so is
    /// what belongs to it. Behind the end of the operation, which said true, it is as it is to be.
    void ExpectOldOrNew(const Cut& cut, const std::string& where) {
        const Facts facts = DatasetFacts(path);
        if (facts == m_after) {
            EXPECT_TRUE(Same(m_companionsAfter, CompanionFacts(path))) << where;
        } else if (cut.change > m_wholeChanges) {
            EXPECT_TRUE(Same(m_after, facts)) << where << ": said true";
        } else if (std::ranges::find(m_between, facts) == m_between.end()) {
            EXPECT_TRUE(Same(m_before, facts)) << where;
        }
    }

    /// The states that the operation passes through by design.
    void PlayStages(const FolderContent& start) {
        start.PutBack();
        for (const char* const stage : GetParam().manner.stages) {
            ASSERT_EQ(RunWhole(stage), 0) << stage;
            m_between.push_back(DatasetFacts(path));
        }
    }

    void CutInEachWay(const FolderContent& start, long change) {
        for (const char* const unsynced : {"kept", "dropped"})
            CutOnce(start, {change, unsynced, change});
        for (long way = 0; way < TornWays(); ++way)
            CutOnce(start, {change, kTorn, change + way * kSeedStep});
    }

    void CutOnce(const FolderContent& start, const Cut& cut) {
        const std::string where = std::string(GetParam().name) + ", change " + std::to_string(cut.change) + ", " +
                                  cut.unsynced + ", seed " + std::to_string(cut.seed);
        start.PutBack();
        ASSERT_EQ(Run(GetParam().name, cut), -SIGKILL) << where;
        ++m_points;
        const FolderContent wreck(folder.Path());
        ExpectOldOrNew(cut, where);
        if (!HasFailure())
            CutRecovery(wreck, cut, where + ", " + cut.Reader());
        wreck.PutBack();
        ExpectNextRunSucceeds(where + ", next run");
    }

    /// The recovery is interrupted too, at each of its changes, until it comes to its end.
    void CutRecovery(const FolderContent& wreck, const Cut& cut, const std::string& where) {
        int code = -SIGKILL;
        for (long again = 1; code == -SIGKILL && !HasFailure(); ++again) {
            wreck.PutBack();
            code = Run(cut.Reader(), {again, cut.unsynced, cut.seed + again});
            m_points += code == -SIGKILL ? 1 : 0;
            ExpectOldOrNew(cut, where + ", again at " + std::to_string(again));
        }
        const bool isNoneYet = GetParam().manner.makesTheFile && DatasetFacts(path).empty();
        EXPECT_TRUE(code == 0 || (code == 1 && isNoneYet)) << where << ": " << code;
    }

    void ExpectNextRunSucceeds(const std::string& where) {
        const Facts left = DatasetFacts(path);
        EXPECT_EQ(RunWhole(GetParam().name), left == m_before || GetParam().manner.mayBeRepeated ? 0 : 1) << where;
        const Facts facts = DatasetFacts(path);
        const bool stays = GetParam().manner.mayStay && facts == left && left != m_before;
        EXPECT_TRUE(stays || Same(m_after, facts)) << where;
        EXPECT_TRUE(Same(m_companionsAfter, CompanionFacts(path))) << where;
    }

    Facts m_before;
    Facts m_after;
    Facts m_companionsAfter;
    std::vector<Facts> m_between;
    long m_wholeChanges = 0; ///< of the operation without a cut
    long m_points = 0;
};

TEST_P(PowerCuts, LeaveTheOldOrTheNew) {
    const FolderContent start(folder.Path());
    m_before = DatasetFacts(path);
    ASSERT_EQ(RunWhole(GetParam().name), 0);
    m_wholeChanges = m_changes;
    ASSERT_GT(m_wholeChanges, 0);
    m_after = DatasetFacts(path);
    m_companionsAfter = CompanionFacts(path);
    PlayStages(start);
    const long stride = Stride(GetParam().manner.tryOneOf);
    for (long change = 1; change <= m_wholeChanges && !HasFailure(); change += stride)
        CutInEachWay(start, change);
    CutInEachWay(start, m_wholeChanges + 1); // when it has said true
    TellTriedPoints("power cuts", GetParam().title, m_points);
}

INSTANTIATE_TEST_SUITE_P(Each, PowerCuts, testing::ValuesIn(PreparedWorks()), PreparedWorkName);

/// Without this, cuts among the changes of binary files and folders would be gone, and nothing would tell.
TEST_F(CrashProcess, MeetsTheChangesPastSqlite) {
    FillCloudRichly();
    ASSERT_EQ(RunWhole("pull"), 0);
    EXPECT_EQ(m_functions, "fsync mkdir open rename write ");
    RichCloudMoves();
    ASSERT_EQ(RunWhole("pull"), 0);
    EXPECT_EQ(m_functions, "fsync open remove rename write ");
}

} // namespace
} // namespace tolmtest
