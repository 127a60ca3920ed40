#include "Host/Session.h"
#include "Support/DebugWarnings.h"
#include "Support/TempFolder.h"
#include "Vorn/Clock.h"
#include "Vorn/DebugMessage.h"
#include "Vorn/Guid.h"
#include "Vorn/Log.h"
#include "Vorn/Notification.h"
#include "Vorn/Text.h"

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace {

using tolmtest::WithoutHandlers;

constexpr int kThreads = 3;
constexpr int kRounds = 200;

/// Runs the work on several threads again and again, and `meanwhile` on this one until they are done.
void RunAll(const std::function<void(int)>& work, const std::function<void(int)>& meanwhile) {
    std::atomic<int> running = kThreads;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([&] {
            for (int round = 0; round < kRounds; ++round)
                work(round);
            --running;
        });
    }
    for (int round = 0; running > 0; ++round)
        meanwhile(round);
    for (auto& thread : threads)
        thread.join();
}

/// Log files of its own, until it is asked what stands in them.
class LogFiles {
public:
    LogFiles() { vorn::LogManager::SetFolder(m_folder.File(L"one")); }
    ~LogFiles() { vorn::LogManager::SetFolder(L""); }
    LogFiles(const LogFiles&) = delete;
    LogFiles& operator=(const LogFiles&) = delete;

    void MoveTo(const std::wstring& name) const { vorn::LogManager::SetFolder(m_folder.File(name)); }

    /// Lines with this part, in all of the files.
    int CountOf(const std::string& part) const {
        vorn::LogManager::SetFolder(L"");
        int count = 0;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(ToString(m_folder.Path()))) {
            std::ifstream file(entry.path());
            for (std::string line; entry.is_regular_file() && std::getline(file, line);)
                count += line.find(part) != std::string::npos ? 1 : 0;
        }
        return count;
    }

private:
    static std::string ToString(const std::wstring& text) { return vorn::StringUtil::ToString(text); }

    tolmtest::TempFolder m_folder;
};

TEST(Singletons, AWarningReachesTheHandlerThatStandsOrTheLog) {
    const WithoutHandlers none;
    const LogFiles log;
    std::atomic<int> heard = 0;
    auto& manager = *vorn::DebugMessageMgr::GetDebugMessageMgr();
    RunAll([&](int) { VORN_DEBUG_WARN(L"said by a thread"); },
           [&](int round) {
               if (round % 2 == 0)
                   manager.SetHandler([&](const vorn::DebugWarning&) { ++heard; });
               else
                   manager.SetHandler(nullptr);
           });
    EXPECT_EQ(heard + log.CountOf("said by a thread"), kThreads * kRounds);
}

TEST(Singletons, ANotificationReachesTheHandlerThatStandsOrTheLog) {
    const WithoutHandlers none;
    const LogFiles log;
    std::atomic<int> heard = 0;
    RunAll(
        [&](int) { vorn::NotificationUtils::PostNotification(vorn::NotificationTypes::Success, L"told by a thread"); },
        [&](int round) {
            if (round % 2 == 0)
                vorn::NotificationUtils::SetHandler([&](auto, const auto&, const auto&) { ++heard; });
            else
                vorn::NotificationUtils::SetHandler(nullptr);
        });
    EXPECT_EQ(heard + log.CountOf("told by a thread"), kThreads * kRounds);
}

TEST(Singletons, TheLogMovesToAnotherFolderWhileItIsWrittenAndLosesNoLine) {
    const WithoutHandlers none;
    const LogFiles log;
    RunAll(
        [](int) { vorn::LogManager::CreateOrGetForWrite(L"", L"", false)->DumpLine(L"a thread's line", false, false); },
        [&](int round) {
            log.MoveTo(round % 2 == 0 ? L"one" : L"two");
            vorn::LogManager::SetLevel(round % 3 == 0 ? vorn::LogManager::Level::Debug : vorn::LogManager::Level::Info);
        });
    vorn::LogManager::SetLevel(vorn::LogManager::Level::Info);
    EXPECT_EQ(log.CountOf("a thread's line"), kThreads * kRounds);
}

TEST(Singletons, UserTokenAndNamesAreReadWhileTheyAreSet) {
    RunAll(
        [](int) {
            const auto user = tolm::TolmUserSessionUtils::GetUserId();
            EXPECT_TRUE(user.empty() || user == L"anna" || user == L"ben") << "never half of one";
            tolm::TolmUserSessionUtils::GetUserToken();
            tolm::TolmKfeConfigUtil::GetCurrentEnv();
            tolm::TolmVersionUtils::GetProductVersion();
            tolm::TolmFilePathSettings::GetCurrentDatasetFilePath();
        },
        [](int round) {
            tolm::TolmUserSessionUtils::SetUser(round % 2 == 0 ? L"anna" : L"ben", L"token");
            tolm::TolmKfeConfigUtil::SetCurrentEnv(L"production");
            tolm::TolmFilePathSettings::SetCurrentDatasetFilePath(L"set.db");
        });
    tolm::TolmUserSessionUtils::SetUser(L"", L"");
    tolm::TolmFilePathSettings::SetCurrentDatasetFilePath(L"");
}

TEST(Singletons, IdsAndTimesComeToAllThreads) {
    std::atomic<int> equal = 0;
    RunAll(
        [&](int) {
            const auto text = [] { return vorn::GuidUtils::ToString(vorn::GuidUtils::Generate(), false, false); };
            equal += text() == text() ? 1 : 0;
            vorn::Clock::Format(vorn::Clock::LocalNow());
        },
        [](int round) {
            vorn::Clock::SetSource(round % 2 == 0 ? nullptr : +[] { return std::chrono::system_clock::now(); });
        });
    vorn::Clock::SetSource(nullptr);
    EXPECT_EQ(equal, 0);
}

} // namespace
