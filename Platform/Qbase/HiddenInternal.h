#pragma once

/// Marks what a class of the interface is made of: it is nobody's business outside the library.
#if defined(_WIN32)
#define QBASE_INTERNAL
#else
#define QBASE_INTERNAL __attribute__((visibility("hidden")))
#endif
