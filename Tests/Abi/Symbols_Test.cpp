#include "Abi/RunCommand.h"
#include "Support/Golden.h"

#include <gtest/gtest.h>

#include <set>
#include <sstream>

namespace {

using namespace tolmtest;

/// One exported symbol: what it is, in the letters of nm, and its name.
struct Symbol {
    char kind;
    std::string name;
};

std::vector<Symbol> ExportedBy(const std::string& library) {
    std::vector<Symbol> symbols;
    std::istringstream lines(OutputOf(std::string(TOLM_NM) + " -DC --defined-only " + library));
    for (std::string line; std::getline(lines, line);)
        symbols.push_back({line.at(17), line.substr(19)});
    return symbols;
}

/// Weak functions are instantiations that depend on what the optimizer leaves over; nobody binds to them. Whether data
/// is weak depends on the compiler.
std::string StrongSymbols(const std::string& library) {
    std::set<std::string> lines;
    for (const auto& [kind, name] : ExportedBy(library)) {
        if (kind != 'W')
            lines.insert((kind == 'T' ? "function " : "data ") + name + "\n");
    }
    std::string text;
    for (const auto& line : lines)
        text += line;
    return text;
}

TEST(Abi, TheDatasetExportsTheSymbolsOfItsGoldenFile) {
    ExpectGolden("Abi/TolmDataSet.txt", StrongSymbols(TOLM_DATASET_LIBRARY), "The binary interface");
}

TEST(Abi, ThePlatformExportsTheSymbolsOfItsGoldenFile) {
    ExpectGolden("Abi/TolmPlatform.txt", StrongSymbols(TOLM_PLATFORM_LIBRARY), "The binary interface");
}

TEST(Abi, NoSymbolKeepsALibraryFromBeingUnloaded) {
    for (const char* library : {TOLM_DATASET_LIBRARY, TOLM_PLATFORM_LIBRARY}) {
        for (const auto& [kind, name] : ExportedBy(library))
            EXPECT_NE(kind, 'u') << name << " is unique in the process";
    }
}

TEST(Abi, EverySymbolIsOfTheProject) {
    for (const char* library : {TOLM_DATASET_LIBRARY, TOLM_PLATFORM_LIBRARY}) {
        for (const auto& [kind, name] : ExportedBy(library)) {
            const bool ours = name.find("tolm::") != std::string::npos || name.find("vorn::") != std::string::npos ||
                              name.starts_with("base64_") || name.ends_with("InitializeAddin") ||
                              name.starts_with("CQbase::") || name.starts_with("CQbaseWorkingCopies::") ||
                              name.starts_with("CWsz::") || name.starts_with("CWszArray::") ||
                              name.starts_with("CByteBuffer::") || name.starts_with("CFloatArray::");
            EXPECT_TRUE(ours) << kind << " " << name;
        }
    }
}

} // namespace
