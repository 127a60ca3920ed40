#include "Fuzz/Drivers/Drivers.h"

#include "Fuzz/Support/Require.h"
#include "Service/Base64Text.h"
#include "TolmDataSet/Base64.h"

#include <string>

namespace tolmfuzz {
namespace {

constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

void TryEncoding(const std::uint8_t* data, std::size_t size, const std::string& bytes) {
    const std::string text = base64_encode(data, static_cast<unsigned int>(size));
    Require(text.size() == (size + 2) / 3 * 4, "the length of the text is that of whole groups");
    Require(base64_decode(text) == bytes, "bytes come back from their text");
    Require(tolm::service::ToBase64(bytes) == text, "library and service write the same text");
    Require(tolm::service::SizeOfBase64(text) == size, "the size is told from the text");
}

void TryDecoding(const std::string& text) {
    const std::string bytes = base64_decode(text);
    const auto end = text.find_first_not_of(kAlphabet);
    const std::string letters = text.substr(0, end);
    Require(bytes.size() == letters.size() * 6 / 8, "every whole byte before the first foreign character comes");
    Require(base64_decode(letters) == bytes, "nothing behind the first foreign character counts");
    const std::string again =
        base64_encode(reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<unsigned int>(bytes.size()));
    const std::size_t whole = bytes.size() / 3 * 4;
    Require(again.substr(0, whole) == letters.substr(0, whole), "whole groups come back as they were");
    const auto told = tolm::service::SizeOfBase64(text);
    Require(told == std::string::npos || told == bytes.size(), "what the service takes for base64 is read whole");
}

} // namespace

int TryBase64(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(data, data + size);
    TryEncoding(data, size, bytes);
    TryDecoding(bytes);
    return 0;
}

} // namespace tolmfuzz
