#include "Support/Canary.h"
#include "Support/ChildProcess.h"
#include "Support/DebugWarnings.h"
#include "Support/TempFolder.h"
#include "Vorn/DebugMessage.h"
#include "Vorn/Log.h"
#include "Vorn/Notification.h"
#include "Vorn/Text.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>

namespace tolmtest {
namespace {

/// The ways in which a text may get out.
void ToLog(const std::wstring& text) {
    vorn::LogManager::CreateOrGetForWrite(L"", L"", false)->DumpLine(L"a line with " + text, false, false);
}
void ToLogFile(const std::wstring& text) {
    const TempFolder folder;
    vorn::LogManager::CreateOrGetForWrite(folder.Path(), L"own", true)->DumpLine(L"a line with " + text, true, false);
}
void ToWarning(const std::wstring& text) {
    VORN_DEBUG_WARN(L"a warning with " + text);
    TakeDebugWarnings();
}
void ToNotification(const std::wstring& text) {
    vorn::NotificationUtils::PostNotification(vorn::NotificationTypes::Failure, L"a message with " + text);
}
void ToDetail(const std::wstring& text) {
    vorn::NotificationUtils::PostNotification(vorn::NotificationTypes::Failure, L"a message", {text});
}
void Write(const TempFolder& folder, const std::wstring& name, const std::string& bytes) {
    std::ofstream(vorn::StringUtil::ToString(folder.File(name)), std::ios::binary) << bytes;
}
void ToFile(const std::wstring& text) {
    const TempFolder folder;
    Write(folder, L"file", "a file with " + vorn::StringUtil::ToString(text));
}
void ToDeepFile(const std::wstring& text) {
    const TempFolder folder;
    std::filesystem::create_directories(vorn::StringUtil::ToString(folder.File(L"a/b")));
    Write(folder, L"a/b/file", std::string(100'000, '\0') + vorn::StringUtil::ToString(text) + std::string(9, '\xff'));
}
void ToWideFile(const std::wstring& text) {
    const TempFolder folder;
    Write(folder, L"file", {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t)});
}
void ToFileName(const std::wstring& text) {
    const TempFolder folder;
    Write(folder, text, "");
}

const std::map<std::string, std::function<void(const std::wstring&)>> kWays{
    {"log", &ToLog},           {"log file", &ToLogFile}, {"warning", &ToWarning},    {"notification", &ToNotification},
    {"detail", &ToDetail},     {"file", &ToFile},        {"deep file", &ToDeepFile}, {"wide file", &ToWideFile},
    {"file name", &ToFileName}};

constexpr const char* kLeak = "TOLM_TEST_LEAK";

/// Lets the secret out where it is told to, and a harmless text everywhere else.
TEST(Canary, IsSilentWhereNothingLeaks) {
    const char* const leak = std::getenv(kLeak);
    for (const auto& [name, way] : kWays)
        way(leak != nullptr && name == leak ? L"secret-token" : L"harmless-text");
}

/// Runs the test above in a process of its own.
int ExitCodeWithLeak(const std::string& way) {
    setenv(kLeak, way.c_str(), 1);
    ChildProcess process(
        {std::filesystem::read_symlink("/proc/self/exe").string(), "--gtest_filter=Canary.IsSilentWhereNothingLeaks"});
    unsetenv(kLeak);
    while (!process.ReadLine().empty()) {
    }
    const int code = process.Wait();
    TakeLeaks(); // it says where it leaks, and the name of a file is such a place
    return code;
}

TEST(Canary, FailsATestThatLeaksInAnyWay) {
    EXPECT_EQ(ExitCodeWithLeak("no way"), 0);
    for (const auto& [name, way] : kWays)
        EXPECT_EQ(ExitCodeWithLeak(name), 1) << name;
}

TEST(Canary, KnowsASecretInEveryWidth) {
    EXPECT_TRUE(HoldsSecret(std::string_view("x secret-token x")));
    EXPECT_TRUE(HoldsSecret(std::wstring_view(L"x secret-token x")));
    std::string two;
    for (const char c : std::string("secret-token"))
        two.append(1, c).append(1, '\0');
    EXPECT_TRUE(HoldsSecret(two));
    EXPECT_FALSE(HoldsSecret(std::string_view("x secret token x")));
}

TEST(Canary, WatchesForWhatATestAdds) {
    EXPECT_FALSE(HoldsSecret(std::string_view("a word that only this test knows")));
    WatchForSecret("word that only this");
    EXPECT_TRUE(HoldsSecret(std::string_view("a word that only this test knows")));
    WatchForSecret("");
    EXPECT_FALSE(HoldsSecret(std::string_view("any text")));
}

TEST(Canary, WatchesForEverySecretHoweverManyFollow) {
    const auto secret = [](int number) { return "secret " + std::to_string(number) + " of a thousand"; };
    for (int number = 0; number < 1000; ++number)
        WatchForSecret(secret(number));
    for (int number = 0; number < 1000; ++number)
        EXPECT_TRUE(HoldsSecret("x " + secret(number) + " x")) << number;
    EXPECT_FALSE(HoldsSecret(std::string_view("secret 1000 of a thousand")));
    EXPECT_TRUE(HoldsSecret(std::string_view("x secret-token x")));
}

TEST(Canary, KnowsABriefSecret) {
    EXPECT_FALSE(HoldsSecret(std::string_view("a q=?z b")));
    WatchForSecret("q=?z");
    EXPECT_TRUE(HoldsSecret(std::string_view("a q=?z b")));
    EXPECT_TRUE(HoldsSecret(std::string_view("q=?z")));
}

/// What a child process says, where it is read and where nobody reads it.
std::vector<std::string> LeaksOf(const std::string& script, int lines) {
    {
        ChildProcess process({"/bin/sh", "-c", script});
        for (int line = 0; line < lines; ++line)
            process.ReadLine();
        process.Wait();
    }
    return TakeLeaks();
}

TEST(Canary, SearchesAllThatAChildProcessSays) {
    using Leaks = std::vector<std::string>;
    EXPECT_EQ(LeaksOf("echo harmless; echo harmless >&2", 1), Leaks{});
    EXPECT_EQ(LeaksOf("echo a line; echo my secret-token", 2), Leaks{"the output of /bin/sh"});
    EXPECT_EQ(LeaksOf("echo a line; echo my secret-token", 0), Leaks{"the output of /bin/sh"});
    EXPECT_EQ(LeaksOf("echo my secret-token >&2", 0), Leaks{"what /bin/sh says of errors"});
    EXPECT_EQ(LeaksOf("kill -9 $$", 0), Leaks{});
}

} // namespace
} // namespace tolmtest
