#include "MepDatabase/MepQbaseUtil.h"
#include "MepDatabase/CallSite.h"
#include "MepDatabase/FileHeader.h"
#include "MepDatabase/JsonRead.h"
#include "MepDatabase/MepProjectSettingHttpUtility.h"
#include "MepDatabase/MergeFiles.h"
#include "MepDatabase/MergeLists.h"
#include "MepDatabase/MergeTables.h"
#include "MepDatabase/StoreFrame.h"
#include "MepDatabase/WorkUnit.h"
#include "Vorn/DebugMessage.h"
#include "Vorn/Notification.h"

#include <cpprest/json.h>

#include <optional>
#include <span>

namespace tolm {
namespace {

/// Throws where a half of the increment is none, or has no list under "ConfigTree", without which half of the tables
/// and all other content would pass for unchanged. Another table that is no list fails by itself.
void RequireTables(const web::json::value& half) {
    const auto* const rows = jsonread::Find(half.as_object(), TolmProjectSettingHttpUtility::ConfigTreeTable());
    if (rows != nullptr)
        static_cast<void>(rows->as_array());
}

} // namespace

bool GetCloudAddAndDelData(wstring projectId, int version, web::json::value& add, web::json::value& del) {
    web::json::value root;
    if (!TolmProjectSettingHttpUtility::GetInstance()->GetCloudData(projectId, version, root)) {
        vorn::NotificationUtils::PostNotification(vorn::NotificationTypes::Failure, L"获取云端数据失败！");
        return false;
    }
    add = std::move(root.at("add"));
    del = std::move(root.at("del"));
    RequireTables(add);
    RequireTables(del);
    return add.size() > 0 || del.size() > 0;
}

namespace {

using web::json::value;

struct Increment {
    value add;
    value del;
};

/// False also for an answer that is none.
bool Download(const wstring& projectId, int version, Increment& increment) {
    bool hasChanges = false;
    const bool isWhole =
        DoUnit([&] { hasChanges = GetCloudAddAndDelData(projectId, version, increment.add, increment.del); });
    return isWhole && hasChanges;
}

/// Where other content goes that is no record of the store.
struct OtherPaths {
    wstring combinedProducts;
    wstring binaryFolder;
    wstring dataset; ///< that is merged, whose files are never the cloud's
};

/// Merges an increment into open copies, table by table. A table that fails loses its own changes only.
class TableWalk {
public:
    TableWalk(const Increment& increment, CQbase* qb, CQbase* statusQb, const OtherPaths& paths,
              vorn::IProgressReporter& progress)
        : m_add(increment.add), m_del(increment.del), m_qb(qb), m_statusQb(statusQb), m_paths(paths),
          m_progress(progress) {}

    /// Without a change in "ConfigTree" its groups are passed over, and all other content with them.
    void Run() {
        MergeAll(PlainMergeTables());
        if (GetCloudChangedConfigTreeIdLists(m_add, m_del, m_added, m_deleted, m_modified))
            MergeAll(ConfigTreeMergeTables());
        else
            m_progress.ReportProgress(kMergeTablesDone);
    }

private:
    void MergeAll(std::span<const MergeTableRow> rows) {
        for (const MergeTableRow& row : rows) {
            Merge(row);
            m_progress.ReportProgress(row.percentAfter);
        }
    }

    void Merge(const MergeTableRow& row) {
        MepQbaseUtil& store = *MepQbaseUtil::GetInstance();
        switch (row.form) {
        case MergeForm::OneTable:
            store.MergeOneTableData(m_add, m_del, m_qb, m_statusQb, row.classCode, row.key, row.mepType,
                                    row.disciplineId);
            break;
        case MergeForm::PipeSizes:
            store.MergePipeSizeTable(m_add, m_del, m_qb, m_statusQb, row.key, row.disciplineId, m_added, m_deleted,
                                     m_modified);
            break;
        case MergeForm::OneGroup:
            store.MergeSizeTable(m_add, m_del, m_qb, m_statusQb, row.key, row.mepType, row.disciplineId, row.classCode,
                                 m_added, m_deleted, m_modified);
            break;
        case MergeForm::OtherTables:
            store.MergeOtherContent(m_add, m_del, m_qb, m_statusQb, m_paths.combinedProducts, m_paths.binaryFolder,
                                    m_paths.dataset);
            break;
        }
    }

    const value& m_add;
    const value& m_del;
    CQbase* m_qb;
    CQbase* m_statusQb;
    const OtherPaths& m_paths;
    vorn::IProgressReporter& m_progress;
    std::map<wstring, std::vector<wstring>> m_added;
    std::map<wstring, std::vector<wstring>> m_deleted;
    std::map<wstring, std::vector<wstring>> m_modified;
};

/// A dataset that is merged: its stores, their copies, and the open handles on these.
class MergedDataset {
public:
    MergedDataset(const CallSite& site, const wstring& dataPath, const wstring& definition)
        : m_site(site), m_definition(definition), m_dataPath(dataPath) {}

    bool Copy() {
        return !StoreFrame::IsOutOfOrder(m_site, m_dataPath) &&
               DuplicateTemporaryKsetFilesBeforeMerge(m_dataPath, m_statusPath, m_tempDataPath, m_tempStatusPath,
                                                      m_copies);
    }

    enum class Opened { Both, NoHandle, NotBoth };
    Opened Open() {
        if (!m_data.emplace(m_site, L"qb_statusQbase为空").IsMade())
            return Opened::NoHandle;
        if (!m_data->Open(m_tempDataPath, m_definition, StoreAccess::Change))
            return Opened::NotBoth;
        if (!m_status.emplace(m_site, L"qb_statusQbase为空").IsMade())
            return Opened::NoHandle;
        return m_status->Open(m_tempStatusPath, m_definition, StoreAccess::Change) ? Opened::Both : Opened::NotBoth;
    }

