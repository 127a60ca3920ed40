#pragma once

/// The one export macro of the dataset library.
#if defined(_WIN32)
#if defined(TOLM_DATASET_BUILD)
#define TOLM_DATASET_API __declspec(dllexport)
#else
#define TOLM_DATASET_API __declspec(dllimport)
#endif
#else
#define TOLM_DATASET_API __attribute__((visibility("default")))
#endif
