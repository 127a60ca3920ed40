#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tolmtest {

/// Every test listens to debug warnings; one that meets a warning it did not expect fails. A test expects warnings
/// by taking them: `EXPECT_EQ(TakeDebugWarnings(), (Warnings{L"qb为空"}))`.
using Warnings = std::vector<std::wstring>;

/// The messages since the start of the test or the last call, in order; they count as expected now.
Warnings TakeDebugWarnings();

/// The same with the reporting function before the message, as L"MepQbaseUtil::WriteMaterial: newMaterial为空".
Warnings TakeDebugWarningsWithFunction();

/// One message to the user.
struct Notification {
    int type = 0;
    std::wstring text;
    friend bool operator==(const Notification&, const Notification&) = default;
};
void PrintTo(const Notification& notification, std::ostream* out);

/// The notifications since the start of the test or the last call. Those nobody takes fail nothing.
std::vector<Notification> TakeNotifications();

/// The log lines since the start of the test or the last call.
std::vector<std::wstring> TakeLogLines();

/// For the time of its life no handler and no log sink is set, as in a host that sets none.
class WithoutHandlers {
public:
    WithoutHandlers();
    ~WithoutHandlers();
    WithoutHandlers(const WithoutHandlers&) = delete;
    WithoutHandlers& operator=(const WithoutHandlers&) = delete;
};

} // namespace tolmtest
