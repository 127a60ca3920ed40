#pragma once

/// The one export macro of the platform library.
#if defined(_WIN32)
#if defined(TOLM_PLATFORM_BUILD)
#define TOLM_PLATFORM_API __declspec(dllexport)
#else
#define TOLM_PLATFORM_API __declspec(dllimport)
#endif
#else
#define TOLM_PLATFORM_API __attribute__((visibility("default")))
#endif
