#pragma once

#include "TolmDataSet/MepEnums.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace web::json {
class value;
} // namespace web::json

/// The one seam between the library's wide text and numbers and the UTF-8 and JSON of the wire.
namespace tolm {

/// Wide text as UTF-8. Never throws for ill-formed text: U+FFFD stands in its place.
std::string ToWire(std::wstring_view text);
/// UTF-8 as wide text, ill-formed bytes as U+FFFD.
wstring FromWire(std::string_view text);

/// Text of a JSON string; throws web::json::json_exception for any other value.
wstring WideText(const web::json::value& value);
/// The number as a 32-bit integer: a fraction is cut off, what does not fit is clamped, NaN is 0.
/// Throws web::json::json_exception for a value that is no number.
std::int32_t WholeNumber(const web::json::value& value);
/// The same for a floating-point number that is always finite.
double FiniteNumber(const web::json::value& value);
float FiniteFloat(const web::json::value& value);

/// `number` within the range of the type; NaN is 0.
double FiniteNumber(double number);
float FiniteFloat(double number);
std::int32_t ClampToInt32(double number);
std::int64_t ClampToInt64(double number);

web::json::value JsonText(std::wstring_view text);
/// An array of strings, in the order of the list.
web::json::value JsonTexts(const std::vector<wstring>& texts);

/// What the exception under way says; "Unknown exception" when it says nothing. Only inside a handler.
wstring CurrentExceptionText();
/// Writes one line to the default log.
void DumpLogLine(const wstring& line);

} // namespace tolm
