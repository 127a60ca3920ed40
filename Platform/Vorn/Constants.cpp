#include "Vorn/Constants.h"

namespace vorn {

// Ten kilometres. A float, which is what a store keeps, holds it exactly.
constinit double Constants::MAX_MODEL_SIZE = 10'000'000.0;

} // namespace vorn
