#pragma once

#include <cstddef>
#include <string>

namespace tolmcli {

/// Notes every setting of a dataset that travels in an upload as created, so that the next upload sends them all. What
/// is noted as removed stays so. All notes come into being or none. Returns how many settings are noted as created.
/// Throws Failure.
std::size_t NoteEverythingAsCreated(const std::wstring& datasetPath);

} // namespace tolmcli
