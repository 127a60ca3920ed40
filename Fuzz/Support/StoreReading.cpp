#include "Fuzz/Support/StoreReading.h"

#include "Fuzz/Support/Files.h"
#include "Fuzz/Support/Require.h"
#include "Host/Definitions.h"
#include "MepDatabase/MepQbaseUtil.h"
#include "MepDatabase/StoreSchema.h"
#include "TolmDataSet/ITolmDataSetFactory.h"

#include <array>

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

bool ReadMaterials(const Place& at, const Slice& slice) {
    std::vector<vorn::OwnerPtr<tolm::IProjectSettingMaterial>> list;
    return Store().ReadMaterialList(at.path, at.definition, slice.type, slice.discipline, list);
}

bool ReadSizes(const Place& at, const Slice& slice) {
    std::vector<vorn::OwnerPtr<tolm::IProjectSettingSizeModule>> list;
    return Store().ReadSizeModuleList(at.path, at.definition, slice.type, slice.discipline, list);
}

bool ReadConnections(const Place& at, const Slice& slice) {
    std::map<wstring, vorn::OwnerPtr<tolm::IProjectSettingConnectionSerie>> series;
    return Store().ReadConectionSerieList(at.path, at.definition, at.components, slice.type,
                                          tolm::MEPConnectorTypeDefinition::ConnectorTypeNameList, series);
}

bool ReadConnectionsOfOneType(const Place& at, const Slice&) {
    std::vector<vorn::OwnerPtr<tolm::IProjectSettingConnectionSerie>> list;
    return Store().ReadConectionSerieList(at.path, at.definition, at.components, tolm::MEPConnectorType::PipeThreaded,
                                          list);
}

bool ReadSeries(const Place& at, const Slice& slice) {
    std::vector<vorn::OwnerPtr<tolm::IProjectSettingMEPMaterialSerie>> list;
    return Store().ReadMEPMaterialSerieList(at.path, at.definition, at.components, slice.type, slice.discipline, list);
}

bool ReadGroups(const Place& at, const Slice& slice) {
    std::vector<vorn::OwnerPtr<tolm::IProjectSettingMEPMaterialSerieGroup>> list;
    return Store().ReadMEPMaterialSerieGroupList(at.path, at.definition, slice.type, slice.discipline, list);
}

bool ReadSystemTypes(const Place& at, const Slice& slice) {
    std::vector<vorn::OwnerPtr<tolm::IProjectSettingSystemType>> list;
    return Store().ReadSystemTypeList(at.path, at.definition, at.components, slice.discipline, slice.type, list);
}

bool ReadNamesAndReferences(const Place& at, const Slice& slice) {
    std::vector<std::map<wstring, wstring>> names;
    const bool isRead = Store().ReadSystemTypeNameIds(at.path, at.definition, {static_cast<int>(slice.discipline)},
                                                      {static_cast<int>(slice.type)}, names);
    std::vector<wstring> ids;
    for (const auto& map : names) {
        for (const auto& [id, name] : map)
            ids.push_back(id);
    }
    std::map<wstring, std::vector<wstring>> references;
    return Store().ReadMEPSerieRecordGuidListOfSystemType(at.path, at.definition, ids, references) && isRead;
}

bool ReadHeader(const Place& at, const Slice&) {
    bool hasLocalChanges = false;
    Store().GetLocalVersion(at.path, at.definition, hasLocalChanges);
    Store().GetLastUpdateTimePoint(at.path, at.definition);
    return true;
}

struct ListOperation {
    const char* name;
    bool (*read)(const Place&, const Slice&);
};
constexpr std::array kListOperations{
    ListOperation{"materials", ReadMaterials},
    ListOperation{"sizes", ReadSizes},
    ListOperation{"connections", ReadConnections},
    ListOperation{"connections of one type", ReadConnectionsOfOneType},
    ListOperation{"series", ReadSeries},
    ListOperation{"groups", ReadGroups},
    ListOperation{"system types", ReadSystemTypes},
    ListOperation{"names and references", ReadNamesAndReferences},
    ListOperation{"header", ReadHeader},
};

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
    Unsound{"SYS", "json_valid(MaterialSerieIds)=0 OR json_valid(CableSpecTypeIds)=0"},
};

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
    std::string failed;
    for (const ListOperation& operation : kListOperations) {
        if (!operation.read(place, kSlices.at(turn++ % kSlices.size())))
            failed += std::string(operation.name) + "; ";
    }
    return failed;
}

void RequireSound(const wstring& path) {
    static const std::string query = UnsoundQuery();
    const std::string integrity = SqlValue(path, "PRAGMA integrity_check");
    Require(integrity == "ok", "the store is in order: " + integrity);
    const std::string unsound = SqlValue(path, query);
    Require(unsound.empty(), "no record holds what it may not: " + unsound);
}

} // namespace tolmfuzz
