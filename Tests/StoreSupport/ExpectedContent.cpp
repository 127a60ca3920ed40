#include "StoreSupport/ExpectedContent.h"

#include "Vorn/Text.h"

#include <nlohmann/json.hpp>

#include <bit>
#include <cstdint>
#include <iterator>
#include <string_view>

namespace tolmtest {
namespace {

using nlohmann::json;

// --- numbers and bytes ---------------------------------------------------------------------------------------------

std::string Bytes(std::uint32_t bits, int count) {
    std::string bytes;
    for (int i = 0; i < count; ++i)
        bytes += static_cast<char>((bits >> (8 * i)) & 0xFFU);
    return bytes;
}

std::string FloatBytes(float value) {
    return Bytes(std::bit_cast<std::uint32_t>(value), 4);
}

/// Text in a field of this width: cut between characters, zeros behind it.
std::string TextBytes(std::string text, std::size_t width) {
    std::size_t end = text.size() <= width ? text.size() : width;
    while (end < text.size() && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U)
        --end;
    text.resize(end);
    text.resize(width, '\0');
    return text;
}

double Number(const json& value) {
    return value.is_string() ? std::stod(value.get<std::string>()) : value.get<double>();
}

float Cell(const json& row, const char* key) {
    return row.contains(key) ? static_cast<float>(Number(row[key])) : 0.0F;
}

// --- records -------------------------------------------------------------------------------------------------------

class Record {
public:
    Record(Facts& facts, const std::string& classCode, const std::string& id)
        : m_facts(facts), m_key(classCode + "/" + id) {
        m_facts.emplace(m_key, "");
    }
    Record& Put(const char* attribute, const std::string& fact) {
        m_facts.emplace(m_key + "/" + attribute, fact);
        return *this;
    }
    Record& Slot(int mepType, int discipline) {
        return Put("MEPType", NumberFact(mepType)).Put("DisciplineId", NumberFact(discipline));
    }
    /// Takes a value of the row over, if the row has it: text as text, a number as it is or as a float.
    Record& Take(const json& row, const char* key, const char* attribute, bool asFloat = false) {
        if (!row.contains(key))
            return *this;
        const json& value = row[key];
        if (value.is_string())
            return Put(attribute, TextFact(value.get<std::string>()));
        return Put(attribute, NumberFact(asFloat ? value.get<float>() : value.get<double>()));
    }

private:
    Facts& m_facts;
    std::string m_key;
};

// --- "ConfigTree" --------------------------------------------------------------------------------------------------

std::string PipeEntry(const json& row) {
    return FloatBytes(Cell(row, "DN")) + FloatBytes(Cell(row, "OD")) + FloatBytes(Cell(row, "ID")) +
           FloatBytes(Cell(row, "Thickness"));
}
std::string ConduitEntry(const json& row) {
    return FloatBytes(Cell(row, "DN")) + FloatBytes(Cell(row, "OD")) + FloatBytes(Cell(row, "ID")) + FloatBytes(0);
}
std::string DuctEntry(const json& row) {
    return FloatBytes(Cell(row, "Size")) + FloatBytes(Cell(row, "Thickness"));
}
std::string TrayEntry(const json& row) {
    return FloatBytes(Cell(row, "Size"));
}
std::string CableEntry(const json& row) {
    const auto current = static_cast<std::int32_t>(row.contains("current") ? Number(row["current"]) : 0);
    return TextBytes(row.value("area", ""), 49) + '\0' + Bytes(static_cast<std::uint32_t>(current), 4) +
           Bytes(row.value("temperature", 0U), 2);
}

struct ConfigKind {
    std::string_view group;
    const char* classCode;
    int mepType;
    int discipline;
    bool hasTime;
    const char* list;
    std::string (*entry)(const json& row);
};
constexpr ConfigKind kConfigKinds[] = {
    {"MaterialSeries", "PSI", 1, 2, true, "PipeSizeList", PipeEntry},
    {"HVACMaterialSeries", "PSI", 1, 1, true, "PipeSizeList", PipeEntry},
    {"ductSeriesType", "PSI", 2, 1, true, "DuctSizeList", DuctEntry},
    {"electricWireType", "PSI", 5, 3, true, "CableSpecificationList", CableEntry},
    {"electricLinePipe", "PSI", 4, 3, true, "PipeSizeList", ConduitEntry},
    {"cableTray", "PSI", 3, 3, true, "CableTraySizeList", TrayEntry},
    {"pipeFittingGroup", "MSG", 1, 2, true, nullptr, nullptr},
    {"havcFittingGroup", "MSG", 1, 1, true, nullptr, nullptr},
    {"ductFittingGroup", "MSG", 2, 1, false, nullptr, nullptr},
};

const ConfigKind& KindOf(const std::string& group) {
    for (const auto& kind : kConfigKinds) {
        if (kind.group == group)
            return kind;
    }
    throw std::runtime_error("no group " + group);
}

/// Values of "content" and where they go.
struct ContentValue {
    std::string_view group;
    const char* key;
    const char* attribute;
};
constexpr ContentValue kContentValues[] = {
    {"MaterialSeries", "roughness", "roughness"},
    {"HVACMaterialSeries", "roughness", "roughness"},
    {"ductSeriesType", "shape", "DuctShape"},
    {"ductSeriesType", "systemPress", "PressureGrade"},
    {"electricWireType", "series", "CableMaterial"},
    {"electricWireType", "currentUseTemperature", "CableEnvironmentTemperature"},
    {"cableTray", "type", "CableTrayShape"},
};

void AddSizeList(Record& record, const ConfigKind& kind, const json& content) {
    std::string bytes;
    for (const auto& row : content.value("sizeList", json::array()))
        bytes += kind.entry(row);
    if (!bytes.empty())
        record.Put(kind.list, BytesFact(bytes));
}

void AddContent(Record& record, const ConfigKind& kind, const json& content) {
    if (!content.is_object())
        return;
    for (const auto& value : kContentValues) {
        if (value.group == kind.group)
            record.Take(content, value.key, value.attribute);
    }
    AddSizeList(record, kind, content);
}

void AddDuctMaterial(Facts& facts, Record& module, const std::string& id, const json& content) {
    module.Put("MaterialId", TextFact("of " + id));
    Record(facts, "MTS", "of " + id).Slot(2, 1).Take(content, "series", "Name");
}

void AddConfigNode(Facts& facts, const json& row) {
    const std::string id = row["ID"];
    const std::string parent = row.value("parentID", "");
    const ConfigKind& kind = KindOf(row["groupName"]);
    const bool isPipe = kind.mepType == 1 && kind.list != nullptr;
    const bool isMaterial = isPipe && parent.empty();
    Record record(facts, isMaterial ? "MTS" : kind.classCode, id);
    record.Slot(kind.mepType, kind.discipline).Take(row, "text", "Name");
    if (kind.hasTime)
        record.Take(row, "CreateTime", "CreateTime");
    if (isMaterial || kind.list == nullptr)
        return;
    if (isPipe)
        record.Put("MaterialId", TextFact(parent));
    if (kind.mepType == 5)
        record.Take(row, "text", "CableSpecTypeName");
    AddContent(record, kind, row["content"]);
    if (kind.mepType == 2)
        AddDuctMaterial(facts, record, id, row["content"]);
}

// --- series --------------------------------------------------------------------------------------------------------

struct Slice {
    const char* table;
    int mepType;
    int discipline;
};
constexpr Slice kSeries[] = {{"PipeType", 1, 2},
                             {"HVACPipeType", 1, 1},
                             {"DuctType", 2, 1},
                             {"ConduitFittingsType", 4, 3},
                             {"CableTrayFittingsType", 3, 3}};

struct Rule {
    const char* key;
    std::uint32_t number;
    int mepType; ///< the only type that has it; 0 for all
};
constexpr Rule kRules[] = {{"Elbow", 1, 0},
                           {"Bend", 1, 0},
                           {"Tee", 2, 0},
                           {"Cross", 3, 0},
                           {"Transition", 4, 0},
                           {"Union", 5, 0},
                           {"Cap", 6, 0},
                           {"Round", 11, 2},
                           {"HorizontalBend", 1, 3},
                           {"HorizontalTee", 2, 3},
                           {"VerticalInsideBend", 21, 3},
                           {"VerticalOutsideBend", 22, 3},
                           {"VerticalLateralTee", 23, 3},
                           {"VerticalLateralElbow", 24, 3},
                           {"VerticalLeftLateralElbow", 26, 3},
                           {"VerticalRightLateralElbow", 27, 3},
                           {"VerticalDownwardTee", 28, 3},
                           {"VerticalUpTee", 29, 3}};

std::string FittingId(const json& id) {
    return id.is_string() ? id.get<std::string>() : std::to_string(static_cast<std::int64_t>(id.get<double>()));
}

std::string Fittings(const json& row, int mepType, const KnownCategories& categories) {
    std::string bytes;
    std::string category; // the first known one stands for all
    for (const auto& rule : kRules) {
        if (rule.mepType != 0 && rule.mepType != mepType)
            continue;
        for (const auto& fitting : row.value(rule.key, json::array())) {
            if (category.empty() && categories.contains(fitting["categoryCode"]))
                category = fitting["categoryCode"];
            bytes += TextBytes(category, 50) + Bytes(fitting["FittingPartType"].get<std::uint32_t>(), 4) +
                     Bytes(rule.number, 4) + TextBytes(FittingId(fitting["id"]), 40) +
                     FloatBytes(Cell(fitting, "min")) + FloatBytes(Cell(fitting, "max"));
        }
    }
    return bytes;
}

/// The first tray table of the series' type.
void TakeTraySizes(Record& record, const json& row, const json& configTree) {
    for (const auto& node : configTree) {
        if (node["groupName"] == "cableTray" && node["content"]["type"] == row["type"]) {
            record.Put("SizeModuleId", TextFact(node["ID"].get<std::string>()));
            return;
        }
    }
}

void AddSerie(Facts& facts, const Slice& slice, const json& row, const json& configTree,
              const KnownCategories& categories) {
    const std::string id = row["ID"];
    Record record(facts, "SMS", id);
    record.Slot(slice.mepType, slice.discipline).Take(row, "name", "Name").Take(row, "CreateTime", "CreateTime");
    record.Take(row, "minSize", "minSize", true).Take(row, "maxSize", "maxSize", true);
    record.Take(row, "preferredConnect", "JunctionType").Put("ConnectionSerieId", TextFact("of " + id));
    if (slice.mepType == 4)
        record.Take(row, "parentID", "SizeModuleId");
    record.Take(row, "PipeSegmentId", "SizeModuleId");
    if (slice.mepType == 3)
        TakeTraySizes(record, row, configTree);
    if (slice.mepType < 3 && !row.value("parentID", "").empty())
        record.Take(row, "parentID", "SerieGroupId");
    Record connection(facts, "COS", "of " + id);
    connection.Take(row, "connective", "ConnectionType");
    const auto fittings = Fittings(row, slice.mepType, categories);
    if (!fittings.empty())
        connection.Put("FittingList", BytesFact(fittings));
}

// --- system types and other content --------------------------------------------------------------------------------

constexpr Slice kSystemTypes[] = {
    {"PipeSystemType", 1, 2}, {"HVACPipeSystemType", 1, 1}, {"DuctSystemType", 2, 1}, {"ElectricalSystemType", 6, 3}};

void AddSystemType(Facts& facts, const Slice& slice, const json& row) {
    Record record(facts, "SYS", row["ID"]);
    record.Slot(slice.mepType, slice.discipline).Take(row, "systemType", "Name").Take(row, "code", "Code");
    record.Take(row, "description", "Description").Take(row, "systemCategory", "SystemClassification");
    record.Take(row, "CreateTime", "CreateTime");
    const bool electrical = slice.mepType == 6;
    const json links = row.value(electrical ? "bindIDs" : "fittingIds", json::array());
    if (!links.empty())
        record.Put(electrical ? "CableSpecTypeIds" : "MaterialSerieIds", TextFact(links.dump()));
}

struct KeyAndAttribute {
    const char* key;
    const char* attribute;
};
constexpr KeyAndAttribute kCircuitKeys[] = {
    {"SystemClassification", "SystemClassification"},
    {"SystemTypeId", "SystemTypeId"},
    {"SwitchComponentId1", "SwitchComponentId1"},
    {"SwitchComponentId2", "SwitchComponentId2"},
    {"SwitchComponentId3", "SwitchComponentId3"},
    {"SwitchComponentType1", "SwitchComponentType1"},
    {"SwitchComponentType2", "SwitchComponentType2"},
    {"SwitchComponentType3", "SwitchComponentType3"},
    {"Phase", "Phase"},
    {"ProtectionMaterial", "ProtectionMaterial"},
    {"WireType", "WireTypeId"},
    {"WireSpec", "WireSpec"},
    {"WireCountStr", "WireCountStr"},
    {"ConduitType", "ConduitTypeId"},
    {"ConduitSizeDN", "ConduitSizeDN"},
    {"IsApply", "IsApply"},
    {"LayingMode", "LayingMode"},
};

std::wstring Wide(const json& row, const char* key) {
    return vorn::StringUtil::ToWString(row.value(key, ""));
}

tolm::TolmComponentReference Reference(const json& row, const char* category, const char* id, const char* type,
                                       const KnownCategories& categories) {
    tolm::TolmComponentReference reference{Wide(row, category), Wide(row, id), Wide(row, type), L"", L""};
    if (const auto known = categories.find(row.value(category, "")); known != categories.end()) {
        reference.categoryName = vorn::StringUtil::ToWString(known->second.first);
        reference.categoryEnglishName = vorn::StringUtil::ToWString(known->second.second);
    }
    return reference;
}

void TakeEquipment(const json& row, const KnownCategories& categories, tolm::TolmCombinedProduct& product) {
    product.equipment =
        Reference(row, "EquipmentCategoryStandardCode", "EquipmentComponentId", "EquipmentComponentTypeId", categories);
    product.supplyAirTerminal = Reference(row, "AirTerminalCategoryStandardCode", "SupplyAirTerminalComponentId",
                                          "SupplyAirTerminalComponentTypeId", categories);
    product.returnAirTerminal = Reference(row, "AirTerminalCategoryStandardCode", "ReturnAirTerminalComponentId",
                                          "ReturnAirTerminalComponentTypeId", categories);
    product.supplySystemTypeId = Wide(row, "SupplySystemTypeId");
    product.supplyDuctTypeId = Wide(row, "SupplyDuctTypeId");
    product.returnSystemTypeId = Wide(row, "ReturnSystemTypeId");
    product.returnDuctTypeId = Wide(row, "ReturnDuctTypeId");
    product.supplyHoseLength = row["SupplyHoseLength"];
    product.returnHoseLength = row["ReturnHoseLength"];
    product.supplyAirTerminalNumber = row["SupplyAirTerminalNumber"];
    product.supplyAirTerminalDist1 = row["SupplyAirTerminalDist1"];
    product.supplyAirTerminalDist2 = row["SupplyAirTerminalDist2"];
}

void AddCombination(Facts& facts, const std::string& category, const json& row, const KnownCategories& categories) {
    tolm::TolmCombinedProduct product;
    product.Name = Wide(row, "Name");
    product.spacing = row.value("Spacing", 0);
    for (const auto& part : row.value("List", json::array()))
        product.components.push_back(
            Reference(part, "CategoryStandardCode", "ComponentId", "ComponentTypeId", categories));
    if (row.contains("EquipmentComponentId"))
        TakeEquipment(row, categories, product);
    facts.emplace("combined/" + category + "/" + row["ID"].get<std::string>(), CombinedProductFact(product));
}

void AddCircuitTemplate(Facts& facts, const json& row) {
    Record record(facts, "CRT", row["ID"]);
    for (const auto& [key, attribute] : kCircuitKeys)
        record.Take(row, key, attribute);
}

} // namespace

Facts ExpectedFacts(const json& tables, const KnownCategories& categories, int version) {
    Facts facts;
    Record(facts, "000", "FileHeader").Put("LocalVersion", NumberFact(version));
    const auto rows = [&](const std::string& table) { return tables.value(table, json::array()); };
    const json configTree = rows("ConfigTree");
    for (const auto& row : configTree)
        AddConfigNode(facts, row);
    for (const auto& slice : kSeries)
        for (const auto& row : rows(slice.table))
            AddSerie(facts, slice, row, configTree, categories);
    for (const auto& slice : kSystemTypes)
        for (const auto& row : rows(slice.table))
            AddSystemType(facts, slice, row);
    for (const auto& row : rows("CircuitTemplate"))
        AddCircuitTemplate(facts, row);
    for (const std::string category : {"16353515", "16302510", "16352020", "16352030"})
        for (const auto& row : rows("Combination_" + category))
            AddCombination(facts, category, row, categories);
    for (const auto& row : rows("BinaryTable"))
        facts.emplace("file/" + row["fileName"].get<std::string>(), row["data"]);
    return facts;
}

} // namespace tolmtest
