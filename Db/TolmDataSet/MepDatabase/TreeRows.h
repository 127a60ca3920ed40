#pragma once

#include <cstddef>

namespace web::json {
class value;
} // namespace web::json

namespace tolm {

/// Puts the rows of an encoded list into target["ConfigTree"], the first one at `index`, which moves on behind the
/// last. False when there is not one row for each record; nothing has changed then. The work grows with the rows, not
/// with what stands there already.
bool PutTreeRows(web::json::value& target, int& index, web::json::value encoded, std::size_t records);

} // namespace tolm
