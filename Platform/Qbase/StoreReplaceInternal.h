#pragma once

#include "Qbase/ConnectionInternal.h"

#include <string>

namespace qbase {

/// Gives one file of the connection the tables, rows, indexes and marks of another one; what is equal stays untouched.
/// Both are named as SQL knows them. Needs the update lock on `target`.
void ReplaceContent(Connection& connection, const std::string& target, const std::string& source);

} // namespace qbase
