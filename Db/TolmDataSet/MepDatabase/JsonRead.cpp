#include "MepDatabase/JsonRead.h"

#include "MepDatabase/WireText.h"
#include "Vorn/Text.h"

#include <charconv>
#include <cmath>
#include <iterator>
#include <limits>
#include <system_error>
#include <utility>

namespace tolm::jsonread {
namespace {

template <class Integer> Integer ClampedDouble(double value) {
    using Limits = std::numeric_limits<Integer>;
    if (std::isnan(value))
        return 0;
    if (value <= static_cast<double>(Limits::min()))
        return Limits::min();
    return value >= static_cast<double>(Limits::max()) ? Limits::max() : static_cast<Integer>(value);
}

template <class Integer, class Source> Integer ClampedInteger(Source value) {
    using Limits = std::numeric_limits<Integer>;
    if (std::cmp_less(value, Limits::min()))
        return Limits::min();
    return std::cmp_greater(value, Limits::max()) ? Limits::max() : static_cast<Integer>(value);
}

template <class Integer> Integer ToInteger(const web::json::number& number) {
    if (!number.is_integral())
        return ClampedDouble<Integer>(number.to_double());
    return number.is_int64() ? ClampedInteger<Integer>(number.to_int64()) : ClampedInteger<Integer>(number.to_uint64());
}

std::string_view WithoutPlus(std::string_view text) {
    return text.starts_with('+') && !text.starts_with("+-") ? text.substr(1) : text;
}

/// Whether a number that no double can hold is too large rather than too small.
bool IsHuge(std::string_view number) {
    const std::size_t exponent = number.find_first_of("eE");
    if (exponent != std::string_view::npos)
        return number.substr(exponent + 1, 1) != "-";
    const std::size_t first = number.find_first_not_of('-');
    return first != std::string_view::npos && number[first] != '0' && number[first] != '.';
}

double OutOfRange(std::string_view number) {
    if (!IsHuge(number))
        return 0.0;
    return number.starts_with('-') ? std::numeric_limits<double>::lowest() : std::numeric_limits<double>::max();
}

std::string TrimmedText(const web::json::value& value) {
    return ToWire(vorn::StringUtil::TrimSpace(WideText(value)));
}

float ParseCell(const web::json::value& value, CellText text) {
    const std::string trimmed = TrimmedText(value);
    return text == CellText::AsInteger ? static_cast<float>(ParseInteger(trimmed)) : ParseFloat(trimmed);
}

} // namespace

const web::json::value* Find(const web::json::object& fields, const char* key) {
    const auto found = fields.find(key);
    return found == fields.end() ? nullptr : &found->second;
}

const web::json::value* Find(const web::json::object& fields, const wstring& key) {
    return Find(fields, ToWire(key).c_str());
}

wstring Text(const web::json::object& fields, const char* key) {
    return WideText(fields.at(key));
}

short Short(const web::json::object& fields, const char* key) {
    return ShortOf(fields.at(key));
}

std::int32_t Int(const web::json::object& fields, const char* key) {
    return WholeNumber(fields.at(key));
}

short ShortOf(const web::json::value& value) {
    return ToInteger<short>(value.as_number());
}

std::int64_t Int64Of(const web::json::value& value) {
    return ToInteger<std::int64_t>(value.as_number());
}

std::uint64_t UInt64Of(const web::json::value& value) {
    return ToInteger<std::uint64_t>(value.as_number());
}

float FloatCell(const web::json::object& row, const char* key, CellText text) {
    const web::json::value* cell = Find(row, key);
    if (cell != nullptr && cell->is_number())
        return FiniteFloat(*cell);
    return cell != nullptr && cell->is_string() ? ParseCell(*cell, text) : 0.0F;
}

std::int32_t IntCell(const web::json::object& row, const char* key) {
    const web::json::value* cell = Find(row, key);
    if (cell != nullptr && cell->is_number())
        return WholeNumber(*cell);
    return cell != nullptr && cell->is_string() ? ParseInteger(TrimmedText(*cell)) : 0;
}

std::int32_t ParseInteger(std::string_view text) {
    text = WithoutPlus(text);
    std::int32_t value = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    if (result.ec != std::errc::result_out_of_range)
        return value;
    return text.starts_with('-') ? std::numeric_limits<std::int32_t>::min() : std::numeric_limits<std::int32_t>::max();
}

float ParseFloat(std::string_view text) {
    text = WithoutPlus(text);
    double value = 0.0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    const std::string_view number = text.substr(0, static_cast<std::size_t>(result.ptr - text.data()));
    if (result.ec == std::errc::result_out_of_range)
        return FiniteFloat(OutOfRange(number));
    return std::isfinite(value) ? FiniteFloat(value) : 0.0F;
}

std::vector<web::json::value> TakeElements(web::json::array& array) {
    return {std::make_move_iterator(array.begin()), std::make_move_iterator(array.end())};
}

} // namespace tolm::jsonread
