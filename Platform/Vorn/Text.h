#pragma once

#include "Vorn/Export.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace vorn {

/// Conversions and small operations on text. Narrow text is UTF-8 throughout; ill-formed input is never an error:
/// U+FFFD stands in its place. No operation throws anything but std::bad_alloc.
class TOLM_PLATFORM_API StringUtil {
public:
    /// Wide text as UTF-8.
    static std::string ToString(std::wstring_view text);

    /// UTF-8 text as wide text.
    static std::wstring ToWString(std::string_view text);

    /// The longest prefix of UTF-8 `text` of at most `maxBytes` bytes that does not end inside a character.
    static std::string_view CutUtf8(std::string_view text, std::size_t maxBytes);

    /// `text` without white space at either end.
    static std::wstring TrimSpace(const std::wstring& text);

    /// True when UTF-8 `text` is well formed (RFC 3629).
    static bool IsValidUtf8(std::string_view text);
};

/// Compares without regard to the case of letters: below 0, 0, or above 0, as `a` stands to `b`.
TOLM_PLATFORM_API int StrICmp(const wchar_t* a, const wchar_t* b);

} // namespace vorn
