#include "Bench/Table.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <iostream>
#include <stdexcept>

namespace tolm::bench {
namespace {

/// Takes the time of one iteration out of a run, and nothing else.
class Taker : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context&) override { return true; }
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const auto& run : runs) {
            if (run.error_occurred)
                throw std::runtime_error(run.benchmark_name() + ": " + run.error_message);
            seconds = run.real_accumulated_time / static_cast<double>(run.iterations);
        }
    }
    double seconds = 0;
};

std::string NameOf(const Measure& measure, const char* side) {
    return measure.work + " (" + measure.size + ") " + side;
}

/// A name as a regular expression that nothing else matches.
std::string Exactly(const std::string& name) {
    std::string expression = "^";
    for (const char c : name) {
        const bool isPlain = std::isalnum(static_cast<unsigned char>(c)) != 0 || c == ' ' || c == ',' || c == '%';
        expression += isPlain ? std::string(1, c) : std::string("\\") + c;
    }
    return expression + "(/.*)?$";
}

double SecondsOf(const std::string& name) {
    Taker taker;
    if (benchmark::RunSpecifiedBenchmarks(&taker, Exactly(name)) != 1)
        throw std::runtime_error(name + ": not one benchmark");
    return taker.seconds;
}

std::string Number(double value, const char* format) {
    char text[64];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

std::string Time(double seconds) {
    if (seconds < 1e-3)
        return Number(seconds * 1e6, "%.0f µs");
    return Number(seconds * 1e3, seconds < 0.1 ? "%.2f ms" : "%.0f ms");
}

std::string Range(const Spread& spread) {
    return Number(spread.least, "%.2f") + " to " + Number(spread.most, "%.2f");
}

void PrintLine(std::ostream& out, const Outcome& outcome) {
    const auto& measure = *outcome.measure;
    const Spread ratio = outcome.Ratio();
    out << "| " << measure.work << " | " << measure.size << " | " << Time(outcome.Floor().median * measure.weight)
        << " | " << Time(outcome.Run().median) << " | " << Number(ratio.median, "%.2f") << " | " << Range(ratio)
        << " | " << Number(measure.goal, "%.2g") << " | " << (ratio.median <= measure.goal ? "met" : "missed")
        << " |\n";
}

using Works = std::vector<std::vector<const Outcome*>>;

/// The outcomes of works that were measured at several sizes, in the order of the table.
Works WorksOfManySizes(const std::vector<Outcome>& outcomes) {
    Works works;
    for (const auto& outcome : outcomes) {
        if (works.empty() || works.back().front()->measure->work != outcome.measure->work)
            works.emplace_back();
        works.back().push_back(&outcome);
    }
    std::erase_if(works, [](const auto& work) { return work.size() < 2; });
    return works;
}

double PerUnit(const Outcome& outcome) {
    return outcome.Run().median / outcome.measure->units;
}

} // namespace

Spread SpreadOf(std::vector<double> values) {
    if (values.empty())
        return {};
    std::ranges::sort(values);
    const std::size_t middle = values.size() / 2;
    const double median = values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
    return {median, values.front(), values.back()};
}

Spread Outcome::Ratio() const {
    std::vector<double> ratios;
    for (std::size_t i = 0; i < runs.size(); ++i)
        ratios.push_back(runs[i] / (measure->weight * floors[i]));
    return SpreadOf(ratios);
}

void Register(const Measures& measures) {
    for (const auto& measure : measures) {
        benchmark::RegisterBenchmark(NameOf(measure, "floor").c_str(), measure.floor)->UseRealTime();
        benchmark::RegisterBenchmark(NameOf(measure, "work").c_str(), measure.run)->UseRealTime();
    }
}

std::vector<Outcome> RunInTurns(const Measures& measures, int rounds) {
    std::vector<Outcome> outcomes;
    for (const auto& measure : measures)
        outcomes.push_back({&measure, {}, {}});
    for (int round = 0; round < rounds; ++round) {
        for (auto& outcome : outcomes) {
            outcome.floors.push_back(SecondsOf(NameOf(*outcome.measure, "floor")));
            outcome.runs.push_back(SecondsOf(NameOf(*outcome.measure, "work")));
            std::cerr << '.' << std::flush;
        }
    }
    std::cerr << '\n';
    return outcomes;
}

void PrintTable(std::ostream& out, const std::vector<Outcome>& outcomes) {
    out << "| Work | Size | Floor | Work | Ratio | Range | Goal | |\n|---|---|---|---|---|---|---|---|\n";
    for (const auto& outcome : outcomes)
        PrintLine(out, outcome);
    out << "\n| Growth of the time per unit | From | To | Factor | Goal | |\n|---|---|---|---|---|---|\n";
    for (const auto& work : WorksOfManySizes(outcomes)) {
        const Measure& measure = *work.front()->measure;
        const double factor = PerUnit(*work.back()) / PerUnit(*work.front());
        out << "| " << measure.work << " | " << measure.size << " | " << work.back()->measure->size << " | "
            << Number(factor, "%.2f") << " | ";
        if (measure.scaleGoal > 0)
            out << Number(measure.scaleGoal, "%.2f") << " | " << (factor <= measure.scaleGoal ? "met" : "missed");
        else
            out << " | ";
        out << " |\n";
    }
}

} // namespace tolm::bench
