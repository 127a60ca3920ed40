#include "StoreSupport/CloudCallTable.h"
#include "StoreSupport/CloudTestSupport.h"
#include "Support/ChildProcess.h"
#include "Support/ClosedPort.h"

#include <cpprest/json.h>

#include <filesystem>
#include <memory>
#include <unistd.h>

/// Calls to a service that takes the connection and never says a word. Where the time-out is the HTTP library's own,
/// which no host can set, a call takes half a minute: each is made by a process of its own, all at the same time.
namespace tolmtest {
namespace {

/// A call that has not ended by then never will: the process is killed, and its test has failed.
constexpr unsigned kLongestCall = 150;

class SilentService : public testing::TestWithParam<CloudCallRow> {};

/// In a process of its own, see below.
TEST_P(SilentService, DISABLED_IsGivenUp) {
    alarm(kLongestCall);
    ScriptedServer server;
    server.On("/", ScriptedAnswer::Silence());
    const TestSession session({server.Address(), L"P1", L"W1", 1'000'000});
    const auto outcome = GetParam().run();
    EXPECT_FALSE(outcome.done);
    EXPECT_EQ(outcome.out, GetParam().outOfAFailure);
    EXPECT_LE(server.Requests().size(), 1U) << "nothing is sent twice";
    TakeDebugWarnings();
}

INSTANTIATE_TEST_SUITE_P(Each, SilentService, testing::ValuesIn(CloudCallTable()),
                         [](const auto& call) { return call.param.name; });

/// More than the system's buffers take.
TEST(DeafService, DISABLED_IsGivenUp) {
    alarm(kLongestCall);
    ClosedPort server;
    server.TurnDeaf();
    const TestSession session(server.Address());
    auto patch = web::json::value::object();
    patch["createList"] = web::json::value::string(std::string(std::size_t{64} << 20, 'x'));
    int version = 5;
    EXPECT_FALSE(Client().SendPatchDataEvent(L"P1", patch, version));
    EXPECT_EQ(version, 5);
    EXPECT_EQ(TakeNotifications().size(), 1U);
}

/// The process ends right behind its call, while threads of the HTTP library are still letting go of what they had for
/// it: to look for leaks there would find that.
std::unique_ptr<ChildProcess> RunOf(const std::string& test) {
    return std::make_unique<ChildProcess>(std::vector<std::string>{
        "/usr/bin/env", "ASAN_OPTIONS=detect_leaks=0", std::filesystem::read_symlink("/proc/self/exe").string(),
        "--gtest_filter=" + test, "--gtest_also_run_disabled_tests"});
}

/// Exit code of a test that ran; -1 where there is no test of that name.
int EndOf(ChildProcess& process) {
    bool ran = false;
    for (std::string line = process.ReadLine(); !line.empty(); line = process.ReadLine())
        ran = ran || line.starts_with("[ RUN      ]");
    const int code = process.Wait();
    return ran ? code : -1;
}

TEST(SilentServices, AreGivenUpByEachCall) {
    std::map<std::string, std::unique_ptr<ChildProcess>> runs;
    for (const CloudCallRow& call : CloudCallTable())
        runs[call.name] = RunOf(std::string("Each/SilentService.DISABLED_IsGivenUp/") + call.name);
    runs["a deaf service"] = RunOf("DeafService.DISABLED_IsGivenUp");
    for (const auto& [name, run] : runs)
        EXPECT_EQ(EndOf(*run), 0) << name;
}

} // namespace
} // namespace tolmtest
