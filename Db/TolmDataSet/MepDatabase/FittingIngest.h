#pragma once

#include "MepDatabase/PackedLists.h"
#include "TolmDataSet/MepEnums.h"

#include <cstddef>
#include <vector>

namespace web::json {
class value;
} // namespace web::json

namespace tolm {

/// Size of one packed fitting.
inline constexpr std::size_t kFittingEntrySize = 106;

/// Packs the products of one routing rule into `rows`, which has room for a whole list of 300 entries; `count` tells
/// how many there are. `categoryId` is found with the first product whose category is known, unless it is found
/// already, and stands for all that follow. False when no row came of it. A product that does not fit, or more of
/// them than a list holds, raises an exception.
bool GetFittingProductsOfOneRuleType(int ruleType, std::vector<web::json::value> products, wstring& categoryId,
                                     char* rows, int& count);

} // namespace tolm
