#include "Service/ToldVersions.h"

#include <soci/soci.h>

namespace tolm::service {

std::optional<std::int64_t> ReadTold(soci::session& session, const Caller& caller) {
    long long version = 0;
    session << "SELECT version FROM told_versions WHERE token_hash = :h AND project_id = :p",
        soci::use(caller.tokenHash, "h"), soci::use(caller.projectId, "p"), soci::into(version);
    return session.got_data() ? std::optional<std::int64_t>(version) : std::nullopt;
}

void WriteTold(soci::session& session, const Caller& caller, std::int64_t version) {
    const long long told = version;
    session << "INSERT INTO told_versions (token_hash, project_id, version) VALUES (:h, :p, :v) ON CONFLICT "
               "(token_hash, project_id) DO UPDATE SET version = excluded.version",
        soci::use(caller.tokenHash, "h"), soci::use(caller.projectId, "p"), soci::use(told, "v");
}

void MoveTold(soci::session& session, const Caller& caller, std::int64_t older, std::int64_t newer) {
    const long long from = older;
    const long long to = newer;
    session << "UPDATE told_versions SET version = :n WHERE token_hash = :h AND project_id = :p AND version = :o",
        soci::use(to, "n"), soci::use(caller.tokenHash, "h"), soci::use(caller.projectId, "p"), soci::use(from, "o");
}

std::optional<TakenUpload> ReadTakenUpload(soci::session& session, const Caller& caller) {
    TakenUpload taken;
    long long version = 0;
    session << "SELECT version, body_hash FROM taken_uploads WHERE token_hash = :h AND project_id = :p",
        soci::use(caller.tokenHash, "h"), soci::use(caller.projectId, "p"), soci::into(version),
        soci::into(taken.bodyHash);
    taken.version = version;
    return session.got_data() ? std::optional(taken) : std::nullopt;
}

void WriteTakenUpload(soci::session& session, const Caller& caller, const TakenUpload& taken) {
    const long long version = taken.version;
    session << "INSERT INTO taken_uploads (token_hash, project_id, version, body_hash) VALUES (:h, :p, :v, :b) ON "
               "CONFLICT (token_hash, project_id) DO UPDATE SET version = excluded.version, body_hash = "
               "excluded.body_hash",
        soci::use(caller.tokenHash, "h"), soci::use(caller.projectId, "p"), soci::use(version, "v"),
        soci::use(taken.bodyHash, "b");
}

void DropTakenUpload(soci::session& session, const Caller& caller) {
    session << "DELETE FROM taken_uploads WHERE token_hash = :h AND project_id = :p", soci::use(caller.tokenHash, "h"),
        soci::use(caller.projectId, "p");
}

} // namespace tolm::service
