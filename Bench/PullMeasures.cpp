// A pull against the download of the same body, its parse, and the bare insert of the same rows in one transaction.
#include "Bench/BareHttp.h"
#include "Bench/BarePull.h"
#include "Bench/Measure.h"
#include "Bench/World.h"

namespace tolm::bench {
namespace {

constexpr const char* kFull = "full pull into an empty store, service included";
constexpr const char* kIncrement = "incremental pull, 1 % changed";

void FullFloor(benchmark::State& state, World& world) {
    const BareFullPull content(world.New());
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
    const BareIncrement increment(world.Old(), world.Current());
    const DatasetFiles scratch = world.Scratch("floor");
    while (state.KeepRunning()) {
        state.PauseTiming();
        scratch.CopyFrom(world.Old());
        state.ResumeTiming();
        DownloadBare(world.Project(), 1);
        increment.ApplyTo(scratch);
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
