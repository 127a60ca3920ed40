#pragma once

#include "Qbase/ConnectionInternal.h"
#include "Qbase/DefinitionInternal.h"

namespace qbase {

/// Gives an empty file its tables, its mark and its version. Needs the update lock.
void WriteSchema(Connection& connection, const std::string& schema, const Definition& definition);

/// Gives the class's table what it lacks. Needs the update lock.
void CompleteTable(Connection& connection, const std::string& schema, const ClassDefinition& definition,
                   const std::vector<bool>& present, bool tableExists);

/// True when the file holds nothing, not even a mark.
bool IsBlank(Connection& connection, const std::string& schema);

/// What the file is, read through the connection.
QbaseError CheckMark(Connection& connection, const std::string& schema);

} // namespace qbase
