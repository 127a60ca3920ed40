#pragma once

#include "Tolm/StoreWalk.h"
#include "Tolm/Workplace.h"

#include <vector>

namespace tolmcli {

/// What a user calls a group of findings and a class of records.
const char* WordOf(FindingGroup group);
const char* WordOfClass(const std::string& classCode);

/// Looks a dataset and its status store through without changing anything. The findings stand in the order of their
/// groups. Throws Failure when it could not look.
std::vector<Finding> Examine(Workplace& place);

} // namespace tolmcli
