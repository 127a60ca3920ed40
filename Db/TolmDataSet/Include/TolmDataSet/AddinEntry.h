#pragma once

#include "TolmDataSet/TolmDataSetExport.h"

extern "C" {

/// Called by the host after loading the library as an add-in. Nothing is left to do: the factory stands already.
TOLM_DATASET_API void InitializeAddin();

/// Called by the host before unloading the library. Does nothing.
TOLM_DATASET_API void UnInitializeAddin();
}
