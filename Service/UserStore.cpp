#include "Service/UserStore.h"

#include "Service/Database.h"
#include "Service/Secrets.h"

#include <soci/soci.h>

#include <array>
#include <chrono>

namespace tolm::service {
namespace {

/// The moment of the last use is written down when it is this part of the idle time old, not at every use.
constexpr std::int64_t kUsesPerIdleTime = 20;

std::int64_t SystemSeconds() {
    return std::chrono::duration_cast<std::chrono::seconds>(std::chrono::system_clock::now().time_since_epoch())
        .count();
}

/// What is remembered of a token goes with it.
constexpr std::array kTokenTables{"told_versions", "taken_uploads", "tokens"};

void EndSignIns(soci::session& session, const std::string& userId) {
    for (const std::string table : kTokenTables) {
        session << "DELETE FROM " + table + " WHERE token_hash IN (SELECT token_hash FROM tokens WHERE user_id = :u)",
            soci::use(userId);
    }
}

void DropExpired(soci::session& session, long long lastGood) {
    for (const std::string table : kTokenTables) {
        session << "DELETE FROM " + table + " WHERE token_hash IN (SELECT token_hash FROM tokens WHERE last_used < :t)",
            soci::use(lastGood);
    }
}

std::optional<SecretHash> ReadSecret(Database& database, const std::string& userId) {
    SecretHash kept;
    bool found = false;
    database.Read([&](soci::session& session) {
        session << "SELECT salt, hash, rounds FROM users WHERE user_id = :u", soci::use(userId), soci::into(kept.salt),
            soci::into(kept.hash), soci::into(kept.rounds);
        found = session.got_data();
    });
    return found ? std::optional(kept) : std::nullopt;
}

} // namespace

UserStore::UserStore(Database& database, Settings settings) : m_database(database), m_settings(std::move(settings)) {
    if (!m_settings.now)
        m_settings.now = SystemSeconds;
}

void UserStore::Put(const std::string& userId, const std::string& secret) {
    const auto kept = HashSecret(secret, m_settings.rounds);
    m_database.Write([&](soci::session& session) {
        EndSignIns(session, userId);
        session << "INSERT INTO users (user_id, salt, hash, rounds) VALUES (:u, :s, :h, :r) ON CONFLICT (user_id) DO "
                   "UPDATE "
                   "SET salt = excluded.salt, hash = excluded.hash, rounds = excluded.rounds",
            soci::use(userId, "u"), soci::use(kept.salt, "s"), soci::use(kept.hash, "h"), soci::use(kept.rounds, "r");
    });
}

bool UserStore::Remove(const std::string& userId) {
    bool found = false;
    m_database.Write([&](soci::session& session) {
        int count = 0;
        session << "SELECT COUNT(*) FROM users WHERE user_id = :u", soci::use(userId), soci::into(count);
        found = count > 0;
        EndSignIns(session, userId);
        session << "DELETE FROM members WHERE user_id = :u", soci::use(userId);
        session << "DELETE FROM users WHERE user_id = :u", soci::use(userId);
    });
    return found;
}

std::vector<std::string> UserStore::List() {
    std::vector<std::string> users;
    m_database.Read([&](soci::session& session) {
        std::string user;
        soci::statement query = (session.prepare << "SELECT user_id FROM users ORDER BY user_id", soci::into(user));
        query.execute();
        while (query.fetch())
            users.push_back(user);
    });
    return users;
}

std::optional<std::string> UserStore::SignIn(const std::string& userId, const std::string& secret) {
    const auto kept = ReadSecret(m_database, userId);
    // An unknown user costs as much time as a known one.
    if (!IsSecret(secret, kept.value_or(SecretHash{"unknown", "", m_settings.rounds})))
        return std::nullopt;
    const auto token = MakeToken();
    const auto hash = HashToken(token);
    bool signedIn = false;
    m_database.Write([&](soci::session& session) {
        const long long now = m_settings.now();
        DropExpired(session, now - m_settings.idleSeconds);
        session << "INSERT INTO tokens (token_hash, user_id, last_used) SELECT :h, user_id, :t FROM users WHERE "
                   "user_id = :u "
                   "AND hash = :k",
            soci::use(hash, "h"), soci::use(now, "t"), soci::use(userId, "u"), soci::use(kept->hash, "k");
        int count = 0;
        session << "SELECT COUNT(*) FROM tokens WHERE token_hash = :h", soci::use(hash), soci::into(count);
        signedIn = count > 0;
    });
    return signedIn ? std::optional(token) : std::nullopt;
}

std::optional<std::string> UserStore::Check(const std::string& userId, const std::string& token) {
    const auto hash = HashToken(token);
    const long long now = m_settings.now();
    long long lastUsed = 0;
    bool found = false;
    m_database.Read([&](soci::session& session) {
        session << "SELECT last_used FROM tokens WHERE token_hash = :h AND user_id = :u", soci::use(hash, "h"),
            soci::use(userId, "u"), soci::into(lastUsed);
        found = session.got_data();
    });
    if (!found || now - lastUsed > m_settings.idleSeconds)
        return std::nullopt;
    if (now - lastUsed > m_settings.idleSeconds / kUsesPerIdleTime) {
        m_database.Write([&](soci::session& session) {
            session << "UPDATE tokens SET last_used = :t WHERE token_hash = :h", soci::use(now, "t"),
                soci::use(hash, "h");
        });
    }
    return hash;
}

} // namespace tolm::service
