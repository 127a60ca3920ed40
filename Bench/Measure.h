#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace tolm::bench {

/// One line of the table: a floor, which is bare code against the libraries underneath, and the work that it is the
/// floor of. Both are benchmarks of their own and are run in turns.
struct Measure {
    std::string work;     ///< what is done; lines of one work that differ in size show how it scales
    std::string size;     ///< as it stands in the table
    double units = 0;     ///< rows, trees or changes that the time is divided by when sizes are compared
    double goal = 0;      ///< the largest ratio wanted
    double weight = 1;    ///< floors that the work is compared with
    double scaleGoal = 0; ///< the largest growth of the time per unit wanted from the first size to the last; 0: none
    std::function<void(benchmark::State&)> floor;
    std::function<void(benchmark::State&)> run;
};

/// What is measured: the sizes of the table, or tiny ones that only prove that everything runs.
struct Sizes {
    bool tiny = false;
    std::size_t Of(std::size_t size) const { return tiny ? 100 + size / 500 : size; }
};

using Measures = std::vector<Measure>;

void AddStoreMeasures(Measures& measures, const Sizes& sizes);  ///< reading, editing, lists
void AddSeriesMeasures(Measures& measures, const Sizes& sizes); ///< whole trees
void AddPullMeasures(Measures& measures, const Sizes& sizes);
void AddMergeMeasures(Measures& measures, const Sizes& sizes);
void AddUploadMeasures(Measures& measures, const Sizes& sizes);

/// Gives the host its categories, and a component database of 5,000 components.
void PrepareComponents();

/// Throws where something that a benchmark relies on did not happen.
void Require(bool done, const char* what);

} // namespace tolm::bench
