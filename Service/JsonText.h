#pragma once

#include <nlohmann/json_fwd.hpp>

#include <string>
#include <string_view>

namespace tolm::service {

/// Deepest nesting that is read.
constexpr int kDeepestJson = 64;

/// The value of a JSON text. Throws a `Refusal` (IllFormed) for anything that is not well-formed JSON in UTF-8, is
/// nested too deeply or holds a number beyond the range of a double.
nlohmann::json ParseJson(std::string_view text);

/// Text as a JSON string, quotes included; what is no UTF-8 is replaced.
std::string QuotedJson(std::string_view text);

/// Compact text of a value.
std::string CompactJson(const nlohmann::json& value);

} // namespace tolm::service
