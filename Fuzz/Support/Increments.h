#pragma once

#include "TolmDataSet/MepEnums.h"

#include <string>
#include <vector>

namespace web::json {
class value;
} // namespace web::json

namespace tolmfuzz {

using tolm::wstring;

/// Where a dataset and its companions stand.
struct DatasetPlace {
    wstring data;
    wstring status;
    wstring products;
    wstring binaryFolder;
};

/// The increments of an input; none where it is none.
std::vector<web::json::value> ParseIncrements(const std::string& text);

/// The version from which an increment leads on: its "localVersion", 0 without one.
int LocalVersionOf(const web::json::value& increment);

/// Applies the increment to the data store in one open, as a refresh does it, and closes the store. What spoils an
/// increment as a whole is passed over as a refresh does, so that the store keeps what was applied until then.
void Refresh(const DatasetPlace& place, web::json::value increment);

/// Merges the increment into both stores, table by table.
void Merge(const DatasetPlace& place, const web::json::value& increment);

} // namespace tolmfuzz
