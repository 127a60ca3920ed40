#pragma once

#include <cstdint>

/// A 64-bit integer on every platform; the name is built in with some compilers.
#if !defined(_MSC_VER) && !defined(__int64)
using __int64 = std::int64_t; // NOLINT(bugprone-reserved-identifier)
#endif
