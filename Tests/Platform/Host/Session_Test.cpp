#include "Host/Session.h"

#include "Support/DebugWarnings.h"
#include "Support/TempFolder.h"
#include "Vorn/Files.h"
#include "Vorn/Log.h"
#include "Vorn/Text.h"

#include <gtest/gtest.h>

#include <fstream>

namespace {

using Session = tolm::CollaborationProjectSettingForPS;

class HostSession : public testing::Test {
protected:
    ~HostSession() override { Session::Close(); }
};

TEST_F(HostSession, IsNullWhileClosed) {
    EXPECT_EQ(Session::Instance(), nullptr);
    Session::Open({L"http://127.0.0.1:1", L"P", L"W"});
    EXPECT_NE(Session::Instance(), nullptr);
    Session::Close();
    Session::Close();
    EXPECT_EQ(Session::Instance(), nullptr);
}

TEST_F(HostSession, GivesBackItsSettings) {
    Session::Open({L"http://127.0.0.1:1", L"project", L"unit", 1500});
    const Session* const session = Session::Instance();
    EXPECT_EQ(session->GetHttpServer(), L"http://127.0.0.1:1");
    EXPECT_EQ(session->GetWorkingProjectId(), L"project");
    EXPECT_EQ(session->GetWorkingDatasetId(), L"unit");
    EXPECT_EQ(session->GetRequestTimeOut(), 1500);
}

TEST_F(HostSession, TimeOutIsThirtySecondsInMicrosecondsByDefault) {
    Session::Open({});
    EXPECT_EQ(Session::Instance()->GetRequestTimeOut(), 30'000'000);
    EXPECT_EQ(Session::Instance()->GetWorkingProjectId(), L"");
    EXPECT_EQ(Session::Instance()->GetWorkingDatasetId(), L"");
}

TEST_F(HostSession, OpeningTakesThePlaceOfTheSessionBefore) {
    Session::Open({L"http://a", L"A", L""});
    Session::Instance()->AddRecoverSystemTypeRecordId(L"x");
    Session::Open({L"http://b", L"B", L""});
    EXPECT_EQ(Session::Instance()->GetWorkingProjectId(), L"B");
    EXPECT_TRUE(Session::Instance()->GetRecoverSystemTypeRecordIds().empty());
}

TEST_F(HostSession, NotesRecoverIdsInOrderAndForgetsThemTogether) {
    Session::Open({});
    Session* const session = Session::Instance();
    for (const wchar_t* id : {L"c", L"a", L"c"})
        session->AddRecoverSystemTypeRecordId(id);
    EXPECT_EQ(session->GetRecoverSystemTypeRecordIds(), (std::vector<std::wstring>{L"c", L"a", L"c"}));
    session->ClearRecoverSystemTypeRecordIds();
    EXPECT_TRUE(session->GetRecoverSystemTypeRecordIds().empty());
}

TEST(UserSession, NobodyIsSignedInUntilTheHostSaysSo) {
    EXPECT_EQ(tolm::TolmUserSessionUtils::GetUserId(), L"");
    EXPECT_EQ(tolm::TolmUserSessionUtils::GetUserToken(), L"");
    tolm::TolmUserSessionUtils::SetUser(L"user", L"token");
    EXPECT_EQ(tolm::TolmUserSessionUtils::GetUserId(), L"user");
    EXPECT_EQ(tolm::TolmUserSessionUtils::GetUserToken(), L"token");
    EXPECT_EQ(tolm::TolmUserSessionUtils::GetUser().id, L"user");
    EXPECT_EQ(tolm::TolmUserSessionUtils::GetUser().token, L"token");
    tolm::TolmUserSessionUtils::SetUser(L"", L"");
    EXPECT_EQ(tolm::TolmUserSessionUtils::GetUserToken(), L"");
}

TEST(UserSession, SigningInWritesNothingToTheLog) {
    tolm::TolmUserSessionUtils::SetUser(L"user", L"very-secret");
    tolm::TolmUserSessionUtils::SetUser(L"", L"");
    EXPECT_TRUE(tolmtest::TakeLogLines().empty());
}

TEST(Environment, IsProductionByDefault) {
    EXPECT_EQ(tolm::TolmKfeConfigUtil::GetCurrentEnv(), L"production");
    tolm::TolmKfeConfigUtil::SetCurrentEnv(L"productionstg");
    EXPECT_EQ(tolm::TolmKfeConfigUtil::GetCurrentEnv(), L"productionstg");
    tolm::TolmKfeConfigUtil::SetCurrentEnv(L"production");
}

TEST(ProductVersion, HasADefaultAndCanBeSet) {
    const std::wstring before = tolm::TolmVersionUtils::GetProductVersion();
    EXPECT_FALSE(before.empty());
    tolm::TolmVersionUtils::SetProductVersion(L"9.8.7");
    EXPECT_EQ(tolm::TolmVersionUtils::GetProductVersion(), L"9.8.7");
    tolm::TolmVersionUtils::SetProductVersion(before);
}

TEST(FilePaths, DatasetPathIsEmptyUntilSet) {
    EXPECT_EQ(tolm::TolmFilePathSettings::GetCurrentDatasetFilePath(), L"");
    tolm::TolmFilePathSettings::SetCurrentDatasetFilePath(L"/p/set.db");
    EXPECT_EQ(tolm::TolmFilePathSettings::GetCurrentDatasetFilePath(), L"/p/set.db");
    tolm::TolmFilePathSettings::SetCurrentDatasetFilePath(L"");
}

// What stands before main must find the services ready.
const std::wstring g_environmentBeforeMain = tolm::TolmKfeConfigUtil::GetCurrentEnv();
const bool g_sessionBeforeMain = tolm::CollaborationProjectSettingForPS::Instance() != nullptr;

TEST(HostServices, AreReadyBeforeMain) {
    EXPECT_EQ(g_environmentBeforeMain, L"production");
    EXPECT_FALSE(g_sessionBeforeMain);
}

} // namespace
