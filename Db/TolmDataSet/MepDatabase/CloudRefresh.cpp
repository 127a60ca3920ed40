#include "MepDatabase/CloudRefresh.h"

#include "MepDatabase/ConfigTreeIngest.h"
#include "MepDatabase/JsonRead.h"
#include "MepDatabase/MepProjectSettingHttpUtility.h"
#include "MepDatabase/MepQbaseUtil.h"
#include "MepDatabase/WireText.h"
#include "MepDatabase/WorkUnit.h"
#include "Qbase/Qbase.h"
#include "Vorn/Text.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

namespace tolm {

/// A table of the download, the slice that it stands for, and what is told when a unit of it fails.
struct CloudTableRow {
    wstring (*name)();
    short mepType;
    short disciplineId;
    const wchar_t* failure;
};

namespace {

using Http = TolmProjectSettingHttpUtility;

constexpr double DownloadedPercentage = 16;
constexpr double PhasePercentage = 8;

constexpr CloudTableRow SystemTypeTables[] = {
    {&Http::PipeSystemTypeTable, 1, 2, L"PipeSystemType:下载给排水管道系统类型失败"},
    {&Http::HVACPipeSystemTypeTable, 1, 1, L"HVACPipeSystemType:下载暖通管道系统类型失败"},
    {&Http::DuctSystemTypeTable, 2, 1, L"DuctSystemType:下载暖通风系统类型失败"},
    {&Http::ElectricalSystemTypeTable, 5, 3, L"ElectricalSystemType:下载电气系统类型失败"},
};

constexpr CloudTableRow SeriesTables[] = {
    {&Http::PipeTypeTable, 1, 2, L"PipeType:下载管配件组合失败"},
    {&Http::HVACPipeTypeTable, 1, 1, L"HVACPipeType:下载管配件组合失败"},
    {&Http::DuctTypeTable, 2, 1, L"DuctType:下载风管配件组合失败"},
    {&Http::ConduitFittingsTypeTable, 4, 3, L"下载线管配件组合失败"},
    {&Http::CableTrayFittingsTypeTable, 3, 3, L"下载桥架管配件组合失败"},
};

/// The groups of "ConfigTree" that hold materials and pipe sizes.
struct PipeGroupRow {
    const wchar_t* groupName;
    short disciplineId;
    const wchar_t* failure;
};
constexpr PipeGroupRow PipeGroups[] = {
    {L"MaterialSeries", 2, L"MaterialSeries:下载给排水管道材质或者管段失败"},
    {L"HVACMaterialSeries", 1, L"HVACMaterialSeries:下载暖通管道材质 或者管段失败"},
};

const PipeGroupRow* FindPipeGroup(const wstring& groupName) {
    const auto found =
        std::ranges::find_if(PipeGroups, [&](const PipeGroupRow& row) { return groupName == row.groupName; });
    return found == std::end(PipeGroups) ? nullptr : &*found;
}

/// The table of this name; null when the increment has none.
web::json::value* Find(web::json::object& tables, const wstring& name) {
    const std::string key = ToWire(name);
    return std::as_const(tables).find(key) == tables.cend() ? nullptr : &tables.at(key);
}

struct LessWithoutCase {
    bool operator()(const wstring& a, const wstring& b) const { return vorn::StrICmp(a.c_str(), b.c_str()) < 0; }
};
using WantedIds = std::set<wstring, LessWithoutCase>;

WantedIds WantedIdsOf(const RecoverDataInfo& recoverInfo) {
    WantedIds ids;
    for (const auto& [id, value] : recoverInfo.idMap)
        ids.insert(id);
    return ids;
}

/// The wanted ones among the deleted rows, in order of id; of two with one id the later version, of two with one
/// version the first.
web::json::value WantedRows(const web::json::object& del, const wstring& table, const WantedIds& wanted) {
    const web::json::value* const rows = jsonread::Find(del, table);
    if (rows == nullptr)
        return web::json::value::array();
    std::map<wstring, const web::json::value*> kept;
    for (const auto& row : rows->as_array()) {
        if (!row.has_string_field("ID") || !row.has_number_field("version"))
            continue;
        const wstring id = WideText(row.at("ID"));
        if (!wanted.contains(id))
            continue;
        const auto [place, isNew] = kept.try_emplace(id, &row);
        if (!isNew && row.at("version").as_double() > place->second->at("version").as_double())
            place->second = &row;
    }
    std::vector<web::json::value> result;
    result.reserve(kept.size());
    for (const auto& [id, row] : kept)
        result.push_back(*row);
    return web::json::value::array(std::move(result));
}

/// What the cloud deleted and the host wants back, under the names of the four system-type tables.
web::json::value RecoverableRows(const web::json::object& del, const RecoverDataInfo& recoverInfo) {
    const WantedIds wanted = WantedIdsOf(recoverInfo);
    auto result = web::json::value::object();
    for (const CloudTableRow& table : SystemTypeTables)
        result[ToWire(table.name())] = WantedRows(del, table.name(), wanted);
    return result;
}

} // namespace

CloudRefresh::CloudRefresh(CallSite site, CQbase* qb, vorn::IProgressReporter* progress, Paths paths,
                           RecoverDataInfo* recoverInfo)
    : m_site(site), m_qb(qb), m_progress(progress), m_paths(std::move(paths)), m_recoverInfo(recoverInfo),
      m_store(*MepQbaseUtil::GetInstance()) {}

bool CloudRefresh::IsStill(long content) const {
    long now = 0;
    return m_qb->getContentVersion(now) && now == content;
}

CloudRefresh::Applied CloudRefresh::Apply(web::json::value& increment, const Base& base) {
    Report(DownloadedPercentage);
    auto& add = increment.at("add").as_object();
    auto& del = increment.at("del").as_object();
    if (add.empty() && del.empty())
        return Applied::Nothing;
    web::json::value recoverable;
    if (m_recoverInfo != nullptr)
        recoverable = RecoverableRows(del, *m_recoverInfo);
    if (!m_qb->beginTransaction()) {
        m_site.Warn(L"beginTransaction 失败");
        return Applied::Failed;
    }
    if (!IsStill(base.content))
        return Applied::Changed;
    if (base.version > 0 && !del.empty())
        Delete(del);
    if (!add.empty())
        Add(add);
    if (m_recoverInfo != nullptr)
        m_store.RecoverInstantiatedSystemTypes(std::move(recoverable), m_qb, m_paths.definition, m_recoverInfo);
    return Applied::Yes;
}

void CloudRefresh::Report(double percentage) {
    m_percentage = percentage;
    if (m_progress != nullptr)
        m_progress->ReportProgress(percentage);
}

void CloudRefresh::Advance() {
    Report(m_percentage + PhasePercentage);
}

void CloudRefresh::Delete(const web::json::object& del) {
    for (const CloudTableRow& table : SystemTypeTables)
        m_store.SyncDeletedSystemType(del, m_qb, table.name());
    Advance();
    DeleteConfigTreeItems(del, m_qb);
    Advance();
    for (const CloudTableRow& table : SeriesTables)
        m_store.SyncDeletedMaterialSerie(del, m_qb, table.name());
    Advance();
    m_store.DeleteOtherContent(del, m_qb, m_paths.combinedProducts, m_paths.binaryFolder, m_paths.dataset);
    Advance();
}

/// Series come after the size tables: a cable-tray series looks up its size table among the records just written.
void CloudRefresh::Add(web::json::object& add) {
    AddConfigTree(add);
    Advance();
    for (const CloudTableRow& table : SystemTypeTables)
        AddSystemTypes(add, table);
    Advance();
    for (const CloudTableRow& table : SeriesTables)
        AddSeries(add, table);
    Advance();
    m_store.AddOtherContent(add, m_qb, m_paths.combinedProducts, m_paths.binaryFolder, m_paths.dataset);
    Advance();
}

void CloudRefresh::AddConfigTree(web::json::object& add) {
    if (web::json::value* const elements = Find(add, Http::ConfigTreeTable())) {
        for (auto& element : elements->as_array())
            AddConfigTreeItem(element);
    }
}

void CloudRefresh::AddConfigTreeItem(web::json::value& element) {
    const wstring groupName = WideText(element.at("groupName"));
    if (const PipeGroupRow* const group = FindPipeGroup(groupName)) {
        DoUnit(m_site, group->failure, [&] { m_store.SyncPipeSizeTableItem(m_qb, group->disciplineId, element); });
        return;
    }
    const wstring id = WideText(element.at("ID"));
    m_store.SyncSizeTableExceptPipeAndGroupTableItem(m_qb, groupName, id.c_str(), std::move(element));
}

void CloudRefresh::AddSystemTypes(web::json::object& add, const CloudTableRow& table) {
    if (web::json::value* const elements = Find(add, table.name())) {
        DoUnit(m_site, table.failure, [&] {
            m_store.SyncSystemTypes(m_qb, table.mepType, table.disciplineId,
                                    jsonread::TakeElements(elements->as_array()));
        });
    }
}

void CloudRefresh::AddSeries(web::json::object& add, const CloudTableRow& table) {
    web::json::value* const elements = Find(add, table.name());
    if (elements == nullptr)
        return;
    for (auto& element : elements->as_array()) {
        DoUnit(m_site, table.failure,
               [&] { m_store.SyncMaterialSerie(std::move(element), m_qb, table.mepType, table.disciplineId); });
    }
}

} // namespace tolm
