#pragma once

#include "Qbase/ConnectionInternal.h"

namespace qbase {

/// True when the pages that hold the schema of the file at the path are, byte for byte, those of the connection's main
/// file, whose schema was read without fault: reading it once more will meet none either. False says nothing. Needs a
/// lock on the main file.
bool HasSchemaOfMain(Connection& connection, const std::string& path);

} // namespace qbase
