#include "MepDatabase/Encoders.h"

#include "MepDatabase/JsonRows.h"

#include <map>
#include <string>

namespace tolm {
namespace {

using web::json::value;
using Type = TolmProjectSettingMEPObjectType;
using SystemType = IProjectSettingSystemType;
using Serie = IProjectSettingMEPMaterialSerie;
using Fitting = ITolmProjectSettingFittingComponentConst;

// --- system types

constexpr JsonCell<SystemType> kSystemType[] = {
    {"ID", [](const SystemType& system) { return JsonText(system.GetId()); }},
    {"code", [](const SystemType& system) { return JsonText(system.GetCode()); }},
    {"description", [](const SystemType& system) { return JsonText(system.GetDescription()); }},
    {"systemType", [](const SystemType& system) { return JsonText(system.GetName()); }},
    {"systemCategory", [](const SystemType& system) { return JsonInteger(system.GetClassification()); }},
    {"CreateTime", [](const SystemType& system) { return value::number(system.GetCreateTime()); }},
};

/// The ids of a system's parts; a null part stays null and is reported for the caller.
template <class Parts, class PartOf>
value IdsOf(const Parts& parts, const PartOf& partOf, const CallSite& caller, const wchar_t* nullWarning) {
    std::vector<value> ids;
    ids.reserve(parts.size());
    for (const auto& entry : parts) {
        const auto* part = partOf(entry);
        if (part == nullptr)
            caller.Warn(nullWarning);
        ids.push_back(part != nullptr ? JsonText(part->GetId()) : value::null());
    }
    return value::array(std::move(ids));
}

value SerieIds(const SystemType& system, const CallSite& caller) {
    const auto itself = [](const auto* serie) { return serie; };
    return IdsOf(system.GetSystemMaterialSerieList(), itself, caller, L"pSerie为空");
}

value CableIds(const SystemType& system, const CallSite& caller) {
    const auto second = [](const auto& named) { return named.second; };
    return IdsOf(system.GetCableSpecTypeList(), second, caller, L"cableSize为空");
}

/// The parts that a system of an object type is sent with.
struct PartsRow {
    Type type;
    const char* key;
    value (*idsOf)(const SystemType&, const CallSite&);
};

constexpr PartsRow kSystemParts[] = {
    {Type::Pipe, "fittingIds", SerieIds},
    {Type::Duct, "fittingIds", SerieIds},
    {Type::ElectricalSystem, "bindIDs", CableIds},
};

value SystemTypeRow(const SystemType& system, const CallSite& caller) {
    JsonFields fields;
    AddFields<SystemType>(fields, kSystemType, system);
    for (const auto& parts : kSystemParts)
        if (parts.type == system.GetMEPType())
            fields.emplace_back(parts.key, parts.idsOf(system, caller));
    return value::object(std::move(fields));
}

// --- series

/// The id of a part, empty when there is none.
template <class Part> value IdOf(const Part* part) {
    return JsonText(part != nullptr ? part->GetId() : wstring());
}

value Connective(const Serie& serie) {
    const auto* connection = serie.GetConnectionSerie();
    return connection != nullptr ? JsonInteger(connection->GetConnectionType()) : JsonInteger(-1);
}

constexpr JsonCell<Serie> kEverySerie[] = {
    {"ID", [](const Serie& serie) { return JsonText(serie.GetId()); }},
    {"name", [](const Serie& serie) { return JsonText(serie.GetName()); }},
    {"CreateTime", [](const Serie& serie) { return value::number(serie.GetCreateTime()); }},
};
constexpr JsonCell<Serie> kPipeOrDuct[] = {
    {"connective", Connective},
    {"minSize", [](const Serie& serie) { return value::number(FiniteNumber(serie.GetMinSize())); }},
    {"maxSize", [](const Serie& serie) { return value::number(FiniteNumber(serie.GetMaxSize())); }},
    {"preferredConnect", [](const Serie& serie) { return JsonInteger(serie.GetJunctionType()); }},
    {"PipeSegmentId", [](const Serie& serie) { return IdOf(serie.GetSizeModule()); }},
    {"parentID", [](const Serie& serie) { return IdOf(serie.GetSerieGroup()); }},
};
constexpr JsonCell<Serie> kTray[] = {
    {"type", [](const Serie& serie) { return JsonInteger(serie.GetTrayShape()); }},
};
/// The parent of a conduit series is its size table.
constexpr JsonCell<Serie> kConduit[] = {
    {"parentID", [](const Serie& serie) { return IdOf(serie.GetSizeModule()); }},
};

constexpr const char* kPipeArrays[] = {"Cross", "Union", "Elbow", "Tee", "Transition", "Cap"};
constexpr const char* kDuctArrays[] = {"Duct", "Round", "Cross", "Union", "Elbow", "Tee", "Transition", "Cap"};
constexpr const char* kTrayArrays[] = {"HorizontalBend",
                                       "HorizontalTee",
                                       "Cross",
                                       "Transition",
                                       "Union",
                                       "VerticalInsideBend",
                                       "VerticalOutsideBend",
                                       "VerticalLateralTee",
                                       "VerticalLateralElbow",
                                       "VerticalLeftLateralElbow",
                                       "VerticalRightLateralElbow",
                                       "VerticalDownwardTee",
                                       "VerticalUpTee",
                                       "VerticalTee"};
constexpr const char* kConduitArrays[] = {"Conduit", "Bend", "Tee", "Cross", "Transition", "Union"};

/// What a series of an object type has beside the keys of every series. The arrays are there also when they are empty.
struct SerieForm {
    Type type;
    JsonCells<Serie> cells;
    std::span<const char* const> arrays;
};

constexpr SerieForm kSerieForms[] = {
    {Type::Pipe, kPipeOrDuct, kPipeArrays},
    {Type::Duct, kPipeOrDuct, kDuctArrays},
    {Type::CableTray, kTray, kTrayArrays},
    {Type::Conduit, kConduit, kConduitArrays},
};

// --- fittings

constexpr auto kFitting = ByKey<Fitting>({
    {"id", [](const Fitting& fitting) { return JsonText(fitting.m_pComponent->GetId()); }},
    {"version", [](const Fitting& fitting) { return JsonInteger(fitting.m_pComponent->GetVersion()); }},
    {"categoryCode", [](const Fitting& fitting) { return JsonText(fitting.m_pComponent->GetCategoryCode()); }},
    {"FittingPartType", [](const Fitting& fitting) { return JsonInteger(fitting.fittingPartType); }},
    {"min", [](const Fitting& fitting) { return value::number(FiniteNumber(fitting.firstSizeBound)); }},
    {"max", [](const Fitting& fitting) { return value::number(FiniteNumber(fitting.secondSizeBound)); }},
    {"publicComponentId",
     [](const Fitting& fitting) { return JsonText(std::to_wstring(fitting.m_pComponent->GetPublicComponentId())); }},
});

/// The key that fittings of a part type stand under. The first row that fits counts; `kAnyType` fits every object type.
struct FittingKeyRow {
    int partType;
    Type objectType;
    const char* key;
};

constexpr Type kAnyType{0};

constexpr FittingKeyRow kFittingKeys[] = {
    {1, Type::CableTray, "HorizontalBend"},
    {1, Type::Conduit, "Bend"},
    {1, kAnyType, "Elbow"},
    {2, Type::CableTray, "HorizontalTee"},
    {2, kAnyType, "Tee"},
    {3, kAnyType, "Cross"},
    {4, kAnyType, "Transition"},
    {5, kAnyType, "Union"},
    {6, kAnyType, "Cap"},
    {11, Type::Duct, "Round"},
    {21, Type::CableTray, "VerticalInsideBend"},
    {22, Type::CableTray, "VerticalOutsideBend"},
    {23, Type::CableTray, "VerticalLateralTee"},
    {24, Type::CableTray, "VerticalLateralElbow"},
    {26, Type::CableTray, "VerticalLeftLateralElbow"},
    {27, Type::CableTray, "VerticalRightLateralElbow"},
    {28, Type::CableTray, "VerticalDownwardTee"},
    {29, Type::CableTray, "VerticalUpTee"},
};

/// Null for fittings that are not sent.
const char* FittingKey(FittingPartType partType, Type objectType) {
    for (const auto& row : kFittingKeys)
        if (FittingPartType{row.partType} == partType && (row.objectType == kAnyType || row.objectType == objectType))
            return row.key;
    return nullptr;
}

std::map<FittingPartType, std::vector<Fitting>> FittingsByPartType(const Serie& serie) {
    std::map<FittingPartType, std::vector<Fitting>> groups;
    if (const auto* connection = serie.GetConnectionSerie())
        for (const auto& fitting : connection->GetProducts())
            groups[fitting.fittingPartType].push_back(fitting);
    return groups;
}

value SerieRow(const Serie& serie) {
    const auto type = serie.GetMEPType();
    JsonFields fields;
    AddFields<Serie>(fields, kEverySerie, serie);
    for (const auto& form : kSerieForms) {
        if (form.type != type)
            continue;
        AddFields(fields, form.cells, serie);
        for (const char* key : form.arrays)
            fields.emplace_back(key, value::array());
    }
    auto row = value::object(std::move(fields));
    for (auto& [partType, fittings] : FittingsByPartType(serie))
        if (const char* key = FittingKey(partType, type))
            row[key] = GetFittingListJsonArray(std::move(fittings));
    return row;
}

} // namespace

value GetCreatedOrEditedSystemTypeListJasonValue(bool wrapEdited, bool isCreated,
                                                 std::vector<std::shared_ptr<const IProjectSettingSystemType>> list) {
    const auto here = TOLM_CALL_SITE;
    const auto encode = [&here](const SystemType& system) { return SystemTypeRow(system, here); };
    return EncodeRows(list, wrapEdited && !isCreated, encode, here, L"pSystemType为空");
}

value GetCreatedOrEditedMEPMaterialListJasonValue(
    bool wrapEdited, bool isCreated, std::vector<std::shared_ptr<const IProjectSettingMEPMaterialSerie>> list) {
    return EncodeRows(list, wrapEdited && !isCreated, SerieRow, TOLM_CALL_SITE, L"pSerie为空");
}

/// A fitting without a component leaves its place to the next one, so that the nulls stand at the end.
value GetFittingListJsonArray(std::vector<ITolmProjectSettingFittingComponentConst> fittings) {
    std::vector<value> objects;
    objects.reserve(fittings.size());
    for (const auto& fitting : fittings) {
        if (fitting.m_pComponent == nullptr)
            VORN_DEBUG_WARN(L"fittingProductInfo.m_pComponent为空");
        else
            objects.push_back(JsonObject<Fitting>(kFitting, fitting));
    }
    objects.resize(fittings.size());
    return value::array(std::move(objects));
}

} // namespace tolm
