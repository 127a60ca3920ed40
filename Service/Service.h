#pragma once

#include "Service/Database.h"
#include "Service/HttpServer.h"
#include "Service/MemberStore.h"
#include "Service/ProjectStore.h"
#include "Service/Router.h"
#include "Service/UploadStore.h"
#include "Service/UserStore.h"

#include <string>
#include <utility>

namespace tolm::service {

/// Database connections that a serving process holds.
inline constexpr std::size_t kConnections = 8;

/// The whole service over one database.
class Service {
public:
    Service(const std::string& database, UserStore::Settings users, HttpServer::Settings http)
        : m_database(database, kConnections), m_projects(m_database), m_users(m_database, std::move(users)),
          m_members(m_database), m_uploads(m_database), m_router(m_projects, m_users, m_members, m_uploads),
          m_http(m_router, std::move(http)) {}

    ProjectStore& Projects() { return m_projects; }
    UserStore& Users() { return m_users; }
    MemberStore& Members() { return m_members; }
    HttpServer& Http() { return m_http; }

private:
    Database m_database;
    ProjectStore m_projects;
    UserStore m_users;
    MemberStore m_members;
    UploadStore m_uploads;
    Router m_router;
    HttpServer m_http;
};

} // namespace tolm::service
