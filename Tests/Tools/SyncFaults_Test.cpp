#include "Support/ChildProcess.h"
#include "Support/FaultyFiles.h"
#include "Support/FolderContent.h"
#include "Support/TriedPoints.h"
#include "Tolm/Profile.h"
#include "Tools/TwoUsers.h"

#include <csignal>
#include <functional>
#include <optional>

namespace tolmtest {
namespace {

using Words = std::vector<std::string>;

constexpr const char* kKept = "kept";
constexpr long kBehindTheEnd = -1;
constexpr const char* kRemoveBrass =
    R"({"format": "tolm-change", "formatVersion": 1, "remove": {"ConfigTree": ["s2", "m2"]}})";

/// What stands against a synchronisation: the dataset's changes, those of the cloud before it, and during its download.
struct SyncCase {
    const char* title;
    std::vector<Words> edits;
    std::vector<std::string> cloud;
    const char* during = nullptr;
    bool intoAnEmptyProject = false;
};

void PrintTo(const SyncCase& sync, std::ostream* out) {
    *out << sync.title;
}

/// How many of the faults and of the power cuts are tried: every one with 1. What makes other tests try fewer than each
/// one leaves this one, which tries few, as it is.
long Stride(const char* variable, long otherwise) {
    return AskedFor(variable, otherwise) == 1 ? 1 : otherwise;
}

/// The folder whose files fail; it must outlive the service, whose own files lie elsewhere.
struct FaultyFolder {
    TempFolder faulty;
    FaultyFiles files{faulty.Path()};
};

/// "tolm sync" as a whole: its files fail, or the power is cut, at one moment after the other. Each time the dataset
/// can be read, and another "tolm sync" makes up for all of it: dataset and service hold what they hold without a
/// fault.
class SyncFaults : public FaultyFolder, public TwoUsers, public testing::WithParamInterface<SyncCase> {
public:
    using TwoUsers::kRenameBrass;
    using TwoUsers::kRenameSteel;

protected:
    struct End {
        nlohmann::json settings;
        nlohmann::json tables;
        std::size_t changes = 0;
        int versionsBehind = 0;
        friend bool operator==(const End&, const End&) = default;
        friend void PrintTo(const End& end, std::ostream* out) {
            *out << end.settings.dump(1) << end.tables.dump(1) << end.changes << ' ' << end.versionsBehind;
        }
    };

    void SetUp() override {
        TwoUsers::SetUp();
        m_service.FillTables("first", kProject);
        Make(m_dataset, m_wire.Address(), "first", "anna");
        Expect(On(m_dataset, "sync", {}));
        for (Words words : GetParam().edits) {
            const std::string command = words.front();
            words.erase(words.begin());
            Expect(On(m_dataset, command, words));
        }
        m_start.emplace(faulty.Path());
        StartAnew();
        m_told = On(m_dataset, "sync", More()).code;
        ASSERT_EQ(m_told, tolmcli::Done);
        m_end = Found();
    }

    static Words More() { return GetParam().intoAnEmptyProject ? Words{"--from-local"} : Words{}; }

    /// The dataset as it was, in a project that nobody has synchronised with yet.
    void StartAnew() {
        files.Rest();
        m_start->PutBack();
        m_project = "project-" + std::to_string(++m_projects);
        if (GetParam().intoAnEmptyProject)
            m_service.CreateProject(m_project);
        else
            m_service.FillTables(m_project, kProject);
        for (const auto& change : GetParam().cloud)
            m_service.Apply(m_project, change);
        if (const char* const during = GetParam().during)
            m_wire.Before("/api/DownloadVersion/",
                          [this, project = m_project, during] { m_service.Apply(project, during); });
        const auto path = vorn::StringUtil::ToWString(m_dataset);
        auto profile = tolmcli::Profile::Load(path);
        profile.project = vorn::StringUtil::ToWString(m_project);
        profile.Save(path);
    }

    End Found() {
        auto tables = nlohmann::json::parse(m_service.Tables(m_project));
        for (auto& rows : tables)
            std::sort(rows.begin(), rows.end(), [](const auto& a, const auto& b) { return a.at("ID") < b.at("ID"); });
        return {Settings(m_dataset), tables, ChangesOf(m_dataset), m_service.Version(m_project) - VersionOf(m_dataset)};
    }

