#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

namespace soci {
class connection_pool;
class session;
} // namespace soci

namespace tolm::service {

/// The service's database: an SQLite file, or whatever a connection string of the form "postgresql://..." names. Any
/// thread may use it; each unit of work runs on a connection of its own. Faults of the database leave as exceptions.
class Database {
public:
    using Work = std::function<void(soci::session&)>;

    /// Opens the database and makes the tables that it lacks.
    Database(const std::string& target, std::size_t connections);
    ~Database();
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    /// Runs the work on one unchanging view of the database.
    void Read(const Work& work);
    /// Runs the work as one transaction: kept as a whole when the work returns, dropped when it throws. Works of this
    /// kind follow one another where the database knows no finer way.
    void Write(const Work& work);

private:
    void Open(const std::string& target, std::size_t connections);
    void MakeTables();
    void Transact(const char* begin, const Work& work);
    void Abandon(soci::session& session) const;

    std::unique_ptr<soci::connection_pool> m_pool;
    bool m_sqlite = true;
};

} // namespace tolm::service
