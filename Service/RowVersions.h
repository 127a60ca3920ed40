#pragma once

#include "Service/ProjectStore.h"

#include <cstdint>
#include <string>
#include <vector>

namespace soci {
class session;
}

namespace tolm::service {

/// A project as a transaction sees it.
struct ProjectState {
    std::int64_t version = -1;
    std::int64_t nextPosition = 1;
};

/// State of a project, or a `Refusal` (UnknownProject).
ProjectState ReadProject(soci::session& session, const std::string& projectId);
/// The same, and no other transaction changes the project before this one ends.
ProjectState LockProject(soci::session& session, const std::string& projectId);

/// Throws a `Refusal` (NeverFilled) when it is so.
void RefuseNeverFilled(const ProjectState& state);

/// Makes the next version of a locked project out of a change. Returns the version that the project has then.
std::int64_t MakeVersion(soci::session& session, const std::string& projectId, const ProjectState& state,
                         const SettingChange& change);

/// What is to go so that only these rows stand.
std::vector<std::pair<std::size_t, std::string>> RowsBeside(soci::session& session, const std::string& projectId,
                                                            const std::vector<SettingRow>& rows);

/// Rows that stand, in their order.
std::vector<SettingRow> ReadStandingRows(soci::session& session, const std::string& projectId);

} // namespace tolm::service
