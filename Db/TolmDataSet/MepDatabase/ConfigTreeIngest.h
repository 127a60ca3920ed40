#pragma once

#include <string>

class CQbase;

namespace web::json {
class object;
} // namespace web::json

/// Deletions of the cloud's "ConfigTree". Exceptions of the JSON library, a missing key among them, pass through.
namespace tolm {

/// Applies the deletions of `del["ConfigTree"]`, by each element's "groupName". Cable trays and names that nobody
/// knows are passed over.
void DeleteConfigTreeItems(const web::json::object& del, CQbase* qb);

/// Deletes what one element of a pipe group tells of: the material when its "parentID" is empty, else the size table.
void DeletePipeSizeTableItem(const web::json::object& element, CQbase& qb);

/// Deletes a duct size table together with its material, which no one else refers to.
void DeleteDuctSizeTable(const std::wstring& id, CQbase& qb);

} // namespace tolm
