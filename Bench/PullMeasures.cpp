// A pull against the download of the same body, its parse, and the bare insert of the same rows in one transaction.
#include "Bench/BareHttp.h"
#include "Bench/Measure.h"
#include "Bench/World.h"

#include <fstream>

namespace tolm::bench {
namespace {

constexpr const char* kFull = "full pull into an empty store, service included";
constexpr const char* kIncrement = "incremental pull, 1 % changed";

/// Everything that a pull leaves behind, ready to be written again.
struct PulledContent {
    explicit PulledContent(const DatasetFiles& files)
        : store(ReadBareFile(files.Store().string())), combined(ReadBareFile(files.Combined().string())) {
        for (const auto& entry : fs::directory_iterator(files.Binary())) {
            std::ifstream file(entry.path(), std::ios::binary);
            binary.emplace_back(entry.path().filename(),
                                std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()));
        }
    }

    void WriteTo(const DatasetFiles& files) const {
        fs::create_directories(files.Binary());
        WriteBareFile(files.Store().string(), store);
        WriteBareFile(files.Combined().string(), combined);
        for (const auto& [name, bytes] : binary)
            std::ofstream(files.Binary() / name, std::ios::binary | std::ios::trunc) << bytes;
    }

    BareFile store;
    BareFile combined;
    std::vector<std::pair<fs::path, std::string>> binary;
};

void FullFloor(benchmark::State& state, World& world) {
    const PulledContent content(world.New());
    const DatasetFiles scratch = world.Scratch("floor");
    while (state.KeepRunning()) {
        state.PauseTiming();
        scratch.Remove();
        state.ResumeTiming();
        DownloadBare(world.Project(), 0);
        content.WriteTo(scratch);
    }
}

void FullPull(benchmark::State& state, World& world) {
    const DatasetFiles scratch = world.Scratch("work");
    world.OpenSession();
    while (state.KeepRunning()) {
        state.PauseTiming();
        scratch.Remove();
        fs::create_directories(scratch.folder);
        state.ResumeTiming();
        scratch.Pull();
    }
}

void IncrementFloor(benchmark::State& state, World& world) {
    const auto store = DifferenceOf(world.Old().Store().string(), world.Current().Store().string());
    const auto combined = DifferenceOf(world.Old().Combined().string(), world.Current().Combined().string());
    const DatasetFiles scratch = world.Scratch("floor");
    while (state.KeepRunning()) {
        state.PauseTiming();
        scratch.CopyFrom(world.Old());
        state.ResumeTiming();
        DownloadBare(world.Project(), 1);
        ApplyBareChange(scratch.Store().string(), store);
        ApplyBareChange(scratch.Combined().string(), combined);
    }
}

void IncrementalPull(benchmark::State& state, World& world) {
    const DatasetFiles scratch = world.Scratch("work");
    world.OpenSession();
    while (state.KeepRunning()) {
        state.PauseTiming();
        scratch.CopyFrom(world.Old());
        state.ResumeTiming();
        scratch.Pull();
    }
}

} // namespace

void AddPullMeasures(Measures& measures, const Sizes& sizes) {
    for (const std::size_t rows : {2'000, 10'000, 50'000}) {
        const std::size_t made = sizes.Of(rows);
        measures.push_back({kFull, std::to_string(rows), static_cast<double>(made), 1.3, 1, 1.15,
                            [made](benchmark::State& state) { FullFloor(state, WorldOf(made)); },
                            [made](benchmark::State& state) { FullPull(state, WorldOf(made)); }});
    }
    for (const std::size_t rows : {10'000, 50'000}) {
        const std::size_t made = sizes.Of(rows);
        measures.push_back({kIncrement, std::to_string(rows), static_cast<double>(made) / 100, 2, 1, 1.15,
                            [made](benchmark::State& state) { IncrementFloor(state, WorldOf(made)); },
                            [made](benchmark::State& state) { IncrementalPull(state, WorldOf(made)); }});
    }
}

} // namespace tolm::bench