    CQbase* Data() { return m_data->get(); }
    CQbase* Status() { return m_status->get(); }

    /// An unreadable status store counts as one without records.
    bool HasLocalChanges() {
        long records = 0;
        return (*m_status)->getNmbOfRecs(records) && records > 0;
    }

    /// True when another process has brought the dataset beyond the version since that was asked for: what it brought
    /// would be taken for news, and win over local changes that were made on it.
    bool IsBeyond(int version) {
        long header = 0;
        return FetchHeader(**m_data) && (*m_data)->getLong(schema::kLocalVersion, header) && header > version;
    }

    /// Lets go of the copies and removes them.
    void GiveUp() {
        m_status.reset();
        m_data.reset();
        RemoveCopies();
    }

    /// Puts the copies in place of both stores, in one commit, and removes them. `remaining` tells how many local
    /// changes are left to send; the status store goes with the last of them. False, and both stores as they were,
    /// where that fails.
    bool Finish(long& remaining) {
        const bool isDataSaved = (*m_data)->closeDatabase();
        const bool isCounted = (*m_status)->getNmbOfRecs(remaining);
        const bool isStatusSaved = (*m_status)->closeDatabase();
        if (!isDataSaved || !isCounted || !isStatusSaved || !m_copies.putBack())
            return false;
        if (remaining == 0)
            RemoveEmptyStatus();
        RemoveCopies();
        return true;
    }

private:
    void RemoveCopies() const {
        RemoveTemporaryKsetFilesBeforeMerge(false, m_dataPath, m_statusPath, m_tempDataPath, m_tempStatusPath);
    }

    /// Somebody may have noted a change again. Nobody does so meanwhile: a tracked change holds the data store first.
    /// A status store that stays for any reason is as good as none.
    void RemoveEmptyStatus() const {
        StoreFrame data(m_site);
        StoreFrame status(m_site);
        long records = 0;
        if (data.Open(m_dataPath, m_definition, StoreAccess::Change) &&
            status.Open(m_statusPath, m_definition, StoreAccess::Change) && status->getNmbOfRecs(records) &&
            records == 0)
            CQbase::removeStore(m_statusPath);
    }

    CallSite m_site;
    wstring m_definition;
    wstring m_dataPath;
    wstring m_statusPath;
    wstring m_tempDataPath;
    wstring m_tempStatusPath;
    CQbaseWorkingCopies m_copies;
    std::optional<StoreFrame> m_data;
    std::optional<StoreFrame> m_status;
};

bool FailToOverwrite(const CallSite& site) {
    site.Warn(L"覆盖文件失败");
    WriteLogLine(L"覆盖文件失败");
    return false;
}

/// Nothing is left to send.
bool EndWithoutMerge(MergedDataset& dataset, bool* pendingUpload) {
    if (pendingUpload != nullptr)
        *pendingUpload = false;
    dataset.GiveUp();
    return false;
}

} // namespace

bool MepQbaseUtil::MergeOtherContent(const value& add, const value& del, CQbase* qb, CQbase*,
                                     wstring combinedProductFilePath, wstring binaryFileFolder,
                                     wstring datasetFilePath) {
    bool isDone = false;
    DoUnit([&] {
        isDone = DeleteOtherContent(del.as_object(), qb, combinedProductFilePath, binaryFileFolder, datasetFilePath);
    });
    DoUnit([&] {
        isDone =
            AddOtherContent(add.as_object(), qb, combinedProductFilePath, binaryFileFolder, datasetFilePath) && isDone;
    });
    return isDone;
}

bool MepQbaseUtil::MergeCloudAndLocalDataset(wstring projectId, vorn::IProgressReporter* progress, int,
                                             int localVersion, wstring datasetFilePath, wstring templateFilePath,
                                             wstring combinedProductFilePath, wstring binaryFileFolder,
                                             bool* pendingUpload) {
    if (progress == nullptr) {
        VORN_DEBUG_WARN(L"pProgressReporter 为空");
        return false;
    }
    progress->ReportProgress(kMergeBegun);
    Increment increment;
    if (!Download(projectId, localVersion, increment)) {
        VORN_DEBUG_WARN(L"getCloudDataSucc 为false");
        return false;
    }
    progress->ReportProgress(kMergeDownloaded);
    MergedDataset dataset(TOLM_CALL_SITE, datasetFilePath, templateFilePath);
    if (!dataset.Copy()) {
        VORN_DEBUG_WARN(L"ducplicateFilesSucc为false");
        return false;
    }
    switch (dataset.Open()) {
    case MergedDataset::Opened::NoHandle:
        return false;
    case MergedDataset::Opened::NotBoth:
        return EndWithoutMerge(dataset, pendingUpload);
    case MergedDataset::Opened::Both:
        break;
    }
    if (dataset.IsBeyond(localVersion)) {
        VORN_DEBUG_WARN(L"localVersion 已过期");
        dataset.GiveUp();
        return false;
    }
    if (!dataset.HasLocalChanges())
        return EndWithoutMerge(dataset, pendingUpload);
    progress->ReportProgress(kMergeOpened);
    const OtherPaths paths{combinedProductFilePath, binaryFileFolder, datasetFilePath};
    TableWalk(increment, dataset.Data(), dataset.Status(), paths, *progress).Run();
    long remaining = 0;
    if (!dataset.Finish(remaining))
        return FailToOverwrite(TOLM_CALL_SITE);
    if (remaining == 0 && pendingUpload != nullptr)
        *pendingUpload = false;
    progress->ReportProgress(kMergeDone);
    return true;
}

} // namespace tolm
