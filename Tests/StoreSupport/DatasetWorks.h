#pragma once

#include <ostream>
#include <span>
#include <string>

namespace tolmtest {

/// Where an operation finds the dataset and its companions.
struct WorkPlace {
    std::wstring path;
    std::wstring combinedPath;
    std::wstring binaryFolder;
};

/// One operation on a dataset, for runs in which its files fail or the power is cut. A process of its own can run it
/// too: it knows it by its name, and opens the session before. Returns what the operation returns.
struct DatasetWork {
    const char* name;
    bool (*run)(const WorkPlace& place);
};

std::span<const DatasetWork> DatasetWorks();
/// Puts a category service in place that knows nothing; combined products are not read without one.
void UseUnknowingCategories();

/// The operation of this name; throws where there is none.
const DatasetWork& FindDatasetWork(const std::string& name);

inline void PrintTo(const DatasetWork& work, std::ostream* out) {
    *out << work.name;
}

} // namespace tolmtest
