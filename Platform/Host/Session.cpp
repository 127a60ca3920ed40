#include "Host/Session.h"

#include <mutex>
#include <optional>

namespace tolm {
namespace {

/// A value that one thread may set while others read it.
template <class Value> class Shared {
public:
    explicit Shared(Value value = {}) : m_value(std::move(value)) {}
    Value Get() const {
        const std::lock_guard lock(m_mutex);
        return m_value;
    }
    void Set(const Value& value) {
        const std::lock_guard lock(m_mutex);
        m_value = value;
    }

private:
    mutable std::mutex m_mutex;
    Value m_value;
};
using SharedText = Shared<std::wstring>;

// In functions, so that they stand before a host's own statics ask for them.
Shared<TolmUser>& User() {
    static Shared<TolmUser> user;
    return user;
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

TolmUser TolmUserSessionUtils::GetUser() {
    return User().Get();
}

std::wstring TolmUserSessionUtils::GetUserId() {
    return GetUser().id;
}

std::wstring TolmUserSessionUtils::GetUserToken() {
    return GetUser().token;
}

void TolmUserSessionUtils::SetUser(const std::wstring& userId, const std::wstring& token) {
    User().Set({userId, token});
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
