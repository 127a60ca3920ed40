#include "Service/ProjectFile.h"

#include "Service/Answer.h"
#include "Service/Base64Text.h"
#include "Service/ChangeBuilder.h"
#include "Service/JsonText.h"
#include "Service/RowCheck.h"
#include "Service/SettingTables.h"

#include <nlohmann/json.hpp>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <stdexcept>

namespace tolm::service {
namespace {

using nlohmann::json;

constexpr int kFormatVersion = 1;

[[noreturn]] void Refuse(const std::string& words) {
    throw Refusal(Answer::BadRow, words);
}

json ParseFile(std::string_view text, std::string_view format) {
    auto root = ParseJson(text);
    if (!root.is_object() || root.value("format", json()) != format)
        Refuse("\"format\" is not \"" + std::string(format) + "\"");
    if (root.value("formatVersion", json()) != kFormatVersion)
        Refuse("\"formatVersion\" is not 1");
    return root;
}

std::string TextMember(const json& root, const char* key) {
    const auto found = root.find(key);
    if (found == root.end())
        return {};
    if (!found->is_string())
        Refuse("\"" + std::string(key) + "\" is no text");
    return found->get<std::string>();
}

const json& ObjectMember(const json& root, const char* key) {
    static const json none = json::object();
    const auto found = root.find(key);
    if (found == root.end())
        return none;
    if (!found->is_object())
        Refuse("\"" + std::string(key) + "\" is no object");
    return *found;
}

bool StaysInFolder(const std::filesystem::path& path) {
    if (path.empty() || path.is_absolute())
        return false;
    for (const auto& step : path) {
        if (step == "..")
            return false;
    }
    return true;
}

/// Puts the bytes of the named file in place of its path.
void TakeFileIn(std::size_t table, const std::string& folder, json& row) {
    const auto named = row.is_object() ? row.find("file") : row.end();
    if (kSettingTables[table].form != RowForm::Binary || !row.is_object() || named == row.end())
        return;
    const auto id = row.value("fileName", json()).dump();
    if (!named->is_string() || row.contains("data"))
        RefuseRow(table, id, "\"file\" is no text, or stands beside \"data\"");
    const std::filesystem::path path = named->get<std::string>();
    if (!StaysInFolder(path))
        RefuseRow(table, id, "\"file\" leaves the folder of the project file");
    const auto bytes = ReadWholeFile((std::filesystem::path(folder) / path).string());
    row.erase("file");
    row["length"] = bytes.size();
    row["data"] = ToBase64(bytes);
}

ChangeBuilder FileBuilder(const std::string& folder) {
    return ChangeBuilder([folder](std::size_t table, json& row) { TakeFileIn(table, folder, row); });
}

void CheckKnownKeys(const json& root, const std::set<std::string>& known) {
    for (const auto& [key, value] : root.items()) {
        if (!known.contains(key))
            Refuse("there is no place for \"" + key + "\"");
    }
}

std::vector<WorkunitEntry> ReadWorkunits(const json& workunits) {
    std::vector<WorkunitEntry> entries;
    for (const auto& [id, list] : workunits.items()) {
        if (!list.is_array())
            Refuse("work unit \"" + id + "\": the entries are no array");
        for (const auto& value : list)
            entries.push_back(ReadWorkunitEntry(id, value));
    }
    return entries;
}

} // namespace

std::string ReadDataId(const json& value) {
    if (!value.is_string() || value.get_ref<const std::string&>().empty() ||
        value.get_ref<const std::string&>().size() > 255)
        Refuse("a \"dataId\" is missing, empty, too long or no text");
    return value.get<std::string>();
}

int ReadDataStatus(const json& value) {
    const bool whole = value.is_number_integer() && value >= 0 && value <= 1'000'000;
    if (!whole)
        Refuse("a \"dataStatus\" is missing or no whole number from 0 on");
    return value.get<int>();
}

WorkunitEntry ReadWorkunitEntry(const std::string& workunitId, const json& value) {
    const auto id = value.is_object() ? value.value("dataId", json()) : json();
    const auto status = value.is_object() ? value.value("dataStatus", json()) : json();
    return {workunitId, ReadDataId(id), ReadDataStatus(status)};
}

ProjectFile ReadProjectFile(std::string_view text, const std::string& folder) {
    const auto root = ParseFile(text, "tolm-project");
    CheckKnownKeys(root, {"format", "formatVersion", "id", "name", "description", "tables"});
    auto builder = FileBuilder(folder);
    builder.TakeRows(ObjectMember(root, "tables"));
    return {TextMember(root, "id"), TextMember(root, "name"), builder.Take().put};
}

ChangeFile ReadChangeFile(std::string_view text, const std::string& folder) {
    const auto root = ParseFile(text, "tolm-change");
    CheckKnownKeys(root, {"format", "formatVersion", "description", "add", "edit", "remove", "workunits"});
    auto builder = FileBuilder(folder);
    builder.TakeRows(ObjectMember(root, "add"));
    builder.TakeRows(ObjectMember(root, "edit"));
    builder.TakeRemovals(ObjectMember(root, "remove"));
    return {TextMember(root, "description"), builder.Take(), ReadWorkunits(ObjectMember(root, "workunits"))};
}

std::string WriteProjectFile(const ProjectInfo& project, const std::string& tables) {
    return R"({"format":"tolm-project","formatVersion":1,"id":)" + QuotedJson(project.id) + R"(,"name":)" +
           QuotedJson(project.name) + R"(,"tables":)" + tables + "}\n";
}

std::string ReadWholeFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file || !std::filesystem::is_regular_file(path))
        throw std::runtime_error("the file \"" + path + "\" cannot be read: " + std::strerror(errno ? errno : EINVAL));
    std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (file.bad())
        throw std::runtime_error("the file \"" + path + "\" could not be read to its end");
    return text;
}

} // namespace tolm::service
