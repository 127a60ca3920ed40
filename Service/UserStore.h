#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tolm::service {

class Database;

/// Users, their secrets and their sign-ins. Secrets and tokens are kept as hashes only. Any thread may use it.
class UserStore {
public:
    struct Settings {
        std::int64_t idleSeconds = 8 * 3600; ///< a token that nobody uses for so long is worth nothing
        int rounds = 600'000;                ///< of the key derivation, for secrets set from now on
        std::function<std::int64_t()> now;   ///< seconds since 1970; the system's clock when empty
    };

    UserStore(Database& database, Settings settings);

    /// Adds a user, or gives one a new secret, which ends all its sign-ins.
    void Put(const std::string& userId, const std::string& secret);
    /// False when there is no such user. Its sign-ins end, and it is no project's member any more.
    bool Remove(const std::string& userId);
    std::vector<std::string> List();

    /// A fresh token, or nothing when user or secret is wrong.
    std::optional<std::string> SignIn(const std::string& userId, const std::string& secret);
    /// Hash of the token if it is this user's and still good; using it keeps it good.
    std::optional<std::string> Check(const std::string& userId, const std::string& token);

private:
    Database& m_database;
    Settings m_settings;
};

} // namespace tolm::service
