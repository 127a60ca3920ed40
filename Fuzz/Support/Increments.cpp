#include "Fuzz/Support/Increments.h"

#include "Fuzz/Support/Require.h"
#include "Host/Definitions.h"
#include "MepDatabase/CloudRefresh.h"
#include "MepDatabase/MepQbaseUtil.h"
#include "MepDatabase/MergeLists.h"
#include "MepDatabase/MergeTables.h"
#include "MepDatabase/WireText.h"
#include "Qbase/Qbase.h"

#include <cpprest/json.h>

namespace tolmfuzz {
namespace {

using web::json::value;

/// One increment after the other; an input with more is cut.
constexpr std::size_t kMostIncrements = 4;

void OpenForUpdate(CQbase& qb, const wstring& path, bool create) {
    Require(qb.openDatabase(tolm::DataSetFilePath::TOLMDDQFilePath, path, create), "the store opens");
}

tolm::RecoverDataInfo WantedOf(const value& increment) {
    tolm::RecoverDataInfo wanted;
    if (!increment.has_array_field("recover"))
        return wanted;
    for (const value& id : increment.at("recover").as_array()) {
        if (id.is_string())
            wanted.idMap[tolm::WideText(id)] = L"";
    }
    return wanted;
}

/// Everything that a merge remembers of an increment's "ConfigTree".
struct ConfigTreeLists {
    std::map<wstring, std::vector<wstring>> added;
    std::map<wstring, std::vector<wstring>> deleted;
    std::map<wstring, std::vector<wstring>> modified;
};

void MergeRow(const DatasetPlace& place, const tolm::MergeTableRow& row, const value& add, const value& del, CQbase& qb,
              CQbase& status, const ConfigTreeLists& lists) {
    tolm::MepQbaseUtil& store = *tolm::MepQbaseUtil::GetInstance();
    switch (row.form) {
    case tolm::MergeForm::OneTable:
        store.MergeOneTableData(add, del, &qb, &status, row.classCode, row.key, row.mepType, row.disciplineId);
        break;
    case tolm::MergeForm::PipeSizes:
        store.MergePipeSizeTable(add, del, &qb, &status, row.key, row.disciplineId, lists.added, lists.deleted,
                                 lists.modified);
        break;
    case tolm::MergeForm::OneGroup:
        store.MergeSizeTable(add, del, &qb, &status, row.key, row.mepType, row.disciplineId, row.classCode, lists.added,
                             lists.deleted, lists.modified);
        break;
    case tolm::MergeForm::OtherTables:
        store.MergeOtherContent(add, del, &qb, &status, place.products, place.binaryFolder, place.data);
        break;
    }
}

void MergeTables(const DatasetPlace& place, const value& add, const value& del, CQbase& qb, CQbase& status) {
    ConfigTreeLists lists;
    for (const auto& row : tolm::PlainMergeTables())
        MergeRow(place, row, add, del, qb, status, lists);
    if (!tolm::GetCloudChangedConfigTreeIdLists(add, del, lists.added, lists.deleted, lists.modified))
        return;
    for (const auto& row : tolm::ConfigTreeMergeTables())
        MergeRow(place, row, add, del, qb, status, lists);
}

} // namespace

std::vector<value> ParseIncrements(const std::string& text) {
    try {
        const value root = value::parse(text);
        if (!root.is_array())
            return {root};
        std::vector<value> increments(root.as_array().begin(), root.as_array().end());
        increments.resize(std::min(increments.size(), kMostIncrements));
        return increments;
    } catch (const web::json::json_exception&) {
        return {};
    }
}

int LocalVersionOf(const value& increment) {
    return increment.is_object() && increment.has_integer_field("localVersion")
               ? tolm::WholeNumber(increment.at("localVersion"))
               : 0;
}

void Refresh(const DatasetPlace& place, value increment) {
    const int version = LocalVersionOf(increment);
    tolm::RecoverDataInfo wanted = WantedOf(increment);
    CQbase qb;
    OpenForUpdate(qb, place.data, true);
    const tolm::CloudRefresh::Paths paths{tolm::DataSetFilePath::TOLMDDQFilePath, place.products, place.binaryFolder,
                                          place.data};
    tolm::CloudRefresh refresh(TOLM_CALL_SITE, &qb, nullptr, paths, &wanted);
    long content = 0;
    Require(qb.getContentVersion(content), "a store that is open tells the version of its content");
    try {
        refresh.Apply(increment, {version, content});
    } catch (const std::exception&) {
        // The pipeline tells of it and goes on; what was applied is kept.
    }
    Require(qb.closeDatabase(), "no increment keeps the store from being committed");
}

void Merge(const DatasetPlace& place, const value& increment) {
    if (!increment.is_object() || !increment.has_field("add") || !increment.has_field("del"))
        return; // no answer of the service
    const value& add = increment.at("add");
    const value& del = increment.at("del");
    CQbase qb;
    CQbase status;
    OpenForUpdate(qb, place.data, false);
    OpenForUpdate(status, place.status, false);
    Require(qb.lockForUpdate() && status.lockForUpdate(), "both stores are locked");
    try {
        MergeTables(place, add, del, qb, status);
    } catch (const std::exception& exception) {
        Require(false, std::string("a merge lets no exception out: ") + exception.what());
    }
    Require(qb.closeDatabase() && status.closeDatabase(), "no increment keeps the stores from being committed");
}

} // namespace tolmfuzz
