#include "Service/UploadBody.h"

#include "Service/Answer.h"
#include "Service/ChangeBuilder.h"
#include "Service/JsonText.h"
#include "Service/RowCheck.h"
#include "Service/Secrets.h"
#include "Service/SettingTables.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <limits>
#include <set>
#include <span>
#include <utility>

namespace tolm::service {
namespace {

using nlohmann::json;

enum class Kind { Text, Whole, Object, Array };

struct Member {
    std::string_view key;
    Kind kind;
    bool required;
};

constexpr std::array kPatchMembers{
    Member{"tolm_version", Kind::Text, false}, Member{"version", Kind::Whole, true},
    Member{"force", Kind::Whole, false},       Member{"userID", Kind::Text, false},
    Member{"createList", Kind::Object, false}, Member{"recoveryList", Kind::Object, false},
    Member{"editList", Kind::Object, false},   Member{"removeList", Kind::Object, false},
};
constexpr std::array kRowsMembers{
    Member{"tolm_version", Kind::Text, false},
    Member{"rows", Kind::Array, true},
};
constexpr std::array kIdsMembers{
    Member{"tolm_version", Kind::Text, false},
    Member{"ids", Kind::Array, true},
};

[[noreturn]] void Refuse(std::string_view key, const std::string& words) {
    throw Refusal(Answer::BadRequest, "\"" + std::string(key) + "\" " + words);
}

bool IsWhole(const json& value) {
    constexpr auto most = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    return value.is_number_integer() && (!value.is_number_unsigned() || value.get<std::uint64_t>() <= most);
}

bool HasKind(const json& value, Kind kind) {
    switch (kind) {
    case Kind::Text:
        return value.is_string();
    case Kind::Whole:
        return IsWhole(value);
    case Kind::Object:
        return value.is_object();
    case Kind::Array:
        return value.is_array();
    }
    return false;
}

/// A key that nobody knows may be a misspelled list: it is refused rather than lost.
void RefuseUnknown(const json& object, std::span<const Member> members) {
    for (const auto& [key, value] : object.items()) {
        if (std::ranges::find(members, key, &Member::key) == members.end())
            Refuse(key, "has no place here");
    }
}

void CheckMembers(const json& object, std::span<const Member> members) {
    for (const auto& member : members) {
        const auto found = object.find(member.key);
        if (found == object.end() && member.required)
            Refuse(member.key, "is missing");
        if (found != object.end() && !HasKind(*found, member.kind))
            Refuse(member.key, "has a value of the wrong type");
    }
    RefuseUnknown(object, members);
}

json ReadBody(std::string_view body, std::span<const Member> members) {
    auto value = ParseJson(body);
    if (!value.is_object())
        throw Refusal(Answer::BadRequest, "the body is no JSON object");
    CheckMembers(value, members);
    return value;
}

/// A client leaves null in the place of a part that it lost; nobody could take the row in with it.
void DropLostParts(std::size_t table, json& row) {
    const auto form = kSettingTables[table].form;
    if (!row.is_object() || (form != RowForm::Series && form != RowForm::SystemType))
        return;
    for (auto& value : row) {
        if (value.is_array())
            std::erase_if(value.get_ref<json::array_t&>(), [](const json& entry) { return entry.is_null(); });
    }
}

ChangeBuilder WireBuilder() {
    return ChangeBuilder(DropLostParts);
}

/// The ids without those that stand once more: what is removed already is gone.
json WithoutRepetitions(json ids) {
    std::set<json> seen;
    if (ids.is_array())
        std::erase_if(ids.get_ref<json::array_t&>(), [&](const json& id) { return !seen.insert(id).second; });
    return ids;
}

json Unwrapped(std::size_t table, const json& wrapped) {
    if (!wrapped.is_object() || !wrapped.value("id", json()).is_string() || !wrapped.value("data", json()).is_object())
        RefuseRow(table, "", "an edited row is no object with \"id\" and \"data\"");
    const auto& id = wrapped["id"];
    if (wrapped["data"].value(std::string(kSettingTables[table].IdKey()), json()) != id)
        RefuseRow(table, id.get<std::string>().substr(0, 40), "the row in \"data\" bears another id");
    return wrapped["data"];
}

} // namespace

UploadPatch ReadUploadPatch(std::string_view body) {
    const auto patch = ReadBody(body, kPatchMembers);
    auto builder = WireBuilder();
    for (const auto* key : {"createList", "recoveryList", "editList"})
        builder.TakeRows(patch.value(key, json::object()));
    const auto removals = patch.value("removeList", json::object());
    for (const auto& [table, ids] : removals.items())
        builder.TakeRemovals(TableNamed(table), WithoutRepetitions(ids));
    return {patch["version"].get<std::int64_t>(), HashText(body), builder.Take()};
}

SettingChange ReadCreatedRows(std::string_view body, std::size_t table) {
    auto builder = WireBuilder();
    builder.TakeRows(table, ReadBody(body, kRowsMembers)["rows"]);
    return builder.Take();
}

SettingChange ReadEditedRows(std::string_view body, std::size_t table) {
    auto edited = ReadBody(body, kRowsMembers);
    for (auto& row : edited["rows"])
        row = Unwrapped(table, row);
    auto builder = WireBuilder();
    builder.TakeRows(table, edited["rows"]);
    return builder.Take();
}

SettingChange ReadRemovedIds(std::string_view body, std::size_t table) {
    auto builder = WireBuilder();
    builder.TakeRemovals(table, WithoutRepetitions(ReadBody(body, kIdsMembers)["ids"]));
    return builder.Take();
}

} // namespace tolm::service
