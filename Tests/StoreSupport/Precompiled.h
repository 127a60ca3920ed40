#pragma once

#include "Support/Precompiled.h"
#include "TolmDataSet/TolmDataSet.h"

#include <cpprest/json.h>

// The HTTP and JSON library gives these names to macros; they are none of ours.
#undef __int64
#undef U
