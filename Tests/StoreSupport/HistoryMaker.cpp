#include "StoreSupport/HistoryMaker.h"

#include "Service/Base64Text.h"

#include <array>

namespace tolmtest {
namespace {

const std::vector<std::string> kGroups{"MaterialSeries",   "HVACMaterialSeries", "ductSeriesType",
                                       "electricWireType", "electricLinePipe",   "pipeFittingGroup",
                                       "havcFittingGroup", "ductFittingGroup"};
const std::vector<std::string> kSerieTables{"PipeType", "HVACPipeType", "DuctType", "ConduitFittingsType",
                                            "CableTrayFittingsType"};
const std::vector<std::string> kSystemTables{"PipeSystemType", "HVACPipeSystemType", "DuctSystemType",
                                             "ElectricalSystemType"};
const std::vector<std::string> kRuleKeys{"Elbow",          "Bend",          "Tee",  "Cross",
                                         "Transition",     "Union",         "Cap",  "Round",
                                         "HorizontalBend", "HorizontalTee", "Duct", "VerticalUpTee"};
/// The last one is known to nobody.
const std::vector<std::string> kCategories{"16201010", "16201020", "99999999"};
const std::vector<std::string> kOtherTables{"CircuitTemplate",      "Combination_16353515", "Combination_16302510",
                                            "Combination_16352020", "Combination_16352030", "BinaryTable"};
constexpr unsigned kTrays = 3;

/// The table or group that an id belongs to, once and for all: those of a pool share them out by their numbers.
const std::string& Place(const std::string& id, const std::vector<std::string>& all) {
    return all[std::stoul(id.substr(1)) % all.size()];
}

} // namespace

HistoryStep HistoryMaker::First() {
    HistoryStep step{{"put", json::object()}, {"remove", json::object()}};
    m_used.clear();
    for (unsigned type = 0; type < kTrays; ++type)
        Put(step, "config", "ConfigTree", TrayRow(type));
    for (const auto& table : kOtherTables)
        PutOther(step, table, table + " 1");
    for (int i = 0; i < 14; ++i)
        Touch(step, false);
    return step;
}

HistoryStep HistoryMaker::Next() {
    HistoryStep step{{"put", json::object()}, {"remove", json::object()}};
    m_used.clear();
    const bool otherContentOnly = Chance(20);
    const auto touches = 1 + Below(8);
    while (m_used.size() < touches)
        Touch(step, otherContentOnly);
    return step;
}

// --- values --------------------------------------------------------------------------------------------------------

std::string HistoryMaker::Id(std::string_view pool, unsigned size) {
    return std::string(pool) + std::to_string(1 + Below(size));
}

std::string HistoryMaker::Name() {
    return std::array{"管 ", "Pipe ", "O'Neill \"", "名称/"}[Below(4)] + std::to_string(++m_counter);
}

nlohmann::json HistoryMaker::Time() {
    return 1'700'000'000'000 + static_cast<std::int64_t>(Below(1'000'000'000));
}

nlohmann::json HistoryMaker::Cell(bool whole) {
    const int number = static_cast<int>(Below(2000));
    switch (Below(4)) {
    case 0:
        return number;
    case 1:
        return number + 0.1;
    case 2:
        return std::to_string(number) + (whole ? " " : ".25");
    default:
        return number * 1.0;
    }
}

nlohmann::json HistoryMaker::SizeList(const std::vector<std::string>& keys) {
    json list = json::array();
    for (auto rows = Below(4); rows > 0; --rows) {
        json row = json::object();
        for (const auto& key : keys) {
            if (Chance(90))
                row[key] = Cell(key == "DN");
        }
        list.push_back(std::move(row));
    }
    return list;
}

nlohmann::json HistoryMaker::Cables() {
    json list = json::array();
    for (auto rows = Below(4); rows > 0; --rows)
        list.push_back({{"area", Chance(10) ? "一二三四五六七八九十一二三四五六七八九十" : std::to_string(rows)},
                        {"current", Cell(true)},
                        {"temperature", Below(4)}});
    return list;
}

nlohmann::json HistoryMaker::Fitting() {
    json fitting{{"categoryCode", OneOf(kCategories)}, {"FittingPartType", Below(7)}};
    if (Chance(80))
        fitting["id"] = "component " + std::to_string(Below(50));
    else
        fitting["id"] = Below(100'000);
    if (Chance(70))
        fitting["min"] = Cell(true).is_string() ? json(15) : json(15.5);
    if (Chance(70))
        fitting["max"] = static_cast<int>(Below(500));
    return fitting;
}

nlohmann::json HistoryMaker::Ids(std::string_view pool, unsigned size) {
    json ids = json::array();
    for (auto count = Below(4); count > 0; --count)
        ids.push_back(Id(pool, size));
    return ids;
}

// --- rows ----------------------------------------------------------------------------------------------------------

nlohmann::json HistoryMaker::Content(const std::string& group) {
    if (group == "MaterialSeries" || group == "HVACMaterialSeries") {
        json content{{"sizeList", SizeList({"DN", "OD", "ID", "Thickness"})}};
        if (Chance(80))
            content["roughness"] = Chance(50) ? json(Below(3)) : json(0.045);
        return Chance(10) ? json() : content;
    }
    if (group == "ductSeriesType")
        return {{"shape", Below(3)},
                {"systemPress", Below(4)},
                {"series", "板 " + std::to_string(Below(4))},
                {"sizeList", SizeList({"Size", "Thickness"})}};
    if (group == "electricWireType")
        return {{"series", Below(2)}, {"currentUseTemperature", Below(4)}, {"sizeList", Cables()}};
    if (group == "electricLinePipe")
        return {{"sizeList", SizeList({"DN", "OD", "ID"})}};
    return json::object();
}

nlohmann::json HistoryMaker::ConfigRow(const std::string& id, const std::string& group) {
    json row{{"ID", id}, {"groupName", group}, {"text", Name()}, {"parentID", ""}, {"content", Content(group)}};
    if (Chance(90))
        row["CreateTime"] = Time();
    const bool isPipe = group == "MaterialSeries" || group == "HVACMaterialSeries";
    if (isPipe && Chance(60))
        row["parentID"] = Id("c", 10);
    return row;
}

nlohmann::json HistoryMaker::TrayRow(unsigned type) {
    return {{"ID", "tray " + std::to_string(type)},
            {"groupName", "cableTray"},
            {"text", Name()},
            {"parentID", ""},
            {"CreateTime", Time()},
            {"content", {{"type", type}, {"sizeList", SizeList({"Size"})}}}};
}

nlohmann::json HistoryMaker::SerieRow(const std::string& id, const std::string& table) {
    json row{{"ID", id}, {"name", Name()}};
    if (Chance(90))
        row["CreateTime"] = Time();
    if (Chance(70))
        row["connective"] = Below(32);
    if (Chance(60)) {
        row["minSize"] = static_cast<int>(Below(100));
        row["maxSize"] = 100.1;
    }
    if (Chance(60))
        row["preferredConnect"] = Below(2);
    if (table != "CableTrayFittingsType" && Chance(60))
        row["PipeSegmentId"] = Id("c", 10);
    if (table == "CableTrayFittingsType")
        row["type"] = Below(kTrays + 1); // of the last type there is no table
    else if (table == "ConduitFittingsType" || Chance(70))
        row["parentID"] = Chance(30) ? "" : Id("c", 10);
    if (table == "ConduitFittingsType")
        row.erase("PipeSegmentId");
    for (auto rules = Below(4); rules > 0; --rules) {
        json& fittings = row[OneOf(kRuleKeys)];
        fittings = json::array();
        for (auto count = Below(3); count > 0; --count)
            fittings.push_back(Fitting());
    }
    return row;
}

nlohmann::json HistoryMaker::SystemTypeRow(const std::string& id, const std::string& table) {
    json row{{"ID", id},
             {"systemType", Name()},
             {"code", "J" + std::to_string(Below(9))},
             {"description", Chance(50) ? "" : "说明"},
             {"systemCategory", 1 + Below(45)}};
    if (Chance(90))
        row["CreateTime"] = Time();
    if (table == "ElectricalSystemType" && Chance(80))
        row["bindIDs"] = Ids("c", 10);
    if (table != "ElectricalSystemType" && Chance(80))
        row["fittingIds"] = Ids("s", 7);
    return row;
}

nlohmann::json HistoryMaker::CircuitRow(const std::string& id) {
    return {{"ID", id},
            {"SystemClassification", Below(46)},
            {"SystemTypeId", Id("y", 6)},
            {"SwitchComponentId1", Name()},
            {"SwitchComponentId2", ""},
            {"SwitchComponentId3", ""},
            {"SwitchComponentType1", "断路器"},
            {"SwitchComponentType2", ""},
            {"SwitchComponentType3", ""},
            {"Phase", Below(5)},
            {"ProtectionMaterial", "ZR"},
            {"WireType", Id("c", 10)},
            {"WireSpec", "2.5"},
            {"WireCountStr", "3"},
            {"ConduitType", Id("s", 7)},
            {"ConduitSizeDN", Below(100)},
            {"IsApply", Below(2)},
            {"LayingMode", "CC"}};
}

nlohmann::json HistoryMaker::ListRow(const std::string& id) {
    json parts = json::array();
    for (auto count = 1 + Below(3); count > 0; --count)
        parts.push_back({{"CategoryStandardCode", OneOf(kCategories)},
                         {"ComponentId", "component " + std::to_string(Below(50))},
                         {"ComponentTypeId", "type"}});
    return {{"ID", id}, {"Name", Name()}, {"Spacing", Below(2000)}, {"List", parts}};
}

nlohmann::json HistoryMaker::EquipmentRow(const std::string& id) {
    if (Chance(20))
        return {{"ID", id}, {"Name", Name()}};
    return {{"ID", id},
            {"Name", Name()},
            {"EquipmentComponentId", "component 1"},
            {"EquipmentComponentTypeId", "type"},
            {"EquipmentCategoryStandardCode", OneOf(kCategories)},
            {"SupplyAirTerminalComponentId", "component 2"},
            {"SupplyAirTerminalComponentTypeId", "type"},
            {"AirTerminalCategoryStandardCode", OneOf(kCategories)},
            {"ReturnAirTerminalComponentId", "component 3"},
            {"ReturnAirTerminalComponentTypeId", "type"},
            {"SupplySystemTypeId", Id("y", 6)},
            {"SupplyAirTerminalDist1", 1200.5},
            {"SupplyAirTerminalDist2", Below(1000)},
            {"SupplyAirTerminalNumber", Below(5)},
            {"SupplyDuctTypeId", Id("s", 7)},
            {"SupplyHoseLength", 800.25},
            {"ReturnSystemTypeId", Id("y", 6)},
            {"ReturnDuctTypeId", Id("s", 7)},
            {"ReturnHoseLength", Below(900)}};
}

nlohmann::json HistoryMaker::BinaryRow(const std::string& id) {
    std::string bytes = Name();
    for (auto count = Below(200); count > 0; --count)
        bytes += static_cast<char>(Below(256));
    return {{"fileName", id}, {"length", bytes.size()}, {"data", tolm::service::ToBase64(bytes)}};
}

// --- changes -------------------------------------------------------------------------------------------------------

bool HistoryMaker::IsUsed(const std::string& space, const std::string& id) const {
    return m_used.contains(space + "/" + id);
}

bool HistoryMaker::Remove(HistoryStep& step, const std::string& space, const std::string& id) {
    const auto standing = m_standing.find(space + "/" + id);
    if (standing == m_standing.end() || !Chance(45))
        return false;
    step["remove"][standing->second].push_back(id);
    m_used.insert(standing->first);
    m_standing.erase(standing);
    return true;
}

void HistoryMaker::Put(HistoryStep& step, const std::string& space, const std::string& table, json row) {
    const std::string key = space + "/" + row.at(table == "BinaryTable" ? "fileName" : "ID").get<std::string>();
    m_used.insert(key);
    m_standing[key] = table;
    step["put"][table].push_back(std::move(row));
}

void HistoryMaker::ChangeTray(HistoryStep& step) {
    const auto type = static_cast<unsigned>(Below(kTrays));
    if (!IsUsed("config", "tray " + std::to_string(type)))
        Put(step, "config", "ConfigTree", TrayRow(type));
}

void HistoryMaker::ChangeConfig(HistoryStep& step) {
    const auto id = Id("c", 10);
    if (IsUsed("config", id) || Remove(step, "config", id))
        return;
    Put(step, "config", "ConfigTree", ConfigRow(id, Place(id, kGroups)));
}

void HistoryMaker::ChangeSerie(HistoryStep& step) {
    const auto id = Id("s", 7);
    if (IsUsed("serie", id) || Remove(step, "serie", id))
        return;
    const auto& table = Place(id, kSerieTables);
    Put(step, "serie", table, SerieRow(id, table));
}

void HistoryMaker::ChangeSystemType(HistoryStep& step) {
    const auto id = Id("y", 6);
    if (IsUsed("system", id) || Remove(step, "system", id))
        return;
    const auto& table = Place(id, kSystemTables);
    Put(step, "system", table, SystemTypeRow(id, table));
}

void HistoryMaker::ChangeOther(HistoryStep& step) {
    const auto table = OneOf(kOtherTables);
    const auto id = table + Id(" ", 2);
    if (!IsUsed(table, id) && !Remove(step, table, id))
        PutOther(step, table, id);
}

void HistoryMaker::PutOther(HistoryStep& step, const std::string& table, const std::string& id) {
    if (table == "CircuitTemplate")
        Put(step, table, table, CircuitRow(id));
    else if (table == "BinaryTable")
        Put(step, table, table, BinaryRow(id));
    else if (table == "Combination_16353515" || table == "Combination_16302510")
        Put(step, table, table, ListRow(id));
    else
        Put(step, table, table, EquipmentRow(id));
}

void HistoryMaker::Touch(HistoryStep& step, bool otherContentOnly) {
    const auto kind = otherContentOnly ? 100 : Below(100);
    if (kind < 5)
        ChangeTray(step);
    else if (kind < 40)
        ChangeConfig(step);
    else if (kind < 60)
        ChangeSerie(step);
    else if (kind < 80)
        ChangeSystemType(step);
    else
        ChangeOther(step);
}

} // namespace tolmtest
