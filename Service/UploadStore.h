#pragma once

#include "Service/ToldVersions.h"
#include "Service/UploadBody.h"

#include <cstdint>

namespace tolm::service {

class Database;

/// What clients do to the projects, and what they were told of them, so that no upload goes over data that its sender
/// has not seen. Any thread may use it. A call that throws changed nothing: a `Refusal` tells why, anything else is a
/// fault of the database.
class UploadStore {
public:
    explicit UploadStore(Database& database) : m_database(database) {}

    /// The version that the caller has to be told: the one that its upload made, if it has not asked since, else the
    /// project's; -1 for a project that was never filled. It is remembered.
    std::int64_t TellVersion(const Caller& caller);
    /// Takes a patch in as one version, or as none if it alters nothing. Refused (Busy) unless the project stands at
    /// the version that the caller was told last or at the patch's own, and while another upload of the project is
    /// under way. The caller's last patch once more, before it asked for the version, is answered as it was then.
    /// Returns the version whose content the caller has then.
    std::int64_t Upload(const Caller& caller, const UploadPatch& patch);
    /// Takes one list of the caller in as one version, or as none if it alters nothing. If the caller was told the
    /// project's version, it counts as told of this one too. Returns the version that the project has then.
    std::int64_t ApplyList(const Caller& caller, const SettingChange& change);

private:
    Database& m_database;
};

} // namespace tolm::service
