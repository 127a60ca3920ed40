#pragma once

#include <string>

namespace tolmcli {

/// Stamps a version on a dataset in place of the one that is expected there, -1 for none, under the dataset's lock.
/// Where another program has stamped one in between, that stands, and `version` becomes it. False when the dataset
/// cannot be read or written.
bool ReplaceVersion(const std::wstring& datasetPath, long expected, long& version);

} // namespace tolmcli
