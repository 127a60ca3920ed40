#include "MepDatabase/MepQbaseUtil.h"

#include "Host/Session.h"
#include "MepDatabase/FileHeader.h"
#include "MepDatabase/ModifiedData.h"
#include "MepDatabase/WireText.h"
#include "Vorn/DebugMessage.h"
#include "Vorn/Notification.h"
#include "Vorn/Text.h"

#include <cpprest/json.h>

#include <algorithm>
#include <set>
#include <type_traits>

namespace tolm {
namespace {

using Client = TolmProjectSettingHttpUtility;

/// "dataStatus" of system types that this upload removes, and of those that it brings back.
constexpr int kSystemTypesRemoved = 0;
constexpr int kSystemTypesRecovered = 1;

/// Where an upload goes.
struct Target {
    wstring projectId;
    wstring workunitId;
};

struct LessIgnoringCase {
    bool operator()(const wstring& a, const wstring& b) const { return vorn::StrICmp(a.c_str(), b.c_str()) < 0; }
};

/// The system types that the last recovery took back in; their ids compare without regard to case.
class RecoveredIds {
public:
    explicit RecoveredIds(const std::vector<wstring>& ids) : m_ids(ids.begin(), ids.end()) {}

    /// Moves the recovered ones out of the list.
    template <class Record>
    std::vector<std::shared_ptr<const Record>> TakeFrom(std::vector<std::shared_ptr<const Record>>& list) const {
        const auto first = std::stable_partition(list.begin(), list.end(),
                                                 [&](const auto& record) { return !m_ids.contains(record->GetId()); });
        std::vector<std::shared_ptr<const Record>> recovered(first, list.end());
        list.erase(first, list.end());
        return recovered;
    }

private:
    std::set<wstring, LessIgnoringCase> m_ids;
};

/// Tells a reporter after each class. With a reporter the step is 0, so that it hears 0 until the patch is sent.
class Steps {
public:
    explicit Steps(vorn::IProgressReporter* progress) : m_progress(progress), m_step(progress != nullptr ? 0 : 4) {}

    void Advance() {
        m_sum += m_step;
        Report(m_sum);
    }
    void Report(double percentage) {
        if (m_progress != nullptr)
            m_progress->ReportProgress(percentage);
    }

private:
    vorn::IProgressReporter* m_progress;
    double m_step;
    double m_sum = 0;
};

/// One list of the patch: tables of rows or of ids, and the next free place in the configuration tree.
struct PatchList {
    web::json::value tables;
    int index = 0;

    web::json::value Take() { return tables.is_null() ? web::json::value::object() : std::move(tables); }
};

/// The version in the header; 0 in a store without one.
int HeaderVersion(CQbase& qb) {
    long version = 0;
    if (FetchHeader(qb))
        qb.getLong(schema::kLocalVersion, version);
    return ClampToInt32(static_cast<double>(version));
}

/// Gathers all changes into the one value that is posted.
class Patch {
public:
    Patch(Client& client, Target target, ModifiedData& changes, Steps& steps, const std::vector<wstring>& recovered)
        : m_client(client), m_target(std::move(target)), m_changes(changes), m_steps(steps), m_recovered(recovered) {}

    /// The patch; a null where the changes could not be read. The service has heard of the removed system types then.
    web::json::value Make() {
        auto root = web::json::value::object();
        root["tolm_version"] = JsonText(TolmVersionUtils::GetProductVersion());
        root["version"] = web::json::value::number(HeaderVersion(*m_changes.Data()));
        root["force"] = web::json::value::number(1);
        root["userID"] = JsonText(m_client.UserId());
        AddCreated(root);
        AddEdited(root);
        return AddRemoved(root) ? std::move(root) : web::json::value();
    }

private:
    template <class Record>
    void Gather(const UploadClass<Record>& row, PatchList& list, typename UploadClass<Record>::List records,
                bool isCreated) {
        if (records.empty())
            return;
        if (row.gather != nullptr)
            (m_client.*row.gather)(list.tables, m_target.projectId, std::move(records), false, isCreated);
        else
            (m_client.*row.gatherConfigTree)(list.tables, list.index, m_target.projectId, std::move(records), false,
                                             isCreated);
    }

