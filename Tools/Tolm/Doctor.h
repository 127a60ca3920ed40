#pragma once

#include "Tolm/StoreWalk.h"
#include "Tolm/Workplace.h"

#include <vector>

namespace tolmcli {

/// What a user calls a group of findings and a class of records.
const char* WordOf(FindingGroup group);
const char* WordOfClass(const std::string& classCode);

/// Adds a finding for each record that bears the name of an earlier one where names have to be unique.
void CheckNames(const StoreContents& contents, std::vector<Finding>& findings);

/// Looks a dataset and its status store through without changing anything. The findings stand in the order of their
/// groups. Throws Failure when it could not look.
std::vector<Finding> Examine(Workplace& place);

} // namespace tolmcli
