#pragma once

#include <cstddef>
#include <string>

namespace tolmcli {

struct ImportCounts {
    std::size_t disciplines = 0;
    std::size_t categories = 0;
    std::size_t components = 0;
};

/// Reads disciplines, categories and components from a JSON file into the component database at `database`, all or
/// nothing. Throws Failure.
ImportCounts ImportComponents(const std::string& jsonFile, const std::wstring& database);

} // namespace tolmcli
