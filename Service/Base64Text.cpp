#include "Service/Base64Text.h"

#include <cstdint>

namespace tolm::service {
namespace {

constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

/// Appends the four digits of up to three bytes.
void AppendGroup(std::string& text, std::string_view bytes) {
    std::uint32_t group = 0;
    for (std::size_t i = 0; i < 3; ++i)
        group = group << 8 | (i < bytes.size() ? static_cast<unsigned char>(bytes[i]) : 0U);
    for (std::size_t i = 0; i < 4; ++i)
        text.push_back(i <= bytes.size() ? kAlphabet[group >> (18 - 6 * i) & 63] : '=');
}

} // namespace

std::string ToBase64(std::string_view bytes) {
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3)
        AppendGroup(text, bytes.substr(i, 3));
    return text;
}

std::size_t SizeOfBase64(std::string_view text) {
    const std::size_t padding = text.ends_with("==") ? 2 : text.ends_with("=") ? 1 : 0;
    if (text.size() % 4 != 0 || text.find_first_not_of(kAlphabet) < text.size() - padding)
        return std::string::npos;
    return text.size() / 4 * 3 - padding;
}

} // namespace tolm::service
