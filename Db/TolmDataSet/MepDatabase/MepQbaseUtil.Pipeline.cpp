#include "MepDatabase/MepQbaseUtil.h"

#include "Host/Session.h"
#include "MepDatabase/CallSite.h"
#include "MepDatabase/CloudRefresh.h"
#include "MepDatabase/DatasetPaths.h"
#include "MepDatabase/FileHeader.h"
#include "MepDatabase/MepProjectSettingHttpUtility.h"
#include "MepDatabase/StoreFrame.h"
#include "MepDatabase/StoreSchema.h"
#include "MepDatabase/SystemRecovery.h"
#include "MepDatabase/WireText.h"
#include "MepDatabase/WorkUnit.h"
#include "Vorn/DebugMessage.h"
#include "Vorn/Files.h"
#include "Vorn/Notification.h"

#include <cpprest/json.h>

namespace tolm {

/// Whether changes were noted since the beginning. The host does not know of them, and a refresh would overwrite them.
class NotedChanges {
public:
    NotedChanges(const CallSite& site, const wstring& datasetPath, const wstring& definitionPath)
        : m_site(site), m_statusPath(DatasetPaths::Of(datasetPath).status), m_definitionPath(definitionPath),
          m_then(Now()) {}

    /// In doubt they have: where there were none and it cannot be told now, and where there are some now and it could
    /// not be told then. A status store that is never readable keeps nobody from a refresh.
    bool HaveCome() const {
        if (m_then == Notes::Some)
            return false;
        const Notes now = Now();
        return now == Notes::Some || (now == Notes::Unknown && m_then == Notes::None);
    }

private:
    enum class Notes { None, Some, Unknown };

    Notes Now() const {
        if (!vorn::FileInfo(m_statusPath).Exists())
            return Notes::None;
        StoreFrame status(m_site);
        long count = 0;
        if (!status.Open(m_statusPath, m_definitionPath, StoreAccess::Read) || !status->getNmbOfRecs(count))
            return Notes::Unknown;
        return count > 0 ? Notes::Some : Notes::None;
    }

    const CallSite& m_site;
    wstring m_statusPath;
    const wstring& m_definitionPath;
    Notes m_then;
};

namespace {

/// A refresh begins anew so often when somebody else keeps changing the store.
constexpr int kMostAttempts = 5;

constexpr const wchar_t* kLoadFailed = L"载入失败了！";
constexpr const wchar_t* kOpenFailed = L"本地配置打开失败！";

void Notify(vorn::NotificationTypes type, const wchar_t* text) {
    vorn::NotificationUtils::PostNotification(type, text);
}

bool Fail(const wchar_t* text) {
    Notify(vorn::NotificationTypes::Failure, text);
    return false;
}

/// Asks for the cloud's version. A version below `lowest` is no answer: the user hears of it.
bool QueryVersion(const wstring& projectId, int lowest, int& version) {
    version = 0;
    if (TolmProjectSettingHttpUtility::GetInstance()->GetVersion(projectId, version) && version >= lowest)
        return true;
    return Fail(version == -1 ? L"获取云端配置版本失败,云端配置未做初始化！" : L"获取云端配置版本失败！");
}

bool IsReadFailure(short error) {
    switch (static_cast<QbaseError>(error)) {
    case QbaseError::None:
    case QbaseError::NotFound:
        return false;
    default:
        return true;
    }
}

/// For a file that is not there yet.
void MakeFolderOf(const wstring& filePath) {
    if (vorn::FileInfo(filePath).Exists())
        return;
    const wstring folder = vorn::FileSystem::FolderOf(filePath);
    if (!folder.empty() && !vorn::FileInfo(folder).Exists())
        vorn::FileSystem::CreateDirectories(folder);
}

/// Of a store whose header is the current record.
int VersionOfHeader(CQbase& qb) {
    long version = 0;
    qb.getLong(schema::kLocalVersion, version);
    return ClampToInt32(static_cast<double>(version));
}

/// The version that the file tells now; 0 where it tells none.
int StandingVersion(const wstring& definitionPath, const wstring& filePath) {
    CQbase qb;
    return qb.openDatabase(definitionPath, filePath, false) && FetchHeader(qb) ? VersionOfHeader(qb) : 0;
}

/// The dataset file while it is refreshed, and the version that it held before.
class LocalDataset {
public:
    enum class Opened {
        Ready,     ///< for the download
        Overtaken, ///< somebody else changed it; it is as they left it
        Done       ///< there is nothing to download, or it failed, of which the user heard
    };

