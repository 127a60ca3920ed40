#include "Qbase/Qbase.h"

#include "Qbase/QbaseImplInternal.h"
#include "Qbase/StoreFileInternal.h"

#include "Vorn/Text.h"

#include <atomic>

using qbase::LockKind;

namespace {

constexpr int kDefaultLockTimeout = 5000;
std::atomic<int> g_lockTimeout{kDefaultLockTimeout};

template <class Work> bool Succeeds(Work work) noexcept {
    try {
        return work();
    } catch (const qbase::SqlFailure&) {
        return false;
    } catch (const std::exception&) {
        return false;
    }
}

} // namespace

CQbase::CQbase() : m_impl(std::make_unique<Impl>()) {}
CQbase::~CQbase() = default;

// --- opening, locks and transactions -------------------------------------------------------------------------------

bool CQbase::openDatabase(const std::wstring& definitionPath, const std::wstring& filePath, bool create) {
    return m_impl->RunLoose([&] { return m_impl->Open(definitionPath, filePath, create); });
}

bool CQbase::openBeside(CQbase& primary, const std::wstring& definitionPath, const std::wstring& filePath,
                        bool create) {
    return m_impl->RunLoose([&] { return m_impl->OpenBeside(*primary.m_impl, definitionPath, filePath, create); });
}

bool CQbase::closeDatabase() {
    return m_impl->RunLoose([&] { return m_impl->Close(); });
}

void CQbase::abandon() {
    m_impl->Abandon();
}

bool CQbase::lockForRead() {
    return m_impl->RunLoose([&] { return m_impl->Lock(LockKind::Read); });
}

bool CQbase::lockForUpdate() {
    return m_impl->RunLoose([&] { return m_impl->Lock(LockKind::Update); });
}

bool CQbase::beginTransaction() {
    return lockForUpdate();
}

bool CQbase::getContentVersion(long& version) {
    return m_impl->Run([&] { return m_impl->ContentVersion(version); });
}

bool CQbase::isHeldByThisThread(const std::wstring& filePath) {
    return qbase::IsPath(filePath) && Succeeds([&] {
               const auto identity = qbase::IdentityOf(qbase::WholePath(filePath));
               return identity && qbase::LockRegistry::IsHeld(*identity);
           });
}

short CQbase::getLastError() const {
    return m_impl->LastError();
}

void CQbase::setLockTimeout(int milliseconds) {
    g_lockTimeout = milliseconds;
}
int CQbase::lockTimeout() {
    return g_lockTimeout;
}

// --- finding records -----------------------------------------------------------------------------------------------

bool CQbase::getNmbOfRecs(long& count) {
    return m_impl->Run([&] { return m_impl->Count(count); });
}

bool CQbase::existRec(const char* classCode, const wchar_t* id) {
    return m_impl->Run([&] { return m_impl->Exists(classCode, id); });
}

bool CQbase::fetchEqualRec(const char* classCode, const wchar_t* id) {
    return m_impl->Run([&] { return m_impl->FetchEqual(classCode, id); });
}

bool CQbase::fetchFirstMember(const char* classCode) {
    return m_impl->Run([&] { return m_impl->FetchFirst(classCode); });
}

bool CQbase::fetchNextMember() {
    return m_impl->Run([&] { return m_impl->FetchNextMember(); });
}

bool CQbase::fetchNextRec() {
    return m_impl->Run([&] { return m_impl->FetchNextRecord(); });
}

bool CQbase::setFilter(short attributeId, const char* op, short value) {
    return m_impl->Run([&] { return m_impl->SetFilter(attributeId, op, value); });
}

bool CQbase::setFilter(short attributeId, const char* op, const wchar_t* value) {
    return m_impl->Run([&] { return m_impl->SetFilter(attributeId, op, value); });
}

void CQbase::resetFilters() {
    m_impl->ResetFilters();
}

// --- changing records ----------------------------------------------------------------------------------------------

bool CQbase::createRec(const char* classCode, const wchar_t* id) {
    return m_impl->Run([&] { return m_impl->Create(classCode, id != nullptr ? vorn::StringUtil::ToString(id) : ""); });
}

bool CQbase::createRec(const char* classCode, const char* id) {
    return createRec(classCode, id != nullptr ? vorn::StringUtil::ToWString(id) : std::wstring());
}

bool CQbase::saveRec() {
    return m_impl->Run([&] { return m_impl->Save(); });
}

bool CQbase::deleteRec(const char* classCode, const wchar_t* id) {
    return m_impl->Run([&] { return m_impl->Delete(classCode, id); });
}

bool CQbase::removeAttribute(short attributeId) {
    return m_impl->Run([&] { return m_impl->RemoveAttribute(attributeId); });
}

// --- whole files ---------------------------------------------------------------------------------------------------

bool CQbase::copyTo(const std::wstring& target) {
    return m_impl->Run([&] { return m_impl->CopyTo(target); });
}

bool CQbase::removeStore(const std::wstring& filePath) {
    return qbase::IsPath(filePath) && Succeeds([&] { return qbase::RemoveFiles(qbase::WholePath(filePath)); });
}

bool CQbase::copyStore(const std::wstring& source, const std::wstring& target) {
    return qbase::IsPath(source) && qbase::IsPath(target) &&
           Succeeds([&] { return qbase::CopyStore(qbase::WholePath(source), qbase::WholePath(target)); });
}
