#pragma once

#include "Bench/BareStore.h"

#include <cstddef>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace tolm::bench {

namespace fs = std::filesystem;

/// A folder that goes with the process.
const fs::path& BenchFolder();

/// A dataset with all that belongs to it, in a folder of its own.
struct DatasetFiles {
    fs::path folder;

    fs::path Store() const { return folder / "set.db"; }
    fs::path Status() const { return folder / "set_Status.db"; }
    fs::path Combined() const { return folder / "combined.db"; }
    fs::path Binary() const { return folder / "files"; }
    fs::path Components() const { return folder / "components.db"; }

    /// Makes it the host's current one and refreshes it from the service's project of the open session.
    void Pull() const;
    /// Puts a copy of another one in its place, and has it on disk before anything is timed.
    void CopyFrom(const DatasetFiles& other) const;
    void Remove() const;
};

/// The settings service in this process and the projects that it serves.
class ServedProjects {
public:
    ServedProjects();
    ~ServedProjects();
    ServedProjects(const ServedProjects&) = delete;
    ServedProjects& operator=(const ServedProjects&) = delete;

    void Fill(const std::string& project, const std::string& projectFile);
    void Apply(const std::string& project, const std::string& changeFile);
    void OpenSession(const std::string& project);
    std::string Address() const;
    const std::string& Token() const { return m_token; }

private:
    struct Running;
    std::unique_ptr<Running> m_running;
    std::string m_token;
};
ServedProjects& Served();

/// A generated project of so many rows at version 2 of the service, 1 percent of which changed since version 1, and
/// datasets at both versions.
class World {
public:
    explicit World(std::size_t rows);

    const std::string& Project() const { return m_project; }
    const DatasetFiles& Old() const { return m_old; }         ///< at version 1
    const DatasetFiles& New() const { return m_new; }         ///< at version 2, pulled whole
    const DatasetFiles& Current() const { return m_current; } ///< at version 2, come from version 1
    /// A dataset at version 1 with 1 percent of local changes, a tenth of which the service changed as well, and a
    /// component database with the fittings of the changed series.
    const DatasetFiles& Edited();
    /// A dataset to work in.
    DatasetFiles Scratch(const std::string& name) const;
    void OpenSession() const { Served().OpenSession(m_project); }

private:
    fs::path m_folder;
    std::string m_project;
    DatasetFiles m_old;
    DatasetFiles m_new;
    DatasetFiles m_current;
    DatasetFiles m_edited;
};

/// The same one for the same number of rows.
World& WorldOf(std::size_t rows);

/// Makes a component database with the fittings of these series of connections.
void ImportFittings(const DatasetFiles& files, const std::vector<std::string>& series);
/// Changes names in a store past the library and notes that in its status store. `ids` of this class.
void EditLocally(const DatasetFiles& files, const std::string& classCode, const std::vector<std::string>& ids);
/// Gives a dataset a status store without records.
void MakeStatus(const DatasetFiles& files);

/// Waits until the file is on disk.
void SyncFile(const fs::path& path);

std::wstring Wide(const fs::path& path);

} // namespace tolm::bench
