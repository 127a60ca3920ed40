#include "Converge/TravellingFacts.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <string_view>
#include <vector>

namespace tolmtest {
namespace {

using nlohmann::json;

/// Attributes of one record; "" holds nothing.
using Attributes = std::map<std::string, std::string>;
using Records = std::map<std::string, Attributes>; ///< by "PSI/id"

/// The attributes that travel with the records of a class and an object type (0 for all), and what a record without
/// one has.
struct Travelling {
    std::string_view classCode;
    int type;
    const char* attribute;
    const char* otherwise;
};
constexpr Travelling kTravelling[] = {
    {"000", 0, "LocalVersion", ""},
    {"SYS", 0, "MEPType", ""},
    {"SYS", 0, "DisciplineId", ""},
    {"SYS", 0, "Name", "''"},
    {"SYS", 0, "Code", "''"},
    {"SYS", 0, "Description", "''"},
    {"SYS", 0, "SystemClassification", "0"},
    {"SYS", 0, "CreateTime", "0"},
    {"SYS", 1, "MaterialSerieIds", "'[]'"},
    {"SYS", 2, "MaterialSerieIds", "'[]'"},
    {"SYS", 6, "CableSpecTypeIds", "'[]'"},
    {"SMS", 0, "MEPType", ""},
    {"SMS", 0, "DisciplineId", ""},
    {"SMS", 0, "Name", "''"},
    {"SMS", 0, "CreateTime", "0"},
    {"SMS", 0, "SizeModuleId", "''"},
    {"SMS", 1, "SerieGroupId", "''"},
    {"SMS", 1, "minSize", ""},
    {"SMS", 1, "maxSize", ""},
    {"SMS", 1, "JunctionType", "0"},
    {"SMS", 2, "SerieGroupId", "''"},
    {"SMS", 2, "minSize", ""},
    {"SMS", 2, "maxSize", ""},
    {"SMS", 2, "JunctionType", "0"},
    {"COS", 0, "FittingList", ""},
    {"COS", 1, "ConnectionType", ""},
    {"COS", 2, "ConnectionType", ""},
    {"MTS", 0, "Name", "''"},
    {"MTS", 0, "MEPType", ""},
    {"MTS", 0, "DisciplineId", ""},
    {"MTS", 1, "CreateTime", "0"},
    {"PSI", 0, "MEPType", ""},
    {"PSI", 0, "DisciplineId", ""},
    {"PSI", 0, "CreateTime", "0"},
    {"PSI", 1, "Name", "''"},
    {"PSI", 1, "MaterialId", "''"},
    {"PSI", 1, "roughness", "0"},
    {"PSI", 1, "PipeSizeList", ""},
    {"PSI", 2, "Name", "''"},
    {"PSI", 2, "MaterialId", "''"},
    {"PSI", 2, "DuctShape", "0"},
    {"PSI", 2, "PressureGrade", "0"},
    {"PSI", 2, "DuctSizeList", ""},
    {"PSI", 3, "Name", "''"},
    {"PSI", 3, "CableTrayShape", "0"},
    {"PSI", 3, "CableTraySizeList", ""},
    {"PSI", 4, "Name", "''"},
    {"PSI", 4, "PipeSizeList", ""},
    {"PSI", 5, "CableSpecTypeName", "''"},
    {"PSI", 5, "CableMaterial", "0"},
    {"PSI", 5, "CableEnvironmentTemperature", "0"},
    {"PSI", 5, "CableSpecificationList", ""},
    {"MSG", 0, "MEPType", ""},
    {"MSG", 0, "DisciplineId", ""},
    {"MSG", 0, "Name", "''"},
    {"MSG", 1, "CreateTime", "0"},
};

/// Attributes that hold ids, with the class of what they mean.
struct Link {
    const char* attribute;
    const char* classCode;
};
constexpr Link kLinks[] = {{"SizeModuleId", "PSI"},
                           {"SerieGroupId", "MSG"},
                           {"MaterialId", "MTS"},
                           {"MaterialSerieIds", "SMS"},
                           {"CableSpecTypeIds", "PSI"}};

/// Circuit templates and combined products travel whole.
bool TravelsWhole(const std::string& key) {
    return key.starts_with("CRT/") || key == "combined";
}

Records RecordsOf(const Facts& facts) {
    Records records;
    for (const auto& [key, value] : facts) {
        const auto slash = key.find('/', 4);
        auto& attributes = records[key.substr(0, slash)];
        if (slash != std::string::npos)
            attributes[key.substr(slash + 1)] = value;
    }
    return records;
}

std::string Unquoted(const std::string& fact) {
    return fact.substr(1, fact.size() - 2);
}

/// The links of a value that lead somewhere. The order of cables is that of their names, and no fact.
std::string LivingLinks(const Records& records, const Link& link, const std::string& fact) {
    const auto lives = [&](const std::string& id) { return records.contains(link.classCode + ("/" + id)); };
    const std::string text = Unquoted(fact);
    if (text.empty() || text[0] != '[')
        return lives(text) ? fact : "''";
    std::vector<std::string> ids;
    for (const std::string id : json::parse(text))
        if (lives(id))
            ids.push_back(id);
    if (link.classCode == std::string_view("PSI"))
        std::ranges::sort(ids);
    return TextFact(json(ids).dump());
}

int TypeOf(const Records& records, const std::string& key, const Attributes& attributes) {
    if (key.starts_with("COS/of ")) {
        const auto owner = records.find("SMS/" + key.substr(7));
        return owner != records.end() ? TypeOf(records, owner->first, owner->second) : 0;
    }
    const auto type = attributes.find("MEPType");
    return type != attributes.end() ? std::stoi(type->second) : 0;
}

/// Nobody refers to it: a connection series or a duct material that a client has left behind.
bool IsLeftBehind(const std::string& key, int type) {
    return (key.starts_with("COS/") && !key.starts_with("COS/of ")) ||
           (key.starts_with("MTS/") && type == 2 && !key.starts_with("MTS/of "));
}

/// Fittings of one rule keep their order; that of the rules is the reader's and no fact.
std::string OrderedByRule(const std::string& fact) {
    constexpr std::size_t entry = 2 * 106;
    constexpr std::size_t ruleAt = 2 * 54;
    std::vector<std::string> fittings;
    for (std::size_t at = 2; at + entry < fact.size(); at += entry)
        fittings.push_back(fact.substr(at, entry));
    std::ranges::stable_sort(fittings, {}, [](const std::string& fitting) { return fitting.substr(ruleAt, 8); });
    std::string ordered = "X'";
    for (const auto& fitting : fittings)
        ordered += fitting;
    return ordered + "'";
}

bool IsText(std::string_view fact) {
    return fact.starts_with('\'');
}

std::string ValueOf(const Records& records, const Travelling& row, const Attributes& attributes) {
    const auto found = attributes.find(row.attribute);
    std::string value = found != attributes.end() ? found->second : row.otherwise;
    if (row.attribute == std::string_view("FittingList") && !value.empty())
        return OrderedByRule(value);
    for (const Link& link : kLinks) {
        if (link.attribute == std::string_view(row.attribute) && IsText(value))
            value = LivingLinks(records, link, value);
    }
    return value;
}

} // namespace

Facts TravellingFacts(const Facts& facts) {
    const Records records = RecordsOf(facts);
    Facts travelling;
    for (const auto& [key, attributes] : records) {
        const int type = TypeOf(records, key, attributes);
        if (IsLeftBehind(key, type))
            continue;
        travelling.emplace(key, "");
        if (TravelsWhole(key)) {
            for (const auto& [attribute, value] : attributes)
                travelling.emplace(key + "/" + attribute, value);
            continue;
        }
        for (const auto& row : kTravelling) {
            if (key.starts_with(row.classCode) && (row.type == 0 || row.type == type))
                travelling.emplace(key + "/" + row.attribute, ValueOf(records, row, attributes));
        }
    }
    return travelling;
}

} // namespace tolmtest
