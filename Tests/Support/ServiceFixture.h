#pragma once

#include "Support/TempFolder.h"

#include <atomic>
#include <memory>
#include <string>

namespace tolm::service {
class Service;
}

namespace tolmtest {

/// The settings service in this process, on a free port of the loopback address, with a fresh database in a folder of
/// its own. One user "anna" stands ready. All texts are UTF-8. What the service refuses leaves as an exception.
class ServiceFixture {
public:
    ServiceFixture();
    ~ServiceFixture();
    ServiceFixture(const ServiceFixture&) = delete;
    ServiceFixture& operator=(const ServiceFixture&) = delete;

    /// "http://127.0.0.1:" and the port.
    std::wstring Address() const;
    int Port() const;

    /// Makes a project that was never filled.
    void CreateProject(const std::string& projectId);
    /// Fills a project from the text of a project file, making the project if there is none. Returns its version, 1.
    int Fill(const std::string& projectId, const std::string& projectFileText);
    /// The same with {"ConfigTree":[...], ...} alone.
    int FillTables(const std::string& projectId, const std::string& tablesText);
    /// Applies the text of a change file. Returns the project's version then.
    int Apply(const std::string& projectId, const std::string& changeFileText);
    int Version(const std::string& projectId);
    /// Says that the project lost as many versions. Returns its new one.
    int LoseVersions(const std::string& projectId, int count);
    /// The tables that stand, as {"ConfigTree":[...], ...}.
    std::string Tables(const std::string& projectId);
    void SetTemplate(const std::string& templateId, const std::string& projectId);

    /// The SQLite file that the service keeps its rows in.
    std::wstring DatabasePath() const { return m_folder.File(L"service.db"); }

    void AddUser(const std::string& userId, const std::string& secret);
    /// A fresh token of a user.
    std::string SignIn(const std::string& userId = "anna", const std::string& secret = "anna's secret");
    /// Signs anna in and opens the session of this process with it: service, project, work unit, user and token.
    void OpenSession(const std::string& projectId, const std::string& workunitId = "workunit-1");

    /// Moves the service's clock, which stands still otherwise.
    void PassSeconds(long long seconds);
    /// Ends the service and starts it again over the same database, on another port.
    void Restart();
    /// Writes a copy of the database, as an operator keeps one.
    void BackUp(const std::wstring& path);
    /// Ends the service, puts a copy of the database in place, and starts it again.
    void SetBackTo(const std::wstring& path);

    tolm::service::Service& Service();

private:
    struct Running;
    TempFolder m_folder;
    std::shared_ptr<std::atomic<long long>> m_seconds;
    std::unique_ptr<Running> m_running;
};

} // namespace tolmtest
