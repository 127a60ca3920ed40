// Merges and uploads for projects of 2,000, 10,000 and 50,000 rows with 1 % of the rows changed on each side, against
// a service in this process. Beside the merge stands its floor, measured in the same iteration: a copy of both stores
// and the bare download of the increment. "merge / floor" tells how much the rule, the records and the overwriting
// cost on top; "per change" has to stay where it is as the project grows.

#include "Bench/ProjectGenerator.h"
#include "Host/Components.h"
#include "Host/Definitions.h"
#include "Host/Session.h"
#include "MepDatabase/DatasetPaths.h"
#include "MepDatabase/MepProjectSettingHttpUtility.h"
#include "MepDatabase/MepQbaseUtil.h"
#include "Qbase/Qbase.h"
#include "Service/ProjectFile.h"
#include "Service/Service.h"
#include "TolmDataSet/TolmDataSet.h"
#include "Vorn/DebugMessage.h"
#include "Vorn/Notification.h"
#include "Vorn/Progress.h"
#include "Vorn/Text.h"

#include <benchmark/benchmark.h>
#include <cpprest/json.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <memory>
#include <set>
#include <stdexcept>
#include <thread>

namespace {

using std::wstring;
using tolm::bench::GeneratorSettings;
using Clock = std::chrono::steady_clock;

constexpr int kEveryHundredth = 100; ///< 1 %
constexpr int kRounds = 10;          ///< of the key derivation: the sign-in is not what is measured

void Require(bool done, const char* what) {
    if (!done)
        throw std::runtime_error(what);
}

double SecondsOf(const auto& work) {
    const auto start = Clock::now();
    work();
    return std::chrono::duration<double>(Clock::now() - start).count();
}

class NoReport final : public vorn::IProgressReporter {
public:
    void ReportProgress(double) override {}
};

/// A folder with a service, and in it one project for each number of rows.
class Place {
public:
    Place()
        : m_folder(MakeFolder()),
          m_service((m_folder / "service.db").string(), {8 * 3600, kRounds, [] { return 1'000'000LL; }}, {}),
          m_thread([this] { m_service.Http().Run(); }) {
        m_service.Users().Put("bench", "secret");
        const auto token = m_service.Users().SignIn("bench", "secret");
        tolm::TolmUserSessionUtils::SetUser(L"bench", vorn::StringUtil::ToWString(token.value()));
        vorn::DebugMessageMgr::GetDebugMessageMgr()->SetHandler([](const auto&) {});
        vorn::NotificationUtils::SetHandler([](auto, const auto&, const auto&) {});
    }
    ~Place() {
        m_service.Http().Stop();
        m_thread.join();
        std::error_code ignored;
        std::filesystem::remove_all(m_folder, ignored);
    }
    Place(const Place&) = delete;
    Place& operator=(const Place&) = delete;

    tolm::service::Service& Service() { return m_service; }
    wstring File(const std::string& name) const { return (m_folder / name).wstring(); }
    std::string Folder() const { return m_folder.string(); }

private:
    static std::filesystem::path MakeFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "tolm-bench-XXXXXX").string();
        Require(mkdtemp(pattern.data()) != nullptr, "no temporary folder");
        return pattern;
    }

    std::filesystem::path m_folder;
    tolm::service::Service m_service;
    std::thread m_thread;
};

Place& Shared() {
    static Place place;
    return place;
}

void CopyStore(const wstring& from, const wstring& to) {
    CQbase::removeStore(to);
    Require(CQbase::copyStore(from, to), "copyStore");
}

/// A project of so many rows, and a dataset of version 1 with local changes while the cloud has gone on.
class Project {
public:
    explicit Project(std::size_t rows) : m_name(std::to_string(rows)), m_settings{rows, 1, 1.0} {
        auto& projects = Shared().Service().Projects();
        projects.Create(m_name, m_name);
        const auto file = tolm::service::ReadProjectFile(tolm::bench::GenerateProject(m_settings), Shared().Folder());
        projects.Fill(m_name, file.rows, false);
        m_rows = file.rows;
        Open();
        Require(m_dataset->SyncDataFromCloud(false, nullptr, nullptr), "the pull");
        ChangeLocally();
        CopyStore(m_path, Kept(m_path));
        CopyStore(Status(), Kept(Status()));
        const auto change = tolm::service::ReadChangeFile(tolm::bench::GenerateChange(m_settings), Shared().Folder());
        projects.Apply(m_name, change.change, change.workunits);
    }

    /// Opens the session on this project.
    void Open() {
        tolm::CollaborationProjectSettingForPS::Settings settings;
        settings.httpServer = L"http://127.0.0.1:" + std::to_wstring(Shared().Service().Http().Port());
        settings.workingProjectId = Id();
        settings.workingDatasetId = L"workunit";
        tolm::CollaborationProjectSettingForPS::Open(settings);
        tolm::TolmFilePathSettings::SetCurrentDatasetFilePath(m_path);
        if (!m_dataset)
            m_dataset = tolm::ITolmDataSetFactory::Get()->CreateDataset(m_path, Shared().File("components.db"),
                                                                        m_combined, m_files);
    }

    /// Both stores as they were before the merge.
    void Restore() const {
        CopyStore(Kept(m_path), m_path);
        CopyStore(Kept(Status()), Status());
    }

    void CopyBoth() const {
        CopyStore(m_path, m_path + L".copy");
        CopyStore(Status(), Status() + L".copy");
    }

    void Download() const {
        web::json::value root;
        Require(tolm::TolmProjectSettingHttpUtility::GetInstance()->GetCloudData(Id(), 1, root), "the download");
    }

