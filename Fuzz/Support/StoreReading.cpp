#include "Fuzz/Support/StoreReading.h"

#include "Fuzz/Support/Files.h"
#include "Fuzz/Support/Require.h"
#include "Host/Definitions.h"
#include "MepDatabase/MepQbaseUtil.h"
#include "MepDatabase/PackedLists.h"
#include "MepDatabase/StoreSchema.h"
#include "Qbase/Qbase.h"
#include "TolmDataSet/DataSetMethods.h"
#include "TolmDataSet/ITolmDataSetFactory.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace tolmfuzz {
namespace {

using Type = tolm::TolmProjectSettingMEPObjectType;
using Discipline = tolm::MEPDisciplineId;

struct Slice {
    Type type;
    Discipline discipline;
};
constexpr std::array kSlices{Slice{Type::Pipe, Discipline::Plumbing},
                             Slice{Type::Pipe, Discipline::HVAC},
                             Slice{Type::Duct, Discipline::HVAC},
                             Slice{Type::CableTray, Discipline::Electrical},
                             Slice{Type::Conduit, Discipline::Electrical},
                             Slice{Type::Wire, Discipline::Electrical},
                             Slice{Type::ElectricalSystem, Discipline::Electrical}};

struct Place {
    wstring path;
    wstring definition;
    wstring components;
};

tolm::MepQbaseUtil& Store() {
    return *tolm::MepQbaseUtil::GetInstance();
}

std::size_t ReadMaterials(const Place& at, const Slice& slice) {
    std::vector<vorn::OwnerPtr<tolm::IProjectSettingMaterial>> list;
    Store().ReadMaterialList(at.path, at.definition, slice.type, slice.discipline, list);
    return list.size();
}

std::size_t ReadSizes(const Place& at, const Slice& slice) {
    std::vector<vorn::OwnerPtr<tolm::IProjectSettingSizeModule>> list;
    Store().ReadSizeModuleList(at.path, at.definition, slice.type, slice.discipline, list);
    return list.size();
}

std::size_t ReadSeries(const Place& at, const Slice& slice) {
    std::vector<vorn::OwnerPtr<tolm::IProjectSettingMEPMaterialSerie>> list;
    Store().ReadMEPMaterialSerieList(at.path, at.definition, at.components, slice.type, slice.discipline, list);
    return list.size();
}

std::size_t ReadGroups(const Place& at, const Slice& slice) {
    std::vector<vorn::OwnerPtr<tolm::IProjectSettingMEPMaterialSerieGroup>> list;
    Store().ReadMEPMaterialSerieGroupList(at.path, at.definition, slice.type, slice.discipline, list);
    return list.size();
}

std::size_t ReadSystemTypes(const Place& at, const Slice& slice) {
    std::vector<vorn::OwnerPtr<tolm::IProjectSettingSystemType>> list;
    Store().ReadSystemTypeList(at.path, at.definition, at.components, slice.discipline, slice.type, list);
    return list.size();
}

/// A list operation and the class of its records.
struct ListOperation {
    const char* classCode;
    std::size_t (*read)(const Place&, const Slice&);
};
constexpr std::array kListOperations{
    ListOperation{"MTS", ReadMaterials}, ListOperation{"PSI", ReadSizes},       ListOperation{"SMS", ReadSeries},
    ListOperation{"MSG", ReadGroups},    ListOperation{"SYS", ReadSystemTypes},
};

std::string CountQuery(const char* classCode, const Slice& slice) {
    return "SELECT count(*) FROM " + std::string(classCode) +
           " WHERE MEPType=" + std::to_string(static_cast<int>(slice.type)) +
           " AND DisciplineId=" + std::to_string(static_cast<int>(slice.discipline));
}

// What lists something else than all records of a slice.

void ReadConnections(const Place& at, const Slice& slice) {
    std::map<wstring, vorn::OwnerPtr<tolm::IProjectSettingConnectionSerie>> series;
    Store().ReadConectionSerieList(at.path, at.definition, at.components, slice.type,
                                   tolm::MEPConnectorTypeDefinition::ConnectorTypeNameList, series);
    std::vector<vorn::OwnerPtr<tolm::IProjectSettingConnectionSerie>> list;
    Store().ReadConectionSerieList(at.path, at.definition, at.components, tolm::MEPConnectorType::PipeThreaded, list);
}

void ReadNamesAndReferences(const Place& at, const Slice& slice) {
    std::vector<std::map<wstring, wstring>> names;
    Store().ReadSystemTypeNameIds(at.path, at.definition, {static_cast<int>(slice.discipline)},
                                  {static_cast<int>(slice.type)}, names);
    std::vector<wstring> ids;
    for (const auto& map : names) {
        for (const auto& [id, name] : map)
            ids.push_back(id);
    }
    std::map<wstring, std::vector<wstring>> references;
    Store().ReadMEPSerieRecordGuidListOfSystemType(at.path, at.definition, ids, references);
}

std::size_t CountCircuitTemplates(const Place& at) {
    std::vector<vorn::OwnerPtr<tolm::ITolmProjectSettingCircuitTemplate>> list;
    Store().ReadCircuitTemplateList(at.path, at.definition, list);
    return list.size();
}

void ReadMethods(const Place& at, const Slice& slice) {
    std::vector<tolm::DataSetBalancingMethod> balancing;
    Store().readBalancingMethodList(at.path, at.definition, slice.discipline, balancing);
    std::vector<tolm::DataSetInsulationSerie> insulation;
    Store().readInsulationSerieList(at.path, at.definition, slice.discipline, tolm::TolmInsulationSerieType{},
                                    insulation);
    std::vector<tolm::DataSetSizingMethod> sizing;
    Store().readSizingMethodList(at.path, at.definition, tolm::TolmSizingMethodType{}, sizing);
}

void ReadHeader(const Place& at) {
    bool hasLocalChanges = false;
    Store().GetLocalVersion(at.path, at.definition, hasLocalChanges);
    Store().GetLastUpdateTimePoint(at.path, at.definition);
}

/// A condition that no record may meet.
struct Unsound {
    const char* classCode;
    const char* condition;
};
constexpr const char* kEndlessTime = "abs(CreateTime)>1.7976931348623157e308";
constexpr std::array kUnsound{
    Unsound{"SYS", kEndlessTime},
    Unsound{"MTS", kEndlessTime},
    Unsound{"PSI", kEndlessTime},
    Unsound{"SMS", kEndlessTime},
    Unsound{"MSG", kEndlessTime},
    Unsound{"PSI", "abs(roughness)>1.7976931348623157e308"},
    Unsound{"SMS", "abs(minSize)>1.7976931348623157e308"},
    Unsound{"SMS", "abs(maxSize)>1.7976931348623157e308"},
    Unsound{"COS", "length(FittingList)%106 OR length(FittingList)>300*106"},
    Unsound{"PSI", "length(PipeSizeList)%16 OR length(PipeSizeList)>300*16"},
    Unsound{"PSI", "length(DuctSizeList)%8 OR length(DuctSizeList)>300*8"},
    Unsound{"PSI", "length(CableSpecificationList)%56 OR length(CableSpecificationList)>300*56"},
    Unsound{"PSI", "length(CableTraySizeList)%4 OR length(CableTraySizeList)>300*4"},
    Unsound{"SYS", "json_valid(ifnull(MaterialSerieIds,0))+json_valid(ifnull(CableSpecTypeIds,0))<2"},
};

bool IsFinite(const tolm::ProjectSettingPipeSize& size) {
    return std::isfinite(size.nominalDiameter) && std::isfinite(size.outerDiameter) &&
           std::isfinite(size.innerDiameter) && std::isfinite(size.thickness);
}
bool IsFinite(const tolm::ProjectSettingDuctSize& size) {
    return std::isfinite(size.size) && std::isfinite(size.thickness);
}
bool IsFinite(const tolm::PackedFitting& fitting) {
    return std::isfinite(fitting.min) && std::isfinite(fitting.max);
}

template <class Entry>
void RequireFinite(CQbase& qb, const char* classCode, short attribute, const tolm::PackedLayout<Entry>& layout) {
    for (bool more = qb.fetchFirstMember(classCode); more; more = qb.fetchNextMember()) {
        CByteBuffer bytes;
        int count = 0;
        if (!qb.getBinaryArray(attribute, bytes, count))
            continue;
        const auto list = tolm::Unpack(layout, bytes.data(), count);
        Require(std::ranges::all_of(list, [](const Entry& entry) { return IsFinite(entry); }),
                "the numbers of a packed list are finite");
    }
}

void RequireFiniteLists(const wstring& path) {
    CQbase qb;
    Require(qb.openDatabase(tolm::DataSetFilePath::TOLMDDQFilePath, path, false) && qb.lockForRead(),
            "the store opens");
    RequireFinite(qb, tolm::schema::kSizeModule, tolm::schema::kPipeSizeList, tolm::kPipeSizeLayout);
    RequireFinite(qb, tolm::schema::kSizeModule, tolm::schema::kDuctSizeList, tolm::kDuctSizeLayout);
    RequireFinite(qb, tolm::schema::kConnectionSerie, tolm::schema::kFittingList, tolm::kFittingLayout);
}

/// The conditions that records meet, "" for none, in one query.
std::string UnsoundQuery() {
    std::string query = "SELECT group_concat(what) FROM (";
    for (const Unsound& each : kUnsound) {
        const std::string what = std::string(each.classCode) + ": " + each.condition;
        query += std::string(&each == kUnsound.data() ? "" : " UNION ALL ") + "SELECT '" + what + "' AS what FROM " +
                 each.classCode + " WHERE " + each.condition;
    }
    return query + ")";
}

} // namespace

