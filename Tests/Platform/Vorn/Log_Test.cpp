#include "Vorn/Log.h"

#include "Support/DebugWarnings.h"
#include "Support/TempFolder.h"
#include "Vorn/Clock.h"
#include "Vorn/Files.h"
#include "Vorn/Text.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <thread>

namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;
using testing::SizeIs;
using vorn::LogManager;

LogManager* DefaultLog() {
    return LogManager::CreateOrGetForWrite(L"", L"", false);
}

std::vector<std::string> LinesOf(const std::wstring& path) {
    std::ifstream in(vorn::StringUtil::ToString(path));
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    return lines;
}

/// The default log as a host finds it: no sink, no folder, nothing kept back.
class Log : public testing::Test {
protected:
    Log() { LetGo(); }
    ~Log() override {
        LogManager::SetLevel(LogManager::Level::Info);
        LetGo();
    }

    static void LetGo() {
        const tolmtest::TempFolder elsewhere;
        LogManager::SetFolder(elsewhere.Path());
        LogManager::SetFolder(L"");
    }

    std::wstring DefaultFile() const { return m_folder.File(L"TolmDataSet.log"); }

    tolmtest::TempFolder m_folder;
    tolmtest::WithoutHandlers m_withoutHandlers;
};

TEST_F(Log, TheDefaultLogIsOneAndTheSame) {
    EXPECT_NE(DefaultLog(), nullptr);
    EXPECT_EQ(DefaultLog(), DefaultLog());
}

TEST_F(Log, LinesBeforeAFolderIsSetAreKeptBackAndComeFirst) {
    DefaultLog()->DumpLine(L"early", true, false);
    EXPECT_TRUE(std::filesystem::is_empty(vorn::StringUtil::ToString(m_folder.Path())));
    LogManager::SetFolder(m_folder.Path());
    DefaultLog()->DumpLine(L"late", true, false);
    EXPECT_THAT(LinesOf(DefaultFile()), ElementsAre(EndsWith("[info] early"), EndsWith("[info] late")));
}

TEST_F(Log, OfTheLinesKeptBackOnlyTheLastThousandStay) {
    for (int i = 0; i < 1500; ++i)
        DefaultLog()->DumpLine(L"line " + std::to_wstring(i), false, false);
    LogManager::SetFolder(m_folder.Path());
    const auto lines = LinesOf(DefaultFile());
    ASSERT_THAT(lines, SizeIs(1000));
    EXPECT_THAT(lines.front(), EndsWith("line 500"));
    EXPECT_THAT(lines.back(), EndsWith("line 1499"));
}

TEST_F(Log, TheFolderIsMadeIfNeedBeAndAnOldFileGoesOn) {
    const std::wstring folder = m_folder.File(L"a/b");
    LogManager::SetFolder(folder);
    DefaultLog()->DumpLine(L"one", true, false);
    LogManager::SetFolder(L"");
    LogManager::SetFolder(folder);
    DefaultLog()->DumpLine(L"two", true, false);
    EXPECT_THAT(LinesOf(folder + L"/TolmDataSet.log"), ElementsAre(EndsWith("one"), EndsWith("two")));
}

TEST_F(Log, AFolderThatCannotBeMadeKeepsLinesBack) {
    const std::wstring blocked = m_folder.File(L"file");
    ASSERT_TRUE(vorn::FileUtility::SaveInBinaryMode(blocked, "x", 1, false));
    DefaultLog()->DumpLine(L"kept", true, false);
    LogManager::SetFolder(blocked + L"/below");
    LogManager::SetFolder(m_folder.Path());
    EXPECT_THAT(LinesOf(DefaultFile()), ElementsAre(EndsWith("kept")));
}

TEST_F(Log, LinesBelowTheLevelAreDropped) {
    LogManager::SetFolder(m_folder.Path());
    const auto write = [](LogManager::Level level, const wchar_t* text) {
        DefaultLog()->DumpLine(level, text, true, false);
    };
    write(LogManager::Level::Debug, L"debug before");
    LogManager::SetLevel(LogManager::Level::Debug);
    write(LogManager::Level::Debug, L"debug");
    LogManager::SetLevel(LogManager::Level::Warning);
    DefaultLog()->DumpLine(L"plain", true, false);
    write(LogManager::Level::Warning, L"warning");
    write(LogManager::Level::Error, L"error");
    LogManager::SetLevel(LogManager::Level::Off);
    write(LogManager::Level::Error, L"after");
    EXPECT_THAT(LinesOf(DefaultFile()),
                ElementsAre(EndsWith("[debug] debug"), EndsWith("[warning] warning"), EndsWith("[error] error")));
}

