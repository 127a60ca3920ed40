#pragma once

#include <cstdint>
#include <string>

namespace soci {
class session;
}

namespace tolm::service {

/// Versions that a project may have had before its database was set back to an older copy. Nothing is known of them;
/// the project has no such version again.
void NoteLostVersions(soci::session& session, const std::string& projectId, std::int64_t first, std::int64_t last);

/// Throws a `Refusal` (VersionAhead) for a caller that stands at a version which the project has not reached, or lost.
void RefuseAhead(soci::session& session, const std::string& projectId, std::int64_t reached, std::int64_t version);

} // namespace tolm::service
