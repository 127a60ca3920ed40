#include "Vorn/Text.h"

#include "Vorn/UnicodeInternal.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <cwchar>
#include <cwctype>
#include <locale.h>

namespace vorn {
namespace {

/// What a lead byte promises: the length of its sequence and the range of the second byte (RFC 3629, section 4).
struct Lead {
    unsigned char first, last;
    unsigned char length;
    unsigned char secondFirst, secondLast;
};
constexpr std::array<Lead, 9> kLeads{{
    {0x00, 0x7F, 1, 0x00, 0x00},
    {0xC2, 0xDF, 2, 0x80, 0xBF},
    {0xE0, 0xE0, 3, 0xA0, 0xBF},
    {0xE1, 0xEC, 3, 0x80, 0xBF},
    {0xED, 0xED, 3, 0x80, 0x9F},
    {0xEE, 0xEF, 3, 0x80, 0xBF},
    {0xF0, 0xF0, 4, 0x90, 0xBF},
    {0xF1, 0xF3, 4, 0x80, 0xBF},
    {0xF4, 0xF4, 4, 0x80, 0x8F},
}};

unsigned char ByteAt(std::string_view text, std::size_t index) {
    return static_cast<unsigned char>(text[index]);
}

const Lead* FindLead(unsigned char byte) {
    const auto found = std::ranges::find_if(kLeads, [&](const Lead& l) { return byte >= l.first && byte <= l.last; });
    return found == kLeads.end() ? nullptr : &*found;
}

struct Decoded {
    char32_t character = kReplacement;
    std::size_t length = 1; ///< bytes used; of an ill-formed sequence, its longest well-formed beginning
    bool valid = false;
};

Decoded DecodeNext(std::string_view text, std::size_t at) {
    const unsigned char first = ByteAt(text, at);
    const Lead* const lead = FindLead(first);
    if (lead == nullptr)
        return {};
    if (lead->length == 1)
        return {first, 1, true};
    char32_t character = first & (0xFFU >> (lead->length + 1));
    for (std::size_t i = 1; i < lead->length; ++i) {
        const unsigned char low = i == 1 ? lead->secondFirst : 0x80;
        const unsigned char high = i == 1 ? lead->secondLast : 0xBF;
        if (at + i >= text.size() || ByteAt(text, at + i) < low || ByteAt(text, at + i) > high)
            return {kReplacement, i, false};
        character = (character << 6) | (ByteAt(text, at + i) & 0x3FU);
    }
    return {character, lead->length, true};
}

void AppendTrail(std::string& text, char32_t character, int count) {
    while (count-- > 0)
        text += static_cast<char>(0x80 | ((character >> (6 * count)) & 0x3F));
}

void AppendUtf8(std::string& text, char32_t character) {
    if (character < 0x80) {
        text += static_cast<char>(character);
    } else if (character < 0x800) {
        text += static_cast<char>(0xC0 | (character >> 6));
        AppendTrail(text, character, 1);
    } else if (character < 0x10000) {
        text += static_cast<char>(0xE0 | (character >> 12));
        AppendTrail(text, character, 2);
    } else {
        text += static_cast<char>(0xF0 | (character >> 18));
        AppendTrail(text, character, 3);
    }
}

/// The characters with the Unicode property White_Space.
bool IsSpace(wchar_t character) {
    const auto c = static_cast<char32_t>(character);
    constexpr std::array<char32_t, 9> kSingles{0x20, 0x85, 0xA0, 0x1680, 0x2028, 0x2029, 0x202F, 0x205F, 0x3000};
    return (c >= 0x09 && c <= 0x0D) || (c >= 0x2000 && c <= 0x200A) || std::ranges::find(kSingles, c) != kSingles.end();
}

/// A locale that knows all letters, whatever the program has set.
class UnicodeLocale {
public:
    UnicodeLocale() : m_locale(newlocale(LC_CTYPE_MASK, "C.UTF-8", locale_t{})) {}
    ~UnicodeLocale() {
        if (m_locale != locale_t{})
            freelocale(m_locale);
    }
    UnicodeLocale(const UnicodeLocale&) = delete;
    UnicodeLocale& operator=(const UnicodeLocale&) = delete;

