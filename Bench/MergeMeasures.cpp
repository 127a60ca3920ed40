// A merge against a backup copy of both files and the bare incremental pull of the same body; and many name clashes
// against fewer of them.
#include "Bench/BareHttp.h"
#include "Bench/BarePull.h"
#include "Bench/GeneratedRows.h"
#include "Bench/Measure.h"
#include "Bench/World.h"
#include "Host/Definitions.h"
#include "Host/Session.h"
#include "MepDatabase/MepQbaseUtil.h"
#include "Vorn/Progress.h"
#include "Vorn/Text.h"

#include <map>

namespace tolm::bench {
namespace {

using nlohmann::json;

constexpr const char* kMerge = "merge, 1 % changed on each side, 0.1 % in conflict";
constexpr const char* kClashes = "merge with name clashes in one table";

struct SilentProgress : vorn::IProgressReporter {
    void ReportProgress(double) override {}
};

void MergeDataset(const std::string& project, const DatasetFiles& files) {
    TolmFilePathSettings::SetCurrentDatasetFilePath(Wide(files.Store()));
    SilentProgress progress;
    bool pending = true;
    Require(MepQbaseUtil::GetInstance()->MergeCloudAndLocalDataset(
                vorn::StringUtil::ToWString(project), &progress, 2, 1, Wide(files.Store()),
                DataSetFilePath::TOLMDDQFilePath, Wide(files.Combined()), Wide(files.Binary()), &pending) &&
                pending,
            "a merge fails");
}

void MergeFloor(benchmark::State& state, World& world) {
    const BareIncrement increment(world.Old(), world.Current());
    const DatasetFiles& edited = world.Edited();
    const DatasetFiles scratch = world.Scratch("floor");
    while (state.KeepRunning()) {
        state.PauseTiming();
        scratch.CopyFrom(edited);
        state.ResumeTiming();
        DownloadBare(world.Project(), 1);
        BackUpBare(scratch.Store().string(), (scratch.folder / "copy.db").string());
        BackUpBare(scratch.Status().string(), (scratch.folder / "copy_status.db").string());
        increment.ApplyTo(scratch);
    }
}

void Merge(benchmark::State& state, World& world) {
    const DatasetFiles& edited = world.Edited();
    const DatasetFiles scratch = world.Scratch("work");
    world.OpenSession();
    while (state.KeepRunning()) {
        state.PauseTiming();
        scratch.CopyFrom(edited);
        state.ResumeTiming();
        MergeDataset(world.Project(), scratch);
    }
}

/// A project to which the service added so many materials, each with a name that a local creation bears as well.
class ClashingProject {
public:
    explicit ClashingProject(std::size_t clashes)
        : m_project("C" + std::to_string(clashes)), m_files{BenchFolder() / m_project} {
        Served().Fill(
            m_project,
            json{{"format", "tolm-project"}, {"formatVersion", 1}, {"tables", {{"ConfigTree", Materials(1, 1, "")}}}}
                .dump());
        Served().OpenSession(m_project);
        m_files.Pull();
        Served().Apply(m_project, json{{"format", "tolm-change"},
                                       {"formatVersion", 1},
                                       {"add", {{"ConfigTree", Materials(clashes, 2, " new")}}}}
                                      .dump());
        CreateLocally(Materials(clashes, 3, " new"));
    }

    void Merge(benchmark::State& state) const {
        const DatasetFiles scratch{BenchFolder() / (m_project + "-work")};
        Served().OpenSession(m_project);
        while (state.KeepRunning()) {
            state.PauseTiming();
            scratch.CopyFrom(m_files);
            state.ResumeTiming();
            MergeDataset(m_project, scratch);
        }
    }

private:
    /// The seed makes the ids, the number and the ending the names.
    static json Materials(std::size_t count, std::uint64_t seed, const std::string& ending) {
        Dice dice(seed);
        MadeIds made;
        json rows = json::array();
        for (std::size_t i = 0; i < count; ++i) {
            rows.push_back(RowKinds().front().make({dice, made, i}));
            rows.back()["text"] = "Material " + std::to_string(i) + ending;
        }
        return rows;
    }

    void CreateLocally(const json& materials) const {
        MakeStatus(m_files);
        const auto database = OpenBare(m_files.Store().string());
        ExecuteBare(database.get(), "ATTACH '" + m_files.Status().string() + "' AS status;BEGIN");
        const auto create = PrepareBare(
            database.get(), "INSERT INTO main.MTS(id,MEPType,DisciplineId,CreateTime,Name)VALUES(?1,1,2,0,?2)");
        const auto note =
            PrepareBare(database.get(), "INSERT INTO status.MTS(id,Status,MEPType,DisciplineId)VALUES(?1,1,1,2)");
        for (const auto& material : materials) {
            const auto id = material.at("ID").get<std::string>();
            const auto name = material.at("text").get<std::string>();
            BindText(create.get(), 2, name);
            for (auto* statement : {create.get(), note.get()}) {
                BindText(statement, 1, id);
                RunOnce(statement);
            }
        }
        ExecuteBare(database.get(), "COMMIT");
    }

    std::string m_project;
    DatasetFiles m_files;
};

void MergeClashes(benchmark::State& state, std::size_t clashes) {
    static std::map<std::size_t, std::unique_ptr<ClashingProject>> projects;
    auto& project = projects[clashes];
    if (!project)
        project = std::make_unique<ClashingProject>(clashes);
    project->Merge(state);
}

} // namespace

void AddMergeMeasures(Measures& measures, const Sizes& sizes) {
    for (const std::size_t rows : {2'000, 10'000, 50'000}) {
        const std::size_t made = sizes.Of(rows);
        measures.push_back({kMerge, std::to_string(rows), static_cast<double>(made), 2, 1, 0,
                            [made](benchmark::State& state) { MergeFloor(state, WorldOf(made)); },
                            [made](benchmark::State& state) { Merge(state, WorldOf(made)); }});
    }
    const std::size_t few = sizes.tiny ? 5 : 500;
    measures.push_back({kClashes, "2000 against 4 x 500", 1, 1, 4, 0,
                        [few](benchmark::State& state) { MergeClashes(state, few); },
                        [few](benchmark::State& state) { MergeClashes(state, 4 * few); }});
}

} // namespace tolm::bench
