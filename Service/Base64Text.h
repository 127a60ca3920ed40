#pragma once

#include <string>
#include <string_view>

namespace tolm::service {

/// Bytes in base64 (RFC 4648, with padding).
std::string ToBase64(std::string_view bytes);
/// Number of bytes that a base64 text stands for; npos when it is none.
std::size_t SizeOfBase64(std::string_view text);

} // namespace tolm::service