    /// What is left can be read, and the next synchronisation makes up for it; one that was said to be done is.
    void Judge(int code, const std::string& where) {
        SCOPED_TRACE(where);
        if (code == tolmcli::Done) {
            EXPECT_EQ(Found(), m_end) << "said to be done";
        }
        Settings(m_dataset);
        const auto next = On(m_dataset, "sync", More());
        EXPECT_EQ(next.code, tolmcli::Done) << next.out << next.err;
        EXPECT_EQ(Found(), m_end);
        ++m_points;
    }

    bool FailOnce(const std::function<void(long)>& arm, long number, const char* how) {
        StartAnew();
        arm(number);
        const int code = On(m_dataset, "sync", WithOneAttempt()).code;
        const bool met = files.HasFailed();
        const std::string where = std::string(how) + ' ' + std::to_string(number) + ' ' + files.FailedPath();
        files.Rest();
        Judge(code, where);
        return met;
    }
    void FailAll(const std::function<void(long)>& arm, long first, const char* how) {
        for (long number = first; FailOnce(arm, number, how) && !HasFailure();)
            number += Stride("TOLM_FAULT_STRIDE", 47);
    }

    static Words WithOneAttempt() {
        Words words = More();
        words.insert(words.end(), {"--attempts", "1"});
        return words;
    }

    /// Exit code, or minus the signal that ended it.
    int CutPower(long change, const std::string& unsynced, long seed) {
        Words words{TOLM_BINARY_DIR "/bin/tolm-crash-tool",
                    vorn::StringUtil::ToString(faulty.Path()),
                    std::to_string(change),
                    unsynced,
                    std::to_string(seed),
                    "sync",
                    m_dataset,
                    "--pause",
                    "0"};
        for (const auto& word : More())
            words.push_back(word);
        ChildProcess process(words);
        m_changes = std::atol(process.ReadLine().c_str());
        return process.Wait();
    }
    void CutInEachWay(long change) {
        for (const char* const unsynced : {kKept, "dropped"})
            CutOnce(change, unsynced, change);
        for (long way = 0; way < TornWays(); ++way)
            CutOnce(change, "torn", change + way * kSeedStep);
    }
    /// Unless nothing is lost, the power is cut again while the next synchronisation makes up for it.
    void CutOnce(long change, const std::string& unsynced, long seed) {
        const std::string where = std::to_string(change) + ' ' + unsynced + ", seed " + std::to_string(seed);
        StartAnew();
        ASSERT_EQ(CutPower(change, unsynced, seed), -SIGKILL) << where;
        if (unsynced != kKept)
            CutRecovery(1 + seed * 7 % 61, unsynced, seed, where);
        Judge(tolmcli::Failed, where);
    }
    void CutBehindTheEnd(const std::string& unsynced, long seed) {
        StartAnew();
        ASSERT_EQ(CutPower(kBehindTheEnd, unsynced, seed), -SIGKILL);
        Judge(tolmcli::Done, "behind its end, " + unsynced + ", seed " + std::to_string(seed));
    }
    /// That synchronisation may come to its end before.
    void CutRecovery(long change, const std::string& unsynced, long seed, const std::string& where) {
        const int code = CutPower(change, unsynced, seed);
        EXPECT_TRUE(code == -SIGKILL || code == tolmcli::Done) << where << ", again: " << code;
        m_points += code == -SIGKILL ? 1 : 0;
    }

