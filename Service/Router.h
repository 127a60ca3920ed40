#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tolm::service {

class MemberStore;
class ProjectStore;
class UploadStore;
class UserStore;
struct Route;

/// What a request tells before its body.
struct RequestHead {
    std::string method;
    std::string path; ///< decoded
    std::string userId;
    std::string token;
};

/// A request that may go on: its call, the ids in its path and who asks.
struct MatchedCall {
    const Route* route = nullptr;
    std::vector<std::string> ids;
    std::string tokenHash; ///< empty where the call asks for no user
    std::string userId;    ///< empty there too
};

/// The calls of the REST interface, one row of a table each. Any thread may use it. A refused request leaves as a
/// `Refusal`.
class Router {
public:
    Router(ProjectStore& projects, UserStore& users, MemberStore& members, UploadStore& uploads)
        : m_projects(projects), m_users(users), m_members(members), m_uploads(uploads) {}

    /// Finds the call and checks the ids, the user, and whether the project in the path is the user's.
    MatchedCall Match(const RequestHead& head) const;
    /// Does the call. Returns the payload as JSON text.
    std::string Answer(const MatchedCall& call, std::string_view body) const;
    /// True when the call to this path answers refusals with HTTP 200, since its caller looks at the code only then.
    static bool RefusesWithOk(std::string_view path);

private:
    ProjectStore& m_projects;
    UserStore& m_users;
    MemberStore& m_members;
    UploadStore& m_uploads;
};

/// True when the text can be the id of a project, a template, a work unit or a user: letters, digits, ".", "_", "-",
/// "{" and "}", at most 128, and not dots alone.
bool IsPlainId(std::string_view text);

} // namespace tolm::service
