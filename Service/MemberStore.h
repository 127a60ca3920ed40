#pragma once

#include <string>
#include <vector>

namespace tolm::service {

class Database;

/// Who may use which project. A project is for every user until it is granted to one; from then on it is for those
/// alone to whom it is granted, also when none of them is left. Any thread may use it.
class MemberStore {
public:
    explicit MemberStore(Database& database) : m_database(database) {}

    /// Refuses a project that there is not.
    void Grant(const std::string& projectId, const std::string& userId);
    /// False when the user was no member.
    bool Revoke(const std::string& projectId, const std::string& userId);
    /// Makes the project everybody's again.
    void OpenToAll(const std::string& projectId);

    /// True when the project is for its members alone.
    bool IsClosed(const std::string& projectId);
    std::vector<std::string> List(const std::string& projectId);
    bool MayUse(const std::string& userId, const std::string& projectId);

private:
    Database& m_database;
};

} // namespace tolm::service
