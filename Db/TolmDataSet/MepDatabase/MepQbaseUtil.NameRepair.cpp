#include "MepDatabase/MepQbaseUtil.h"
#include "MepDatabase/CallSite.h"
#include "MepDatabase/IngestRecord.h"
#include "Vorn/DebugMessage.h"

#include <optional>
#include <unordered_set>

namespace tolm {
namespace {

std::vector<wstring> Joined(std::vector<wstring> first, const std::vector<wstring>& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

/// The table whose names are repaired, and the operation in whose name faults are reported.
struct Table {
    CQbase& qb;
    const char* classCode;
    short mepType;
    short disciplineId;
    bool reportMissing;
    CallSite site;
};

/// The name of a record; nothing when the record or its name is missing. `missing` tells of the record.
std::optional<wstring> NameOf(const Table& table, const wstring& id, const wchar_t* missing) {
    if (!table.qb.fetchEqualRec(table.classCode, id)) {
        if (table.reportMissing)
            table.site.Warn(missing + id);
        return std::nullopt;
    }
    CWsz name;
    if (!table.qb.getWsz(schema::kName, name, 1)) {
        table.site.Warn(L"此条目没有name字段: " + id);
        return std::nullopt;
    }
    return name.str();
}

using Names = std::unordered_set<wstring>;

Names CloudNames(const Table& table, const std::vector<wstring>& ids) {
    Names names;
    for (const wstring& id : ids) {
        const auto name = NameOf(table, id, L"云端下载的此条目没找到: ");
        if (name && !names.insert(*name).second)
            table.site.Warn(L"云端下载的存在重名的条目: " + id + *name);
    }
    return names;
}

/// The local records, by id, whose names the cloud uses. A record that came from the cloud is the cloud's own and
/// never clashes.
std::map<wstring, wstring> Clashes(const Table& table, const std::vector<wstring>& localIds,
                                   const std::vector<wstring>& cloudIds, const Names& cloudNames) {
    const std::unordered_set<wstring> fromCloud(cloudIds.begin(), cloudIds.end());
    Names localNames;
    std::map<wstring, wstring> clashes;
    for (const wstring& id : localIds) {
        if (fromCloud.contains(id))
            continue;
        const auto name = NameOf(table, id, L"本地修改的此条目没找到: ");
        if (name && !localNames.insert(*name).second)
            table.site.Warn(L"本地修改的存在重名的条目: " + id + *name);
        else if (name && cloudNames.contains(*name))
            clashes.emplace(id, *name);
    }
    return clashes;
}

/// Tells whether another record of the table than `id` bears the name.
bool IsTaken(const Table& table, const wstring& name, const wstring& id) {
    table.qb.resetFilters();
    table.qb.setFilter(schema::kName, "=", name.c_str());
    table.qb.setFilter(schema::kMEPType, "=", table.mepType);
    table.qb.setFilter(schema::kDisciplineId, "=", table.disciplineId);
    for (bool found = table.qb.fetchFirstMember(table.classCode); found; found = table.qb.fetchNextMember()) {
        CWsz member;
        if (table.qb.getObjId(member) && member.str() != id)
            return true;
    }
    return false;
}

wstring Numbered(const wstring& name, int number) {
    return name + L"(" + std::to_wstring(number) + L")";
}

void Rename(const Table& table, const wstring& id, const wstring& name) {
    int number = 1;
    while (IsTaken(table, Numbered(name, number), id))
        ++number;
    if (table.qb.fetchEqualRec(table.classCode, id)) {
        ingest::SetText(table.qb, schema::kName, Numbered(name, number));
        table.qb.saveRec();
    }
}

} // namespace

bool MepQbaseUtil::FindAndRenameDuplicatedItems(std::vector<wstring> cloudAdded, std::vector<wstring> cloudModified,
                                                std::vector<wstring> localCreated, std::vector<wstring> localEdited,
                                                CQbase* qb, const char* classCode, short mepType, short disciplineId,
                                                bool reportMissing) {
    if (qb == nullptr) {
        VORN_DEBUG_WARN(L"qb 为空");
        return false;
    }
    if (classCode == nullptr) {
        VORN_DEBUG_WARN(L"qpdClassId 为空");
        return false;
    }
    const std::vector<wstring> cloudIds = Joined(std::move(cloudAdded), cloudModified);
    const std::vector<wstring> localIds = Joined(std::move(localCreated), localEdited);
    if (cloudIds.empty() || localIds.empty())
        return false;
    const Table table{*qb, classCode, mepType, disciplineId, reportMissing, TOLM_CALL_SITE};
    const Names cloudNames = CloudNames(table, cloudIds);
    const auto clashes = Clashes(table, localIds, cloudIds, cloudNames);
    for (const auto& [id, name] : clashes)
        Rename(table, id, name);
    return !clashes.empty();
}

} // namespace tolm
