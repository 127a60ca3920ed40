#include "StoreFixture.h"

#include <chrono>
#include <csignal>
#include <random>
#include <thread>

namespace qbasetest {
namespace {

/// A child process changes two stores together, again and again, until it is killed at some moment. Whenever that
/// was, both stores tell the same.
class StoreCrash : public StoreTest {
protected:
    /// Gives both files one record more, in one commit.
    void AddToBoth(long number) {
        CQbase qb;
        CQbase beside;
        if (!Open(qb) || !qb.lockForUpdate() || !beside.openBeside(qb, m_definition, m_second, true))
            _exit(1);
        const std::wstring id = std::to_wstring(number);
        const std::string list(16 * 200, 'p');
        for (CQbase* each : {&qb, &beside}) {
            if (!each->createRec("AAA", id) || !each->setBinaryArray(kPipes, list.data(), 200, 0) || !each->saveRec())
                _exit(1);
        }
        if (!beside.closeDatabase() || !qb.closeDatabase())
            _exit(1);
    }

    void KillAWriterAfter(std::chrono::microseconds time, long firstNumber) {
        const Turn begun;
        const pid_t child = fork();
        if (child == 0) {
            begun.Give();
            for (long number = firstNumber;; ++number)
                AddToBoth(number);
        }
        begun.Await();
        std::this_thread::sleep_for(time); // the moment of the crash, not a wait for anything
        kill(child, SIGKILL);
        int status = 0;
        waitpid(child, &status, 0);
        EXPECT_TRUE(WIFSIGNALED(status)) << "the writer met no failure of its own";
    }

    std::string Content(const std::wstring& path) {
        CQbase qb;
        if (!qb.openDatabase(m_definition, path, false) || !qb.lockForRead())
            return "none";
        std::string content;
        for (const auto& id : Walk(qb, "AAA"))
            content += Native(id) + " ";
        return content;
    }
};

TEST_F(StoreCrash, AKillAtAnyMomentLeavesBothFilesInStep) {
    AddToBoth(0);
    const unsigned seed = std::random_device{}();
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    std::uniform_int_distribution<int> moment(0, 40000);
    for (long round = 1; round <= 25; ++round) {
        KillAWriterAfter(std::chrono::microseconds(moment(random)), round * 100000);
        const std::string first = round % 2 == 0 ? Content(m_path) : "";
        const std::string second = Content(m_second);
        EXPECT_EQ(Content(m_path), second) << "round " << round;
        if (round % 2 == 0) {
            EXPECT_EQ(first, second);
        }
        EXPECT_EQ(second.substr(0, 2), "0 ");
        EXPECT_EQ(Sql(m_path, "PRAGMA integrity_check"), "ok");
        EXPECT_EQ(Sql(m_second, "PRAGMA integrity_check"), "ok");
    }
}

TEST_F(StoreCrash, AKillWhileFilesComeIntoBeingLeavesNoneOrWholeOnes) {
    const unsigned seed = std::random_device{}();
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    std::uniform_int_distribution<int> moment(0, 25000);
    for (int round = 0; round < 25; ++round) {
        ASSERT_TRUE(CQbase::removeStore(m_path) && CQbase::removeStore(m_second));
        KillAWriterAfter(std::chrono::microseconds(moment(random)), 1);
        const std::string first = Content(m_path);
        const std::string second = Content(m_second);
        EXPECT_TRUE(first == second || (second == "none" && first == "")) << first << "|" << second;
        AddToBoth(-1);
        EXPECT_EQ(Content(m_path), Content(m_second));
    }
}

} // namespace
} // namespace qbasetest
