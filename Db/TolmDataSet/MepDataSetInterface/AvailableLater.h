#pragma once

namespace tolm {

/// The debug warning of an operation that a later version brings; the warning names the operation itself.
inline constexpr const wchar_t* kAvailableLater = L"后续版本提供";

} // namespace tolm
