#include "Service/RowCheck.h"

#include "Service/Answer.h"
#include "Service/Base64Text.h"
#include "Service/SettingTables.h"

#include <nlohmann/json.hpp>

#include <array>
#include <span>
#include <string_view>

namespace tolm::service {
namespace {

using nlohmann::json;

enum class Kind { Text, Whole, Number, TextOrNumber, Texts, Object, Fittings, Parts };

struct Field {
    std::string_view key;
    Kind kind;
    bool required = false;
};

constexpr std::array kConfigFields{
    Field{"groupName", Kind::Text, true}, Field{"text", Kind::Text, true}, Field{"parentID", Kind::Text},
    Field{"CreateTime", Kind::Number},    Field{"nodeID", Kind::Text},     Field{"tableName", Kind::Text},
    Field{"order", Kind::Whole},          Field{"display", Kind::Whole},   Field{"Nodes", Kind::Text},
    Field{"Children", Kind::Text},        Field{"content", Kind::Object},
};
constexpr std::array kSeriesFields{
    Field{"name", Kind::Text, true},
    Field{"CreateTime", Kind::Number},
    Field{"minSize", Kind::Number},
    Field{"maxSize", Kind::Number},
    Field{"connective", Kind::Whole},
    Field{"preferredConnect", Kind::Whole},
    Field{"PipeSegmentId", Kind::Text},
    Field{"parentID", Kind::Text},
    Field{"type", Kind::Whole},
    Field{"Duct", Kind::Fittings},
    Field{"Conduit", Kind::Fittings},
    Field{"Elbow", Kind::Fittings},
    Field{"Bend", Kind::Fittings},
    Field{"Tee", Kind::Fittings},
    Field{"Cross", Kind::Fittings},
    Field{"Transition", Kind::Fittings},
    Field{"Union", Kind::Fittings},
    Field{"Cap", Kind::Fittings},
    Field{"Round", Kind::Fittings},
    Field{"HorizontalBend", Kind::Fittings},
    Field{"HorizontalTee", Kind::Fittings},
    Field{"VerticalInsideBend", Kind::Fittings},
    Field{"VerticalOutsideBend", Kind::Fittings},
    Field{"VerticalLateralTee", Kind::Fittings},
    Field{"VerticalLateralElbow", Kind::Fittings},
    Field{"VerticalLeftLateralElbow", Kind::Fittings},
    Field{"VerticalRightLateralElbow", Kind::Fittings},
    Field{"VerticalDownwardTee", Kind::Fittings},
    Field{"VerticalUpTee", Kind::Fittings},
    Field{"VerticalTee", Kind::Fittings},
};
constexpr std::array kSystemTypeFields{
    Field{"systemType", Kind::Text, true}, Field{"code", Kind::Text},         Field{"description", Kind::Text},
    Field{"systemCategory", Kind::Whole},  Field{"CreateTime", Kind::Number}, Field{"fittingIds", Kind::Texts},
    Field{"bindIDs", Kind::Texts},
};
constexpr std::array kCircuitFields{
    Field{"SystemClassification", Kind::Whole},
    Field{"SystemTypeId", Kind::Text},
    Field{"SwitchComponentId1", Kind::Text},
    Field{"SwitchComponentId2", Kind::Text},
    Field{"SwitchComponentId3", Kind::Text},
    Field{"SwitchComponentType1", Kind::Text},
    Field{"SwitchComponentType2", Kind::Text},
    Field{"SwitchComponentType3", Kind::Text},
    Field{"Phase", Kind::Whole},
    Field{"ProtectionMaterial", Kind::Text},
    Field{"WireType", Kind::Text},
    Field{"WireSize", Kind::Number},
    Field{"WireSpec", Kind::Text},
    Field{"WireCountStr", Kind::Text},
    Field{"ConduitType", Kind::Text},
    Field{"ConduitSizeDN", Kind::Whole},
    Field{"IsApply", Kind::Whole},
    Field{"LayingMode", Kind::Text},
    Field{"DescriptionCHN", Kind::Text},
};
constexpr std::array kCombinationFields{
    Field{"Name", Kind::Text, true},
    Field{"Spacing", Kind::Whole},
    Field{"List", Kind::Parts},
    Field{"EquipmentId", Kind::Text},
    Field{"AirTerminal1", Kind::Text},
    Field{"AirTerminal2", Kind::Text},
    Field{"EquipmentComponentId", Kind::Text},
    Field{"EquipmentComponentTypeId", Kind::Text},
    Field{"EquipmentCategoryStandardCode", Kind::Text},
    Field{"SupplyAirTerminalComponentId", Kind::Text},
    Field{"SupplyAirTerminalComponentTypeId", Kind::Text},
    Field{"AirTerminalCategoryStandardCode", Kind::Text},
    Field{"ReturnAirTerminalComponentId", Kind::Text},
    Field{"ReturnAirTerminalComponentTypeId", Kind::Text},
    Field{"SupplySystemTypeId", Kind::Text},
    Field{"SupplyAirTerminalDist1", Kind::Number},
    Field{"SupplyAirTerminalDist2", Kind::Number},
    Field{"SupplyAirTerminalNumber", Kind::Whole},
    Field{"SupplyDuctTypeId", Kind::Text},
    Field{"SupplyHoseLength", Kind::Number},
    Field{"ReturnSystemTypeId", Kind::Text},
    Field{"ReturnDuctTypeId", Kind::Text},
    Field{"ReturnHoseLength", Kind::Number},
};
constexpr std::array kBinaryFields{
    Field{"fileName", Kind::Text, true},
    Field{"length", Kind::Whole, true},
    Field{"data", Kind::Text, true},
};
constexpr std::array kFittingFields{
    Field{"categoryCode", Kind::Text, true},
    Field{"id", Kind::TextOrNumber},
    Field{"FittingPartType", Kind::Whole, true},
    Field{"version", Kind::Whole},
    Field{"min", Kind::Number},
    Field{"max", Kind::Number},
    Field{"publicComponentId", Kind::Text},
};
constexpr std::array kPartFields{
    Field{"CategoryStandardCode", Kind::Text},
    Field{"ComponentId", Kind::Text},
    Field{"ComponentTypeId", Kind::Text},
};
constexpr std::array kContentFields{
    Field{"roughness", Kind::Number},
    Field{"shape", Kind::Whole},
    Field{"systemPress", Kind::Whole},
    Field{"type", Kind::Whole},
    Field{"currentUseTemperature", Kind::Whole},
};

std::span<const Field> FieldsOf(RowForm form) {
    switch (form) {
    case RowForm::ConfigNode:
        return kConfigFields;
    case RowForm::Series:
        return kSeriesFields;
    case RowForm::SystemType:
        return kSystemTypeFields;
    case RowForm::CircuitTemplate:
        return kCircuitFields;
    case RowForm::Combination:
        return kCombinationFields;
    case RowForm::Binary:
        return kBinaryFields;
    }
    return {};
}

/// Which row is being looked at.
struct Place {
    std::size_t table;
    const std::string& id;
    [[noreturn]] void Refuse(const std::string& words) const { RefuseRow(table, id, words); }
};

bool IsTextList(const json& value) {
    if (!value.is_array())
        return false;
    for (const auto& entry : value) {
        if (!entry.is_string())
            return false;
    }
    return true;
}

bool HasKind(const json& value, Kind kind) {
    switch (kind) {
    case Kind::Text:
        return value.is_string();
    case Kind::Whole:
        return value.is_number_integer();
    case Kind::Number:
        return value.is_number();
    case Kind::TextOrNumber:
        return value.is_string() || value.is_number();
    case Kind::Texts:
        return IsTextList(value);
    case Kind::Object:
        return value.is_object();
    case Kind::Fittings:
    case Kind::Parts:
        return value.is_array();
    }
    return false;
}

void CheckFields(const Place& place, std::span<const Field> fields, const json& object, const std::string& where);

void CheckEntries(const Place& place, std::span<const Field> fields, const json& entries, std::string_view key) {
    for (const auto& entry : entries) {
        if (!entry.is_object())
            place.Refuse("\"" + std::string(key) + "\" holds what is no object");
        CheckFields(place, fields, entry, std::string(key) + ": ");
    }
}

void CheckField(const Place& place, const Field& field, const json& value, const std::string& where) {
    if (!HasKind(value, field.kind))
        place.Refuse(where + "\"" + std::string(field.key) + "\" has a value of the wrong type");
    if (field.kind == Kind::Fittings)
        CheckEntries(place, kFittingFields, value, field.key);
    if (field.kind == Kind::Parts)
        CheckEntries(place, kPartFields, value, field.key);
    if (value.is_array() && value.size() > kLongestList)
        place.Refuse("\"" + std::string(field.key) + "\" has more than 300 entries");
}

void CheckFields(const Place& place, std::span<const Field> fields, const json& object, const std::string& where) {
    for (const auto& field : fields) {
        const auto found = object.find(field.key);
        if (found != object.end() && !found->is_null())
            CheckField(place, field, *found, where);
        else if (field.required)
            place.Refuse(where + "\"" + std::string(field.key) + "\" is missing");
    }
}

void CheckCells(const Place& place, std::string_view cells, const json& entry) {
    while (!cells.empty()) {
        const auto end = cells.find(' ');
        const auto key = cells.substr(0, end);
        cells = end == std::string_view::npos ? std::string_view() : cells.substr(end + 1);
        const auto found = entry.find(key);
        const auto kind = key == "area" ? Kind::Text : key == "temperature" ? Kind::Whole : Kind::TextOrNumber;
        if (found != entry.end() && !HasKind(*found, kind))
            place.Refuse("\"sizeList\" has a \"" + std::string(key) + "\" of the wrong type");
    }
}

void CheckSizeList(const Place& place, const ConfigGroup& group, const json& list) {
    if (!list.is_array())
        place.Refuse("\"sizeList\" is no array");
    if (list.size() > kLongestList)
        place.Refuse("\"sizeList\" has more than 300 entries");
    for (const auto& entry : list) {
        if (!entry.is_object())
            place.Refuse("\"sizeList\" holds what is no object");
        CheckCells(place, group.cells, entry);
    }
}

void CheckSeriesName(const Place& place, const ConfigGroup& group, const json& content) {
    const auto series = content.find("series");
    if (series == content.end() || series->is_null())
        return;
    if (group.name == "ductSeriesType" && !series->is_string())
        place.Refuse("\"series\" is no text");
    if (group.name == "electricWireType" && !series->is_number_integer())
        place.Refuse("\"series\" is no whole number");
}

void CheckConfigNode(const Place& place, const json& row) {
    const auto* group = FindConfigGroup(row["groupName"].get_ref<const std::string&>());
    if (group == nullptr)
        place.Refuse("\"groupName\" is none that is known");
    if (group->hasMaterials && !row.contains("parentID"))
        place.Refuse("\"parentID\" is missing");
    const auto content = row.find("content");
    if (content == row.end() || content->is_null())
        return;
    CheckFields(place, kContentFields, *content, "content: ");
    CheckSeriesName(place, *group, *content);
    const auto sizes = content->find("sizeList");
    if (sizes != content->end() && !sizes->is_null())
        CheckSizeList(place, *group, *sizes);
}

void CheckSeries(const Place& place, const json& row) {
    std::size_t fittings = 0;
    for (const auto& field : kSeriesFields) {
        const auto found = row.find(field.key);
        if (field.kind == Kind::Fittings && found != row.end())
            fittings += found->size();
    }
    if (fittings > kLongestList)
        place.Refuse("there are more than 300 fittings");
}

bool IsPlainFileName(const std::string& name) {
    return !name.empty() && name != "." && name != ".." && name.size() <= 255 &&
           name.find_first_of("/\\:") == name.npos;
}

void CheckBinary(const Place& place, const json& row) {
    if (!IsPlainFileName(row["fileName"].get_ref<const std::string&>()))
        place.Refuse("\"fileName\" is no plain file name");
    const auto size = SizeOfBase64(row["data"].get_ref<const std::string&>());
    if (size == std::string::npos)
        place.Refuse("\"data\" is no base64 text");
    if (row["length"] != size)
        place.Refuse("\"length\" is not the number of bytes in \"data\"");
}

} // namespace

void RefuseRow(std::size_t table, const std::string& id, const std::string& words) {
    throw Refusal(Answer::BadRow, std::string(kSettingTables[table].name) + ", row \"" + id + "\": " + words);
}

void CheckRowFields(std::size_t table, const std::string& id, const json& row) {
    const Place place{table, id};
    const auto form = kSettingTables[table].form;
    CheckFields(place, FieldsOf(form), row, "");
    if (form == RowForm::ConfigNode)
        CheckConfigNode(place, row);
    else if (form == RowForm::Series)
        CheckSeries(place, row);
    else if (form == RowForm::Binary)
        CheckBinary(place, row);
}

} // namespace tolm::service
