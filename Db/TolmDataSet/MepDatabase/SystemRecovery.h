#pragma once

namespace web::json {
class value;
} // namespace web::json

namespace tolm {

/// Notes in the session which system types this work unit needs back: the "dataId" of each change whose "dataStatus"
/// is the integer 1. The list of before is cleared. A change with a status but without an id raises the JSON
/// library's "Key not found".
void SyncSystemChangeData(web::json::value changes);

} // namespace tolm
