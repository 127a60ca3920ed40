#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace soci {
class session;
}

namespace tolm::service {

/// Who calls, and for which project: one token belongs to one dataset in one process.
struct Caller {
    std::string tokenHash;
    std::string projectId;
};

/// An upload that was taken and whose version the caller has not asked for since.
struct TakenUpload {
    std::int64_t version = 0;
    std::string bodyHash;
};

/// What the service remembers of a caller, as the transaction sees it.
std::optional<std::int64_t> ReadTold(soci::session& session, const Caller& caller);
void WriteTold(soci::session& session, const Caller& caller, std::int64_t version);
/// Moves the told version along if it is the older of these two.
void MoveTold(soci::session& session, const Caller& caller, std::int64_t older, std::int64_t newer);

std::optional<TakenUpload> ReadTakenUpload(soci::session& session, const Caller& caller);
void WriteTakenUpload(soci::session& session, const Caller& caller, const TakenUpload& taken);
void DropTakenUpload(soci::session& session, const Caller& caller);

} // namespace tolm::service