TEST_F(Log, TheSinkReceivesTheDefaultLogInPlaceOfTheFile) {
    static std::vector<std::wstring> received;
    received.clear();
    LogManager::SetFolder(m_folder.Path());
    LogManager::SetSink([](const std::wstring& line) { received.push_back(line); });
    DefaultLog()->DumpLine(L"to the sink\nas it is", true, false);
    LogManager::CreateOrGetForWrite(m_folder.Path(), L"other", false)->DumpLine(L"to its file", true, false);
    LogManager::SetSink(nullptr);
    EXPECT_THAT(received, ElementsAre(L"to the sink\nas it is"));
    EXPECT_THAT(LinesOf(DefaultFile()), IsEmpty());
    EXPECT_THAT(LinesOf(m_folder.File(L"other.log")), ElementsAre(EndsWith("to its file")));
}

TEST_F(Log, ALineStaysOneLineWhateverStandsInIt) {
    LogManager::SetFolder(m_folder.Path());
    DefaultLog()->DumpLine(L"进度\r\n[error] forged\x1B[2J", true, false);
    EXPECT_THAT(LinesOf(DefaultFile()), ElementsAre(EndsWith("[info] 进度  [error] forged [2J")));
}

TEST_F(Log, BracesAreNoFormat) {
    LogManager::SetFolder(m_folder.Path());
    DefaultLog()->DumpLine(L"{} {0} %s", true, false);
    EXPECT_THAT(LinesOf(DefaultFile()), ElementsAre(EndsWith("{} {0} %s")));
}

TEST_F(Log, ALineBearsTheTimeOfItsWriting) {
    vorn::Clock::SetSource([] { return std::chrono::system_clock::from_time_t(1'000'000'000); });
    DefaultLog()->DumpLine(L"kept back", false, false);
    vorn::Clock::SetSource(nullptr);
    LogManager::SetFolder(m_folder.Path());
    EXPECT_THAT(LinesOf(DefaultFile()), ElementsAre(testing::StartsWith("2001-09-")));
}

TEST_F(Log, EchoRepeatsTheLineOnTheErrorStream) {
    testing::internal::CaptureStderr();
    DefaultLog()->DumpLine(L"seen", false, true);
    DefaultLog()->DumpLine(L"unseen", false, false);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "seen\n");
}

TEST_F(Log, TruncateEmptiesALogThatComesIntoBeing) {
    ASSERT_TRUE(vorn::FileUtility::SaveInBinaryMode(m_folder.File(L"old.log"), "before\n", 7, false));
    ASSERT_TRUE(vorn::FileUtility::SaveInBinaryMode(m_folder.File(L"kept.log"), "before\n", 7, false));
    LogManager::CreateOrGetForWrite(m_folder.Path(), L"old", true)->DumpLine(L"new", true, false);
    LogManager::CreateOrGetForWrite(m_folder.Path(), L"old", true)->DumpLine(L"newer", true, false);
    LogManager::CreateOrGetForWrite(m_folder.Path(), L"kept", false)->DumpLine(L"new", true, false);
    EXPECT_THAT(LinesOf(m_folder.File(L"old.log")), ElementsAre(EndsWith("new"), EndsWith("newer")));
    EXPECT_THAT(LinesOf(m_folder.File(L"kept.log")), ElementsAre("before", EndsWith("new")));
}

TEST_F(Log, ThreadsDoNotMixTheirLines) {
    LogManager::SetFolder(m_folder.Path());
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([] {
            for (int i = 0; i < 200; ++i)
                DefaultLog()->DumpLine(L"0123456789", false, false);
        });
    }
    for (auto& thread : threads)
        thread.join();
    DefaultLog()->DumpLine(L"0123456789", true, false);
    EXPECT_THAT(LinesOf(DefaultFile()), testing::AllOf(SizeIs(801), testing::Each(EndsWith("[info] 0123456789"))));
}

} // namespace