    void Merge() const {
        NoReport report;
        bool pending = true;
        Require(tolm::MepQbaseUtil::GetInstance()->MergeCloudAndLocalDataset(Id(), &report, 2, 1, m_path,
                                                                             tolm::DataSetFilePath::TOLMDDQFilePath,
                                                                             m_combined, m_files, &pending) &&
                    pending,
                "the merge");
    }

    /// Both stores as a merge left them, the service with the rows that the upload is to change as they were before,
    /// and told of its version, so that it takes the upload.
    void PrepareUpload() {
        if (m_sentBefore.put.empty()) {
            Merge();
            CopyStore(m_path, Merged(m_path));
            CopyStore(Status(), Merged(Status()));
            NoteSent();
        }
        CopyStore(Merged(m_path), m_path);
        CopyStore(Merged(Status()), Status());
        Shared().Service().Projects().Apply(m_name, m_sentBefore);
        m_dataset->GetCloudVersion(Id()); // the first one after an upload tells of that upload
        m_dataset->GetCloudVersion(Id());
    }
    void Upload() { Require(m_dataset->SendModifiedDataToCloud(false, nullptr), "the upload"); }

    /// Noted on both sides together.
    std::size_t Changes() const { return m_localChanges + m_settings.rows / kEveryHundredth; }
    std::size_t LocalChanges() const { return m_localChanges; }

private:
    wstring Id() const { return vorn::StringUtil::ToWString(m_name); }
    wstring Status() const { return tolm::DatasetPaths::Of(m_path).status; }
    static wstring Kept(const wstring& path) { return path + L".kept"; }
    static wstring Merged(const wstring& path) { return path + L".merged"; }

    /// The rows of the project's beginning that are noted as edited.
    void NoteSent() {
        std::vector<wstring> created;
        std::vector<wstring> edited;
        std::vector<wstring> removed;
        CQbase status;
        Require(status.openDatabase(tolm::DataSetFilePath::TOLMDDQFilePath, Status(), false) && status.lockForRead(),
                "the status store");
        tolm::MepQbaseUtil::GetInstance()->GetLocalChangedIdList(&status, 1, 2, "PSI", created, edited, removed);
        std::set<std::string> ids;
        for (const auto& id : edited)
            ids.insert(vorn::StringUtil::ToString(id));
        for (const auto& row : m_rows) {
            if (ids.contains(row.id))
                m_sentBefore.put.push_back(row);
        }
        Require(!m_sentBefore.put.empty(), "rows to send");
    }

    /// New names for every hundredth of the pipe tables, as many as a hundredth of all rows.
    void ChangeLocally() {
        m_dataset->CollectData(false, {tolm::TolmProjectSettingTableId::PlumbingPipeSizes});
        auto* table = EditTable(m_dataset->GetSizeModuleData());
        const auto list = table->GetSizeList();
        const auto wanted = m_settings.rows / kEveryHundredth;
        const auto step = std::max<std::size_t>(list.size() / wanted, 1);
        for (std::size_t i = 0; i < list.size() && m_localChanges < wanted; i += step, ++m_localChanges) {
            auto* record = const_cast<tolm::IProjectSettingSizeModule*>(list[i]);
            wstring name = record->GetName() + L" here";
            record->SetName(name);
            table->AddSizeModuleToDB(record);
        }
    }

    std::string m_name;
    GeneratorSettings m_settings;
    wstring m_path = Shared().File(m_name + ".db");
    wstring m_combined = Shared().File(m_name + " combined.db");
    wstring m_files = Shared().File(m_name + " files");
    std::size_t m_localChanges = 0;
    std::vector<tolm::service::SettingRow> m_rows;
    tolm::service::SettingChange m_sentBefore;
    vorn::OwnerPtr<tolm::ITolmDataset> m_dataset;
};

Project& ProjectOf(std::int64_t rows) {
    static std::map<std::int64_t, std::unique_ptr<Project>> projects;
    auto& project = projects[rows];
    if (!project)
        project = std::make_unique<Project>(static_cast<std::size_t>(rows));
    project->Open();
    return *project;
}

void Merge(benchmark::State& state) {
    Project& project = ProjectOf(state.range(0));
    double floor = 0;
    double merge = 0;
    while (state.KeepRunning()) {
        project.Restore();
        floor += SecondsOf([&] {
            project.CopyBoth();
            project.Download();
        });
        const double seconds = SecondsOf([&] { project.Merge(); });
        merge += seconds;
        state.SetIterationTime(seconds);
    }
    state.counters["merge / floor"] = merge / floor;
    state.counters["per change"] =
        benchmark::Counter(static_cast<double>(project.Changes()),
                           benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
    state.SetComplexityN(state.range(0));
}

void Upload(benchmark::State& state) {
    Project& project = ProjectOf(state.range(0));
    project.Restore();
    while (state.KeepRunning()) {
        project.PrepareUpload();
        state.SetIterationTime(SecondsOf([&] { project.Upload(); }));
    }
    state.counters["per change"] =
        benchmark::Counter(static_cast<double>(project.LocalChanges()),
                           benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
    state.SetComplexityN(state.range(0));
}

void Sizes(benchmark::internal::Benchmark* of) {
    of->Arg(2'000)->Arg(10'000)->Arg(50'000)->UseManualTime()->Unit(benchmark::kMillisecond)->Complexity(benchmark::oN);
}
BENCHMARK(Merge)->Apply(Sizes);
BENCHMARK(Upload)->Apply(Sizes);

} // namespace
