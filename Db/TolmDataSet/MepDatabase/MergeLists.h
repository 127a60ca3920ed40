#pragma once

#include "TolmDataSet/MepEnums.h"

#include <cpprest/json.h>

#include <map>
#include <string>
#include <vector>

/// What an increment ({"add": {table: rows}, "del": {table: rows}}) changes, as lists of ids. A table that is missing
/// or no array has no rows.
namespace tolm {

/// Asks the cloud for what changed since a version. False when it does not say, which the user hears of, and when
/// nothing changed. An answer without either half raises the JSON library's "Key not found".
bool GetCloudAddAndDelData(wstring projectId, int version, web::json::value& add, web::json::value& del);

/// The rows of a table; null when there are none.
const web::json::array* RowsOf(const web::json::value& tables, const wstring& table);

/// The value of a field, null for a missing one, which is reported. True when it is something else than null.
bool GetJsonValueAtField(const web::json::value& element, wstring field, web::json::value& out);

/// The ids that the table's rows add, delete and, standing in both, modify, in the order of the rows and as often as
/// they stand there. A row without an id is reported and does not count. True.
bool GetCloudChangedIdLists(const web::json::value& add, const web::json::value& del, wstring key,
                            std::vector<wstring>& cloudAdded, std::vector<wstring>& cloudDeleted,
                            std::vector<wstring>& cloudModified);

/// The same of "ConfigTree", by "groupName", which is that of the first row with the id, additions before deletions;
/// an id without one is left out. False when nothing in "ConfigTree" changed.
bool GetCloudChangedConfigTreeIdLists(const web::json::value& add, const web::json::value& del,
                                      std::map<wstring, std::vector<wstring>>& added,
                                      std::map<wstring, std::vector<wstring>>& deleted,
                                      std::map<wstring, std::vector<wstring>>& modified);

} // namespace tolm
