#pragma once

#include "Vorn/Export.h"

namespace vorn {

/// Constants of the host application.
struct TOLM_PLATFORM_API Constants {
    /// The largest extent of a model, in millimetres: the upper bound of a size range that nobody narrowed.
    /// A host sets its own before it makes records.
    static double MAX_MODEL_SIZE;
};

} // namespace vorn
