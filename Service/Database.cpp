#include "Service/Database.h"

#include "Service/Schema.h"

#include <soci/soci.h>
#include <soci/sqlite3/soci-sqlite3.h>

#include <stdexcept>

namespace tolm::service {
namespace {

constexpr const char* kPostgres = "postgresql://";

/// SQLite waits this long for another process's transaction.
constexpr const char* kSqliteOptions = " timeout=30";

std::string SqliteConnection(const std::string& path) {
    if (path.empty() || path.find('"') != std::string::npos)
        throw std::runtime_error("the database's path is empty or holds a quotation mark");
    return "dbname=\"" + path + "\"" + kSqliteOptions;
}

void OpenSqlite(soci::session& session, const std::string& path) {
    session.open(soci::sqlite3, SqliteConnection(path));
    session << "PRAGMA journal_mode=WAL";
    session << "PRAGMA synchronous=FULL";
}

void OpenServer(soci::session& session, const std::string& target) {
    session.open(target);
    session << "SET client_min_messages = warning";
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

Database::Database(const std::string& target, std::size_t connections) {
    Open(target, connections);
    MakeTables();
}

Database::~Database() = default;

void Database::Open(const std::string& target, std::size_t connections) {
    m_pool = std::make_unique<soci::connection_pool>(connections);
    m_sqlite = !target.starts_with(kPostgres);
    for (std::size_t i = 0; i < connections; ++i) {
        if (m_sqlite)
            OpenSqlite(m_pool->at(i), target);
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
    Transact(m_sqlite ? "BEGIN" : "BEGIN ISOLATION LEVEL REPEATABLE READ READ ONLY", work);
}

void Database::Write(const Work& work) {
    Transact(m_sqlite ? "BEGIN IMMEDIATE" : "BEGIN", work);
}

void Database::Transact(const char* begin, const Work& work) {
    soci::session session(*m_pool);
    try {
        session << begin;
        work(session);
        session << "COMMIT";
    } catch (const soci::soci_error& error) {
        Abandon(session);
        // Without the values of the statement, which are nobody's business in a log.
        throw std::runtime_error("database: " + error.get_error_message());
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
