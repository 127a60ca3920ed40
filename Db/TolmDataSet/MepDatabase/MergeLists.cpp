#include "MepDatabase/MergeLists.h"

#include "MepDatabase/MepProjectSettingHttpUtility.h"
#include "MepDatabase/MergeRule.h"
#include "MepDatabase/WireText.h"
#include "Vorn/DebugMessage.h"

#include <unordered_map>

namespace tolm {
namespace {

std::vector<wstring> IdsOf(const web::json::value& tables, const wstring& table) {
    std::vector<wstring> ids;
    const web::json::array* const rows = RowsOf(tables, table);
    if (rows == nullptr)
        return ids;
    web::json::value id;
    for (const auto& row : *rows) {
        if (GetJsonValueAtField(row, L"ID", id) && id.is_string())
            ids.push_back(WideText(id));
    }
    return ids;
}

using GroupNames = std::unordered_map<wstring, wstring>;

void CollectGroupNames(const web::json::value& tables, GroupNames& names) {
    const web::json::array* const rows = RowsOf(tables, TolmProjectSettingHttpUtility::ConfigTreeTable());
    if (rows == nullptr)
        return;
    for (const auto& row : *rows) {
        if (row.has_string_field("ID") && row.has_string_field("groupName"))
            names.try_emplace(WideText(row.at("ID")), WideText(row.at("groupName")));
    }
}

void FileByGroup(const std::vector<wstring>& ids, const GroupNames& names,
                 std::map<wstring, std::vector<wstring>>& groups) {
    for (const wstring& id : ids) {
        if (const auto name = names.find(id); name != names.end())
            groups[name->second].push_back(id);
    }
}

} // namespace

const web::json::array* RowsOf(const web::json::value& tables, const wstring& table) {
    const std::string key = ToWire(table);
    return tables.has_array_field(key) ? &tables.at(key).as_array() : nullptr;
}

bool GetJsonValueAtField(const web::json::value& element, wstring field, web::json::value& out) {
    out = web::json::value::null();
    const std::string key = ToWire(field);
    if (!element.has_field(key)) {
        VORN_DEBUG_WARN(L"此field为空：" + field);
        return false;
    }
    out = element.at(key);
    return !out.is_null();
}

bool GetCloudChangedIdLists(const web::json::value& add, const web::json::value& del, wstring key,
                            std::vector<wstring>& cloudAdded, std::vector<wstring>& cloudDeleted,
                            std::vector<wstring>& cloudModified) {
    cloudAdded.clear();
    cloudModified.clear();
    const std::vector<wstring> deletedIds = IdsOf(del, key);
    IdPool deleted(deletedIds);
    for (wstring& id : IdsOf(add, key)) {
        auto& list = deleted.Take(id) ? cloudModified : cloudAdded;
        list.push_back(std::move(id));
    }
    cloudDeleted = deleted.Left();
    return true;
}

bool GetCloudChangedConfigTreeIdLists(const web::json::value& add, const web::json::value& del,
                                      std::map<wstring, std::vector<wstring>>& added,
                                      std::map<wstring, std::vector<wstring>>& deleted,
                                      std::map<wstring, std::vector<wstring>>& modified) {
    added.clear();
    deleted.clear();
    modified.clear();
    CloudChanges changes;
    GetCloudChangedIdLists(add, del, TolmProjectSettingHttpUtility::ConfigTreeTable(), changes.added, changes.deleted,
                           changes.modified);
    if (changes.IsEmpty())
        return false;
    GroupNames names;
    CollectGroupNames(add, names);
    CollectGroupNames(del, names);
    FileByGroup(changes.added, names, added);
    FileByGroup(changes.deleted, names, deleted);
    FileByGroup(changes.modified, names, modified);
    return true;
}

} // namespace tolm
