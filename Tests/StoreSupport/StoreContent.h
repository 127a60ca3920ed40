#pragma once

#include "Host/HostTypes.h"
#include "Vorn/Files.h"

#include <cstddef>
#include <map>
#include <string>
#include <string_view>

namespace tolmtest {

/// What a dataset holds, as facts that two of them can be compared by: "PSI/id/Name" to "'DN sizes'". The order of the
/// records is no fact. Ids that are made locally (those of connection series and of the materials of ducts) are told
/// by the record that owns them: "COS/of id/ConnectionType".
using Facts = std::map<std::string, std::string>;

std::string TextFact(std::string_view text);
std::string NumberFact(double number);
std::string BytesFact(std::string_view bytes);
/// All fields of a combined product but its id and category.
std::string CombinedProductFact(const tolm::TolmCombinedProduct& product);

/// Every record of a store with every attribute that it has, read with plain SQLite; "PSI/id" alone says that the
/// record is there.
Facts StoreFacts(const std::wstring& path);
/// "combined/category/id" of each combined product.
Facts CombinedProductFacts(const std::wstring& path);
/// "file/name" of each file in a folder, its bytes in base64; none when there is no folder.
Facts FileFacts(const std::wstring& folder);

/// What one has and the other has not, line by line; empty when both are the same.
std::string Difference(const Facts& expected, const Facts& actual);

} // namespace tolmtest