    template <class Record>
    void GatherCreated(const UploadClass<Record>& row, PatchList& created, PatchList& recovered) {
        auto records = m_changes.Records(row);
        if constexpr (std::is_same_v<Record, IProjectSettingSystemType>)
            Gather(row, recovered, m_recovered.TakeFrom(records), true);
        Gather(row, created, std::move(records), true);
        m_steps.Advance();
    }

    template <class Record> void GatherEdited(const UploadClass<Record>& row, PatchList& edited) {
        Gather(row, edited, m_changes.Records(row), false);
        m_steps.Advance();
    }

    void AddCreated(web::json::value& root) {
        PatchList created;
        PatchList recovered;
        m_changes.Select(ChangeStatus::Created);
        std::apply([&](const auto&... row) { (GatherCreated(row, created, recovered), ...); }, kUploadClasses);
        root["createList"] = created.Take();
        root["recoveryList"] = recovered.Take();
    }

    void AddEdited(web::json::value& root) {
        PatchList edited;
        m_changes.Select(ChangeStatus::Edited);
        std::apply([&](const auto&... row) { (GatherEdited(row, edited), ...); }, kUploadClasses);
        root["editList"] = edited.Take();
    }

    /// The service hears of removed system types only once all changes have been read.
    bool AddRemoved(web::json::value& root) {
        PatchList removed;
        m_changes.Select(ChangeStatus::Removed);
        const auto systemTypes = AddRemovedTables(removed, kRemovedSystemTypes);
        AddRemovedTables(removed, kRemovedSeries);
        for (const char* classCode : kRemovedConfigTreeClasses) {
            m_client.AddRemovedConfigTreeIds(removed.tables, removed.index, m_target.projectId,
                                             m_changes.RemovedIds(classCode), Client::ConfigTreeTable());
            m_steps.Advance();
        }
        root["removeList"] = removed.Take();
        if (!m_changes.IsWhole())
            return false;
        for (const auto& [table, ids] : systemTypes)
            m_client.SendUpdateSettingDataInfo(m_target.projectId, m_target.workunitId, ids, kSystemTypesRemoved);
        return true;
    }

    ModifiedData::IdsByTable AddRemovedTables(PatchList& removed, const RemovedClass& removedClass) {
        auto tables = m_changes.RemovedByTable(removedClass);
        for (const auto& [table, ids] : tables)
            m_client.AddRemovedDataIds(removed.tables, m_target.projectId, ids, table);
        m_steps.Advance();
        return tables;
    }

    Client& m_client;
    Target m_target;
    ModifiedData& m_changes;
    Steps& m_steps;
    RecoveredIds m_recovered;
};

/// Sends the changes class by class. A class is tried only while all before it went out; one without changes is passed
/// over.
class TableUpload {
public:
    TableUpload(Client& client, const wstring& projectId, ModifiedData& changes)
        : m_client(client), m_projectId(projectId), m_changes(changes) {}

    bool Send() { return SendRecords(ChangeStatus::Created) && SendRecords(ChangeStatus::Edited) && SendRemoved(); }

private:
    bool SendRecords(ChangeStatus status) {
        m_changes.Select(status);
        return std::apply([&](const auto&... row) { return (SendClass(row, status == ChangeStatus::Created) && ...); },
                          kUploadClasses);
    }

    template <class Record> bool SendClass(const UploadClass<Record>& row, bool isCreated) {
        auto records = m_changes.Records(row);
        return m_changes.IsWhole() &&
               (records.empty() || (m_client.*row.send)(m_projectId, std::move(records), true, isCreated));
    }

    bool SendRemoved() {
        m_changes.Select(ChangeStatus::Removed);
        return SendRemovedTables(kRemovedSystemTypes) && SendRemovedTables(kRemovedSeries) &&
               std::ranges::all_of(kRemovedConfigTreeClasses, [&](const char* classCode) {
                   return SendRemovedIds(m_changes.RemovedIds(classCode), Client::ConfigTreeTable());
               });
    }

    bool SendRemovedTables(const RemovedClass& removedClass) {
        return std::ranges::all_of(m_changes.RemovedByTable(removedClass),
                                   [&](const auto& table) { return SendRemovedIds(table.second, table.first); });
    }

    /// Nothing is sent for ids whose table has no name.
    bool SendRemovedIds(const std::vector<wstring>& ids, const wstring& table) {
        return m_changes.IsWhole() &&
               (ids.empty() || table.empty() || m_client.SendRemovedDataList(m_projectId, ids, table));
    }

