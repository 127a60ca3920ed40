#pragma once

#include "Host/Session.h"

#include <string>

namespace tolmtest {

/// An open collaboration session and a signed-in user, both gone again at the end.
class TestSession {
public:
    explicit TestSession(const std::wstring& server, const std::wstring& projectId = L"P1",
                         const std::wstring& workunitId = L"W1")
        : TestSession(tolm::CollaborationProjectSettingForPS::Settings{server, projectId, workunitId, 30'000'000}) {}

    explicit TestSession(const tolm::CollaborationProjectSettingForPS::Settings& settings)
        : m_version(tolm::TolmVersionUtils::GetProductVersion()),
          m_environment(tolm::TolmKfeConfigUtil::GetCurrentEnv()) {
        tolm::CollaborationProjectSettingForPS::Open(settings);
        tolm::TolmUserSessionUtils::SetUser(L"user-1", L"secret-token");
        tolm::TolmVersionUtils::SetProductVersion(L"1.2.3");
    }

    ~TestSession() {
        tolm::CollaborationProjectSettingForPS::Close();
        tolm::TolmUserSessionUtils::SetUser(L"", L"");
        tolm::TolmVersionUtils::SetProductVersion(m_version);
        tolm::TolmKfeConfigUtil::SetCurrentEnv(m_environment);
    }

    TestSession(const TestSession&) = delete;
    TestSession& operator=(const TestSession&) = delete;

private:
    std::wstring m_version;
    std::wstring m_environment;
};

} // namespace tolmtest
