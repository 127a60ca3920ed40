#include "Converge/TravellingFacts.h"
#include "Converge/VersionLog.h"
#include "Host/Definitions.h"
#include "Qbase/Qbase.h"
#include "StoreSupport/StoreFixture.h"
#include "StoreSupport/SyncFixture.h"
#include "Support/ChildProcess.h"
#include "Vorn/Text.h"

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <iostream>
#include <limits>
#include <map>
#include <random>
#include <span>
#include <sstream>
#include <thread>

namespace tolmtest {
namespace {

using nlohmann::json;

constexpr int kWorkers = 8;
constexpr long kStepsOfARun = 25;
constexpr long long kForever = std::numeric_limits<long long>::max() / 4;
constexpr long kOutsideMarks = 1'000'000'000;
/// An operation takes a handful of locks one after the other, each for no longer than the time-out of the processes
/// (1.5 s); the rest is for a machine that has other things to do.
constexpr long kLongestEdit = 30'000;

constexpr const char* kOwnUpload = "overridden by the file's own upload";
constexpr const char* kHadComeBack = "made on a record that had come back";

/// How many runs each worker makes.
int Runs() {
    const char* const text = std::getenv("TOLM_ONE_FILE_RUNS");
    return text == nullptr ? 4 : std::max(1, std::atoi(text));
}

std::uint64_t Seed() {
    const char* const text = std::getenv("TOLM_ONE_FILE_SEED");
    return text == nullptr ? std::random_device{}() : std::strtoull(text, nullptr, 10);
}

/// One edit that a worker began.
struct Attempt {
    enum class End { Done, Refused, Killed };
    std::string what;
    std::string id;
    long mark = 0;
    long long from = 0; ///< version that the file told before
    End end = End::Killed;
};

/// From the version that a merge and upload began with up to the one that it stamped.
struct Merged {
    long long from = 0;
    long long to = 0; ///< 0 while it is not known
};

/// What a worker did, over all its runs.
struct Ledger {
    std::vector<Attempt> attempts;
    std::vector<Merged> merges;
    std::map<std::string, int> syncs; ///< by result and outcome
    std::vector<std::string> warnings;
    long longestEdit = 0;
    long next = 1;
    int kills = 0;

    /// One line of the worker's process.
    void Take(const std::string& line) {
        std::istringstream words(line);
        std::string what;
        words >> what;
        if (what == "put" || what == "del") {
            Attempt attempt{what, {}, 0, 0, Attempt::End::Killed};
            words >> attempt.id >> attempt.mark >> attempt.from;
            next = attempt.mark + 1;
            attempts.push_back(attempt);
        } else if (what == "ok" || what == "no") {
            long took = 0;
            words >> took;
            longestEdit = std::max(longestEdit, took);
            attempts.back().end = what == "ok" ? Attempt::End::Done : Attempt::End::Refused;
        } else if (what == "merge") {
            merges.emplace_back();
            words >> merges.back().from;
        } else if (what == "sync") {
            std::string result;
            std::string done;
            long long version = 0;
            words >> result >> done >> version;
            EndMerge(version);
            ++syncs[result + (done == "1" ? " done" : " not done")];
        } else {
            warnings.push_back(line);
        }
    }

    /// A merge that is under way cannot have stamped more than `version`.
    void EndMerge(long long version) {
        if (!merges.empty() && merges.back().to == 0)
            merges.back().to = version;
    }

