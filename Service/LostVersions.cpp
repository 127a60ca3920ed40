#include "Service/LostVersions.h"

#include "Service/Answer.h"

#include <soci/soci.h>

namespace tolm::service {

void NoteLostVersions(soci::session& session, const std::string& projectId, std::int64_t first, std::int64_t last) {
    const long long from = first;
    const long long to = last;
    session << "INSERT INTO lost_versions (project_id, first, last) VALUES (:p, :f, :l)", soci::use(projectId, "p"),
        soci::use(from, "f"), soci::use(to, "l");
}

void RefuseAhead(soci::session& session, const std::string& projectId, std::int64_t reached, std::int64_t version) {
    const long long asked = version;
    int lost = 0;
    session << "SELECT COUNT(*) FROM lost_versions WHERE project_id = :p AND first <= :v AND last >= :w",
        soci::use(projectId, "p"), soci::use(asked, "v"), soci::use(asked, "w"), soci::into(lost);
    if (version > reached || lost > 0)
        throw Refusal(Answer::VersionAhead);
}

} // namespace tolm::service
