#include "Bench/World.h"

#include "Bench/Measure.h"
#include "Bench/ProjectGenerator.h"
#include "Host/Components.h"
#include "Host/Definitions.h"
#include "Host/Session.h"
#include "MepDatabase/MepQbaseUtil.h"
#include "MepDatabase/PackedLists.h"
#include "Qbase/Qbase.h"
#include "Service/ProjectFile.h"
#include "Service/Service.h"
#include "Vorn/Text.h"

#include <algorithm>
#include <cstdlib>
#include <fcntl.h>
#include <map>
#include <set>
#include <thread>
#include <unistd.h>

namespace tolm::bench {
namespace {

constexpr int kRounds = 10; // of the key derivation; signing in is not what is measured
constexpr double kChangedPercent = 1;
constexpr const char* kEditedClasses[] = {"MTS", "PSI", "SMS", "SYS"};

struct TemporaryFolder {
    TemporaryFolder() {
        std::string pattern = (fs::temp_directory_path() / "tolm-bench-XXXXXX").string();
        Require(mkdtemp(pattern.data()) != nullptr, "no temporary folder");
        path = pattern;
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        fs::remove_all(path, ignored);
    }
    fs::path path;
};

std::vector<std::string> Ids(const DatasetFiles& files, const std::string& classCode) {
    return TextsOf(files.Store().string(), "SELECT id FROM \"" + classCode + "\" ORDER BY seq");
}

/// Ids of a class that stand in both files and are not the same there.
std::vector<std::string> ChangedIds(const DatasetFiles& before, const DatasetFiles& after,
                                    const std::string& classCode) {
    const auto names = [&](const DatasetFiles& files) {
        std::set<std::string> rows;
        for (auto& row : TextsOf(files.Store().string(), "SELECT id||'/'||Name FROM \"" + classCode + "\""))
            rows.insert(std::move(row));
        return rows;
    };
    const auto old = names(before);
    std::set<std::string> ids;
    for (const auto& id : Ids(before, classCode))
        ids.insert(id);
    std::vector<std::string> changed;
    for (const auto& row : names(after)) {
        const std::string id = row.substr(0, row.find('/'));
        if (!old.contains(row) && ids.contains(id))
            changed.push_back(id);
    }
    return changed;
}

/// Every hundredth record, of which a tenth gives way to one that the service changed too.
std::vector<std::string> PickEdits(const DatasetFiles& before, const DatasetFiles& after,
                                   const std::string& classCode) {
    const auto ids = Ids(before, classCode);
    const auto changed = ChangedIds(before, after, classCode);
    std::set<std::string> picked;
    for (std::size_t i = 0; i < ids.size(); i += 100) {
        const std::size_t number = i / 100;
        picked.insert(number % 10 == 0 && number / 10 < changed.size() ? changed[number / 10] : ids[i]);
    }
    return {picked.begin(), picked.end()};
}

} // namespace

const fs::path& BenchFolder() {
    static const TemporaryFolder folder;
    return folder.path;
}

void SyncFile(const fs::path& path) {
    const int descriptor = open(path.c_str(), O_RDONLY);
    Require(descriptor >= 0 && fsync(descriptor) == 0, "a file does not reach the disk");
    close(descriptor);
}

std::wstring Wide(const fs::path& path) {
    return vorn::StringUtil::ToWString(path.string());
}

// --- datasets ------------------------------------------------------------------------------------------------------

void DatasetFiles::Pull() const {
    TolmFilePathSettings::SetCurrentDatasetFilePath(Wide(Store()));
    Require(MepQbaseUtil::GetInstance()->SyncDataFromCloud(false, nullptr, Wide(Store()),
                                                           DataSetFilePath::TOLMDDQFilePath, Wide(Combined()),
                                                           Wide(Binary()), nullptr),
            "a pull fails");
}

void DatasetFiles::CopyFrom(const DatasetFiles& other) const {
    Remove();
    fs::create_directories(folder);
    for (const auto& [from, to] : {std::pair(other.Store(), Store()), std::pair(other.Status(), Status()),
                                   std::pair(other.Combined(), Combined())}) {
        if (!fs::exists(from))
            continue;
        fs::copy_file(from, to);
        SyncFile(to);
    }
    if (fs::exists(other.Binary()))
        fs::copy(other.Binary(), Binary(), fs::copy_options::recursive);
}

void DatasetFiles::Remove() const {
    fs::remove_all(folder);
}

void MakeStatus(const DatasetFiles& files) {
    CQbase status;
    Require(status.openDatabase(DataSetFilePath::TOLMDDQFilePath, Wide(files.Status()), true) && status.closeDatabase(),
            "no status store");
}

void ImportFittings(const DatasetFiles& files, const std::vector<std::string>& series) {
    const auto database = OpenBare(files.Store().string());
    const auto select = PrepareBare(database.get(), "SELECT c.FittingList FROM SMS s JOIN COS c ON "
                                                    "c.id=s.ConnectionSerieId WHERE s.id=?");
    std::map<std::wstring, TolmCategoryData> categories;
    std::vector<TolmComponentData> components;
    for (const auto& id : series) {
        BindText(select.get(), 1, id);
        Require(sqlite3_step(select.get()) == SQLITE_ROW, "no connection series");
        const auto* bytes = static_cast<const char*>(sqlite3_column_blob(select.get(), 0));
        for (const auto& fitting : Unpack(kFittingLayout, bytes, sqlite3_column_bytes(select.get(), 0))) {
            categories[fitting.categoryCode] = {fitting.categoryCode, L"", L"2", L"Fittings", L"Fittings"};
            components.emplace_back();
            components.back().id = fitting.productId;
            components.back().categoryCode = fitting.categoryCode;
            components.back().name = L"Fitting";
        }
        sqlite3_reset(select.get());
    }
    std::vector<TolmCategoryData> list;
    for (auto& [code, category] : categories)
        list.push_back(category);
    Require(
        TolmComponentSqlUtil::Import(Wide(files.Components()), {{L"2", L"Plumbing", L"Plumbing"}}, list, components),
        "no components");
}

void EditLocally(const DatasetFiles& files, const std::string& classCode, const std::vector<std::string>& ids) {
    const auto database = OpenBare(files.Store().string());
    ExecuteBare(database.get(), "ATTACH '" + files.Status().string() + "' AS status;BEGIN");
    const auto edit =
        PrepareBare(database.get(), "UPDATE main.\"" + classCode + "\" SET Name=Name||' local' WHERE id=?");
    const auto note = PrepareBare(database.get(), "INSERT INTO status.\"" + classCode +
                                                      "\"(id,Status,MEPType,DisciplineId) SELECT id,2,MEPType,"
                                                      "DisciplineId FROM main.\"" +
                                                      classCode + "\" WHERE id=?");
    for (const auto& id : ids) {
        for (auto* statement : {edit.get(), note.get()}) {
            BindText(statement, 1, id);
            RunOnce(statement);
        }
    }
    ExecuteBare(database.get(), "COMMIT");
}

// --- service -------------------------------------------------------------------------------------------------------

struct ServedProjects::Running {
    explicit Running(const fs::path& database)
        : all(database.string(), {24 * 3600, kRounds, [] { return 1'000'000LL; }}, {}),
          thread([this] { all.Http().Run(); }) {}
    ~Running() {
        all.Http().Stop();
        thread.join();
    }
    service::Service all;
    std::thread thread;
};

ServedProjects::ServedProjects() : m_running(std::make_unique<Running>(BenchFolder() / "service.db")) {
    m_running->all.Users().Put("bench", "bench");
    m_token = m_running->all.Users().SignIn("bench", "bench").value();
}

ServedProjects::~ServedProjects() = default;

void ServedProjects::Fill(const std::string& project, const std::string& projectFile) {
    m_running->all.Projects().Create(project, project);
    m_running->all.Projects().Fill(project, service::ReadProjectFile(projectFile, BenchFolder().string()).rows, false);
}

void ServedProjects::Apply(const std::string& project, const std::string& changeFile) {
    const auto file = service::ReadChangeFile(changeFile, BenchFolder().string());
    m_running->all.Projects().Apply(project, file.change, file.workunits);
}

std::string ServedProjects::Address() const {
    return "http://127.0.0.1:" + std::to_string(m_running->all.Http().Port());
}

void ServedProjects::OpenSession(const std::string& project) {
    CollaborationProjectSettingForPS::Settings settings;
    settings.httpServer = vorn::StringUtil::ToWString(Address());
    settings.workingProjectId = vorn::StringUtil::ToWString(project);
    settings.workingDatasetId = L"workunit";
    settings.requestTimeOut = 300'000'000;
    CollaborationProjectSettingForPS::Open(settings);
    TolmUserSessionUtils::SetUser(L"bench", vorn::StringUtil::ToWString(m_token));
}

ServedProjects& Served() {
    static ServedProjects served;
    return served;
}

// --- worlds --------------------------------------------------------------------------------------------------------

World::World(std::size_t rows)
    : m_folder(BenchFolder() / std::to_string(rows)), m_project("P" + std::to_string(rows)), m_old{m_folder / "old"},
      m_new{m_folder / "new"}, m_current{m_folder / "current"}, m_edited{m_folder / "edited"} {
    const GeneratorSettings settings{rows, 1, kChangedPercent};
    Served().Fill(m_project, GenerateProject(settings));
    OpenSession();
    m_old.Pull();
    Served().Apply(m_project, GenerateChange(settings));
    m_new.Pull();
    m_current.CopyFrom(m_old);
    m_current.Pull();
}

const DatasetFiles& World::Edited() {
    if (!fs::exists(m_edited.Store())) {
        m_edited.CopyFrom(m_old);
        MakeStatus(m_edited);
        for (const char* classCode : kEditedClasses)
            EditLocally(m_edited, classCode, PickEdits(m_old, m_current, classCode));
        ImportFittings(m_edited, PickEdits(m_old, m_current, "SMS"));
    }
    return m_edited;
}

DatasetFiles World::Scratch(const std::string& name) const {
    return {m_folder / name};
}

World& WorldOf(std::size_t rows) {
    static std::map<std::size_t, std::unique_ptr<World>> worlds;
    auto& world = worlds[rows];
    if (!world)
        world = std::make_unique<World>(rows);
    return *world;
}

} // namespace tolm::bench