    bool Merges(long long version) const {
        return std::ranges::any_of(merges,
                                   [&](const Merged& merged) { return merged.from < version && version <= merged.to; });
    }
};

/// Warnings of operations that gave way to another process, and were told so.
bool IsOfGivingWay(const std::string& warning) {
    for (const char* known :
         {"mergeSucc 失败", "bSucc 失败", "getCloudDataSucc 为false", "ducplicateFilesSucc为false", "覆盖文件失败",
          "复制文件失败 exception", "删除文件失败 exception", "本地修改的此条目没找到: ", "localVersion 已过期",
          "openDatabase 失败", "beginTransaction 失败", "createRec 失败", "closeDatabase 失败"}) {
        if (warning.find(known) != std::string::npos)
            return true;
    }
    return false;
}

json Material(const std::string& id) {
    return {{"ID", id},        {"groupName", "MaterialSeries"}, {"text", id}, {"parentID", ""},
            {"CreateTime", 1}, {"content", json::object()}};
}

/// Eight processes on one dataset file, each signed in for itself, and one more with a dataset of its own that edits
/// the same settings through the cloud.
class OneFile : public SyncFixture {
protected:
    OneFile() : dataset(folder.File(L"shared"), componentPath), outside(folder.File(L"outside"), componentPath) {
        json rows = json::array();
        for (int number = 0; number < 10; ++number)
            rows.push_back(Material("w-first-" + std::to_string(number)));
        Open({{"ConfigTree", rows}});
        EXPECT_TRUE(dataset.Pull() && outside.Pull());
        TakeNotifications();
    }

    ChildProcess Start(const std::string& mode, const HostedDataset& on, const std::string& name, long first,
                       std::uint64_t seed) {
        return ChildProcess({TOLM_BINARY_DIR "/bin/tolm-dataset-process", mode, vorn::StringUtil::ToString(on.Path()),
                             vorn::StringUtil::ToString(service.Address()), service.SignIn(), name,
                             std::to_string(first), std::to_string(kStepsOfARun), std::to_string(seed)});
    }

    /// Runs a worker again and again; with `kills`, most runs end by a signal after some line or other.
    void RunWorker(const HostedDataset& on, const std::string& name, Ledger& ledger, bool kills, std::uint64_t seed) {
        std::mt19937_64 engine(seed);
        for (int run = 0; run < Runs(); ++run) {
            auto process = Start("work", on, name, ledger.next, engine());
            const auto killAfter = kills && engine() % 4 != 0 ? 1 + engine() % 60 : 0;
            std::uint64_t lines = 0;
            for (auto line = process.ReadLine(); !line.empty(); line = process.ReadLine()) {
                ledger.Take(line);
                if (++lines == killAfter)
                    process.Signal(SIGKILL);
            }
            const int end = process.Wait();
            ledger.EndMerge(service.Version("P"));
            ledger.kills += end == -SIGKILL ? 1 : 0;
            EXPECT_TRUE(end == 0 || (end == -SIGKILL && killAfter != 0)) << name << " ended with " << end;
        }
    }

    void RunAll(bool kills, std::uint64_t seed) {
        std::vector<std::thread> threads;
        for (int worker = 0; worker < kWorkers; ++worker) {
            threads.emplace_back([&, worker] {
                RunWorker(dataset, std::to_string(worker), ledgers[static_cast<std::size_t>(worker)], kills,
                          seed + static_cast<std::uint64_t>(worker));
            });
        }
        outsideLedger.next = kOutsideMarks;
        RunWorker(outside, "outside", outsideLedger, false, seed + kWorkers);
        for (auto& thread : threads)
            thread.join();
    }

    void ExpectNoLockLeft() {
        CQbase::setLockTimeout(1000);
        for (const auto& path : {dataset.Path(), dataset.StatusPath()}) {
            CQbase qb;
            if (!qb.openDatabase(Definition(), path, false)) {
                EXPECT_EQ(qb.getLastError(), static_cast<short>(QbaseError::NotFound));
                continue;
            }
            EXPECT_TRUE(qb.lockForUpdate());
        }
        CQbase::setLockTimeout(5000);
    }

    void Settle() {
        for (const auto* on : {&dataset, &outside, &dataset}) {
            Ledger& ledger = on == &outside ? outsideLedger : ledgers.front();
            auto process = Start("settle", *on, "settles", 1, 1);
            for (auto line = process.ReadLine(); !line.empty(); line = process.ReadLine())
                ledger.Take(line);
            EXPECT_EQ(process.Wait(), 0) << "does not come to the end: " << Text(ledger);
        }
    }

