#include "StoreSupport/RichCloud.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace tolmtest {
namespace {

using nlohmann::json;

// "version" stands in rows whose id is gone.
json Leaf(const char* id, const char* name, const char* group, const char* parent, const json& content) {
    return {{"ID", id},        {"text", name}, {"groupName", group}, {"parentID", parent},
            {"CreateTime", 1}, {"version", 3}, {"content", content}};
}

json Material(const char* id, const char* name) {
    return Leaf(id, name, "MaterialSeries", "", json::object());
}

/// Long enough that the list does not fit into its record's page.
json PipeSizes(const char* id, const char* name, double roughness) {
    json sizes = json::array();
    for (int i = 1; i <= 280; ++i)
        sizes.push_back({{"DN", 5.0 * i}, {"OD", 5.5 * i}, {"ID", 4.5 * i}, {"Thickness", roughness}});
    return Leaf(id, name, "MaterialSeries", "m2", {{"roughness", roughness}, {"sizeList", sizes}});
}

json DuctSizes(const char* id, const char* name, double thickness) {
    return Leaf(id, name, "ductSeriesType", "",
                {{"shape", 1},
                 {"systemPress", 0},
                 {"series", name},
                 {"sizeList", {{{"Size", 120.0}, {"Thickness", thickness}}, {{"Size", 160.0}, {"Thickness", 0.6}}}}});
}

json Group(const char* id, const char* name) {
    return Leaf(id, name, "pipeFittingGroup", "", json::object());
}

json Fitting(const char* id, int part, double max) {
    return json::array({{{"id", id},
                         {"version", 1},
                         {"categoryCode", "16201010"},
                         {"FittingPartType", part},
                         {"min", 15.0},
                         {"max", max},
                         {"publicComponentId", "730007"}}});
}

json Series(const char* id, const char* name, double max) {
    return {{"ID", id},
            {"name", name},
            {"CreateTime", 1},
            {"version", 3},
            {"connective", 1},
            {"minSize", 15.0},
            {"maxSize", max},
            {"preferredConnect", 0},
            {"PipeSegmentId", "p1"},
            {"parentID", "g1"},
            {"Elbow", Fitting("e1", 1, max)},
            {"Tee", Fitting("e2", 2, max)},
            {"Cross", Fitting("e3", 3, max)}};
}

json SystemType(const char* id, const char* name) {
    return {
        {"ID", id},        {"systemType", name}, {"code", "J1"},        {"description", "说明"}, {"systemCategory", 21},
        {"CreateTime", 1}, {"version", 3},       {"fittingIds", {"f1"}}};
}

json CircuitTemplate(const char* id, const char* spec) {
    return {{"ID", id},
            {"version", 3},
            {"SystemClassification", 41},
            {"SystemTypeId", "y1"},
            {"SwitchComponentId1", "w1"},
            {"SwitchComponentId2", ""},
            {"SwitchComponentId3", ""},
            {"SwitchComponentType1", "微型断路器"},
            {"SwitchComponentType2", ""},
            {"SwitchComponentType3", ""},
            {"Phase", 1},
            {"ProtectionMaterial", "ZR"},
            {"WireType", "d1"},
            {"WireSpec", spec},
            {"WireCountStr", "3"},
            {"ConduitType", "d2"},
            {"ConduitSizeDN", 20},
            {"IsApply", 1},
            {"LayingMode", "CC"}};
}

json Product(const char* id, const char* name, int spacing) {
    return {{"ID", id},
            {"version", 3},
            {"Name", name},
            {"Spacing", spacing},
            {"List",
             {{{"CategoryStandardCode", "16302502"}, {"ComponentId", "c1"}, {"ComponentTypeId", "t1"}},
              {{"CategoryStandardCode", "16302504"}, {"ComponentId", "c2"}, {"ComponentTypeId", "t2"}}}}};
}

json BinaryFile(const char* name, const char* base64, int length) {
    return {{"ID", name}, {"version", 3}, {"fileName", name}, {"length", length}, {"data", base64}};
}

std::string Increment(const json& add, const json& del) {
    return json{{"add", add}, {"del", del}}.dump();
}

/// What the cloud holds at first.
json FirstTables() {
    return {
        {"ConfigTree",
         {Material("m1", "copper"), Material("m2", "steel"), PipeSizes("p1", "steel pipe", 0.15),
          PipeSizes("p2", "copper pipe", 0.01), DuctSizes("d1", "sheet", 0.5), DuctSizes("d2", "plate", 0.7),
          Group("g1", "water"), Group("g2", "waste")}},
        {"PipeType", {Series("f1", "threaded", 80.0), Series("f2", "welded", 50.0)}},
        {"PipeSystemType", {SystemType("y1", "cold water"), SystemType("y2", "hot water")}},
        {"CircuitTemplate", {CircuitTemplate("t1", "2.5"), CircuitTemplate("t2", "4")}},
        {"Combination_16353515", {Product("k1", "pumps", 1800), Product("k2", "more pumps", 900)}},
        {"BinaryTable", {BinaryFile("plan.bin", "Zmlyc3Q=", 5), BinaryFile("old.bin", "b2xk", 3)}},
    };
}

/// What of it changes or goes: all but the material of the size tables.
json ChangedFirstTables() {
    json tables = FirstTables();
    auto& tree = tables["ConfigTree"];
    tree.erase(std::ranges::find_if(tree, [](const json& row) { return row["ID"] == "m2"; }));
    return tables;
}

} // namespace

std::string RichIncrement() {
    return Increment(FirstTables(), json::object());
}

std::string RichFurtherIncrement() {
    const json add{
        {"ConfigTree",
         {Material("m1", "bronze"), Material("m3", "zinc"), PipeSizes("p1", "steel pipe", 0.2),
          PipeSizes("p3", "zinc pipe", 0.3), DuctSizes("d1", "sheet", 0.9), DuctSizes("d3", "board", 1.1),
          Group("g1", "drinking water"), Group("g3", "rain")}},
        {"PipeType", {Series("f1", "threaded", 100.0), Series("f3", "pressed", 54.0)}},
        {"PipeSystemType", {SystemType("y1", "colder water"), SystemType("y3", "rain")}},
        {"CircuitTemplate", {CircuitTemplate("t1", "6"), CircuitTemplate("t3", "10")}},
        {"Combination_16353515", {Product("k1", "pumps", 2000), Product("k3", "fans", 700)}},
        {"BinaryTable", {BinaryFile("plan.bin", "c2Vjb25kLCBsb25nZXI=", 14), BinaryFile("new.bin", "bmV3", 3)}},
    };
    return Increment(add, ChangedFirstTables());
}

std::string RichLossOfASystemType() {
    const json del{
        {"ConfigTree", json::array()},
        {"PipeSystemType", {SystemType("y1", "cold water")}},
        {"BinaryTable", {BinaryFile("old.bin", "b2xk", 3)}},
    };
    return Increment(json::object(), del);
}

} // namespace tolmtest
