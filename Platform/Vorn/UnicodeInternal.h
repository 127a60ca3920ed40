#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <type_traits>

namespace vorn {

/// Stands where text is ill-formed.
inline constexpr char32_t kReplacement = 0xFFFD;

constexpr bool IsHighSurrogate(char32_t c) {
    return c >= 0xD800 && c <= 0xDBFF;
}
constexpr bool IsLowSurrogate(char32_t c) {
    return c >= 0xDC00 && c <= 0xDFFF;
}

/// Takes one character from text in units of 16 or 32 bits and moves `at` behind it.
template <class Unit> char32_t TakeCharacter(std::basic_string_view<Unit> text, std::size_t& at) {
    const auto unitAt = [&](std::size_t index) {
        return static_cast<char32_t>(static_cast<std::make_unsigned_t<Unit>>(text[index]));
    };
    const char32_t unit = unitAt(at++);
    if constexpr (sizeof(Unit) == 2) {
        if (IsHighSurrogate(unit) && at < text.size() && IsLowSurrogate(unitAt(at)))
            return 0x10000 + ((unit - 0xD800) << 10) + (unitAt(at++) - 0xDC00);
    }
    const bool isCharacter = !IsHighSurrogate(unit) && !IsLowSurrogate(unit) && unit <= 0x10FFFF;
    return isCharacter ? unit : kReplacement;
}

/// Appends one character to text in units of 16 or 32 bits.
template <class Unit> void AppendCharacter(std::basic_string<Unit>& text, char32_t character) {
    if (sizeof(Unit) > 2 || character < 0x10000) {
        text += static_cast<Unit>(character);
        return;
    }
    text += static_cast<Unit>(0xD800 + ((character - 0x10000) >> 10));
    text += static_cast<Unit>(0xDC00 + ((character - 0x10000) & 0x3FF));
}

} // namespace vorn