    static std::string Text(const Ledger& ledger) {
        std::string text;
        for (const auto& [what, count] : ledger.syncs)
            text += "sync " + what + ": " + std::to_string(count) + "\n";
        for (const auto& warning : ledger.warnings)
            text += warning + "\n";
        return text;
    }

    void ExpectSame(const VersionLog& log) {
        ExpectSame(dataset, [&](const std::string& id) {
            return CameBack(id, log) || WasSkipped(id, log, ledgers, [](const LoggedState& last) {
                       return last.gone >= kForever && last.Mark() >= kOutsideMarks;
                   });
        });
        ExpectSame(outside, [&](const std::string& id) {
            return WasSkipped(id, log, {&outsideLedger, 1}, [](const LoggedState& last) {
                return last.gone < kForever || last.Mark() < kOutsideMarks;
            });
        });
        if (HasFailure())
            PrintEdits(log);
    }

    template <class IsExcepted> void ExpectSame(const HostedDataset& on, IsExcepted isExcepted) {
        auto expected = TravellingFacts(Expected());
        auto found = TravellingFacts(StoreFacts(on.Path()));
        for (auto* facts : {&expected, &found})
            std::erase_if(*facts, [&](const auto& fact) { return isExcepted(IdOf(fact.first)); });
        EXPECT_TRUE(Same(expected, found));
    }

    /// True for a record whose newest state in the cloud came from others while a merge and upload was under way. The
    /// version that is stamped at the end is the cloud's newest of that moment: what others sent since the download is
    /// behind it and does not come down any more.
    template <class IsFromOthers>
    static bool WasSkipped(const std::string& id, const VersionLog& log, std::span<const Ledger> own,
                           IsFromOthers isFromOthers) {
        const auto& states = log.Of(SliceOf("pipe materials"), id);
        if (states.empty() || !isFromOthers(states.back()))
            return false;
        const auto version = states.back().gone < kForever ? states.back().gone : states.back().born;
        return std::ranges::any_of(own, [&](const Ledger& ledger) { return ledger.Merges(version); });
    }

    static std::string IdOf(const std::string& fact) {
        const auto begin = fact.find('/') + 1;
        return fact.substr(begin, fact.find('/', begin) - begin);
    }

    /// True for a record that was deleted after it had gone up, when the file did not tell the version of that upload
    /// yet. A merge from the older version takes the record for an addition of the cloud: it stands again, the note of
    /// the deletion stays too, and the cloud lets the record go.
    bool CameBack(const std::string& id, const VersionLog& log) const {
        const auto& states = log.Of(SliceOf("pipe materials"), id);
        if (states.empty() || states.back().gone >= kForever)
            return false;
        return std::ranges::any_of(ledgers, [&](const Ledger& ledger) {
            return std::ranges::any_of(ledger.attempts, [&](const Attempt& edit) {
                return edit.what == "del" && edit.id == id && edit.end == Attempt::End::Done &&
                       edit.from < states.back().born;
            });
        });
    }

    /// For whoever has to find out how it came about.
    void PrintEdits(const VersionLog& log) {
        for (const auto& ledger : ledgers) {
            for (const auto& edit : ledger.attempts)
                std::cout << edit.what << ' ' << edit.id << ' ' << edit.mark << " at " << edit.from << ", end "
                          << static_cast<int>(edit.end) << "; the cloud has "
                          << Text(log.Of(SliceOf("pipe materials"), edit.id)) << "\n";
        }
    }

    /// Each edit that was said to be made is in the cloud, or was followed by another one of the same worker, or gave
    /// way to a change of the cloud after the version that the file told. That change may be the upload of an earlier
    /// state from this very file, of which the file did not tell yet.
    void ExpectNothingLost(const Ledger& ledger, const VersionLog& log) {
        for (std::size_t i = 0; i < ledger.attempts.size(); ++i) {
            if (ledger.attempts[i].end == Attempt::End::Done)
                ++fates[FateOf(ledger.attempts, i, log)];
        }
    }

