#pragma once

#include "Tolm/Workplace.h"

#include <nlohmann/json_fwd.hpp>

namespace tolmcli {

/// The components of the catalogue as JSON objects: by category, then by id, the newest version of each first.
nlohmann::ordered_json ReadComponents(Workplace& place);

} // namespace tolmcli
