#include "Vorn/Notification.h"

#include "Support/DebugWarnings.h"
#include "Vorn/Log.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using tolmtest::Notification;
using vorn::NotificationTypes;
using vorn::NotificationUtils;

TEST(Notification, TypesHaveTheirNumbers) {
    EXPECT_EQ(static_cast<int>(NotificationTypes::Success), 0);
    EXPECT_EQ(static_cast<int>(NotificationTypes::Failure), 2);
}

TEST(Notification, ReachesTheHandlerWithTypeTextAndDetails) {
    std::vector<std::wstring> seen;
    const tolmtest::WithoutHandlers restored;
    NotificationUtils::SetHandler([&](NotificationTypes type, const std::wstring& text, const auto& details) {
        seen = {std::to_wstring(static_cast<int>(type)), text};
        seen.insert(seen.end(), details.begin(), details.end());
    });
    NotificationUtils::PostNotification(NotificationTypes::Failure, L"上传失败", {L"a", L"b"});
    EXPECT_EQ(seen, (std::vector<std::wstring>{L"2", L"上传失败", L"a", L"b"}));
}

TEST(Notification, TestsReceiveThemInOrder) {
    NotificationUtils::PostNotification(NotificationTypes::Success, L"one");
    NotificationUtils::PostNotification(NotificationTypes::Failure, L"two");
    EXPECT_EQ(tolmtest::TakeNotifications(), (std::vector<Notification>{{0, L"one"}, {2, L"two"}}));
    EXPECT_EQ(tolmtest::TakeNotifications(), std::vector<Notification>());
}

TEST(Notification, WithoutHandlerItGoesToTheLogWithItsDetails) {
    static std::vector<std::wstring> lines;
    lines.clear();
    {
        const tolmtest::WithoutHandlers none;
        vorn::LogManager::SetSink([](const std::wstring& line) { lines.push_back(line); });
        NotificationUtils::PostNotification(NotificationTypes::Success, L"done", {L"first"});
    }
    EXPECT_EQ(lines, (std::vector<std::wstring>{L"done", L"    first"}));
}

TEST(Notification, AHandlerThatThrowsDisturbsNobody) {
    const tolmtest::WithoutHandlers restored;
    NotificationUtils::SetHandler([](auto, const auto&, const auto&) { throw std::runtime_error("handler"); });
    EXPECT_NO_THROW(NotificationUtils::PostNotification(NotificationTypes::Success, L"x"));
}

} // namespace
