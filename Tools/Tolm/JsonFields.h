#pragma once

#include "Tolm/Errors.h"

#include "Vorn/Text.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <limits>
#include <span>
#include <string>
#include <type_traits>

/// A record as a JSON object, both ways, by a table of its members.
namespace tolmcli {

/// One member. A member without `set` is told and never taken.
template <class Record> struct JsonField {
    const char* key;
    nlohmann::ordered_json (*get)(const Record& record);
    void (*set)(Record& record, const nlohmann::ordered_json& value);
};

template <class Record> using JsonFields = std::span<const JsonField<Record>>;

template <class Record>
nlohmann::ordered_json ToJson(const Record& record, std::type_identity_t<JsonFields<Record>> fields) {
    nlohmann::ordered_json object = nlohmann::ordered_json::object();
    for (const auto& field : fields)
        object[field.key] = field.get(record);
    return object;
}

/// Members that are left out keep the record's defaults. Throws Failure for one that is not known or not of its kind.
template <class Record>
void FromJson(const nlohmann::ordered_json& object, Record& record, std::type_identity_t<JsonFields<Record>> fields) {
    if (!object.is_object())
        throw Failure("a record is a JSON object, not " + object.dump());
    for (const auto& [key, value] : object.items()) {
        const JsonField<Record>* known = nullptr;
        for (const auto& field : fields)
            if (key == field.key)
                known = &field;
        if (known == nullptr)
            throw Failure("no record of this kind has a \"" + key + "\"");
        try {
            if (known->set != nullptr)
                known->set(record, value);
        } catch (const nlohmann::json::exception&) {
            throw Failure("\"" + key + "\" cannot be " + value.dump());
        }
    }
}

/// Makers of members from a getter and a setter.
namespace jsonfield {

using Json = nlohmann::ordered_json;

/// A whole number of 32 bits; throws like any other value of a wrong kind.
inline std::int32_t Whole(const Json& value) {
    constexpr std::int64_t kLeast = std::numeric_limits<std::int32_t>::min();
    constexpr std::int64_t kMost = std::numeric_limits<std::int32_t>::max();
    if (!value.is_number_integer() || value.get<std::int64_t>() < kLeast || value.get<std::int64_t>() > kMost)
        throw Failure("a whole number is wanted, not " + value.dump());
    return value.get<std::int32_t>();
}

template <class Record, auto Getter, auto Setter> constexpr JsonField<Record> Text(const char* key) {
    return {key, [](const Record& record) { return Json(vorn::StringUtil::ToString((record.*Getter)())); },
            [](Record& record, const Json& value) {
                std::wstring text = vorn::StringUtil::ToWString(value.get<std::string>());
                (record.*Setter)(text);
            }};
}

/// A whole number or an enumeration.
template <class Record, auto Getter, auto Setter> constexpr JsonField<Record> Number(const char* key) {
    return {key, [](const Record& record) { return Json(static_cast<std::int32_t>((record.*Getter)())); },
            [](Record& record, const Json& value) {
                using Value = std::remove_cvref_t<decltype((record.*Getter)())>;
                auto number = static_cast<Value>(Whole(value));
                (record.*Setter)(number);
            }};
}

template <class Record, auto Getter, auto Setter> constexpr JsonField<Record> Real(const char* key) {
    return {key, [](const Record& record) { return Json((record.*Getter)()); },
            [](Record& record, const Json& value) { (record.*Setter)(value.get<float>()); }};
}

template <class Record, auto Getter, auto Setter> constexpr JsonField<Record> Flag(const char* key) {
    return {key, [](const Record& record) { return Json((record.*Getter)()); },
            [](Record& record, const Json& value) { (record.*Setter)(value.get<bool>()); }};
}

template <class Record, std::wstring Record::*Member> constexpr JsonField<Record> TextMember(const char* key) {
    return {key, [](const Record& record) { return Json(vorn::StringUtil::ToString(record.*Member)); },
            [](Record& record, const Json& value) {
                record.*Member = vorn::StringUtil::ToWString(value.get<std::string>());
            }};
}

template <class Record, std::int32_t Record::*Member> constexpr JsonField<Record> NumberMember(const char* key) {
    return {key, [](const Record& record) { return Json(record.*Member); },
            [](Record& record, const Json& value) { record.*Member = Whole(value); }};
}

template <class Record, double Record::*Member> constexpr JsonField<Record> RealMember(const char* key) {
    return {key, [](const Record& record) { return Json(record.*Member); },
            [](Record& record, const Json& value) { record.*Member = value.get<double>(); }};
}

} // namespace jsonfield
} // namespace tolmcli
