#include "MepDatabase/MepQbaseUtil.h"
#include "MepDatabase/ConfigTreeIngest.h"
#include "MepDatabase/JsonRead.h"
#include "MepDatabase/MepProjectSettingHttpUtility.h"
#include "MepDatabase/MergeLists.h"
#include "MepDatabase/MergeRule.h"
#include "MepDatabase/StoreSchema.h"
#include "MepDatabase/TableMerge.h"
#include "MepDatabase/WireText.h"
#include "MepDatabase/WorkUnit.h"
#include "Qbase/Qbase.h"
#include "Vorn/DebugMessage.h"

#include <string_view>

namespace tolm {
namespace {

using web::json::value;
using IdMap = std::map<wstring, std::vector<wstring>>;

constexpr std::wstring_view kDuctGroup = L"ductSeriesType";
constexpr short kPipe = 1;

/// Does `work(row)` with each row of "ConfigTree" that belongs to the group.
template <class Work> void ForEachRow(const value& tables, const wstring& group, Work work) {
    const web::json::array* const rows = RowsOf(tables, TolmProjectSettingHttpUtility::ConfigTreeTable());
    if (rows == nullptr)
        return;
    const std::string groupName = ToWire(group);
    for (const auto& row : *rows) {
        if (row.has_string_field("groupName") && row.at("groupName").as_string() == groupName)
            work(row);
    }
}

void DownloadSystemTypes(MepQbaseUtil& store, const value& add, CQbase* qb, const wstring& key, short mepType,
                         short disciplineId) {
    if (const value* const rows = jsonread::Find(add.as_object(), key)) {
        const web::json::array& elements = rows->as_array();
        store.SyncSystemTypes(qb, mepType, disciplineId, {elements.begin(), elements.end()});
    }
}

void DownloadSeries(MepQbaseUtil& store, const value& add, CQbase* qb, const wstring& key, short mepType,
                    short disciplineId) {
    if (const value* const rows = jsonread::Find(add.as_object(), key)) {
        for (const auto& element : rows->as_array())
            store.SyncMaterialSerie(element, qb, mepType, disciplineId);
    }
}

/// Throws where a table is there and no list: it does not pass for an empty one.
void RequireLists(const value& add, const value& del, const wstring& key) {
    for (const value* half : {&add, &del})
        if (const value* const rows = half->is_object() ? jsonread::Find(half->as_object(), key) : nullptr)
            static_cast<void>(rows->as_array());
}

/// Forgets a local change that lost, in the first of the classes that has a note of it.
void Forget(CQbase& statusQb, const wstring& id, const std::vector<const char*>& classCodes) {
    for (const char* classCode : classCodes) {
        if (statusQb.deleteRec(classCode, id))
            return;
    }
}

/// What a table's records are. A table of two classes has its ids in either of them.
struct Slice {
    std::vector<const char*> classCodes;
    short mepType;
    short disciplineId;
};

/// Local records give way whose names the cloud uses.
void RepairNames(CQbase* qb, const Slice& slice, const CloudChanges& cloud, const LocalChanges& local) {
    const bool reportMissing = slice.classCodes.size() == 1;
    for (const char* classCode : slice.classCodes)
        MepQbaseUtil::GetInstance()->FindAndRenameDuplicatedItems(cloud.added, cloud.modified, local.created,
                                                                  local.edited, qb, classCode, slice.mepType,
                                                                  slice.disciplineId, reportMissing);
}

/// What all tables share: local changes that lose are forgotten, the cloud's state is taken, names are repaired. Where
/// nothing changed here the cloud's state is taken as it is.
template <class Download>
bool MergeTable(const CallSite& site, const wstring& key, CQbase* qb, CQbase& statusQb, const Slice& slice,
                const CloudChanges& cloud, LocalChanges& local, Download download) {
    const bool changedHere = !local.IsEmpty();
    for (const wstring& id : TakeConflicts(cloud, local))
        Forget(statusQb, id, slice.classCodes);
    return DoUnit(site, key + L":下载失败", [&] {
        download();
        if (changedHere)
            RepairNames(qb, slice, cloud, local);
    });
}

const std::vector<wstring>& ListOf(const IdMap& groups, const wstring& key) {
    static const std::vector<wstring> none;
    const auto found = groups.find(key);
    return found == groups.end() ? none : found->second;
}

CloudChanges ChangesOf(const wstring& key, const IdMap& added, const IdMap& deleted, const IdMap& modified) {
    return {ListOf(added, key), ListOf(deleted, key), ListOf(modified, key)};
}

bool AppendLocalChanges(CQbase* statusQb, short mepType, short disciplineId, const char* classCode,
                        LocalChanges& local) {
    return MepQbaseUtil::GetInstance()->GetLocalChangedIdList(statusQb, mepType, disciplineId, classCode, local.created,
                                                              local.edited, local.removed);
}

} // namespace

void DownloadTableData(const value& add, const value& del, CQbase* qb, const char* classCode, wstring key,
                       short mepType, short disciplineId) {
    MepQbaseUtil& store = *MepQbaseUtil::GetInstance();
    const std::string_view code = classCode != nullptr ? classCode : "";
    if (code == schema::kSystemType) {
        store.SyncDeletedSystemType(del.as_object(), qb, key);
        DownloadSystemTypes(store, add, qb, key, mepType, disciplineId);
    } else if (code == schema::kMaterialSerie) {
        store.SyncDeletedMaterialSerie(del.as_object(), qb, key);
        DownloadSeries(store, add, qb, key, mepType, disciplineId);
    }
}

void DownloadPipeSizeTableData(const value& add, const value& del, CQbase* qb, wstring key, short disciplineId) {
    if (qb == nullptr) {
        VORN_DEBUG_WARN(L"qb为空");
        return;
    }
    MepQbaseUtil& store = *MepQbaseUtil::GetInstance();
    ForEachRow(del, key, [&](const value& row) { DeletePipeSizeTableItem(row.as_object(), *qb); });
    ForEachRow(add, key, [&](const value& row) { store.SyncPipeSizeTableItem(qb, disciplineId, row); });
}

void DownloadSizeTableData(const value& add, const value& del, CQbase* qb, wstring key, const char* classCode) {
    if (qb == nullptr) {
        VORN_DEBUG_WARN(L"qb为空");
        return;
    }
    ForEachRow(del, key, [&](const value& row) {
        const wstring id = jsonread::Text(row.as_object(), "ID");
        if (key == kDuctGroup)
            DeleteDuctSizeTable(id, *qb);
        else
            qb->deleteRec(classCode, id);
    });
    MepQbaseUtil& store = *MepQbaseUtil::GetInstance();
    ForEachRow(add, key, [&](const value& row) {
        const wstring id = jsonread::Text(row.as_object(), "ID");
        store.SyncSizeTableExceptPipeAndGroupTableItem(qb, key, id.c_str(), row);
    });
}

bool MepQbaseUtil::MergeOneTableData(const value& add, const value& del, CQbase* qb, CQbase* statusQb,
                                     const char* classCode, wstring key, short mepType, short disciplineId) {
    if (qb == nullptr) {
        VORN_DEBUG_WARN(L"qb 为空");
        return false;
    }
    if (classCode == nullptr) {
        VORN_DEBUG_WARN(L"qpdClassId 为空");
        return false;
    }
    if (statusQb == nullptr) {
        VORN_DEBUG_WARN(L"qb_statusQbase为空");
        return false;
    }
    CloudChanges cloud;
    GetCloudChangedIdLists(add, del, key, cloud.added, cloud.deleted, cloud.modified);
    if (cloud.IsEmpty())
        return DoUnit(TOLM_CALL_SITE, key + L":下载失败", [&] { RequireLists(add, del, key); });
    LocalChanges local;
    if (!AppendLocalChanges(statusQb, mepType, disciplineId, classCode, local)) {
        VORN_DEBUG_WARN(L"bGetLocalIdListSucc 为false");
        return false;
    }
    const auto download = [&] { DownloadTableData(add, del, qb, classCode, key, mepType, disciplineId); };
    return MergeTable(TOLM_CALL_SITE, key, qb, *statusQb, {{classCode}, mepType, disciplineId}, cloud, local, download);
}

bool MepQbaseUtil::MergeSizeTable(const value& add, const value& del, CQbase* qb, CQbase* statusQb, wstring key,
                                  short mepType, short disciplineId, const char* classCode, const IdMap& added,
                                  const IdMap& deleted, const IdMap& modified) {
    if (statusQb == nullptr) {
        VORN_DEBUG_WARN(L"qb_statusQbase为空");
        return false;
    }
    const CloudChanges cloud = ChangesOf(key, added, deleted, modified);
    if (cloud.IsEmpty())
        return true;
    LocalChanges local;
    if (!AppendLocalChanges(statusQb, mepType, disciplineId, classCode, local)) {
        VORN_DEBUG_WARN(L"bGetSizeLocalIdListSucc 为false");
        return false;
    }
    const auto download = [&] { DownloadSizeTableData(add, del, qb, key, classCode); };
    return MergeTable(TOLM_CALL_SITE, key, qb, *statusQb, {{classCode}, mepType, disciplineId}, cloud, local, download);
}

bool MepQbaseUtil::MergePipeSizeTable(const value& add, const value& del, CQbase* qb, CQbase* statusQb, wstring key,
                                      short disciplineId, const IdMap& added, const IdMap& deleted,
                                      const IdMap& modified) {
    if (statusQb == nullptr) {
        VORN_DEBUG_WARN(L"qb_statusQbase为空");
        return false;
    }
    const CloudChanges cloud = ChangesOf(key, added, deleted, modified);
    if (cloud.IsEmpty())
        return true;
    LocalChanges local;
    if (!AppendLocalChanges(statusQb, kPipe, disciplineId, schema::kSizeModule, local)) {
        VORN_DEBUG_WARN(L"bGetSizeLocalIdListSucc 为false");
        return false;
    }
    if (!AppendLocalChanges(statusQb, kPipe, disciplineId, schema::kMaterial, local)) {
        VORN_DEBUG_WARN(L"bGetMaterialLocalIdListSucc 为false");
        return false;
    }
    const auto download = [&] { DownloadPipeSizeTableData(add, del, qb, key, disciplineId); };
    const Slice slice{{schema::kSizeModule, schema::kMaterial}, kPipe, disciplineId};
    return MergeTable(TOLM_CALL_SITE, key, qb, *statusQb, slice, cloud, local, download);
}

} // namespace tolm