    LocalDataset(StoreFrame& store, const NotedChanges& changes, const wstring& definitionPath, const wstring& filePath)
        : m_store(store), m_changes(changes), m_definitionPath(definitionPath), m_filePath(filePath),
          m_existed(vorn::FileInfo(filePath).Exists()) {}

    /// Opens the file for the download, which it needs unless it holds the cloud's version. A file that was not
    /// there comes into being, and whether that succeeds is not looked at here.
    Opened Open(int cloudVersion) {
        const bool isRead = m_store->openDatabase(m_definitionPath, m_filePath, true) && NoteContent() && ReadVersion();
        if (m_existed && !isRead)
            return FailWith(kOpenFailed);
        if (m_hasHeader && m_base.version == cloudVersion)
            return UpToDate();
        if (m_base.version == 0)
            return OpenEmptied();
        return m_changes.HaveCome() ? FailWith(kLoadFailed) : Opened::Ready;
    }

    const CloudRefresh::Base& Base() const { return m_base; }

private:
    /// What is read afterwards is of this content, or of a later one.
    bool NoteContent() { return m_store->getContentVersion(m_base.content); }

    /// False when the header could not be read; a store without one has the version 0.
    bool ReadVersion() {
        m_hasHeader = FetchHeader(*m_store);
        if (!m_hasHeader)
            return !IsReadFailure(m_store->getLastError());
        m_base.version = VersionOfHeader(*m_store);
        return true;
    }

    Opened FailWith(const wchar_t* text) {
        m_store->closeDatabase();
        Fail(text);
        return Opened::Done;
    }

    Opened UpToDate() {
        m_store->closeDatabase();
        Notify(vorn::NotificationTypes::Success, L"配置载入成功！");
        return Opened::Done;
    }

    Opened GiveWay() {
        m_store->closeDatabase();
        return Opened::Overtaken;
    }

    /// For a full load; in a transaction of its own, so that no lock is held during the download. What somebody noted
    /// or loaded before it began, or behind it, stays.
    Opened OpenEmptied() {
        const bool locked = m_store->beginTransaction();
        if (m_changes.HaveCome())
            return FailWith(kLoadFailed);
        if (locked && !IsStill())
            return GiveWay();
        if (!(locked && Empty()) && m_existed)
            return FailWith(kOpenFailed);
        if (m_base.version != 0)
            return GiveWay();
        return m_changes.HaveCome() ? FailWith(kLoadFailed) : Opened::Ready;
    }

    bool IsStill() const {
        long now = 0;
        return m_store->getContentVersion(now) && now == m_base.content;
    }

    bool Empty() {
        return MepQbaseUtil::GetInstance()->ResetQbase(m_store.get()) && m_store.Close() &&
               m_store->openDatabase(m_definitionPath, m_filePath, false) && NoteContent() && ReadVersion();
    }

    StoreFrame& m_store;
    const NotedChanges& m_changes;
    const wstring& m_definitionPath;
    const wstring& m_filePath;
    bool m_existed;
    bool m_hasHeader = false;
    CloudRefresh::Base m_base;
};

bool Download(const wstring& projectId, int localVersion, StoreFrame& store, web::json::value& root) {
    if (TolmProjectSettingHttpUtility::GetInstance()->GetCloudData(projectId, localVersion, root))
        return true;
    store->closeDatabase();
    return Fail(L"获取数据失败！");
}

void FetchSystemChanges(const wstring& workunitId) {
    web::json::value changes;
    if (TolmProjectSettingHttpUtility::GetInstance()->GetCloudSystemChangeData(workunitId, changes))
        SyncSystemChangeData(std::move(changes));
}

/// What was recovered before a refresh. What does not reach the disk was not recovered: neither the host nor the next
/// upload may count on it, and both still count on what was.
class RecoveredBefore {
public:
    RecoveredBefore(std::vector<wstring>& ids, RecoverDataInfo* info)
        : m_ids(ids), m_info(info), m_idsBefore(ids), m_recovered(info != nullptr && info->recovered) {}

