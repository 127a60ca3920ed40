#pragma once

#include "Service/ProjectStore.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace tolm::service {

/// A patch as it was read and checked.
struct UploadPatch {
    std::int64_t version = 0; ///< that its sender's dataset stands at
    std::string bodyHash;     ///< two patches with one hash are the same patch
    SettingChange change;
};

/// Each reads the body of a call that uploads. Throws a `Refusal` for anything that is not as it has to be.
UploadPatch ReadUploadPatch(std::string_view body);
SettingChange ReadCreatedRows(std::string_view body, std::size_t table);
SettingChange ReadEditedRows(std::string_view body, std::size_t table);
SettingChange ReadRemovedIds(std::string_view body, std::size_t table);

} // namespace tolm::service
