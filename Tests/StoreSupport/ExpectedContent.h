#pragma once

#include "StoreSupport/StoreContent.h"

#include <nlohmann/json_fwd.hpp>

#include <map>
#include <string>
#include <utility>

namespace tolmtest {

/// Codes of the categories that the client knows, with their two names.
using KnownCategories = std::map<std::string, std::pair<std::string, std::string>>;

/// What a dataset holds after a full load of these tables ({"ConfigTree":[...], ...}), told from the rows alone,
/// after the losses of the store: floats, what a table does not keep, constants of the disciplines.
Facts ExpectedFacts(const nlohmann::json& tables, const KnownCategories& categories, int version);

} // namespace tolmtest
