#pragma once

#include "Bench/Measure.h"

#include <iosfwd>
#include <string>
#include <vector>

namespace tolm::bench {

/// Middle and ends of what was measured.
struct Spread {
    double median = 0;
    double least = 0;
    double most = 0;
};
Spread SpreadOf(std::vector<double> values);

/// A measure's results, one of each round.
struct Outcome {
    const Measure* measure = nullptr;
    std::vector<double> floors; ///< seconds
    std::vector<double> runs;

    Spread Floor() const { return SpreadOf(floors); }
    Spread Run() const { return SpreadOf(runs); }
    /// Of each round by itself, since rounds differ more than what stands beside each other in one.
    Spread Ratio() const;
};

/// Registers floor and work of each measure as benchmarks of their own.
void Register(const Measures& measures);

/// Runs all measures in turns, floor and work beside each other, so many times. A failure ends the process.
std::vector<Outcome> RunInTurns(const Measures& measures, int rounds);

/// The table in Markdown, and below it how works of several sizes grow.
void PrintTable(std::ostream& out, const std::vector<Outcome>& outcomes);

/// One drawing for each work of several sizes: time per unit of floor and work over the size.
void WritePlots(const std::string& folder, const std::vector<Outcome>& outcomes);

/// Peak memory of a full pull against that of its floor, and the loading of the library, each in a process of its own.
void PrintProcesses(std::ostream& out, const Sizes& sizes, int rounds);
/// What such a process does; false when the arguments ask for none.
bool RunAsProcess(int argc, char** argv);

} // namespace tolm::bench
