#include "MepDatabase/MepQbaseUtil.h"
#include "MepDatabase/DatasetPaths.h"
#include "MepDatabase/FileHeader.h"
#include "MepDatabase/StoreFrame.h"
#include "MepDatabase/StoreSchema.h"
#include "Vorn/Clock.h"
#include "Vorn/DebugMessage.h"
#include "Vorn/Files.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>

namespace tolm {
namespace {

/// Year, month from 1, day, hour, minute, second, in local time; as stored.
using TimePoint = std::array<std::int16_t, 6>;
static_assert(sizeof(TimePoint) == 12);

TimePoint FromTime(const std::tm& time) {
    const int parts[] = {time.tm_year + 1900, time.tm_mon + 1, time.tm_mday, time.tm_hour, time.tm_min, time.tm_sec};
    TimePoint point{};
    std::transform(std::begin(parts), std::end(parts), point.begin(), [](int part) { return ToShort(part); });
    return point;
}

std::tm ToTime(const TimePoint& point) {
    std::tm time{};
    time.tm_year = point[0] - 1900;
    time.tm_mon = point[1] - 1;
    time.tm_mday = point[2];
    time.tm_hour = point[3];
    time.tm_min = point[4];
    time.tm_sec = point[5];
    return time;
}

/// The version in the header; -1 when there is none or it is negative.
int ReadVersion(CQbase& qb) {
    long version = -1;
    if (!FetchHeader(qb) || !qb.getLong(schema::kLocalVersion, version) || version < 0)
        return -1;
    return static_cast<int>(std::min<long>(version, std::numeric_limits<int>::max()));
}

wstring ReadTimePoint(CQbase& qb) {
    TimePoint point{};
    if (!FetchHeader(qb) || !qb.getBinary(schema::kLastUpdateTimePoint, point.data()))
        return {};
    return vorn::Clock::Format(ToTime(point));
}

constexpr const char* kClassesOfADownload[] = {
    schema::kSystemType,    schema::kConnectionSerie,    schema::kMaterial,       schema::kSizeModule,
    schema::kMaterialSerie, schema::kMaterialSerieGroup, schema::kCircuitTemplate};

} // namespace

bool FetchHeader(CQbase& qb) {
    qb.resetFilters();
    return qb.fetchFirstMember(schema::kHeader);
}

bool FetchOrCreateHeader(CQbase& qb) {
    return FetchHeader(qb) || qb.createRec(schema::kHeader, schema::kHeaderId);
}

bool StampVersion(CQbase& qb, int version) {
    return FetchOrCreateHeader(qb) && qb.setLong(schema::kLocalVersion, version) && qb.saveRec();
}

wstring StampTimePoint(CQbase& qb) {
    const std::tm now = vorn::Clock::LocalNow();
    const TimePoint point = FromTime(now);
    const bool saved =
        FetchOrCreateHeader(qb) && qb.setBinary(schema::kLastUpdateTimePoint, point.data(), 0) && qb.saveRec();
    return saved ? vorn::Clock::Format(now) : wstring();
}

bool MepQbaseUtil::SetLocalVersion(wstring filePath, wstring ddqFilePath, int version) {
    StoreFrame store(TOLM_CALL_SITE, L"qb 为空");
    if (!store.IsMade())
        return false;
    if (!store.Open(filePath, ddqFilePath, StoreAccess::ChangeUnlocked)) {
        VORN_DEBUG_WARN(L"openDatabase 失败");
        return false;
    }
    return StampVersion(*store, version);
}

bool MepQbaseUtil::ReplaceLocalVersion(const wstring& filePath, const wstring& ddqFilePath, int expected,
                                       int& version) {
    StoreFrame store(TOLM_CALL_SITE, L"qb 为空");
    if (!store.Open(filePath, ddqFilePath, StoreAccess::Change)) {
        VORN_DEBUG_WARN(L"openDatabase 失败");
        return false;
    }
    const int stands = ReadVersion(*store);
    const bool isStamped = stands != expected || StampVersion(*store, version);
    if (stands != expected)
        version = stands;
    return store.Close() && isStamped;
}

wstring MepQbaseUtil::SetLastUpdateTimePoint(wstring filePath, wstring ddqFilePath) {
    StoreFrame store(TOLM_CALL_SITE, L"qb 为空");
    if (!store.IsMade())
        return {};
    if (!store.Open(filePath, ddqFilePath, StoreAccess::ChangeUnlocked)) {
        VORN_DEBUG_WARN(L"openDatabase 失败");
        return {};
    }
    const wstring text = StampTimePoint(*store);
    return store.Close() ? text : wstring();
}

wstring MepQbaseUtil::GetLastUpdateTimePoint(wstring filePath, wstring ddqFilePath) {
    if (!vorn::FileInfo(filePath).Exists())
        return {};
    StoreFrame store(TOLM_CALL_SITE);
    if (!store.Open(filePath, ddqFilePath, StoreAccess::Read))
        return {};
    const wstring text = ReadTimePoint(*store);
    return store.Close() ? text : wstring();
}

int MepQbaseUtil::GetLocalVersion(wstring filePath, wstring ddqFilePath, bool& hasLocalChanges) {
    hasLocalChanges = false;
    if (!vorn::FileInfo(filePath).Exists())
        return -1;
    const wstring statusPath = DatasetPaths::Of(filePath).status;
    if (vorn::FileInfo(statusPath).Exists()) {
        StoreFrame status(TOLM_CALL_SITE);
        long count = 0;
        if (status.Open(statusPath, ddqFilePath, StoreAccess::Read) && status->getNmbOfRecs(count))
            hasLocalChanges = count > 0;
    }
    StoreFrame store(TOLM_CALL_SITE);
    if (!store.Open(filePath, ddqFilePath, StoreAccess::Read))
        return -1;
    const int version = ReadVersion(*store);
    return store.Close() ? version : -1;
}

bool MepQbaseUtil::ResetQbase(CQbase* qb) {
    if (qb == nullptr) {
        VORN_DEBUG_WARN(L"qb为空");
        return false;
    }
    for (const char* classCode : kClassesOfADownload)
        ResetQbaseCategory(qb, classCode);
    return true;
}

bool MepQbaseUtil::ResetQbaseCategory(CQbase* qb, const char* classCode) {
    if (qb == nullptr) {
        VORN_DEBUG_WARN(L"qb为空");
        return false;
    }
    std::vector<CWsz> ids;
    for (bool more = qb->fetchFirstMember(classCode); more; more = qb->fetchNextMember()) {
        CWsz id;
        if (qb->getObjId(id))
            ids.push_back(id);
    }
    for (const CWsz& id : ids)
        qb->deleteRec(classCode, id);
    return true;
}

} // namespace tolm
