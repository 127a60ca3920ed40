#include "MepDatabase/MepProjectSettingHttpUtility.h"

#include "MepDatabase/CallSite.h"
#include "MepDatabase/Encoders.h"
#include "MepDatabase/TreeRows.h"
#include "MepDatabase/WireText.h"

#include <array>
#include <optional>

namespace tolm {
namespace {

using web::json::value;
using Client = TolmProjectSettingHttpUtility;
using Discipline = MEPDisciplineId;
using Type = TolmProjectSettingMEPObjectType;
template <class Record> using RecordList = Client::RecordList<Record>;

/// One table and the records that go into it; what is left open fits all. Of several that fit the first one counts.
struct ListTable {
    const wchar_t* name;
    std::optional<Discipline> discipline;
    std::optional<Type> type;

    template <class Record> bool Takes(const Record& record) const {
        return (!discipline || record.GetDisciplineId() == *discipline) && (!type || record.GetMEPType() == *type);
    }
};

struct RowFlags {
    bool wrapEdited;
    bool isCreated;
};

// --- the families: their tables in the order of processing, and how their records are encoded

struct SystemTypes {
    using Record = IProjectSettingSystemType;
    static constexpr const wchar_t* kNullWarning = L"systemType为空";
    static constexpr bool kInConfigTree = false;
    static constexpr ListTable kTables[] = {
        {CloudTables::PipeSystemType, Discipline::Plumbing, {}},
        {CloudTables::HVACPipeSystemType, Discipline::HVAC, Type::Pipe},
        {CloudTables::DuctSystemType, Discipline::HVAC, {}},
        {CloudTables::ElectricalSystemType, Discipline::Electrical, {}},
    };
    static value Encode(const ListTable&, RowFlags flags, const RecordList<Record>& records) {
        return GetCreatedOrEditedSystemTypeListJasonValue(flags.wrapEdited, flags.isCreated, records);
    }
};

struct MaterialSeries {
    using Record = IProjectSettingMEPMaterialSerie;
    static constexpr const wchar_t* kNullWarning = L"serie为空";
    static constexpr bool kInConfigTree = false;
    static constexpr ListTable kTables[] = {
        {CloudTables::PipeType, Discipline::Plumbing, Type::Pipe},
        {CloudTables::HVACPipeType, {}, Type::Pipe},
        {CloudTables::DuctType, {}, Type::Duct},
        {CloudTables::ConduitFittingsType, {}, Type::Conduit},
        {CloudTables::CableTrayFittingsType, {}, Type::CableTray},
    };
    static value Encode(const ListTable&, RowFlags flags, const RecordList<Record>& records) {
        return GetCreatedOrEditedMEPMaterialListJasonValue(flags.wrapEdited, flags.isCreated, records);
    }
};

struct SizeModules {
    using Record = IProjectSettingSizeModule;
    static constexpr const wchar_t* kNullWarning = L"pSizeModule为空";
    static constexpr bool kInConfigTree = true;
    static constexpr ListTable kTables[] = {
        {L"MaterialSeries", Discipline::Plumbing, Type::Pipe},
        {L"HVACMaterialSeries", {}, Type::Pipe},
        {L"ductSeriesType", {}, Type::Duct},
        {L"electricWireType", {}, Type::Wire},
        {L"electricLinePipe", {}, Type::Conduit},
        {L"cableTray", {}, Type::CableTray},
    };
    static value Encode(const ListTable& table, RowFlags flags, const RecordList<Record>& records) {
        const int kind = static_cast<int>(table.type.value_or(Type{0}));
        return GetCreatedOrEditedSizeModelListJasonValue(flags.wrapEdited, flags.isCreated, table.name, kind, records);
    }
};

struct Materials {
    using Record = IProjectSettingMaterial;
    static constexpr const wchar_t* kNullWarning = L"material为空";
    static constexpr bool kInConfigTree = true;
    static constexpr ListTable kTables[] = {
        {L"MaterialSeries", Discipline::Plumbing, {}},
        {L"HVACMaterialSeries", Discipline::HVAC, {}},
    };
    static value Encode(const ListTable& table, RowFlags flags, const RecordList<Record>& records) {
        return GetCreatedOrEditedMateriaListJasonValue(flags.wrapEdited, flags.isCreated, table.name, records);
    }
};

struct SerieGroups {
    using Record = IProjectSettingMEPMaterialSerieGroup;
    static constexpr const wchar_t* kNullWarning = L"serie为空";
    static constexpr bool kInConfigTree = true;
    static constexpr ListTable kTables[] = {
        {L"pipeFittingGroup", Discipline::Plumbing, Type::Pipe},
        {L"havcFittingGroup", Discipline::HVAC, Type::Pipe},
        {L"ductFittingGroup", Discipline::HVAC, Type::Duct},
    };
    static value Encode(const ListTable& table, RowFlags flags, const RecordList<Record>& records) {
        return GetCreatedOrEditedMaterieSerieGroupJasonValue(flags.wrapEdited, flags.isCreated, table.name, records);
    }
};

// --- the walker

template <class Family> using FamilyList = RecordList<typename Family::Record>;

/// A list for each table; a record without a table is left out.
template <class Family> using SortedLists = std::array<FamilyList<Family>, std::size(Family::kTables)>;

/// Nothing, and a report, when a record is null.
template <class Family>
std::optional<SortedLists<Family>> SortByTable(const FamilyList<Family>& list, const CallSite& caller) {
    SortedLists<Family> sorted;
    for (const auto& record : list) {
        if (!record) {
            caller.Warn(Family::kNullWarning);
            return std::nullopt;
        }
        for (std::size_t at = 0; at < sorted.size(); ++at) {
            if (Family::kTables[at].Takes(*record)) {
                sorted[at].push_back(record);
                break;
            }
        }
    }
    return sorted;
}

/// Encodes each table that has records and hands it on, until one is not taken.
template <class Family, class Take>
bool ForEachTable(const FamilyList<Family>& list, RowFlags flags, const CallSite& caller, const Take& take) {
    const auto sorted = SortByTable<Family>(list, caller);
    if (!sorted)
        return false;
    for (std::size_t at = 0; at < sorted->size(); ++at) {
        const auto& records = (*sorted)[at];
        const auto& table = Family::kTables[at];
        if (!records.empty() && !take(table, Family::Encode(table, flags, records), records.size()))
            return false;
    }
    return true;
}

template <class Family>
bool SendList(Client& client, const wstring& projectId, const FamilyList<Family>& list, RowFlags flags,
              const CallSite& caller) {
    const auto send = flags.isCreated ? &Client::SendCreatedEvent : &Client::SendEditedEvent;
    const auto sendTable = [&](const ListTable& table, value encoded, std::size_t) {
        const wchar_t* name = Family::kInConfigTree ? CloudTables::ConfigTree : table.name;
        return (client.*send)(client.GetProjectSettingAPIHost(), projectId, name, std::move(encoded));
    };
    return !list.empty() && ForEachTable<Family>(list, flags, caller, sendTable);
}

template <class Family>
void GatherTables(value& target, const FamilyList<Family>& list, RowFlags flags, const CallSite& caller) {
    ForEachTable<Family>(list, flags, caller, [&target](const ListTable& table, value encoded, std::size_t) {
        target[ToWire(table.name)] = std::move(encoded["rows"]);
        return true;
    });
}

template <class Family>
void GatherTreeRows(value& target, int& index, const FamilyList<Family>& list, RowFlags flags, const CallSite& caller) {
    ForEachTable<Family>(list, flags, caller, [&](const ListTable&, value encoded, std::size_t records) {
        const bool taken = PutTreeRows(target, index, std::move(encoded), records);
        if (!taken)
            caller.Warn(L"sizeListObj size 不正确");
        return taken;
    });
}

bool IsNothing(const wstring& projectId, const std::vector<wstring>& ids, const wstring& tableName) {
    return ids.empty() || projectId.empty() || tableName.empty();
}

} // namespace

bool PutTreeRows(value& target, int& index, value encoded, std::size_t records) {
    auto& rows = encoded["rows"];
    if (rows.size() != records)
        return false;
    auto& tree = target["ConfigTree"];
    for (std::size_t at = 0; at < records; ++at)
        tree[static_cast<std::size_t>(index++)] = std::move(rows[at]);
    return true;
}

bool TolmProjectSettingHttpUtility::SendCreatedOrEditedSystemTypeList(wstring projectId,
                                                                      RecordList<IProjectSettingSystemType> list,
                                                                      bool wrapEdited, bool isCreated) {
    return SendList<SystemTypes>(*this, projectId, list, {wrapEdited, isCreated}, TOLM_CALL_SITE);
}

void TolmProjectSettingHttpUtility::SendCreatedOrEditedSystemTypeList(value& target, wstring,
                                                                      RecordList<IProjectSettingSystemType> list,
                                                                      bool wrapEdited, bool isCreated) {
    GatherTables<SystemTypes>(target, list, {wrapEdited, isCreated}, TOLM_CALL_SITE);
}

bool TolmProjectSettingHttpUtility::SendCreatedOrEditedMEPMaterialSerieList(
    wstring projectId, RecordList<IProjectSettingMEPMaterialSerie> list, bool wrapEdited, bool isCreated) {
    return SendList<MaterialSeries>(*this, projectId, list, {wrapEdited, isCreated}, TOLM_CALL_SITE);
}

void TolmProjectSettingHttpUtility::SendCreatedOrEditedMEPMaterialSerieList(
    value& target, wstring, RecordList<IProjectSettingMEPMaterialSerie> list, bool wrapEdited, bool isCreated) {
    GatherTables<MaterialSeries>(target, list, {wrapEdited, isCreated}, TOLM_CALL_SITE);
}

bool TolmProjectSettingHttpUtility::SendCreatedOrEditedSizeModelList(wstring projectId,
                                                                     RecordList<IProjectSettingSizeModule> list,
                                                                     bool wrapEdited, bool isCreated) {
    return SendList<SizeModules>(*this, projectId, list, {wrapEdited, isCreated}, TOLM_CALL_SITE);
}

void TolmProjectSettingHttpUtility::SendCreatedOrEditedSizeModelList(value& target, int& index, wstring,
                                                                     RecordList<IProjectSettingSizeModule> list,
                                                                     bool wrapEdited, bool isCreated) {
    GatherTreeRows<SizeModules>(target, index, list, {wrapEdited, isCreated}, TOLM_CALL_SITE);
}

bool TolmProjectSettingHttpUtility::SendCreatedOrEditedMateriaList(wstring projectId,
                                                                   RecordList<IProjectSettingMaterial> list,
                                                                   bool wrapEdited, bool isCreated) {
    return SendList<Materials>(*this, projectId, list, {wrapEdited, isCreated}, TOLM_CALL_SITE);
}

void TolmProjectSettingHttpUtility::SendCreatedOrEditedMateriaList(value& target, int& index, wstring,
                                                                   RecordList<IProjectSettingMaterial> list,
                                                                   bool wrapEdited, bool isCreated) {
    GatherTreeRows<Materials>(target, index, list, {wrapEdited, isCreated}, TOLM_CALL_SITE);
}

bool TolmProjectSettingHttpUtility::SendCreatedOrEditedMaterieSerieGroupList(
    wstring projectId, RecordList<IProjectSettingMEPMaterialSerieGroup> list, bool wrapEdited, bool isCreated) {
    return SendList<SerieGroups>(*this, projectId, list, {wrapEdited, isCreated}, TOLM_CALL_SITE);
}

void TolmProjectSettingHttpUtility::SendCreatedOrEditedMaterieSerieGroupList(
    value& target, int& index, wstring, RecordList<IProjectSettingMEPMaterialSerieGroup> list, bool wrapEdited,
    bool isCreated) {
    GatherTreeRows<SerieGroups>(target, index, list, {wrapEdited, isCreated}, TOLM_CALL_SITE);
}

void TolmProjectSettingHttpUtility::AddRemovedDataIds(value& target, wstring projectId, std::vector<wstring> ids,
                                                      wstring tableName) {
    if (!IsNothing(projectId, ids, tableName))
        target[ToWire(tableName)] = JsonTexts(ids);
}

void TolmProjectSettingHttpUtility::AddRemovedConfigTreeIds(value& target, int& index, wstring projectId,
                                                            std::vector<wstring> ids, wstring tableName) {
    if (IsNothing(projectId, ids, tableName))
        return;
    auto& table = target[ToWire(tableName)];
    for (const auto& id : ids)
        table[static_cast<std::size_t>(index++)] = JsonText(id);
}

} // namespace tolm