    void Restore() {
        m_ids = m_idsBefore;
        if (m_info != nullptr)
            m_info->recovered = m_recovered;
    }

private:
    std::vector<wstring>& m_ids;
    RecoverDataInfo* m_info;
    std::vector<wstring> m_idsBefore;
    bool m_recovered;
};

/// Stamps the version, last of all, and closes. True when everything is on disk.
bool StampAndClose(const CallSite& site, StoreFrame& store, int version, bool writeTimePoint) {
    const bool stamped = StampVersion(*store, version) && (!writeTimePoint || !StampTimePoint(*store).empty());
    if (!store.Close())
        return false;
    if (!stamped)
        site.Warn(L"saveRec 失败");
    return stamped;
}

/// Of a refresh that applied nothing. It is silent where there was nothing to apply; nothing comes back where it begins
/// anew.
std::optional<bool> ResultWithout(CloudRefresh::Applied applied) {
    switch (applied) {
    case CloudRefresh::Applied::Changed:
        return std::nullopt;
    case CloudRefresh::Applied::Failed:
        return Fail(kLoadFailed);
    default:
        return false;
    }
}

} // namespace

/// Somebody else may change the store during the download: what was downloaded does not lead on from there. Where that
/// was an edit, the host compares anew and merges.
bool MepQbaseUtil::SyncDataFromCloud(bool writeTimePoint, vorn::IProgressReporter* progress, wstring datasetFilePath,
                                     wstring templateFilePath, wstring combinedProductFilePath,
                                     wstring binaryFileFolder, RecoverDataInfo* recoverInfo) {
    if (CollaborationProjectSettingForPS::Instance() == nullptr) {
        VORN_DEBUG_WARN(L"pSettings为空");
        return false;
    }
    const CallSite site = TOLM_CALL_SITE;
    const RefreshPlace place{datasetFilePath, templateFilePath, combinedProductFilePath, binaryFileFolder};
    if (StoreFrame::IsOutOfOrder(site, place.dataset))
        return Fail(kOpenFailed);
    const NotedChanges changes(site, place.dataset, place.definition);
    for (int attempt = 0; attempt < kMostAttempts && !changes.HaveCome(); ++attempt) {
        const auto done = RefreshOnce(site, place, changes, writeTimePoint, progress, recoverInfo);
        if (done.has_value())
            return *done;
    }
    return Fail(kLoadFailed);
}

/// Nothing, and the store as it was, where somebody else changed it meanwhile.
std::optional<bool> MepQbaseUtil::RefreshOnce(const CallSite& site, const RefreshPlace& place,
                                              const NotedChanges& changes, bool writeTimePoint,
                                              vorn::IProgressReporter* progress, RecoverDataInfo* recoverInfo) {
    const auto& settings = *CollaborationProjectSettingForPS::Instance();
    const wstring projectId = settings.GetWorkingProjectId();
    const wstring workunitId = settings.GetWorkingDatasetId();
    const int versionBefore = StandingVersion(place.definition, place.dataset);
    int cloudVersion = 0;
    if (!QueryVersion(projectId, 0, cloudVersion))
        return false;
    MakeFolderOf(place.dataset);
    StoreFrame store(site);
    if (!store.IsMade())
        return false;
    LocalDataset local(store, changes, place.definition, place.dataset);
    if (const auto opened = local.Open(cloudVersion); opened != LocalDataset::Opened::Ready)
        return opened == LocalDataset::Opened::Overtaken ? std::nullopt : std::optional(false);
    if (local.Base().version > cloudVersion && local.Base().version != versionBefore)
        return std::nullopt; // the cloud was asked too early: its answer would take the version back
    web::json::value root;
    if (!Download(projectId, local.Base().version, store, root))
        return false;
    CloudRefresh refresh(site, store.get(), progress,
                         {place.definition, place.combinedProducts, place.binaryFolder, place.dataset}, recoverInfo);
    RecoveredBefore recoveredBefore(m_recoveredSystemTypeIds, recoverInfo);
    try {
        FetchSystemChanges(workunitId);
        if (const auto applied = refresh.Apply(root, local.Base()); applied != CloudRefresh::Applied::Yes)
            return ResultWithout(applied);
        if (!StampAndClose(site, store, cloudVersion, writeTimePoint)) {
            recoveredBefore.Restore();
            return Fail(kLoadFailed);
        }
        refresh.Report(80);
        Notify(vorn::NotificationTypes::Success, L"载入成功！");
        return true;
    } catch (...) {
        LogCurrentException();
        if (!store.Close())
            recoveredBefore.Restore();
        return Fail(kLoadFailed);
    }
}

int MepQbaseUtil::GetCloudVersion(wstring projectId) {
    int version = 0;
    if (QueryVersion(projectId, 1, version))
        return version;
    return version == -1 ? -1 : -2;
}

} // namespace tolm
