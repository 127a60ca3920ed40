#include "MepDatabase/MepQbaseUtil.h"
#include "MepDatabase/ChangeTracking.h"
#include "MepDatabase/DatasetPaths.h"
#include "MepDatabase/StoreFrame.h"
#include "MepDatabase/StoreSchema.h"
#include "Vorn/DebugMessage.h"

namespace tolm {
namespace {

/// What a further change does to a status record.
enum class Step { Keep, SetStatus, SetAll, Delete };

/// Rows: what stands there; columns: what is noted now; both created, edited, removed.
constexpr Step kSteps[3][3] = {
    {Step::SetStatus, Step::Keep, Step::Delete},
    {Step::SetStatus, Step::Keep, Step::SetAll},
    {Step::SetStatus, Step::Keep, Step::Keep},
};

constexpr bool IsKnown(int status) {
    return status >= 1 && status <= 3;
}

/// A creation is written over whatever stands there; a status that no version of this library writes is otherwise
/// left alone.
Step StepFor(int current, int now) {
    if (current <= 0)
        return Step::Keep;
    if (IsKnown(current) && IsKnown(now))
        return kSteps[current - 1][now - 1];
    return now == static_cast<int>(ChangeStatus::Created) ? Step::SetStatus : Step::Keep;
}

void SetAll(CQbase& status, const LocalChange& change) {
    status.setShort(schema::kStatus, ToShort(change.status));
    status.setShort(schema::kMEPType, change.mepType);
    status.setShort(schema::kDisciplineId, change.disciplineId);
    status.saveRec();
}

void Apply(CQbase& status, const LocalChange& change, Step step) {
    switch (step) {
    case Step::Keep:
        return;
    case Step::SetStatus:
        status.setShort(schema::kStatus, ToShort(change.status));
        status.saveRec();
        return;
    case Step::SetAll:
        return SetAll(status, change);
    case Step::Delete:
        status.deleteRec(change.classCode, change.id);
    }
}

void CollectIds(CQbase& status, const char* classCode, std::vector<wstring>& ids) {
    for (bool more = status.fetchFirstMember(classCode); more; more = status.fetchNextMember()) {
        wstring id = CurrentId(status);
        if (!id.empty())
            ids.push_back(std::move(id));
    }
}

} // namespace

void NoteLocalChange(CQbase& status, const LocalChange& change) {
    if (!status.existRec(change.classCode, change.id)) {
        if (status.createRec(change.classCode, change.id))
            SetAll(status, change);
        return;
    }
    short current = 0;
    if (status.fetchEqualRec(change.classCode, change.id) && status.getShort(schema::kStatus, current))
        Apply(status, change, StepFor(current, change.status));
}

StatusCompanion::StatusCompanion(CQbase& data, const wstring& filePath, const wstring& ddqFilePath)
    : m_data(data), m_statusPath(DatasetPaths::Of(filePath).status), m_ddqFilePath(ddqFilePath) {}

bool StatusCompanion::Open() {
    if (m_tried || m_statusPath.empty())
        return m_status != nullptr;
    m_tried = true;
    auto status = vorn::MakeOwner<CQbase>();
    if (status->openBeside(m_data, m_ddqFilePath, m_statusPath, true))
        m_status = std::move(status);
    return m_status != nullptr;
}

bool StatusCompanion::Note(const LocalChange& change) {
    if (!Open())
        return false;
    NoteLocalChange(*m_status, change);
    return true;
}

bool MepQbaseUtil::RecordLocalChange(wstring filePath, wstring ddqFilePath, const char* classCode, wstring id,
                                     int status, short mepType, short disciplineId) {
    StoreFrame store(TOLM_CALL_SITE);
    if (!store.Open(DatasetPaths::Of(filePath).status, ddqFilePath, StoreAccess::Write))
        return false;
    NoteLocalChange(*store, {classCode, std::move(id), status, mepType, disciplineId});
    return store.Close();
}

bool MepQbaseUtil::GetLocalChangedIdList(CQbase* qbStatus, int mepType, int disciplineId, const char* classCode,
                                         std::vector<wstring>& createdIds, std::vector<wstring>& editedIds,
                                         std::vector<wstring>& removedIds) {
    if (qbStatus == nullptr) {
        VORN_DEBUG_WARN(L"qb_statusQbase 为空");
        return false;
    }
    if (disciplineId == 0) {
        VORN_DEBUG_WARN(L"disicplineType 非法");
        return false;
    }
    std::vector<wstring>* const lists[] = {&createdIds, &editedIds, &removedIds};
    for (short status = 1; status <= 3; ++status) {
        qbStatus->resetFilters();
        qbStatus->setFilter(schema::kStatus, "=", status);
        qbStatus->setFilter(schema::kMEPType, "=", ToShort(mepType));
        qbStatus->setFilter(schema::kDisciplineId, "=", ToShort(disciplineId));
        CollectIds(*qbStatus, classCode, *lists[status - 1]);
    }
    return true;
}

} // namespace tolm
