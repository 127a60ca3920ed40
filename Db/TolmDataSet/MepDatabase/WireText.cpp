#include "MepDatabase/WireText.h"

#include "Vorn/Log.h"
#include "Vorn/Text.h"

#include <cpprest/json.h>

#include <algorithm>
#include <cmath>
#include <exception>
#include <limits>

namespace tolm {
namespace {

template <class T> T Clamped(double number) {
    if (std::isnan(number))
        return T{};
    return static_cast<T>(std::clamp(number, static_cast<double>(std::numeric_limits<T>::lowest()),
                                     static_cast<double>(std::numeric_limits<T>::max())));
}

std::string NarrowExceptionText() {
    try {
        throw;
    } catch (const std::exception& e) {
        return e.what();
    } catch (...) {
        return {};
    }
}

} // namespace

std::string ToWire(std::wstring_view text) {
    return vorn::StringUtil::ToString(text);
}

wstring FromWire(std::string_view text) {
    return vorn::StringUtil::ToWString(text);
}

wstring WideText(const web::json::value& value) {
    return FromWire(value.as_string());
}

std::int32_t WholeNumber(const web::json::value& value) {
    return ClampToInt32(value.as_double());
}

double FiniteNumber(const web::json::value& value) {
    return FiniteNumber(value.as_double());
}

float FiniteFloat(const web::json::value& value) {
    return FiniteFloat(value.as_double());
}

double FiniteNumber(double number) {
    return Clamped<double>(number);
}

float FiniteFloat(double number) {
    return Clamped<float>(number);
}

std::int32_t ClampToInt32(double number) {
    return Clamped<std::int32_t>(number);
}

std::int64_t ClampToInt64(double number) {
    constexpr double Beyond = 0x1p63; // the largest value has no double of its own
    return number >= Beyond ? std::numeric_limits<std::int64_t>::max() : Clamped<std::int64_t>(number);
}

web::json::value JsonText(std::wstring_view text) {
    return web::json::value::string(ToWire(text));
}

web::json::value JsonTexts(const std::vector<wstring>& texts) {
    std::vector<web::json::value> values;
    values.reserve(texts.size());
    for (const auto& text : texts)
        values.push_back(JsonText(text));
    return web::json::value::array(std::move(values));
}

wstring CurrentExceptionText() {
    const auto text = NarrowExceptionText();
    return text.empty() ? L"Unknown exception" : FromWire(text);
}

void DumpLogLine(const wstring& line) {
    vorn::LogManager::CreateOrGetForWrite(L"", L"", false)->DumpLine(line, false, false);
}

} // namespace tolm
