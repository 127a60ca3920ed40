#include "MepDatabase/MepQbaseUtil.h"
#include "MepDatabase/DatasetPaths.h"
#include "MepDatabase/StoreFrame.h"
#include "Vorn/Guid.h"

#include <atomic>
#include <new>

namespace tolm {
namespace {

vorn::OwnerPtr<CQbase> MakeQbase() {
    try {
        return vorn::MakeOwner<CQbase>();
    } catch (const std::bad_alloc&) {
        return {};
    }
}

/// Most ids that are taken of a list.
constexpr int kIdListBound = 100;

std::atomic<StoreFrame::Maker> g_maker = &MakeQbase;

struct Flags {
    bool forUpdate;
    bool create;
};

constexpr Flags FlagsOf(StoreAccess access) {
    return {access != StoreAccess::Read, access == StoreAccess::Write};
}

} // namespace

MepQbaseUtil* MepQbaseUtil::GetInstance() {
    static MepQbaseUtil instance;
    return &instance;
}

bool MepQbaseUtil::OpenQbase(wstring filePath, wstring ddqFilePath, CQbase* qb, bool forUpdate, bool create) {
    if (filePath.empty() || ddqFilePath.empty() || qb == nullptr)
        return false;
    if (!qb->openDatabase(ddqFilePath, filePath, create)) {
        static_cast<void>(qb->getLastError());
        return false;
    }
    if (forUpdate ? qb->lockForUpdate() : qb->lockForRead())
        return true;
    qb->closeDatabase();
    return false;
}

StoreFrame::StoreFrame(CallSite site, const wchar_t* notMade) : m_site(site), m_qb(g_maker.load()()) {
    if (!IsMade())
        m_site.Warn(notMade);
}

bool StoreFrame::Open(const wstring& filePath, const wstring& ddqFilePath, StoreAccess access) {
    if (!IsMade())
        return false;
    m_filePath = filePath;
    m_ddqFilePath = ddqFilePath;
    if (IsOutOfOrder(m_site, filePath))
        return false;
    if (access == StoreAccess::ChangeUnlocked)
        return m_qb->openDatabase(ddqFilePath, filePath, false);
    const Flags flags = FlagsOf(access);
    return MepQbaseUtil::GetInstance()->OpenQbase(filePath, ddqFilePath, m_qb.get(), flags.forUpdate, flags.create);
}

bool StoreFrame::IsOutOfOrder(const CallSite& site, const wstring& dataPath) {
    const bool isOutOfOrder = CQbase::isHeldByThisThread(DatasetPaths::Of(dataPath).status);
    if (isOutOfOrder)
        site.Warn(L"加锁顺序错误");
    return isOutOfOrder;
}

bool StoreFrame::Close() {
    m_status.reset();
    if (m_qb->closeDatabase())
        return true;
    m_site.Warn(L"closeDatabase 失败");
    return false;
}

void StoreFrame::Track(const LocalChange& change) {
    if (!m_status)
        m_status.emplace(*m_qb, m_filePath, m_ddqFilePath);
    m_status->Note(change);
}

std::optional<StoreFrame::Target> StoreFrame::FetchOrCreate(const char* classCode, wstring id) {
    id = IdOrNew(std::move(id));
    const bool exists = m_qb->existRec(classCode, id);
    if (exists ? m_qb->fetchEqualRec(classCode, id) : m_qb->createRec(classCode, id))
        return Target{std::move(id), exists ? ChangeStatus::Edited : ChangeStatus::Created};
    return std::nullopt;
}

void StoreFrame::SetMaker(Maker maker) {
    g_maker = maker != nullptr ? maker : &MakeQbase;
}

wstring CurrentId(CQbase& qb) {
    CWsz id;
    return qb.getObjId(id) ? id.take() : wstring();
}

wstring IdOrNew(wstring id) {
    return id.empty() ? vorn::GuidUtils::ToString(vorn::GuidUtils::Generate(), false, false) : id;
}

std::vector<wstring> ReadIdList(CQbase& qb, short attributeId) {
    CWszArray ids;
    std::vector<wstring> list;
    if (!qb.getWszArray(attributeId, ids, kIdListBound, -1))
        return list;
    for (int i = 0; i < ids.length(); ++i)
        list.push_back(ids.wszAt(i).str());
    return list;
}

} // namespace tolm
