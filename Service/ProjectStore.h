#pragma once

#include "Service/SettingRow.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace tolm::service {

class Database;

struct ProjectInfo {
    std::string id;
    std::string name;
    std::int64_t version = -1;
    std::string templateId; ///< template that the project was filled from; empty for none
};

/// What an upload or a change file asks for.
struct SettingChange {
    std::vector<SettingRow> put; ///< each id once; one that stands is replaced, another comes new
    std::vector<std::pair<std::size_t, std::string>> removed; ///< table and id; what is gone already is nothing
};

struct WorkunitEntry {
    std::string workunitId;
    std::string dataId;
    int dataStatus = 0;
    std::string projectId{}; ///< that it was told for; given back, not taken
};

/// The projects and their rows, with all their versions. Any thread may use it. A call that throws changed nothing: a
/// `Refusal` tells whom it may concern why, anything else is a fault of the database.
class ProjectStore {
public:
    explicit ProjectStore(Database& database) : m_database(database) {}

    void Create(const std::string& projectId, const std::string& name);
    std::vector<ProjectInfo> List();
    ProjectInfo Info(const std::string& projectId);
    /// -1 for a project that was never filled.
    std::int64_t Version(const std::string& projectId);
    /// Number of rows that stand, table by table in the order of kSettingTables.
    std::vector<std::int64_t> RowCounts(const std::string& projectId);

    /// Gives a project its settings. A project that has some already is refused, unless `replace` says that these are
    /// to stand instead, as one further version. Returns the version.
    std::int64_t Fill(const std::string& projectId, const std::vector<SettingRow>& rows, bool replace);
    /// Makes one version of the change, and the entries of work units with it, as one transaction. Returns the version;
    /// a change that alters nothing makes none.
    std::int64_t Apply(const std::string& projectId, const SettingChange& change,
                       const std::vector<WorkunitEntry>& entries = {});
    /// Fills a project that was never filled with what stands in the template's project.
    std::int64_t FillFromTemplate(const std::string& projectId, const std::string& templateId);

    /// For a database that was set back to an older copy, after which a project may have had up to `most` further
    /// versions: clients that stand at one of them are refused from now on, and the number goes on behind them.
    /// Returns the new version; a project that was never filled stays as it is.
    std::int64_t LoseVersions(const std::string& projectId, std::int64_t most);

    /// JSON text of what changed since a version ("add" and "del"); below 1 it is everything.
    std::string Increment(const std::string& projectId, std::int64_t since);
    /// JSON text of the rows that stand, a member for each table that has some.
    std::string StandingRows(const std::string& projectId);

    void SetTemplate(const std::string& templateId, const std::string& projectId);
    /// Id of the template that a project was filled from; empty when there is none or no such project.
    std::string TemplateOf(const std::string& projectId);

    void PutWorkunitData(const std::string& projectId, const std::vector<WorkunitEntry>& entries);
    /// In the order of their ids.
    std::vector<WorkunitEntry> WorkunitData(const std::string& workunitId);

private:
    Database& m_database;
};

} // namespace tolm::service
