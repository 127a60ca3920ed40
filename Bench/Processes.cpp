// What has to be measured in a process of its own: peak memory, and the loading of the library.
#include "Bench/BareHttp.h"
#include "Bench/Table.h"
#include "Bench/World.h"
#include "Host/Session.h"
#include "Vorn/Text.h"

#include <array>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <unistd.h>

namespace tolm::bench {
namespace {

constexpr const char* kMemory = "--peak-memory";

std::string OutputOf(const std::string& command) {
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
    Require(pipe != nullptr, "a process does not start");
    std::string output;
    std::array<char, 256> text{};
    while (std::fgets(text.data(), static_cast<int>(text.size()), pipe.get()) != nullptr)
        output += text.data();
    return output;
}

/// The most memory that this process ever held, in MB.
double PeakMegabytes() {
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line)) {
        if (line.starts_with("VmHWM:"))
            return std::stod(line.substr(6)) / 1024;
    }
    throw std::runtime_error("the peak memory is not known");
}

struct Arguments {
    std::string side;
    std::string address;
    std::string project;
    std::string token;
    std::string reference; ///< folder of a dataset at the version that is pulled
    std::string target;    ///< folder that is not there yet
};

/// Inserts the rows of one file into another without holding them.
void CopyRows(const fs::path& source, const fs::path& target) {
    const auto schema = TextsOf(source.string(), "SELECT sql FROM sqlite_schema WHERE sql NOT NULL");
    const auto tables = TextsOf(source.string(), "SELECT name FROM sqlite_schema WHERE type='table' AND name NOT "
                                                 "LIKE 'sqlite%'");
    const auto database = OpenBare(target.string(), SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
    ExecuteBare(database.get(), "ATTACH '" + source.string() + "' AS source;BEGIN EXCLUSIVE");
    for (const auto& sql : schema)
        ExecuteBare(database.get(), sql);
    for (const auto& name : tables)
        ExecuteBare(database.get(), "INSERT INTO main.\"" + name + "\" SELECT * FROM source.\"" + name + "\"");
    ExecuteBare(database.get(), "COMMIT");
}

void PullFloor(const Arguments& arguments) {
    const DatasetFiles source{arguments.reference};
    const DatasetFiles target{arguments.target};
    fs::create_directories(target.folder);
    const auto tree =
        BareDownload(arguments.address, "/api/DownloadVersion/" + arguments.project + "/0", arguments.token);
    CopyRows(source.Store(), target.Store());
    CopyRows(source.Combined(), target.Combined());
    Require(tree != nullptr, "nothing was downloaded");
}

void PullWork(const Arguments& arguments) {
    CollaborationProjectSettingForPS::Settings settings;
    settings.httpServer = vorn::StringUtil::ToWString(arguments.address);
    settings.workingProjectId = vorn::StringUtil::ToWString(arguments.project);
    settings.workingDatasetId = L"workunit";
    settings.requestTimeOut = 300'000'000;
    CollaborationProjectSettingForPS::Open(settings);
    TolmUserSessionUtils::SetUser(L"bench", vorn::StringUtil::ToWString(arguments.token));
    fs::create_directories(arguments.target);
    DatasetFiles{arguments.target}.Pull();
}

double MegabytesOf(const char* side, const World& world) {
    const DatasetFiles scratch = world.Scratch("memory");
    scratch.Remove();
    std::string command = "/proc/" + std::to_string(getpid()) + "/exe " + kMemory + " " + side;
    for (const auto& argument :
         {Served().Address(), world.Project(), Served().Token(), world.New().folder.string(), scratch.folder.string()})
        command += " " + argument;
    return std::stod(OutputOf(command));
}

void PrintMemory(std::ostream& out, const Sizes& sizes, int rounds) {
    const World& world = WorldOf(sizes.Of(50'000));
    std::vector<double> floors;
    std::vector<double> runs;
    std::vector<double> ratios;
    for (int i = 0; i < rounds; ++i) {
        floors.push_back(MegabytesOf("floor", world));
        runs.push_back(MegabytesOf("work", world));
        ratios.push_back(runs.back() / floors.back());
    }
    const Spread ratio = SpreadOf(ratios);
    char line[200];
    std::snprintf(line, sizeof line,
                  "| peak memory of a full pull | 50000 | %.0f MB | %.0f MB | %.2f | %.2f to %.2f | 1.3 | %s |\n",
                  SpreadOf(floors).median, SpreadOf(runs).median, ratio.median, ratio.least, ratio.most,
                  ratio.median <= 1.3 ? "met" : "missed");
    out << line;
}

/// The probe prints milliseconds, threads and open files that the loading brought.
void PrintLoading(std::ostream& out, int rounds) {
    std::vector<double> times;
    int threads = 0;
    int files = 0;
    for (int i = 0; i < 5 * rounds; ++i) {
        double milliseconds = 0;
        const std::string output = OutputOf(std::string(TOLM_LOAD_PROBE) + " " + TOLM_DATASET_LIBRARY);
        Require(std::sscanf(output.c_str(), "%lf %d %d", &milliseconds, &threads, &files) == 3,
                "no answer of the probe");
        times.push_back(milliseconds);
    }
    const Spread time = SpreadOf(times);
    char line[200];
    std::snprintf(line, sizeof line,
                  "| loading the library | | | %.2f ms, %d threads, %d files | | %.2f to %.2f ms | 5 ms, 0, 0 | %s |\n",
                  time.median, threads, files, time.least, time.most,
                  time.median < 5 && threads == 0 && files == 0 ? "met" : "missed");
    out << line;
}

} // namespace

bool RunAsProcess(int argc, char** argv) {
    if (argc != 8 || std::strcmp(argv[1], kMemory) != 0)
        return false;
    const Arguments arguments{argv[2], argv[3], argv[4], argv[5], argv[6], argv[7]};
    (arguments.side == "floor" ? PullFloor : PullWork)(arguments);
    std::cout << PeakMegabytes() << '\n';
    return true;
}

void PrintProcesses(std::ostream& out, const Sizes& sizes, int rounds) {
    out << "\n| Work | Size | Floor | Work | Ratio | Range | Goal | |\n|---|---|---|---|---|---|---|---|\n";
    PrintMemory(out, sizes, rounds);
    PrintLoading(out, rounds);
}

} // namespace tolm::bench