    std::wint_t ToLower(wchar_t c) const {
        const std::wint_t value = std::char_traits<wchar_t>::to_int_type(c);
        return m_locale != locale_t{} ? towlower_l(value, m_locale) : std::towlower(value);
    }

private:
    locale_t m_locale;
};

std::wint_t FoldCase(wchar_t character) {
    static const UnicodeLocale locale;
    return locale.ToLower(character);
}

/// How many characters at the beginning are ASCII: most texts are nothing else. Whole machine words are looked at as
/// far as they go.
template <class Character> std::size_t AsciiLength(std::basic_string_view<Character> text) {
    constexpr std::size_t perWord = sizeof(std::uint64_t) / sizeof(Character);
    constexpr std::uint64_t beyond = sizeof(Character) == 1 ? 0x8080808080808080U : 0xFFFFFF80FFFFFF80U;
    std::size_t length = 0;
    for (std::uint64_t word = 0; length + perWord <= text.size(); length += perWord) {
        std::memcpy(&word, text.data() + length, sizeof(word));
        if ((word & beyond) != 0)
            break;
    }
    while (length < text.size() && static_cast<char32_t>(text[length]) < 0x80)
        ++length;
    return length;
}

/// The ASCII at the beginning in characters of another width. Blocks of a known length are moved as a whole.
template <class To, class From> std::basic_string<To> AsciiOf(std::basic_string_view<From> text) {
    std::array<From, 8> block;
    std::basic_string<To> result(AsciiLength(text), To{});
    To* const to = result.data();
    std::size_t at = 0;
    for (; at + block.size() <= result.size(); at += block.size()) {
        std::memcpy(block.data(), text.data() + at, sizeof(block));
        for (std::size_t i = 0; i < block.size(); ++i)
            to[at + i] = static_cast<To>(block[i]);
    }
    for (; at < result.size(); ++at)
        to[at] = static_cast<To>(text[at]);
    return result;
}

} // namespace

std::string StringUtil::ToString(std::wstring_view text) {
    std::string result = AsciiOf<char>(text);
    for (std::size_t at = result.size(); at < text.size();)
        AppendUtf8(result, TakeCharacter(text, at));
    return result;
}

std::wstring StringUtil::ToWString(std::string_view text) {
    std::wstring result = AsciiOf<wchar_t>(text);
    for (std::size_t at = result.size(); at < text.size();) {
        const Decoded next = DecodeNext(text, at);
        AppendCharacter(result, next.character);
        at += next.length;
    }
    return result;
}

std::string_view StringUtil::CutUtf8(std::string_view text, std::size_t maxBytes) {
    const std::string_view prefix = text.substr(0, maxBytes);
    std::size_t start = prefix.size();
    for (int back = 0; back < 4 && start > 0; ++back) {
        --start;
        if ((ByteAt(prefix, start) & 0xC0) == 0x80)
            continue;
        const Lead* const lead = FindLead(ByteAt(prefix, start));
        const bool complete = lead == nullptr || start + lead->length <= prefix.size();
        return complete ? prefix : prefix.substr(0, start);
    }
    return prefix;
}

std::wstring StringUtil::TrimSpace(const std::wstring& text) {
    const auto first = std::ranges::find_if_not(text, IsSpace);
    const auto last = std::find_if_not(text.rbegin(), std::make_reverse_iterator(first), IsSpace).base();
    return std::wstring(first, last);
}

bool StringUtil::IsValidUtf8(std::string_view text) {
    for (std::size_t at = 0; at < text.size();) {
        const Decoded next = DecodeNext(text, at);
        if (!next.valid)
            return false;
        at += next.length;
    }
    return true;
}

int StrICmp(const wchar_t* a, const wchar_t* b) {
    const wchar_t* left = a != nullptr ? a : L"";
    const wchar_t* right = b != nullptr ? b : L"";
    for (;; ++left, ++right) {
        const std::wint_t x = FoldCase(*left);
        const std::wint_t y = FoldCase(*right);
        if (x != y)
            return x < y ? -1 : 1;
        if (x == 0)
            return 0;
    }
}

} // namespace vorn