    Client& m_client;
    const wstring& m_projectId;
    ModifiedData& m_changes;
};

void TellOfSuccess() {
    vorn::NotificationUtils::PostNotification(vorn::NotificationTypes::Success, L"修改专业配置成功！");
}

bool ReportUnless(bool saved, const CallSite& site) {
    if (!saved)
        site.Warn(L"saveRec 失败");
    return saved;
}

} // namespace

bool MepQbaseUtil::SendModifiedDataToCloud(bool writeTimePoint, vorn::IProgressReporter* progress,
                                           wstring datasetFilePath, wstring templateFilePath, wstring componentFilePath,
                                           bool tableByTable) {
    if (!tableByTable)
        return SendModifiedDataToCloud(writeTimePoint, progress, datasetFilePath, templateFilePath, componentFilePath);
    const auto* const settings = CollaborationProjectSettingForPS::Instance();
    if (settings == nullptr) {
        VORN_DEBUG_WARN(L"pCollaborationProjectSettingForPS为空");
        return false;
    }
    const wstring projectId = settings->GetWorkingProjectId();
    if (projectId.empty())
        return true;
    const CallSite site = TOLM_CALL_SITE;
    ModifiedData changes(site, datasetFilePath, templateFilePath, componentFilePath);
    if (const auto found = changes.Open(); found != ModifiedData::Found::Changes)
        return found == ModifiedData::Found::Nothing;
    auto& client = *Client::GetInstance();
    if (!TableUpload(client, projectId, changes).Send())
        return false;
    TellOfSuccess();
    int version = 0;
    const bool stamped =
        !client.GetVersion(projectId, version) || ReportUnless(StampVersion(*changes.Data(), version), site);
    return changes.Finish() && stamped;
}

bool MepQbaseUtil::SendModifiedDataToCloud(bool writeTimePoint, vorn::IProgressReporter* progress,
                                           wstring datasetFilePath, wstring templateFilePath,
                                           wstring componentFilePath) {
    return SendPatch(TOLM_CALL_SITE, writeTimePoint, progress, datasetFilePath, templateFilePath, componentFilePath) !=
           UploadOutcome::Failed;
}

UploadOutcome MepQbaseUtil::SendModifiedDataToCloud(const wstring& datasetFilePath, const wstring& templateFilePath,
                                                    const wstring& componentFilePath) {
    return SendPatch(TOLM_CALL_SITE, false, nullptr, datasetFilePath, templateFilePath, componentFilePath);
}

UploadOutcome MepQbaseUtil::SendPatch(const CallSite& site, bool writeTimePoint, vorn::IProgressReporter* progress,
                                      const wstring& datasetFilePath, const wstring& templateFilePath,
                                      const wstring& componentFilePath) {
    const auto* const settings = CollaborationProjectSettingForPS::Instance();
    if (settings == nullptr) {
        site.Warn(L"pCollaborationProjectSettingForPS为空");
        return UploadOutcome::Failed;
    }
    const Target target{settings->GetWorkingProjectId(), settings->GetWorkingDatasetId()};
    if (target.projectId.empty())
        return UploadOutcome::Nothing;
    ModifiedData changes(site, datasetFilePath, templateFilePath, componentFilePath);
    if (const auto found = changes.Open(); found != ModifiedData::Found::Changes)
        return found == ModifiedData::Found::Nothing ? UploadOutcome::Nothing : UploadOutcome::Failed;
    auto& client = *Client::GetInstance();
    Steps steps(progress);
    auto patch = Patch(client, target, changes, steps, m_recoveredSystemTypeIds).Make();
    if (patch.is_null())
        return UploadOutcome::Failed;
    int newVersion = 0;
    const bool sent = client.SendPatchDataEvent(target.projectId, std::move(patch), newVersion);
    steps.Report(80);
    if (!sent)
        return UploadOutcome::Failed;
    if (!m_recoveredSystemTypeIds.empty()) {
        client.SendUpdateSettingDataInfo(target.projectId, target.workunitId, m_recoveredSystemTypeIds,
                                         kSystemTypesRecovered);
        m_recoveredSystemTypeIds.clear();
    }
    TellOfSuccess();
    const bool stamped = !writeTimePoint || ReportUnless(!StampTimePoint(*changes.Data()).empty(), site);
    return changes.Finish() && stamped ? UploadOutcome::Sent : UploadOutcome::Failed;
}

} // namespace tolm
