#include "StoreSupport/MergeFixture.h"
#include "Support/FailingDisk.h"
#include "Vorn/Text.h"

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <spawn.h>
#include <sys/wait.h>

extern char** environ;

namespace tolmtest {
namespace {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

/// A merge in a process of its own, which dies at a given write, sync or deletion of its last part.
class MergeCrash : public MergeFixture {
protected:
    /// A local edit that loses against the cloud, and one beside it that stays unless `allLose`.
    void Prepare(bool allLose) {
        Synced({L"a", L"b"});
        Edits(L"a", L"mine");
        if (!allLose)
            Edits(L"b", L"kept");
        CloudEdits(L"a", L"theirs");
        fs::copy(Native(path), Native(before));
        fs::copy(Native(statusPath), Native(beforeStatus));
    }

    /// True when the merge came to its end before the operation that was to be its last one.
    bool RunsThroughBefore(int operation) {
        setenv("TOLM_TEST_CRASH_DATASET", Native(path).c_str(), 1);
        setenv("TOLM_TEST_CRASH_SERVER", vorn::StringUtil::ToString(server.Address()).c_str(), 1);
        setenv("TOLM_TEST_CRASH_AT", std::to_string(operation).c_str(), 1);
        char program[] = "/proc/self/exe";
        char filter[] = "--gtest_filter=MergeVictim.DISABLED_DiesWhileItMerges";
        char disabled[] = "--gtest_also_run_disabled_tests";
        char brief[] = "--gtest_brief=1";
        char* arguments[] = {program, filter, disabled, brief, nullptr};
        pid_t child = 0;
        EXPECT_EQ(posix_spawn(&child, program, nullptr, nullptr, arguments, environ), 0);
        int status = 0;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFEXITED(status) ? WEXITSTATUS(status) == 0 : WTERMSIG(status) == SIGKILL);
        return WIFEXITED(status);
    }

    /// Puts both files back as they were before the merge.
    void Restore() {
        for (const wstring& at : {path, statusPath, tempPath, tempStatusPath})
            ASSERT_TRUE(CQbase::removeStore(at));
        fs::copy(Native(before), Native(path));
        fs::copy(Native(beforeStatus), Native(statusPath));
    }

    static std::string Native(const wstring& at) { return vorn::FileSystem::ToNative(at); }
    void ExpectIntegrity() {
        EXPECT_EQ(SqlValue(path, "PRAGMA integrity_check"), "ok");
        if (Exists(statusPath)) {
            EXPECT_EQ(SqlValue(statusPath, "PRAGMA integrity_check"), "ok");
        }
    }

    const wstring before = folder.File(L"before.db");
    const wstring beforeStatus = folder.File(L"beforeStatus.db");
};

/// Dies in the process that the tests below start.
TEST(MergeVictim, DISABLED_DiesWhileItMerges) {
    const char* const dataset = std::getenv("TOLM_TEST_CRASH_DATASET");
    ASSERT_NE(dataset, nullptr);
    const TestSession session(vorn::StringUtil::ToWString(std::getenv("TOLM_TEST_CRASH_SERVER")));
    const wstring path = vorn::StringUtil::ToWString(dataset);
    FailingDisk disk;
    ProgressNotes progress;
    progress.onReport = [&](double percentage) {
        if (percentage == 65)
            disk.DieAfter(std::atoi(std::getenv("TOLM_TEST_CRASH_AT")));
    };
    bool pending = true;
    EXPECT_TRUE(tolm::MepQbaseUtil::GetInstance()->MergeCloudAndLocalDataset(
        L"P1", &progress, 8, 7, path, tolm::DataSetFilePath::TOLMDDQFilePath, L"", L"", &pending));
}

TEST_F(MergeCrash, LeavesBothFilesAsTheyWereOrBothNewAndTheNextMergeGoesOn) {
    Prepare(false);
    bool wentThrough = false;
    int oldStates = 0;
    int newStates = 0;
    for (int operation = 1; !wentThrough; operation += 3) {
        wentThrough = RunsThroughBefore(operation);
        const Lines status = StatusRecords();
        const bool isNew = Materials() == Lines{"b kept", "a theirs"};
        ++(isNew ? newStates : oldStates);
        EXPECT_EQ(Materials(), (isNew ? Lines{"b kept", "a theirs"} : Lines{"a mine", "b kept"})) << operation;
        EXPECT_EQ(status, (isNew ? Lines{"MTS b 2 1 2"} : Lines{"MTS a 2 1 2", "MTS b 2 1 2"})) << operation;
        ExpectIntegrity();
        EXPECT_TRUE(MergeFixture::Merge()) << operation;
        EXPECT_EQ(Materials(), (Lines{"b kept", "a theirs"}));
        EXPECT_FALSE(Exists(tempPath) || Exists(tempStatusPath));
        Restore();
    }
    EXPECT_GT(oldStates, 3);
    EXPECT_GT(newStates, 1);
}

TEST_F(MergeCrash, WithoutALocalChangeLeftTheStatusStoreIsEmptyOrGoneOnceTheDataIsNew) {
    Prepare(true);
    bool wentThrough = false;
    for (int operation = 2; !wentThrough; operation += 3) {
        wentThrough = RunsThroughBefore(operation);
        const bool isNew = Materials() == Lines{"b b", "a theirs"};
        EXPECT_EQ(Materials(), (isNew ? Lines{"b b", "a theirs"} : Lines{"a mine", "b b"})) << operation;
        if (!isNew) {
            EXPECT_EQ(StatusRecords(), Lines{"MTS a 2 1 2"}) << operation;
        } else if (Exists(statusPath)) {
            EXPECT_EQ(StatusRecords(), Lines{}) << operation;
        }
        EXPECT_TRUE(isNew || !wentThrough);
        ExpectIntegrity();
        Restore();
    }
}

} // namespace
} // namespace tolmtest
