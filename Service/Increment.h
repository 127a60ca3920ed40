#pragma once

#include <cstdint>
#include <string>

namespace soci {
class session;
}

namespace tolm::service {

/// What a client needs that stands at the version `since`, as the JSON text of {"add": ..., "del": ...}. Below 1 the
/// client has nothing, and this is everything.
///
/// - "del" always has "ConfigTree"; other tables only when they have rows.
/// - "del" holds the rows that stood at `since` and do not stand so now, whole; and those, in their last state, whose
/// id
///   came after it and is gone again. A row whose id is gone bears the number "version", in which it went.
/// - "add" holds the rows that stand now and came or changed after `since`. Each of a tracked table stands in "del" as
///   well, so that a client that has it already does not take it for new; not on a full load.
/// - An increment without any "ConfigTree" row would be passed over with all other content in it: it then has one in
///   "add" of a group that no client knows.
std::string MakeIncrement(soci::session& session, const std::string& projectId, std::int64_t since);

/// The rows that stand, as the JSON text of an object with an array for each table that has some.
std::string MakeStandingRows(soci::session& session, const std::string& projectId);

} // namespace tolm::service
