#include "Vorn/DebugMessage.h"

#include "Support/DebugWarnings.h"
#include "Support/TempFolder.h"
#include "Vorn/Log.h"
#include "Vorn/Text.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <thread>

namespace tolm {
namespace {

using tolmtest::TakeDebugWarnings;
using tolmtest::TakeDebugWarningsWithFunction;
using tolmtest::Warnings;

class Reporter {
public:
    static int Report() {
        VORN_DEBUG_WARN(L"qb为空");
        return __LINE__ - 1;
    }
    static void ReportFromThread() {
        std::thread([] { VORN_DEBUG_WARN(L"from another thread"); }).join();
    }
};

TEST(DebugWarning, CarriesPositionFunctionAndMessage) {
    std::vector<vorn::DebugWarning> seen;
    const tolmtest::WithoutHandlers restored;
    vorn::DebugMessageMgr::GetDebugMessageMgr()->SetHandler(
        [&](const vorn::DebugWarning& warning) { seen.push_back(warning); });
    const int line = Reporter::Report();
    ASSERT_EQ(seen.size(), 1U);
    EXPECT_EQ(seen[0].file, __FILE__);
    EXPECT_EQ(seen[0].line, line);
    EXPECT_EQ(seen[0].function, "Reporter::Report");
    EXPECT_EQ(seen[0].message, L"qb为空");
}

TEST(DebugWarning, IsNamedAfterClassAndFunction) {
    Reporter::Report();
    Reporter::ReportFromThread();
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              (Warnings{L"Reporter::Report: qb为空", L"Reporter::ReportFromThread: from another thread"}));
}

TEST(DebugWarning, ReachesTheHandlerOnTheReportingThread) {
    std::thread::id handled;
    const tolmtest::WithoutHandlers restored;
    vorn::DebugMessageMgr::GetDebugMessageMgr()->SetHandler([&](const auto&) { handled = std::this_thread::get_id(); });
    std::thread::id reported;
    std::thread thread([&] {
        reported = std::this_thread::get_id();
        VORN_DEBUG_WARN(L"x");
    });
    thread.join();
    EXPECT_EQ(handled, reported);
}

TEST(DebugWarning, WithoutHandlerItGoesToTheLog) {
    std::vector<std::wstring> lines;
    static std::vector<std::wstring>* target = nullptr;
    target = &lines;
    {
        const tolmtest::WithoutHandlers none;
        vorn::LogManager::SetSink([](const std::wstring& line) { target->push_back(line); });
        Reporter::Report();
    }
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].find(L"Reporter::Report: qb为空 ("), 0U);
    EXPECT_NE(lines[0].find(L"DebugMessage_Test.cpp:"), std::wstring::npos);
    EXPECT_EQ(TakeDebugWarnings(), Warnings());
}

TEST(DebugWarning, AHandlerThatThrowsDisturbsNobody) {
    const tolmtest::WithoutHandlers restored;
    vorn::DebugMessageMgr::GetDebugMessageMgr()->SetHandler([](const auto&) { throw std::runtime_error("handler"); });
    EXPECT_GT(Reporter::Report(), 0);
}

TEST(DebugWarning, AHandlerMayReplaceItself) {
    int calls = 0;
    const tolmtest::WithoutHandlers restored;
    auto* const manager = vorn::DebugMessageMgr::GetDebugMessageMgr();
    manager->SetHandler([&](const auto&) {
        manager->SetHandler([](const auto&) {});
        ++calls;
    });
    Reporter::Report();
    Reporter::Report();
    EXPECT_EQ(calls, 1);
}

TEST(DebugWarning, MissingTextsCountAsEmpty) {
    vorn::DebugMessageMgr::GetDebugMessageMgr()->ShowDebugWarn(nullptr, 0, nullptr, L"bare");
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L": bare"}));
}

/// A test that is there only where this program runs itself, to see what the listener makes of it.
class Probe : public testing::Test {
public:
    explicit Probe(bool takes) : m_takes(takes) {}
    void TestBody() override {
        Reporter::Report();
        const Warnings taken = m_takes ? TakeDebugWarnings() : Warnings{L"qb为空"};
        EXPECT_EQ(taken, (Warnings{L"qb为空"}));
    }

private:
    bool m_takes;
};

void AddProbe(const char* name, bool takes) {
    const auto make = [takes]() -> testing::Test* { return std::make_unique<Probe>(takes).release(); };
    testing::RegisterTest("Probe", name, nullptr, nullptr, __FILE__, __LINE__, make);
}

constexpr const char* kProbes = "TOLMTEST_PROBES";

[[maybe_unused]] const bool g_probesAdded = [] {
    if (std::getenv(kProbes) == nullptr)
        return false;
    AddProbe("LeavesTheWarning", false);
    AddProbe("TakesTheWarning", true);
    return true;
}();

int RunProbe(const std::string& name, const std::string& output) {
    const std::string self = std::filesystem::read_symlink("/proc/self/exe").string();
    const std::string command = "env -u GTEST_TOTAL_SHARDS -u GTEST_SHARD_INDEX " + std::string(kProbes) + "=1 '" +
                                self + "' --gtest_filter=Probe." + name;
    return std::system((command + " > '" + output + "' 2>&1").c_str());
}

std::string ReadText(const std::string& path) {
    std::ifstream in(path);
    return {std::istreambuf_iterator<char>(in), {}};
}

TEST(DebugWarning, OneThatNobodyTakesFailsItsTest) {
    const tolmtest::TempFolder folder;
    const std::string output = vorn::StringUtil::ToString(folder.File(L"output.txt"));
    EXPECT_NE(RunProbe("LeavesTheWarning", output), 0);
    EXPECT_THAT(ReadText(output), testing::HasSubstr("unexpected debug warning: Reporter::Report: qb为空"));
    EXPECT_EQ(RunProbe("TakesTheWarning", output), 0);
    EXPECT_THAT(ReadText(output), testing::HasSubstr("[  PASSED  ] 1 test"));
}

} // namespace
} // namespace tolm
