#include "Support/DebugWarnings.h"

#include "Support/Canary.h"
#include "Vorn/DebugMessage.h"
#include "Vorn/Log.h"
#include "Vorn/Notification.h"
#include "Vorn/Text.h"

#include <gmock/gmock.h>

#include <mutex>
#include <utility>

namespace tolmtest {
namespace {

std::mutex g_mutex;
std::vector<vorn::DebugWarning> g_warnings;
std::vector<Notification> g_notifications;
std::vector<std::wstring> g_logLines;

void ForgetAll() {
    const std::lock_guard lock(g_mutex);
    g_warnings.clear();
    g_notifications.clear();
    g_logLines.clear();
}

std::vector<vorn::DebugWarning> TakeWarnings() {
    const std::lock_guard lock(g_mutex);
    return std::exchange(g_warnings, {});
}

void SetHandlers() {
    vorn::DebugMessageMgr::GetDebugMessageMgr()->SetHandler([](const vorn::DebugWarning& warning) {
        SearchForSecrets("a debug warning of " + warning.function, warning.message);
        const std::lock_guard lock(g_mutex);
        g_warnings.push_back(warning);
    });
    vorn::NotificationUtils::SetHandler(
        [](vorn::NotificationTypes type, const std::wstring& text, const auto& details) {
            SearchForSecrets("a notification", text);
            for (const std::wstring& detail : details)
                SearchForSecrets("a detail of a notification", detail);
            const std::lock_guard lock(g_mutex);
            g_notifications.push_back({static_cast<int>(type), text});
        });
    vorn::LogManager::SetSink([](const std::wstring& line) {
        SearchForSecrets("a log line", line);
        const std::lock_guard lock(g_mutex);
        g_logLines.push_back(line);
    });
}

void FailOnLeaks() {
    for (const std::string& where : TakeLeaks())
        ADD_FAILURE() << "a secret stands in " << where;
}

class Listener : public testing::EmptyTestEventListener {
    void OnTestProgramStart(const testing::UnitTest&) override { SetHandlers(); }

    void OnTestStart(const testing::TestInfo&) override { ForgetAll(); }

    void OnTestEnd(const testing::TestInfo&) override {
        for (const auto& warning : TakeWarnings()) {
            ADD_FAILURE_AT(warning.file.c_str(), warning.line) << "unexpected debug warning: " << warning.function
                                                               << ": " << vorn::StringUtil::ToString(warning.message);
        }
        FailOnLeaks();
    }

    /// What a suite holds goes after its last test.
    void OnTestSuiteEnd(const testing::TestSuite&) override { FailOnLeaks(); }
};

} // namespace

Warnings TakeDebugWarnings() {
    Warnings messages;
    for (const auto& warning : TakeWarnings())
        messages.push_back(warning.message);
    return messages;
}

Warnings TakeDebugWarningsWithFunction() {
    Warnings messages;
    for (const auto& warning : TakeWarnings())
        messages.push_back(vorn::StringUtil::ToWString(warning.function) + L": " + warning.message);
    return messages;
}

std::vector<Notification> TakeNotifications() {
    const std::lock_guard lock(g_mutex);
    return std::exchange(g_notifications, {});
}

std::vector<std::wstring> TakeLogLines() {
    const std::lock_guard lock(g_mutex);
    return std::exchange(g_logLines, {});
}

WithoutHandlers::WithoutHandlers() {
    vorn::DebugMessageMgr::GetDebugMessageMgr()->SetHandler(nullptr);
    vorn::NotificationUtils::SetHandler(nullptr);
    vorn::LogManager::SetSink(nullptr);
}

WithoutHandlers::~WithoutHandlers() {
    SetHandlers();
}

void PrintTo(const Notification& notification, std::ostream* out) {
    *out << notification.type << " \"" << vorn::StringUtil::ToString(notification.text) << '"';
}

} // namespace tolmtest

int main(int argc, char** argv) {
    testing::InitGoogleMock(&argc, argv);
    testing::UnitTest::GetInstance()->listeners().Append(new tolmtest::Listener);
    return RUN_ALL_TESTS();
}
