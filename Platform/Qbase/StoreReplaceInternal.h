#pragma once

#include "Qbase/ConnectionInternal.h"

#include <string>

namespace qbase {

/// Gives one file of the connection the tables, rows, indexes and marks of another one; what is equal stays untouched.
/// Both are named as SQL knows them. Needs the update lock on `target`.
void ReplaceContent(Connection& connection, const std::string& target, const std::string& source);

/// The same for a working copy that differs from its store in these rows alone; the others are not looked at. Where the
/// copy's schema was changed it is left to `ReplaceContent`.
void ReplaceChanged(Connection& connection, const std::string& target, const std::string& source,
                    const ChangedRows& changed);

} // namespace qbase
