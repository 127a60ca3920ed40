#include "Bench/GeneratedRows.h"

#include <array>
#include <cstdio>

namespace tolm::bench {
namespace {

using nlohmann::json;

constexpr std::array kDiameters{15,  20,  25,  32,  40,  50,  65,  80,  100, 125,  150,  200, 250,
                                300, 350, 400, 450, 500, 600, 700, 800, 900, 1000, 1200, 1400};
constexpr std::array kMaterialNames{"Carbon steel", "Stainless steel", "Copper",      "PVC-U",
                                    "PP-R",         "PE100",           "Ductile iron"};
constexpr std::array kFittingKeys{"Elbow", "Tee", "Cross", "Transition", "Union", "Cap"};
constexpr std::array kTrayKeys{"HorizontalBend", "HorizontalTee", "Cross", "Transition", "Union"};
constexpr std::array kConduitKeys{"Bend", "Tee", "Cross", "Transition", "Union"};
constexpr int kFittingsPerSeries = 20;

std::string Numbered(const std::string& name, std::size_t number) {
    return name + " " + std::to_string(number);
}

std::int64_t CreateTime(const RowMaking& making) {
    return 1'700'000'000'000 + static_cast<std::int64_t>(making.dice.Below(30'000'000'000));
}

json Node(const RowMaking& making, const char* group, const std::string& name, const std::string& parent,
          json content) {
    return {{"ID", making.dice.Id()}, {"text", name},     {"groupName", group}, {"CreateTime", CreateTime(making)},
            {"nodeID", ""},           {"tableName", ""},  {"order", 0},         {"display", 1},
            {"Nodes", "[]"},          {"Children", "[]"}, {"parentID", parent}, {"content", std::move(content)}};
}

template <class MakeEntry> json SizeList(const RowMaking& making, MakeEntry makeEntry) {
    json list = json::array();
    const auto count = static_cast<std::size_t>(making.dice.From(10, 25));
    for (std::size_t i = 0; i < count; ++i)
        list.push_back(makeEntry(kDiameters[i]));
    return list;
}

json PipeSizeList(const RowMaking& making) {
    const double wall = making.dice.From(15, 60) / 10.0;
    return SizeList(making, [wall](int diameter) -> json {
        const double outer = diameter * 1.08 + 5.5;
        return {{"DN", static_cast<double>(diameter)}, {"OD", outer}, {"ID", outer - 2 * wall}, {"Thickness", wall}};
    });
}

json PipeMaterial(const RowMaking& making, const char* group, std::vector<std::string>& ids) {
    const std::string name = kMaterialNames[making.number % kMaterialNames.size()];
    auto row = Node(making, group, Numbered(name, making.number), "", json::object());
    ids.push_back(row["ID"]);
    return row;
}

json PipeSize(const RowMaking& making, const char* group, const std::string& material) {
    const double roughness = making.dice.From(1, 400) / 100.0;
    auto row = Node(making, group, Numbered("Schedule", making.number), material,
                    {{"roughness", roughness}, {"sizeList", PipeSizeList(making)}});
    making.made.pipeSizes.push_back(row["ID"]);
    return row;
}

json PlumbingMaterial(const RowMaking& making) {
    return PipeMaterial(making, "MaterialSeries", making.made.pipeMaterials);
}
json HvacMaterial(const RowMaking& making) {
    return PipeMaterial(making, "HVACMaterialSeries", making.made.hvacMaterials);
}
json PlumbingSize(const RowMaking& making) {
    return PipeSize(making, "MaterialSeries", making.dice.OneOf(making.made.pipeMaterials));
}
json HvacSize(const RowMaking& making) {
    return PipeSize(making, "HVACMaterialSeries", making.dice.OneOf(making.made.hvacMaterials));
}

json DuctSize(const RowMaking& making) {
    auto sizes = SizeList(making, [](int size) -> json { return {{"Size", size * 1.0}, {"Thickness", 0.75}}; });
    return Node(making, "ductSeriesType", Numbered("Duct sizes", making.number), "",
                {{"shape", making.dice.From(0, 2)},
                 {"series", Numbered("Galvanised steel", making.number)},
                 {"systemPress", making.dice.From(0, 3)},
                 {"sizeList", sizes}});
}

json WireSize(const RowMaking& making) {
    auto sizes = SizeList(making, [&](int size) -> json {
        return {{"area", std::to_string(size)}, {"current", size * 3}, {"temperature", making.dice.From(20, 40)}};
    });
    auto row = Node(making, "electricWireType", Numbered("BV", making.number), "",
                    {{"series", making.dice.From(0, 1)}, {"currentUseTemperature", 30}, {"sizeList", sizes}});
    making.made.wireSizes.push_back(row["ID"]);
    return row;
}

json ConduitSize(const RowMaking& making) {
    auto sizes = SizeList(making, [](int size) -> json {
        return {{"DN", size}, {"OD", size + 2.5}, {"ID", size - 0.5}};
    });
    auto row = Node(making, "electricLinePipe", Numbered("Conduit sizes", making.number), "", {{"sizeList", sizes}});
    making.made.conduitSizes.push_back(row["ID"]);
    return row;
}

json TraySize(const RowMaking& making) {
    auto sizes = SizeList(making, [](int size) -> json { return {{"Size", size * 1.0}}; });
    return Node(making, "cableTray", Numbered("Tray sizes", making.number), "",
                {{"type", making.dice.From(0, 3)}, {"sizeList", sizes}});
}

json SerieGroup(const RowMaking& making) {
    constexpr std::array groups{"pipeFittingGroup", "havcFittingGroup", "ductFittingGroup"};
    auto row =
        Node(making, groups[making.number % groups.size()], Numbered("Group", making.number), "", json::object());
    making.made.groups.push_back(row["ID"]);
    return row;
}

json Fitting(const RowMaking& making, int partType) {
    const int low = making.dice.From(15, 100);
    return {{"id", making.dice.Id()},
            {"version", 1},
            {"categoryCode", std::to_string(16'000'000 + making.dice.From(0, 999) * 10)},
            {"FittingPartType", partType},
            {"min", low * 1.0},
            {"max", low * 4.0},
            {"publicComponentId", std::to_string(making.dice.Below(1'000'000'000'000))}};
}

template <std::size_t N> void AddFittings(const RowMaking& making, json& row, const std::array<const char*, N>& keys) {
    for (const auto* key : keys)
        row[key] = json::array();
    for (int i = 0; i < kFittingsPerSeries; ++i) {
        const auto place = static_cast<std::size_t>(i) % N;
        row[keys[place]].push_back(Fitting(making, static_cast<int>(place) + 1));
    }
}

json SeriesHead(const RowMaking& making, const char* name) {
    json row{{"ID", making.dice.Id()}, {"name", Numbered(name, making.number)}, {"CreateTime", CreateTime(making)}};
    making.made.series.push_back(row["ID"]);
    return row;
}

json PipeLikeSeries(const RowMaking& making, const char* name) {
    auto row = SeriesHead(making, name);
    row["connective"] = making.dice.From(0, 6);
    row["minSize"] = 15.0;
    row["maxSize"] = 1400.5;
    row["preferredConnect"] = making.dice.From(0, 1);
    row["PipeSegmentId"] = making.dice.OneOf(making.made.pipeSizes);
    row["parentID"] = making.dice.OneOf(making.made.groups);
    AddFittings(making, row, kFittingKeys);
    return row;
}

json PipeSeries(const RowMaking& making) {
    return PipeLikeSeries(making, "Pipe series");
}
json HvacSeries(const RowMaking& making) {
    return PipeLikeSeries(making, "HVAC pipe series");
}

json DuctSeries(const RowMaking& making) {
    auto row = PipeLikeSeries(making, "Duct series");
    row["Duct"] = json::array();
    row["Round"] = json::array({Fitting(making, 11)});
    return row;
}

json ConduitSeries(const RowMaking& making) {
    auto row = SeriesHead(making, "Conduit series");
    row["parentID"] = making.dice.OneOf(making.made.conduitSizes);
    row["Conduit"] = json::array();
    AddFittings(making, row, kConduitKeys);
    return row;
}

json TraySeries(const RowMaking& making) {
    auto row = SeriesHead(making, "Tray series");
    row["type"] = making.dice.From(0, 3);
    AddFittings(making, row, kTrayKeys);
    return row;
}

json Links(const RowMaking& making, const std::vector<std::string>& ids) {
    json list = json::array();
    for (int i = making.dice.From(0, 4); i > 0 && !ids.empty(); --i)
        list.push_back(making.dice.OneOf(ids));
    return list;
}

json SystemTypeRow(const RowMaking& making, const char* name, const char* code) {
    json row{{"ID", making.dice.Id()},
             {"code", Numbered(code, making.number)},
             {"description", "Generated"},
             {"systemType", Numbered(name, making.number)},
             {"systemCategory", making.dice.From(1, 40)},
             {"CreateTime", CreateTime(making)}};
    making.made.systemTypes.push_back(row["ID"]);
    return row;
}

json LinkedSystemType(const RowMaking& making, const char* name, const char* code) {
    auto row = SystemTypeRow(making, name, code);
    row["fittingIds"] = Links(making, making.made.series);
    return row;
}

json PipeSystem(const RowMaking& making) {
    return LinkedSystemType(making, "Cold water", "J");
}
json HvacSystem(const RowMaking& making) {
    return LinkedSystemType(making, "Chilled water", "CHW");
}
json DuctSystem(const RowMaking& making) {
    return LinkedSystemType(making, "Supply air", "SA");
}

json ElectricalSystem(const RowMaking& making) {
    auto row = SystemTypeRow(making, "Lighting", "WL");
    row["bindIDs"] = Links(making, making.made.wireSizes);
    return row;
}

json CircuitTemplate(const RowMaking& making) {
    return {{"ID", making.dice.Id()},
            {"SystemClassification", making.dice.From(1, 40)},
            {"SystemTypeId", making.dice.OneOf(making.made.systemTypes)},
            {"SwitchComponentId1", making.dice.Id()},
            {"SwitchComponentId2", ""},
            {"SwitchComponentId3", ""},
            {"SwitchComponentType1", "MCB"},
            {"SwitchComponentType2", ""},
            {"SwitchComponentType3", ""},
            {"Phase", making.dice.From(1, 3)},
            {"ProtectionMaterial", "SC"},
            {"WireType", making.dice.OneOf(making.made.wireSizes)},
            {"WireSize", 2.5},
            {"WireSpec", "3x2.5"},
            {"WireCountStr", "3"},
            {"ConduitType", making.dice.OneOf(making.made.conduitSizes)},
            {"ConduitSizeDN", 20},
            {"IsApply", 1},
            {"LayingMode", "WC"},
            {"DescriptionCHN", Numbered("Lighting", making.number)}};
}

json Component(const RowMaking& making) {
    return {
        {"CategoryStandardCode", "16353515"}, {"ComponentId", making.dice.Id()}, {"ComponentTypeId", making.dice.Id()}};
}

json ListCombination(const RowMaking& making) {
    return {{"ID", making.dice.Id()},
            {"Name", Numbered("Hanger set", making.number)},
            {"Spacing", making.dice.From(1, 30) * 100},
            {"List", json::array({Component(making), Component(making)})}};
}

json TerminalCombination(const RowMaking& making) {
    return {{"ID", making.dice.Id()},
            {"Name", Numbered("Fan coil set", making.number)},
            {"EquipmentComponentId", making.dice.Id()},
            {"EquipmentComponentTypeId", making.dice.Id()},
            {"EquipmentCategoryStandardCode", "16352020"},
            {"SupplyAirTerminalComponentId", making.dice.Id()},
            {"SupplyAirTerminalComponentTypeId", making.dice.Id()},
            {"AirTerminalCategoryStandardCode", "16352030"},
            {"ReturnAirTerminalComponentId", making.dice.Id()},
            {"ReturnAirTerminalComponentTypeId", making.dice.Id()},
            {"SupplySystemTypeId", making.dice.OneOf(making.made.systemTypes)},
            {"SupplyAirTerminalDist1", 1200.5},
            {"SupplyAirTerminalDist2", 900.25},
            {"SupplyAirTerminalNumber", making.dice.From(1, 4)},
            {"SupplyDuctTypeId", making.dice.OneOf(making.made.series)},
            {"SupplyHoseLength", 500.5},
            {"ReturnSystemTypeId", making.dice.OneOf(making.made.systemTypes)},
            {"ReturnDuctTypeId", making.dice.OneOf(making.made.series)},
            {"ReturnHoseLength", 450.5}};
}

json BinaryFile(const RowMaking& making) {
    std::string data;
    const int groups = making.dice.From(8, 64);
    for (int i = 0; i < groups * 4; ++i)
        data.push_back("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/"[making.dice.Below(64)]);
    return {{"fileName", Numbered("catalogue", making.number) + ".bin"}, {"length", groups * 3}, {"data", data}};
}

} // namespace

std::string Dice::Id() {
    const auto high = m_engine();
    const auto low = m_engine();
    std::array<char, 37> text{};
    std::snprintf(text.data(), text.size(), "%08x-%04x-%04x-%04x-%012llx", static_cast<unsigned>(high >> 32),
                  static_cast<unsigned>(high >> 16 & 0xffff), static_cast<unsigned>(high & 0xffff),
                  static_cast<unsigned>(low >> 48), static_cast<unsigned long long>(low & 0xffff'ffff'ffff));
    return text.data();
}

const std::vector<RowKind>& RowKinds() {
    static const std::vector<RowKind> kinds{
        {"ConfigTree", 4, true, PlumbingMaterial},
        {"ConfigTree", 4, true, HvacMaterial},
        {"ConfigTree", 14, true, PlumbingSize},
        {"ConfigTree", 12, true, HvacSize},
        {"ConfigTree", 8, true, DuctSize},
        {"ConfigTree", 6, true, WireSize},
        {"ConfigTree", 4, true, ConduitSize},
        {"ConfigTree", 4, true, TraySize},
        {"ConfigTree", 3, true, SerieGroup},
        {"PipeType", 6, true, PipeSeries},
        {"HVACPipeType", 5, true, HvacSeries},
        {"DuctType", 4, true, DuctSeries},
        {"ConduitFittingsType", 2, true, ConduitSeries},
        {"CableTrayFittingsType", 2, true, TraySeries},
        {"PipeSystemType", 4, false, PipeSystem},
        {"HVACPipeSystemType", 4, false, HvacSystem},
        {"DuctSystemType", 3, false, DuctSystem},
        {"ElectricalSystemType", 2, false, ElectricalSystem},
        {"CircuitTemplate", 3, false, CircuitTemplate},
        {"Combination_16353515", 2, false, ListCombination},
        {"Combination_16302510", 1, false, ListCombination},
        {"Combination_16352020", 1, false, TerminalCombination},
        {"Combination_16352030", 1, false, TerminalCombination},
        {"BinaryTable", 1, false, BinaryFile},
    };
    return kinds;
}

} // namespace tolm::bench
