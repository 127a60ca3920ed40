#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace tolm::bench {

/// Makes the settings of a project and a change to them: the same texts for the same numbers, on every machine.
struct GeneratorSettings {
    std::size_t rows = 1000; ///< rows in all tables together
    std::uint64_t seed = 1;
    double changedPercent = 0; ///< how many of them a change touches
};

/// Text of a project file with exactly so many rows, at least one of each table when there are 100 or more.
std::string GenerateProject(const GeneratorSettings& settings);

/// Text of a change file for the project of the same rows and seed: six of ten touched rows are edited, two are removed
/// (none that another row refers to), two come new.
std::string GenerateChange(const GeneratorSettings& settings);

} // namespace tolm::bench
