// The benchmarks. Without arguments of its own it is an ordinary Google Benchmark program.
//
//   tolm-bench --table [--rounds=N] [--only=TEXT] [--largest=N] [--plots=FOLDER] [--tiny]
//
// runs floors and works in turns and prints the table of ratios. --only takes the works whose names hold the text,
// --largest those of at most this size; --tiny takes sizes that only prove that everything runs.
#include "Bench/Table.h"
#include "Vorn/DebugMessage.h"
#include "Vorn/Log.h"
#include "Vorn/Notification.h"
#include "Vorn/Text.h"

#include <cstdlib>
#include <iostream>
#include <optional>
#include <string_view>

namespace {

using namespace tolm::bench;

struct Options {
    bool table = false;
    bool tiny = false;
    int rounds = 7;
    std::size_t largest = 50'000;
    std::string only;
    std::string plots;
};

std::optional<std::string> ValueOf(std::string_view argument, std::string_view name) {
    if (!argument.starts_with(name))
        return std::nullopt;
    return std::string(argument.substr(name.size()));
}

/// Takes the options of this program out of the arguments.
Options TakeOptions(int& argc, char** argv) {
    Options options;
    int kept = 1;
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        if (argument == "--table")
            options.table = true;
        else if (argument == "--tiny")
            options.tiny = true;
        else if (const auto rounds = ValueOf(argument, "--rounds="))
            options.rounds = std::stoi(*rounds);
        else if (const auto only = ValueOf(argument, "--only="))
            options.only = *only;
        else if (const auto largest = ValueOf(argument, "--largest="))
            options.largest = std::stoul(*largest);
        else if (const auto plots = ValueOf(argument, "--plots="))
            options.plots = *plots;
        else
            argv[kept++] = argv[i];
    }
    argc = kept;
    return options;
}

Measures MeasuresFor(const Options& options) {
    Measures measures;
    const Sizes sizes{options.tiny};
    for (auto* add : {AddStoreMeasures, AddSeriesMeasures, AddPullMeasures, AddMergeMeasures, AddUploadMeasures})
        add(measures, sizes);
    std::erase_if(measures, [&](const Measure& measure) {
        return measure.work.find(options.only) == std::string::npos || std::stoul(measure.size) > options.largest;
    });
    return measures;
}

/// What is told to a user goes nowhere; a fault ends the process, since what comes after it would measure nothing.
void Quieten() {
    vorn::NotificationUtils::SetHandler([](auto&&...) {});
    vorn::DebugMessageMgr::GetDebugMessageMgr()->SetHandler([](const vorn::DebugWarning& warning) {
        std::cerr << warning.function << ": " << vorn::StringUtil::ToString(warning.message) << '\n';
        std::_Exit(1);
    });
}

void PrintAll(const Options& options, const Measures& measures) {
    const auto outcomes = RunInTurns(measures, options.rounds);
    PrintTable(std::cout, outcomes);
    std::cout.flush();
    if (options.only.empty() || std::string_view("peak memory, loading").find(options.only) != std::string_view::npos)
        PrintProcesses(std::cout, {options.tiny}, options.rounds);
    if (!options.plots.empty())
        WritePlots(options.plots, outcomes);
}

} // namespace

int main(int argc, char** argv) {
    try {
        Quieten();
        PrepareComponents();
        if (RunAsProcess(argc, argv))
            return 0;
        const Options options = TakeOptions(argc, argv);
        const Measures measures = MeasuresFor(options);
        benchmark::Initialize(&argc, argv);
        if (benchmark::ReportUnrecognizedArguments(argc, argv))
            return 2;
        Register(measures);
        if (options.table)
            PrintAll(options, measures);
        else
            benchmark::RunSpecifiedBenchmarks();
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "tolm-bench: " << error.what() << '\n';
        return 1;
    }
}
