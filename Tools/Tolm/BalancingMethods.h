#pragma once

#include "TolmDataSet/DataSetMethods.h"

#include <string>
#include <vector>

namespace tolmcli {

/// All balancing methods of a dataset in order of creation. The library lists those of one discipline, which a method
/// that was written by it does not have: these come with the discipline `None`. Throws Failure when the dataset cannot
/// be read.
std::vector<tolm::DataSetBalancingMethod> ReadBalancingMethods(const std::wstring& datasetPath);

} // namespace tolmcli
