#include "Service/Database.h"

#include "Service/Schema.h"

#include <soci/soci.h>
#include <soci/sqlite3/soci-sqlite3.h>

#include <stdexcept>

namespace tolm::service {
namespace {

constexpr const char* kPostgres = "postgresql://";

/// First key of the server's locks on names.
constexpr int kNameLocks = 8421377;

std::string SqliteConnection(const std::string& path, int patience) {
    if (path.empty() || path.find('"') != std::string::npos)
        throw std::runtime_error("the database's path is empty or holds a quotation mark");
    return "dbname=\"" + path + "\" timeout=" + std::to_string(patience);
}

void OpenSqlite(soci::session& session, const std::string& path, int patience) {
    session.open(soci::sqlite3, SqliteConnection(path, patience));
    session << "PRAGMA journal_mode=WAL";
    session << "PRAGMA synchronous=FULL";
}

void OpenServer(soci::session& session, const std::string& target) {
    session.open(target);
    session << "SET client_min_messages = warning";
}

bool IsLocked(soci::session& session) {
    const auto* backend = static_cast<soci::sqlite3_session_backend*>(session.get_backend());
    return sqlite_api::sqlite3_errcode(backend->conn_) == SQLITE_BUSY;
}

std::runtime_error Fault(const soci::soci_error& error) {
    // Without the values of the statement, which are nobody's business in a log.
    return std::runtime_error("database: " + error.get_error_message());
}

void RollBack(soci::session& session) noexcept {
    try {
        session << "ROLLBACK";
    } catch (const std::exception&) {
        // The transaction is gone already: the fault that led here ended it.
    }
}

/// A server that was started anew is met again by the next piece of work.
void ReconnectIfLost(soci::session& session) noexcept {
    try {
        if (!session.is_connected())
            session.reconnect();
    } catch (const std::exception&) {
        // Still away; the next piece of work fails and tries again.
    }
}

} // namespace

/// Holds a name of `TryWrite` while the work runs.
class Database::NameInUse {
public:
    NameInUse(Database& database, const std::string& name) : m_database(database), m_name(name) {
        const std::lock_guard lock(m_database.m_namesMutex);
        m_taken = m_database.m_names.insert(name).second;
    }
    ~NameInUse() {
        const std::lock_guard lock(m_database.m_namesMutex);
        if (m_taken)
            m_database.m_names.erase(m_name);
    }
    NameInUse(const NameInUse&) = delete;
    NameInUse& operator=(const NameInUse&) = delete;

    bool Taken() const { return m_taken; }

private:
    Database& m_database;
    const std::string& m_name;
    bool m_taken = false;
};

Database::Database(const std::string& target, std::size_t connections, int patience) {
    Open(target, connections, patience);
    MakeTables();
}

Database::~Database() = default;

void Database::Open(const std::string& target, std::size_t connections, int patience) {
    m_pool = std::make_unique<soci::connection_pool>(connections);
    m_sqlite = !target.starts_with(kPostgres);
    for (std::size_t i = 0; i < connections; ++i) {
        if (m_sqlite)
            OpenSqlite(m_pool->at(i), target, patience);
        else
            OpenServer(m_pool->at(i), target);
    }
}

void Database::MakeTables() {
    Write([this](soci::session& session) {
        if (!m_sqlite)
            session << "SELECT pg_advisory_xact_lock(8421376)";
        for (const char* statement : kSchema)
            session << statement;
    });
}

void Database::Read(const Work& work) {
    if (!TryTransact(m_sqlite ? "BEGIN" : "BEGIN ISOLATION LEVEL REPEATABLE READ READ ONLY", work))
        throw std::runtime_error("database: locked");
}

void Database::Write(const Work& work) {
    if (!TryTransact(m_sqlite ? "BEGIN IMMEDIATE" : "BEGIN", work))
        throw std::runtime_error("database: locked");
}

bool Database::TryWrite(const std::string& name, const Work& work) {
    const NameInUse inUse(*this, name);
    if (!inUse.Taken())
        return false;
    bool taken = false;
    const bool begun = TryTransact(m_sqlite ? "BEGIN IMMEDIATE" : "BEGIN", [&](soci::session& session) {
        taken = TakeNameOnServer(session, name);
        if (taken)
            work(session);
    });
    return begun && taken;
}

/// SQLite needs no more than the transaction itself, which no other process gets beside it.
bool Database::TakeNameOnServer(soci::session& session, const std::string& name) const {
    if (m_sqlite)
        return true;
    int taken = 0;
    session << "SELECT CASE WHEN pg_try_advisory_xact_lock(:k, hashtext(:n)) THEN 1 ELSE 0 END",
        soci::use(kNameLocks, "k"), soci::use(name, "n"), soci::into(taken);
    return taken == 1;
}

bool Database::TryBegin(soci::session& session, const char* begin) const {
    try {
        session << begin;
        return true;
    } catch (const soci::soci_error&) {
        if (m_sqlite && IsLocked(session))
            return false;
        throw;
    }
}

bool Database::TryTransact(const char* begin, const Work& work) {
    soci::session session(*m_pool);
    try {
        if (!TryBegin(session, begin))
            return false;
        work(session);
        session << "COMMIT";
        return true;
    } catch (const soci::soci_error& error) {
        Abandon(session);
        throw Fault(error);
    } catch (...) {
        Abandon(session);
        throw;
    }
}

void Database::Abandon(soci::session& session) const {
    RollBack(session);
    if (!m_sqlite)
        ReconnectIfLost(session);
}

} // namespace tolm::service
