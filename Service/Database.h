#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <set>
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

    /// Opens the database and makes the tables that it lacks. Where transactions follow one another, each waits this
    /// many seconds for another process's.
    Database(const std::string& target, std::size_t connections, int patience = 30);
    ~Database();
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    /// Runs the work on one unchanging view of the database.
    void Read(const Work& work);
    /// Runs the work as one transaction: kept as a whole when the work returns, dropped when it throws. Works of this
    /// kind follow one another where the database knows no finer way.
    void Write(const Work& work);
    /// The same, unless other work under this name is under way, by whichever process: then it does nothing, at once,
    /// and returns false. So it does when the database stays locked.
    bool TryWrite(const std::string& name, const Work& work);

private:
    class NameInUse;

    void Open(const std::string& target, std::size_t connections, int patience);
    void MakeTables();
    bool TryTransact(const char* begin, const Work& work);
    bool TryBegin(soci::session& session, const char* begin) const;
    bool TakeNameOnServer(soci::session& session, const std::string& name) const;
    void Abandon(soci::session& session) const;

    std::unique_ptr<soci::connection_pool> m_pool;
    std::mutex m_namesMutex;
    std::set<std::string> m_names; ///< of the work under way in this process
    bool m_sqlite = true;
};

} // namespace tolm::service
