#pragma once

#include "TolmDataSet/MepEnums.h"

#include <cpprest/json.h>

#include <cstdint>
#include <string_view>
#include <vector>

/// Reading of the cloud's rows. What a row must have is asked for with `at`, which throws the JSON library's "Key not
/// found"; a value of another type than the one asked for throws as well. Numbers that do not fit are clamped and
/// never wrap, since nobody vouches for what comes over the wire.
namespace tolm::jsonread {

/// The member of this name; null when there is none.
const web::json::value* Find(const web::json::object& fields, const char* key);
const web::json::value* Find(const web::json::object& fields, const wstring& key);

/// Required members.
wstring Text(const web::json::object& fields, const char* key);
short Short(const web::json::object& fields, const char* key);
std::int32_t Int(const web::json::object& fields, const char* key);

/// A number as it fits into the type: a fraction is cut off, what is too large or too small becomes the limit.
short ShortOf(const web::json::value& value);
std::int64_t Int64Of(const web::json::value& value);
std::uint64_t UInt64Of(const web::json::value& value);

/// How the text of a cell is read where a number is expected.
enum class CellText { AsInteger, AsFloat };

/// A numeric cell of a list: a number, or the text of one; 0 for a missing cell and for a value of any other type.
float FloatCell(const web::json::object& row, const char* key, CellText text);
/// The same as a 32-bit integer; text is read as an integer.
std::int32_t IntCell(const web::json::object& row, const char* key);

/// The number that the text begins with, 0 when it begins with none, whatever the locale.
std::int32_t ParseInteger(std::string_view text);
float ParseFloat(std::string_view text);

/// The elements of an array that nobody needs afterwards.
std::vector<web::json::value> TakeElements(web::json::array& array);

} // namespace tolm::jsonread