    const std::string m_dataset = vorn::StringUtil::ToString(faulty.File(L"office.db"));
    std::optional<FolderContent> m_start;
    std::string m_project;
    int m_projects = 0;
    int m_told = 0;
    End m_end;
    long m_changes = 0;
    long m_points = 0;
};

TEST_P(SyncFaults, AreMadeUpForByTheNextSync) {
    using Lasts = FaultyFiles::Lasts;
    FailAll([&](long number) { files.FailAt(number, Lasts::Once); }, 1, "once");
    FailAll([&](long number) { files.FailAt(number, Lasts::ForGood); }, 1, "for good");
    FailAll([&](long number) { files.FillDiskAfter(number * 512); }, 0, "full disk");
    EXPECT_GT(m_points, 0);
    TellTriedPoints("faults", std::string("tolm sync, ") + GetParam().title, m_points);
}

TEST_P(SyncFaults, OfThePowerAreMadeUpForByTheNextSync) {
    StartAnew();
    ASSERT_EQ(CutPower(0, kKept, 0), tolmcli::Done);
    ASSERT_EQ(Found(), m_end);
    const long changes = m_changes;
    ASSERT_GT(changes, 0);
    for (long change = 1; change <= changes && !HasFailure(); change += Stride("TOLM_CRASH_STRIDE", 29))
        CutInEachWay(change);
    CutBehindTheEnd("dropped", 0);
    for (long way = 0; way < TornWays(); ++way)
        CutBehindTheEnd("torn", way);
    TellTriedPoints("power cuts", std::string("tolm sync, ") + GetParam().title, m_points);
}

/// Without this, cuts among the changes of such files would be gone, and nothing would tell.
TEST(CrashTool, MeetsTheChangesPastSqlite) {
    const TempFolder folder;
    const auto native = vorn::StringUtil::ToString(folder.Path());
    ChildProcess process(
        {TOLM_BINARY_DIR "/bin/tolm-crash-tool", native, "0", kKept, "0", "new", native + "/office.db"});
    EXPECT_GT(std::atol(process.ReadLine().c_str()), 0);
    EXPECT_EQ(process.ReadLine(), "fsync open rename write ");
    EXPECT_EQ(process.Wait(), tolmcli::Done);
}

/// The comparison takes a status store that it cannot read for one without changes.
class SyncBehindAFailedRead : public FaultyFolder, public TwoUsers {
protected:
    void ExpectDoneOrToldAt(long call) {
        Expect(On(m_dataset, "edit", {"material", "m1", "--name", "Steel " + std::to_string(call)}));
        m_wire.Before("/api/GetVersion/", [this, call] { files.FailAt(call, FaultyFiles::Lasts::Once); });
        const auto run = On(m_dataset, "sync", {"--attempts", "1"});
        files.Rest();
        EXPECT_FALSE(Contains(run.out, "Up to date")) << run.out;
        EXPECT_EQ(run.code == tolmcli::Done, ChangesOf(m_dataset) == 0) << run.out << run.err;
        Expect(On(m_dataset, "sync", {}));
        EXPECT_EQ(ChangesOf(m_dataset), 0U);
    }
    const std::string m_dataset = vorn::StringUtil::ToString(faulty.File(L"office.db"));
};

TEST_F(SyncBehindAFailedRead, NeverSaysThatThereIsNothingToDo) {
    Make(m_dataset, m_wire.Address(), "tower", "anna");
    Expect(On(m_dataset, "sync", {}));
    for (long call = 1; call <= 8 && !HasFailure(); ++call)
        ExpectDoneOrToldAt(call);
}

TEST_F(SyncBehindAFailedRead, PullsNothingOverTheChanges) {
    Make(m_dataset, m_wire.Address(), "tower", "anna");
    for (long call = 1; call <= 8 && !HasFailure(); ++call) {
        Expect(On(m_dataset, "sync", {}));
        m_service.Apply("tower", kRenameBrass);
        ExpectDoneOrToldAt(call);
    }
}

const Words kEdit{"edit", "material", "m1", "--name", "Black steel"};
const Words kAdd{"add", "material", "--kind", "plumbing-pipe", "--name", "Zinc"};
const Words kDelete{"delete", "size", "s2"};

INSTANTIATE_TEST_SUITE_P(
    Each, SyncFaults,
    testing::Values(SyncCase{"Pull", {}, {SyncFaults::kRenameBrass, kRemoveBrass}},
                    SyncCase{"Push", {kEdit, kAdd, kDelete}, {}},
                    SyncCase{"Merge", {kEdit, kAdd}, {SyncFaults::kRenameSteel, kRemoveBrass}},
                    SyncCase{"MergeThatLeavesNothing", {kEdit}, {SyncFaults::kRenameSteel}},
                    SyncCase{"MergeInTwoRounds", {kEdit, kAdd}, {SyncFaults::kRenameSteel}, SyncFaults::kRenameBrass},
                    SyncCase{"Filling", {kEdit, kAdd}, {}, nullptr, true}),
    [](const auto& sync) { return std::string(sync.param.title); });

} // namespace
} // namespace tolmtest
