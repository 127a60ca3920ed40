#include "Bench/ProjectGenerator.h"

#include <CLI/CLI.hpp>

#include <fstream>
#include <iostream>
#include <stdexcept>

namespace {

constexpr int kFailure = 1;
constexpr int kWrongUse = 2;

struct Options {
    tolm::bench::GeneratorSettings settings;
    std::string out;
    std::string changeOut;
};

void WriteFile(const std::string& path, const std::string& text) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << text;
    file.close();
    if (!file)
        throw std::runtime_error("the file \"" + path + "\" cannot be written");
}

void AddOptions(CLI::App& app, Options& options) {
    app.add_option("--rows", options.settings.rows, "rows in all tables together")
        ->check(CLI::Range(1, 10'000'000))
        ->capture_default_str();
    app.add_option("--seed", options.settings.seed, "the same seed gives the same files")->capture_default_str();
    app.add_option("--out", options.out, "project file to write");
    auto* percent =
        app.add_option("--change", options.settings.changedPercent, "percent of the rows that a change touches")
            ->check(CLI::Range(0.0, 100.0));
    app.add_option("--change-out", options.changeOut, "change file to write")->needs(percent);
    app.footer(
        "Example:\n  tolm-generate --rows 50000 --seed 1 --out project.json --change 1 --change-out change.json");
}

int Generate(const Options& options) {
    try {
        if (!options.out.empty())
            WriteFile(options.out, tolm::bench::GenerateProject(options.settings));
        if (!options.changeOut.empty())
            WriteFile(options.changeOut, tolm::bench::GenerateChange(options.settings));
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "tolm-generate: " << error.what() << '\n';
        return kFailure;
    }
}

} // namespace

int main(int argc, char** argv) {
    CLI::App app("Makes the settings of a project of any size, and a change to them.", "tolm-generate");
    Options options;
    AddOptions(app, options);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : kWrongUse;
    }
    if (options.out.empty() && options.changeOut.empty()) {
        std::cerr << "tolm-generate: --out or --change-out says what to write\n";
        return kWrongUse;
    }
    return Generate(options);
}
