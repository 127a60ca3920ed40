#include "MepDatabase/ModifiedData.h"

#include "MepDatabase/DatasetPaths.h"
#include "Vorn/Files.h"

#include <algorithm>
#include <utility>

namespace tolm {
namespace {

// What a removed record counts as whose status record does not say.
constexpr short kUsualType = 1;
constexpr short kUsualDiscipline = 2;

bool HasError(const CQbase& qb, QbaseError error) {
    return qb.getLastError() == static_cast<short>(error);
}

/// A read that failed for the disk's sake dooms the handle for all later reads.
bool IsSound(CQbase& qb) {
    return qb.existRec(schema::kHeader, L"") || HasError(qb, QbaseError::NotFound);
}

} // namespace

ModifiedData::ModifiedData(CallSite site, const wstring& datasetFilePath, wstring definitionPath,
                           wstring componentFilePath)
    : m_site(site), m_datasetPath(datasetFilePath), m_statusPath(DatasetPaths::Of(datasetFilePath).status),
      m_definitionPath(std::move(definitionPath)), m_reads(std::move(componentFilePath)) {}

ModifiedData::Found ModifiedData::Open() {
    constexpr const wchar_t* kNoStatusHandle = L"qb_statusQbase为空";
    if (!vorn::FileInfo(m_statusPath).Exists())
        return Found::Nothing;
    {
        StoreFrame peek(m_site, kNoStatusHandle);
        if (const Found found = Look(peek, StoreAccess::Read); found != Found::Changes)
            return found;
    }
    m_data.emplace(m_site);
    if (!m_data->Open(m_datasetPath, m_definitionPath, StoreAccess::Change))
        return Found::Failure;
    m_status.emplace(m_site, kNoStatusHandle);
    return Look(*m_status, StoreAccess::Change);
}

/// Another upload may take the file away at any moment before it is locked.
ModifiedData::Found ModifiedData::Look(StoreFrame& status, StoreAccess access) const {
    if (!status.IsMade())
        return Found::Failure;
    if (!status.Open(m_statusPath, m_definitionPath, access)) {
        const bool isGone = HasError(*status, QbaseError::NotFound) || !vorn::FileInfo(m_statusPath).Exists();
        return isGone ? Found::Nothing : Found::Failure;
    }
    long count = 0;
    if (!status->getNmbOfRecs(count))
        return Found::Failure;
    return count > 0 ? Found::Changes : Found::Nothing;
}

void ModifiedData::Select(ChangeStatus status) {
    (*m_status)->resetFilters();
    (*m_status)->setFilter(schema::kStatus, "=", static_cast<short>(status));
}

ModifiedData::IdsByTable ModifiedData::RemovedByTable(const RemovedClass& removed) {
    IdsByTable tables;
    CQbase& status = **m_status;
    for (bool more = status.fetchFirstMember(removed.classCode); more; more = status.fetchNextMember()) {
        if (auto name = RemovedTableName(removed))
            tables[*std::move(name)].push_back(CurrentId(status));
        else
            m_site.Warn(removed.noTable);
    }
    return tables;
}

/// Of the current status record; nothing where no row fits.
std::optional<wstring> ModifiedData::RemovedTableName(const RemovedClass& removed) {
    short mepType = kUsualType;
    short disciplineId = kUsualDiscipline;
    (*m_status)->getShort(schema::kMEPType, mepType);
    (*m_status)->getShort(schema::kDisciplineId, disciplineId);
    const auto row = std::ranges::find_if(removed.tables,
                                          [&](const RemovedTable& table) { return table.Fits(disciplineId, mepType); });
    if (row == removed.tables.end())
        return std::nullopt;
    return row->table != nullptr ? row->table() : wstring();
}

std::vector<wstring> ModifiedData::RemovedIds(const char* classCode) {
    std::vector<wstring> ids;
    CQbase& status = **m_status;
    for (bool more = status.fetchFirstMember(classCode); more; more = status.fetchNextMember())
        ids.push_back(CurrentId(status));
    return ids;
}

bool ModifiedData::IsWhole() {
    if (IsSound(**m_data) && IsSound(**m_status))
        return true;
    m_site.Warn(L"fetchNextRec 失败");
    return false;
}

/// The status store goes while both are locked: whoever waits for them finds what stands then.
bool ModifiedData::Finish() {
    const bool removed = CQbase::removeStore(m_statusPath);
    if (!removed)
        m_site.Warn(L"RemoveFile 失败");
    const bool statusClosed = m_status->Close();
    return m_data->Close() && statusClosed && removed;
}

} // namespace tolm
