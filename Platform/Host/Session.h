#pragma once

#include "Vorn/Export.h"

#include <string>
#include <vector>

namespace tolm {

/// The open collaboration session: which service, which project, which work unit. Opened and closed by the host;
/// used from one thread at a time.
class TOLM_PLATFORM_API CollaborationProjectSettingForPS {
public:
    struct Settings {
        std::wstring httpServer{};       ///< scheme, host and port of the service, without a path
        std::wstring workingProjectId{}; ///< empty when no project is open
        std::wstring workingDatasetId{}; ///< work unit; empty when none is open
        int requestTimeOut = 30'000'000; ///< microseconds
    };

    /// Opens a session, in place of one that is open.
    static void Open(const Settings& settings);
    static void Close();
    /// The open session; null when none is open. Valid until the next `Open` or `Close`.
    static CollaborationProjectSettingForPS* Instance();

    std::wstring GetHttpServer() const { return m_settings.httpServer; }
    /// In microseconds.
    int GetRequestTimeOut() const { return m_settings.requestTimeOut; }
    std::wstring GetWorkingProjectId() const { return m_settings.workingProjectId; }
    std::wstring GetWorkingDatasetId() const { return m_settings.workingDatasetId; }

    /// Notes the id of a system type that this work unit needs back.
    void AddRecoverSystemTypeRecordId(const std::wstring& id);
    void ClearRecoverSystemTypeRecordIds();
    /// What was noted, in the order of noting.
    const std::vector<std::wstring>& GetRecoverSystemTypeRecordIds() const { return m_recoverIds; }

private:
    explicit CollaborationProjectSettingForPS(const Settings& settings) : m_settings(settings) {}
    Settings m_settings;
    std::vector<std::wstring> m_recoverIds;
};

/// A user and the token of this user's session.
struct TolmUser {
    std::wstring id;
    std::wstring token;
};

/// The user that is signed in. The token is a secret: it goes into the request header and nowhere else. Any thread may
/// call it; user and token change together.
class TOLM_PLATFORM_API TolmUserSessionUtils {
public:
    /// Both of one login, where the two below may be of two.
    static TolmUser GetUser();
    static std::wstring GetUserId();
    static std::wstring GetUserToken();
    static void SetUser(const std::wstring& userId, const std::wstring& token);
};

/// Name of the service's environment; "production" by default.
class TOLM_PLATFORM_API TolmKfeConfigUtil {
public:
    static std::wstring GetCurrentEnv();
    static void SetCurrentEnv(const std::wstring& name);
};

/// Version of the host product, sent with each request that carries data.
class TOLM_PLATFORM_API TolmVersionUtils {
public:
    static std::wstring GetProductVersion();
    static void SetProductVersion(const std::wstring& version);
};

/// Paths of the host's open project.
class TOLM_PLATFORM_API TolmFilePathSettings {
public:
    /// The dataset file that the host works on now; empty until it is set.
    static std::wstring GetCurrentDatasetFilePath();
    static void SetCurrentDatasetFilePath(const std::wstring& path);
};

} // namespace tolm
