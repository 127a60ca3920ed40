#include "Host/Session.h"

#include <mutex>
#include <optional>

namespace tolm {
namespace {

/// A text that one thread may set while others read it.
class SharedText {
public:
    explicit SharedText(std::wstring text = {}) : m_text(std::move(text)) {}
    std::wstring Get() const {
        const std::lock_guard lock(m_mutex);
        return m_text;
    }
    void Set(const std::wstring& text) {
        const std::lock_guard lock(m_mutex);
        m_text = text;
    }

private:
    mutable std::mutex m_mutex;
    std::wstring m_text;
};

// In functions, so that they stand before a host's own statics ask for them.
SharedText& UserId() {
    static SharedText text;
    return text;
}
SharedText& UserToken() {
    static SharedText text;
    return text;
}
SharedText& Environment() {
    static SharedText text(L"production");
    return text;
}
SharedText& ProductVersion() {
    static SharedText text(TOLM_PRODUCT_VERSION);
    return text;
}
SharedText& DatasetFilePath() {
    static SharedText text;
    return text;
}

std::optional<CollaborationProjectSettingForPS>& OpenSession() {
    static std::optional<CollaborationProjectSettingForPS> session;
    return session;
}

} // namespace

void CollaborationProjectSettingForPS::Open(const Settings& settings) {
    OpenSession() = CollaborationProjectSettingForPS(settings);
}

void CollaborationProjectSettingForPS::Close() {
    OpenSession().reset();
}

CollaborationProjectSettingForPS* CollaborationProjectSettingForPS::Instance() {
    auto& session = OpenSession();
    return session ? &*session : nullptr;
}

void CollaborationProjectSettingForPS::AddRecoverSystemTypeRecordId(const std::wstring& id) {
    m_recoverIds.push_back(id);
}

void CollaborationProjectSettingForPS::ClearRecoverSystemTypeRecordIds() {
    m_recoverIds.clear();
}

std::wstring TolmUserSessionUtils::GetUserId() {
    return UserId().Get();
}

std::wstring TolmUserSessionUtils::GetUserToken() {
    return UserToken().Get();
}

void TolmUserSessionUtils::SetUser(const std::wstring& userId, const std::wstring& token) {
    UserId().Set(userId);
    UserToken().Set(token);
}

std::wstring TolmKfeConfigUtil::GetCurrentEnv() {
    return Environment().Get();
}

void TolmKfeConfigUtil::SetCurrentEnv(const std::wstring& name) {
    Environment().Set(name);
}

std::wstring TolmVersionUtils::GetProductVersion() {
    return ProductVersion().Get();
}

void TolmVersionUtils::SetProductVersion(const std::wstring& version) {
    ProductVersion().Set(version);
}

std::wstring TolmFilePathSettings::GetCurrentDatasetFilePath() {
    return DatasetFilePath().Get();
}

void TolmFilePathSettings::SetCurrentDatasetFilePath(const std::wstring& path) {
    DatasetFilePath().Set(path);
}

} // namespace tolm
