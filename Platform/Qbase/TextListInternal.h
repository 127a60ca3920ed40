#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace qbase {

/// A list of UTF-8 texts as a JSON array of strings, and back. Any text survives, zeros and control characters
/// included.
std::string EncodeTextList(const std::vector<std::string>& texts);

/// False when `json` is not an array of strings; then `texts` is left as it was.
bool DecodeTextList(std::string_view json, std::vector<std::string>& texts);

} // namespace qbase
