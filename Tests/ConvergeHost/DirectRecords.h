#pragma once

#include "TolmDataSet/TolmDataSet.h"

#include <nlohmann/json.hpp>

namespace tolmtest {

// Circuit templates and combined products go to the service at once: {"id", "mark"}, with "remove" for a removal and
// "category" for a product. The mark stands in the cross-section of a template and the spacing of a product.

/// The library tells the user when the service took a template; it returns nothing.
void DoTemplate(tolm::ITolmDataset& dataset, const nlohmann::json& edit);
/// True when the service took the product or its removal.
bool DoProduct(tolm::ITolmDataset& dataset, const nlohmann::json& edit);

} // namespace tolmtest
