#pragma once

#include "MepDatabase/CallSite.h"
#include "MepDatabase/WireText.h"

#include <cpprest/json.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

/// How records become the JSON of the wire: a table of keys and one walker.
namespace tolm {

/// One key of an object and its value.
template <class Record> struct JsonCell {
    const char* key;
    web::json::value (*valueOf)(const Record&);
};

template <class Record> using JsonCells = std::span<const JsonCell<Record>>;

using JsonFields = std::vector<std::pair<utility::string_t, web::json::value>>;

/// The cells in the order of their keys: so the JSON library keeps the members of an object, and has none to move then.
template <class Record, std::size_t N>
consteval std::array<JsonCell<Record>, N> ByKey(const JsonCell<Record> (&cells)[N]) {
    auto sorted = std::to_array(cells);
    std::ranges::sort(sorted, {}, [](const JsonCell<Record>& cell) { return std::string_view(cell.key); });
    return sorted;
}

template <class Record> void AddFields(JsonFields& fields, JsonCells<Record> cells, const Record& record) {
    for (const auto& cell : cells)
        fields.emplace_back(cell.key, cell.valueOf(record));
}

inline void AddPairs(JsonFields&) {}
template <class... Rest> void AddPairs(JsonFields& fields, const char* key, web::json::value&& value, Rest&&... rest) {
    fields.emplace_back(key, std::move(value));
    AddPairs(fields, std::forward<Rest>(rest)...);
}

template <class Record> web::json::value JsonObject(JsonCells<Record> cells, const Record& record) {
    JsonFields fields;
    fields.reserve(cells.size());
    AddFields(fields, cells, record);
    return web::json::value::object(std::move(fields));
}

/// An object of keys and values in turns; the values are moved into it, as they cannot be out of a braced list.
template <class... KeysAndValues> web::json::value JsonObjectOf(KeysAndValues&&... keysAndValues) {
    JsonFields fields;
    fields.reserve(sizeof...(keysAndValues) / 2);
    AddPairs(fields, std::forward<KeysAndValues>(keysAndValues)...);
    return web::json::value::object(std::move(fields));
}

/// An array of objects, one for each entry, in their order.
template <class Entry>
web::json::value JsonObjects(std::type_identity_t<JsonCells<Entry>> cells, const std::vector<Entry>& entries) {
    std::vector<web::json::value> objects;
    objects.reserve(entries.size());
    for (const auto& entry : entries)
        objects.push_back(JsonObject<Entry>(cells, entry));
    return web::json::value::array(std::move(objects));
}

/// A whole number, also that of an enumeration.
template <class Number> web::json::value JsonInteger(Number number) {
    return web::json::value::number(static_cast<std::int32_t>(number));
}

/// {"rows": [...]} with one row for each record, in the order of the list; `encode` makes a row of a record. A wrapped
/// row is {"id": the record's id, "data": the row}. A null record ends it: the warning is reported for the caller and
/// the value is a JSON null.
template <class Record, class Encode>
web::json::value EncodeRows(const std::vector<std::shared_ptr<const Record>>& list, bool wrap, const Encode& encode,
                            const CallSite& caller, const wchar_t* nullWarning) {
    std::vector<web::json::value> rows;
    rows.reserve(list.size());
    for (const auto& record : list) {
        if (!record) {
            caller.Warn(nullWarning);
            return {};
        }
        auto row = encode(*record);
        rows.push_back(wrap ? JsonObjectOf("id", JsonText(record->GetId()), "data", std::move(row)) : std::move(row));
    }
    return JsonObjectOf("rows", web::json::value::array(std::move(rows)));
}

} // namespace tolm
