#include "TolmDataSet/Base64.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace {

constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::uint8_t kForeign = 0xFF;

/// The value of each character; `kForeign` outside the alphabet.
constexpr std::array<std::uint8_t, 256> kValues = [] {
    std::array<std::uint8_t, 256> values{};
    values.fill(kForeign);
    for (std::size_t i = 0; i < kAlphabet.size(); ++i)
        values[static_cast<unsigned char>(kAlphabet[i])] = static_cast<std::uint8_t>(i);
    return values;
}();

char Character(std::uint32_t group, int shift) {
    return kAlphabet[(group >> shift) & 0x3FU];
}

/// Appends the group of the 1 to 3 bytes at `bytes`, padded.
void EncodeGroup(const unsigned char* bytes, unsigned int count, std::string& text) {
    std::uint32_t group = static_cast<std::uint32_t>(bytes[0]) << 16U;
    if (count > 1)
        group |= static_cast<std::uint32_t>(bytes[1]) << 8U;
    if (count > 2)
        group |= bytes[2];
    text += Character(group, 18);
    text += Character(group, 12);
    text += count > 1 ? Character(group, 6) : '=';
    text += count > 2 ? Character(group, 0) : '=';
}

} // namespace

std::string base64_encode(const unsigned char* bytes, unsigned int length) {
    std::string text;
    if (bytes == nullptr)
        return text;
    text.reserve((static_cast<std::size_t>(length) + 2) / 3 * 4);
    for (unsigned int done = 0; done < length;) {
        const unsigned int count = length - done < 3 ? length - done : 3;
        EncodeGroup(bytes + done, count, text);
        done += count;
    }
    return text;
}

std::string base64_decode(const std::string& text) {
    std::string bytes;
    bytes.reserve(text.size() / 4 * 3 + 2);
    std::uint32_t bits = 0;
    int bitCount = 0;
    for (const char character : text) {
        const std::uint8_t value = kValues[static_cast<unsigned char>(character)];
        if (value == kForeign)
            break;
        bits = (bits << 6U) | value;
        bitCount += 6;
        if (bitCount >= 8) {
            bitCount -= 8;
            bytes += static_cast<char>((bits >> bitCount) & 0xFFU);
        }
    }
    return bytes;
}
