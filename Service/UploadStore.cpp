#include "Service/UploadStore.h"

#include "Service/Answer.h"
#include "Service/Database.h"
#include "Service/LostVersions.h"
#include "Service/RowVersions.h"

#include <soci/soci.h>

namespace tolm::service {
namespace {

/// Most queries find nothing new and need no write.
bool IsToldAlready(soci::session& session, const Caller& caller, std::int64_t version) {
    return ReadTold(session, caller) == version && !ReadTakenUpload(session, caller);
}

std::int64_t TellAnew(soci::session& session, const Caller& caller) {
    const auto state = ReadProject(session, caller.projectId);
    const auto taken = ReadTakenUpload(session, caller);
    const auto version = taken ? taken->version : state.version;
    WriteTold(session, caller, version);
    DropTakenUpload(session, caller);
    return version;
}

std::int64_t TakeUpload(soci::session& session, const Caller& caller, const UploadPatch& patch) {
    const auto state = LockProject(session, caller.projectId);
    if (patch.change.put.empty()) // rows are taken as a project's first ones
        RefuseNeverFilled(state);
    const auto taken = ReadTakenUpload(session, caller);
    if (taken && taken->bodyHash == patch.bodyHash)
        return taken->version;
    if (state.version >= 1)
        RefuseAhead(session, caller.projectId, state.version, patch.version);
    if (state.version != patch.version && state.version != ReadTold(session, caller))
        throw Refusal(Answer::Busy);
    const auto version = MakeVersion(session, caller.projectId, state, patch.change);
    WriteTakenUpload(session, caller, {version, patch.bodyHash});
    return version;
}

} // namespace

std::int64_t UploadStore::TellVersion(const Caller& caller) {
    std::int64_t version = 0;
    bool told = false;
    m_database.Read([&](soci::session& session) {
        version = ReadProject(session, caller.projectId).version;
        told = IsToldAlready(session, caller, version);
    });
    if (!told)
        m_database.Write([&](soci::session& session) { version = TellAnew(session, caller); });
    return version;
}

std::int64_t UploadStore::Upload(const Caller& caller, const UploadPatch& patch) {
    std::int64_t version = 0;
    const bool alone = m_database.TryWrite(
        caller.projectId, [&](soci::session& session) { version = TakeUpload(session, caller, patch); });
    if (!alone)
        throw Refusal(Answer::Busy, "another upload of this project is under way");
    return version;
}

std::int64_t UploadStore::ApplyList(const Caller& caller, const SettingChange& change) {
    std::int64_t version = 0;
    m_database.Write([&](soci::session& session) {
        const auto state = LockProject(session, caller.projectId);
        RefuseNeverFilled(state);
        version = MakeVersion(session, caller.projectId, state, change);
        MoveTold(session, caller, state.version, version);
    });
    return version;
}

} // namespace tolm::service
