#pragma once

#include "StoreSupport/RefreshFixture.h"
#include "StoreSupport/SeriesFixture.h"
#include "Support/ScriptedServer.h"
#include "Support/TestSession.h"

#include <nlohmann/json.hpp>

#include <optional>
#include <string>
#include <vector>

namespace tolmtest {

inline const Notifications Uploaded{{0, L"修改专业配置成功！"}};

/// What changed of a record, as the status store has it.
enum Change : short { Created = 1, Edited = 2, Removed = 3 };

/// A dataset with local changes, a session, and a service that takes every upload unless a test says otherwise.
class UploadFixture : public SeriesFixture {
protected:
    void SetUp() override;
    void TearDown() override;

    bool Upload(bool writeTimePoint = false, vorn::IProgressReporter* progress = nullptr) {
        return util.SendModifiedDataToCloud(writeTimePoint, progress, path, ddq, components, false);
    }
    bool UploadTableByTable(bool writeTimePoint = false, vorn::IProgressReporter* progress = nullptr) {
        return util.SendModifiedDataToCloud(writeTimePoint, progress, path, ddq, components, true);
    }

    /// Puts a status record without a change behind it; a type or discipline that is not given is missing.
    void Note(const char* classCode, const wstring& id, Change change, std::optional<short> type = 1,
              std::optional<short> discipline = 2) const;
    /// Makes what was changed so far known to the cloud: no status store is left.
    void ForgetChanges() const { CQbase::removeStore(statusPath); }
    bool Store(const MaterialPtr& material) { return util.WriteMaterial(path, ddq, material.get()); }

    /// A record of each class, its id begins with `prefix`. Each names none of the others but the series, which has
    /// fittings.
    void StoreOfEachClass(const wstring& prefix, const wstring& name);

    /// What the last recovery took back in.
    std::vector<wstring>& Recovered() const;

    int Version() const;
    /// Requests whose path begins so, in their order.
    std::vector<RecordedRequest> Requests(const std::string& pathPrefix) const;
    /// The patch of the only upload.
    std::string PatchText() const;
    nlohmann::json Patch() const { return nlohmann::json::parse(PatchText()); }

    ScriptedServer server;
    TestSession session{server.Address()};
};

/// "ID" of each row, in order.
std::vector<std::string> IdsOf(const nlohmann::json& rows);

/// While it lives, this file cannot be removed.
class FileThatStays {
public:
    explicit FileThatStays(const wstring& path);
    ~FileThatStays();
    FileThatStays(const FileThatStays&) = delete;
    FileThatStays& operator=(const FileThatStays&) = delete;
};

/// Puts garbage over the page at which a table of the store begins.
void DamageTable(const wstring& path, const std::string& table);

} // namespace tolmtest
