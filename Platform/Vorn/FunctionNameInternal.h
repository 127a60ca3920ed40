#pragma once

#include "Vorn/Export.h"

#include <string>
#include <string_view>

namespace vorn {

/// Cuts a function's signature, as g++ or clang spells it, to class and function: "tolm::Set<int>::Add(int) const"
/// becomes "Set::Add". Of a lambda the enclosing function is named. A scope whose name begins with a lower-case
/// letter is taken for a namespace. Text that is no signature comes back as far as it can be read.
TOLM_PLATFORM_API std::string ShortFunctionName(std::string_view signature);

} // namespace vorn