    std::string FateOf(const std::vector<Attempt>& attempts, std::size_t place, const VersionLog& log) {
        const Attempt& edit = attempts[place];
        const auto& states = log.Of(SliceOf("pipe materials"), edit.id);
        const auto has = [&](long mark) { return std::ranges::find(states, mark, &LoggedState::Mark) != states.end(); };
        const bool isGone = states.empty() || states.back().gone < kForever;
        if (edit.what == "put" ? has(edit.mark) : isGone)
            return "landed";
        const bool wasDeleted =
            std::any_of(attempts.begin(), attempts.begin() + static_cast<std::ptrdiff_t>(place),
                        [&](const Attempt& each) { return each.what == "del" && each.id == edit.id; });
        if (edit.what == "put" && wasDeleted && isGone)
            return kHadComeBack;
        for (auto later = place + 1; later < attempts.size(); ++later) {
            const Attempt& next = attempts[later];
            if (next.id != edit.id || next.end == Attempt::End::Refused)
                continue;
            if (next.end == Attempt::End::Done || (next.what == "put" ? has(next.mark) : isGone))
                return "followed";
        }
        for (const auto& state : states) {
            if (state.born > edit.from)
                return state.Mark() >= kOutsideMarks ? "overridden from outside" : kOwnUpload;
        }
        ADD_FAILURE() << edit.what << ' ' << edit.id << ' ' << edit.mark << " made at version " << edit.from
                      << " is lost; the cloud has " << Text(states);
        return "lost";
    }

    /// Of how many edits an upload of this very file got in the way, of how many.
    std::pair<int, int> Excused() const {
        std::pair<int, int> counts;
        for (const auto& [fate, count] : fates) {
            counts.first += fate == kOwnUpload || fate == kHadComeBack ? count : 0;
            counts.second += count;
        }
        return counts;
    }

    static std::string Text(const std::vector<LoggedState>& states) {
        std::string text;
        for (const auto& state : states)
            text += std::to_string(state.Mark()) + " from " + std::to_string(state.born) +
                    (state.gone < kForever ? " to " + std::to_string(state.gone) : "") + "; ";
        return text.empty() ? "nothing" : text;
    }

    void Play(bool kills) {
        const auto seed = Seed();
        std::cout << "seed " << seed << "\n";
        RunAll(kills, seed);
        ExpectNoLockLeft();
        Settle();
        const VersionLog log(service.DatabasePath(), "P");
        ExpectSame(log);
        std::map<std::string, int> syncs;
        for (const auto& ledger : ledgers) {
            ExpectNothingLost(ledger, log);
            EXPECT_LT(ledger.longestEdit, kLongestEdit) << "ms for one edit";
            for (const auto& warning : ledger.warnings)
                EXPECT_TRUE(IsOfGivingWay(warning)) << warning;
            for (const auto& [what, count] : ledger.syncs)
                syncs[what] += count;
            m_kills += ledger.kills;
        }
        const auto [excused, all] = Excused();
        EXPECT_LE(4 * excused, all)
            << "edits gave way to what the file itself had sent far more often than chance tells";
        for (const auto& [what, count] : fates)
            std::cout << count << ' ' << what << ", ";
        std::cout << m_kills << " processes killed, versions up to " << service.Version("P") << "\n";
        for (const auto& [what, count] : syncs)
            std::cout << "sync " << what << ": " << count << "\n";
    }

    static std::wstring Definition() { return tolm::DataSetFilePath::TOLMDDQFilePath; }

    HostedDataset dataset;
    HostedDataset outside;
    std::vector<Ledger> ledgers{kWorkers};
    Ledger outsideLedger;
    std::map<std::string, int> fates;
    int m_kills = 0;
};

TEST_F(OneFile, ThatEightProcessesEditAndSynchroniseLosesNoEdit) {
    Play(false);
    EXPECT_GT(fates["landed"], 0);
    EXPECT_EQ(m_kills, 0);
}

TEST_F(OneFile, WhoseProcessesAreKilledAtRandomLosesNoEditAndNoLockStays) {
    Play(true);
    EXPECT_GT(fates["landed"], 0);
    EXPECT_GT(m_kills, 0);
}

} // namespace
} // namespace tolmtest
