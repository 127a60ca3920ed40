#include "Service/SettingRow.h"

#include "Service/JsonText.h"
#include "Service/RowCheck.h"
#include "Service/SettingTables.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <string_view>

namespace tolm::service {
namespace {

using nlohmann::json;

/// Longest id that is taken, in bytes.
constexpr std::size_t kLongestId = 255;

bool IsControl(char c) {
    return static_cast<unsigned char>(c) < 0x20 || c == 0x7f;
}

std::string IdOf(std::size_t table, const json& row) {
    const auto found = row.find(kSettingTables[table].IdKey());
    if (found == row.end() || !found->is_string())
        RefuseRow(table, "", "\"" + std::string(kSettingTables[table].IdKey()) + "\" is missing or no text");
    auto id = found->get<std::string>();
    CheckRowId(table, id);
    return id;
}

std::string_view NameKeyOf(RowForm form) {
    switch (form) {
    case RowForm::ConfigNode:
        return "text";
    case RowForm::Series:
        return "name";
    case RowForm::SystemType:
        return "systemType";
    default:
        return {};
    }
}

/// A client does not read a whole number back as a roughness.
void MakeRoughnessADouble(json& row) {
    const auto content = row.find("content");
    if (content == row.end() || !content->is_object())
        return;
    const auto roughness = content->find("roughness");
    if (roughness != content->end() && roughness->is_number_integer())
        *roughness = roughness->get<double>();
}

std::string ParentOf(const json& row) {
    const auto parent = row.find("parentID");
    return parent != row.end() && parent->is_string() ? parent->get<std::string>() : std::string();
}

std::string ConfigScope(const json& row, const std::string& group) {
    const auto* known = FindConfigGroup(group);
    if (!known->namesAreUnique)
        return {};
    if (!known->hasMaterials)
        return "ConfigTree/" + group;
    return "ConfigTree/" + group + (ParentOf(row).empty() ? "/materials" : "/sizes");
}

void TakeName(SettingRow& made, const json& row) {
    const auto form = kSettingTables[made.table].form;
    const auto key = NameKeyOf(form);
    if (key.empty())
        return;
    made.nameScope = form == RowForm::ConfigNode ? ConfigScope(row, made.group) : kSettingTables[made.table].name;
    made.name = CompactJson(row[std::string(key)]);
}

std::string StubOf(const SettingRow& made, const json& row) {
    json stub{{"ID", made.id}};
    if (made.table == kConfigTree) {
        stub["groupName"] = made.group;
        stub["parentID"] = ParentOf(row);
    }
    return CompactJson(stub);
}

} // namespace

void CheckRowId(std::size_t table, const std::string& id) {
    if (id.empty())
        RefuseRow(table, id, "the id is empty");
    if (id.size() > kLongestId || std::ranges::any_of(id, IsControl))
        RefuseRow(table, id.substr(0, 40), "the id is too long or holds control characters");
}

SettingRow MakeSettingRow(std::size_t table, json row) {
    if (!row.is_object())
        RefuseRow(table, "", "a row is no object");
    SettingRow made;
    made.table = table;
    made.id = IdOf(table, row);
    CheckRowFields(table, made.id, row);
    row.erase("version");
    if (table == kConfigTree) {
        MakeRoughnessADouble(row);
        made.group = row["groupName"].get<std::string>();
    }
    TakeName(made, row);
    if (kSettingTables[table].tracked)
        made.stub = StubOf(made, row);
    made.body = CompactJson(row);
    return made;
}

} // namespace tolm::service
