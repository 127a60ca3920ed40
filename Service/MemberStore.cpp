#include "Service/MemberStore.h"

#include "Service/Database.h"
#include "Service/RowVersions.h"

#include <soci/soci.h>

namespace tolm::service {
namespace {

/// No user has this id: as a member it stands for "members alone".
const std::string kMembersAlone;

void Put(soci::session& session, const std::string& projectId, const std::string& userId) {
    session << "INSERT INTO members (project_id, user_id) VALUES (:p, :u) ON CONFLICT (project_id, user_id) DO NOTHING",
        soci::use(projectId, "p"), soci::use(userId, "u");
}

bool Has(soci::session& session, const std::string& projectId, const std::string& userId) {
    int count = 0;
    session << "SELECT COUNT(*) FROM members WHERE project_id = :p AND user_id = :u", soci::use(projectId, "p"),
        soci::use(userId, "u"), soci::into(count);
    return count > 0;
}

} // namespace

void MemberStore::Grant(const std::string& projectId, const std::string& userId) {
    m_database.Write([&](soci::session& session) {
        ReadProject(session, projectId);
        Put(session, projectId, kMembersAlone);
        Put(session, projectId, userId);
    });
}

bool MemberStore::Revoke(const std::string& projectId, const std::string& userId) {
    bool found = false;
    m_database.Write([&](soci::session& session) {
        found = Has(session, projectId, userId);
        session << "DELETE FROM members WHERE project_id = :p AND user_id = :u", soci::use(projectId, "p"),
            soci::use(userId, "u");
    });
    return found;
}

void MemberStore::OpenToAll(const std::string& projectId) {
    m_database.Write([&](soci::session& session) {
        ReadProject(session, projectId);
        session << "DELETE FROM members WHERE project_id = :p", soci::use(projectId);
    });
}

bool MemberStore::IsClosed(const std::string& projectId) {
    bool closed = false;
    m_database.Read([&](soci::session& session) { closed = Has(session, projectId, kMembersAlone); });
    return closed;
}

std::vector<std::string> MemberStore::List(const std::string& projectId) {
    std::vector<std::string> users;
    m_database.Read([&](soci::session& session) {
        std::string user;
        soci::statement query =
            (session.prepare << "SELECT user_id FROM members WHERE project_id = :p AND user_id <> '' ORDER BY user_id",
             soci::use(projectId), soci::into(user));
        query.execute();
        while (query.fetch())
            users.push_back(user);
    });
    return users;
}

bool MemberStore::MayUse(const std::string& userId, const std::string& projectId) {
    bool may = false;
    m_database.Read([&](soci::session& session) {
        may = !Has(session, projectId, kMembersAlone) || Has(session, projectId, userId);
    });
    return may;
}

} // namespace tolm::service