std::string ReadLists(const wstring& path, const wstring& componentPath, std::size_t turn) {
    const Place place{path, tolm::DataSetFilePath::TOLMDDQFilePath, componentPath};
    const auto next = [&] { return kSlices.at(turn++ % kSlices.size()); };
    std::string missed;
    for (const ListOperation& operation : kListOperations) {
        const Slice slice = next();
        const auto count = std::to_string(operation.read(place, slice));
        const auto stands = SqlValue(path, CountQuery(operation.classCode, slice));
        if (count != stands)
            missed += std::string(operation.classCode) + ": " + count + " of " + stands + "; ";
    }
    ReadConnections(place, next());
    ReadNamesAndReferences(place, next());
    if (std::to_string(CountCircuitTemplates(place)) != SqlValue(path, "SELECT count(*) FROM CRT"))
        missed += "circuit templates; ";
    ReadMethods(place, next());
    ReadHeader(place);
    return missed;
}

void RequireSound(const wstring& path) {
    static const std::string query = UnsoundQuery();
    const std::string integrity = SqlValue(path, "PRAGMA integrity_check");
    Require(integrity == "ok", "the store is in order: " + integrity);
    const std::string unsound = SqlValue(path, query);
    Require(unsound.empty(), "no record holds what it may not: " + unsound);
    RequireFiniteLists(path);
}

std::string CountRecords(const wstring& path) {
    std::string counts;
    for (const char* classCode : {"SYS", "COS", "MTS", "PSI", "SMS", "MSG", "CRT"})
        counts +=
            std::string(classCode) + " " + SqlValue(path, "SELECT count(*) FROM " + std::string(classCode)) + "; ";
    return counts;
}

} // namespace tolmfuzz
