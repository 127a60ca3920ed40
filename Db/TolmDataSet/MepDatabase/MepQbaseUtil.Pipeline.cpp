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
namespace {

/// A refresh begins anew so often when somebody else keeps changing the store.
constexpr int kMostAttempts = 5;

void Notify(vorn::NotificationTypes type, const wchar_t* text) {
    vorn::NotificationUtils::PostNotification(type, text);
}

bool Fail(const wchar_t* text) {
    Notify(vorn::NotificationTypes::Failure, text);
    return false;
}

/// Whether changes were noted since the beginning. The host does not know of them, and a refresh would overwrite them.
class NotedChanges {
public:
    NotedChanges(const CallSite& site, const wstring& datasetPath, const wstring& definitionPath)
        : m_site(site), m_statusPath(DatasetPaths::Of(datasetPath).status), m_definitionPath(definitionPath),
          m_stoodThen(MayStand()) {}

    bool HaveCome() const { return !m_stoodThen && MayStand(); }

private:
    /// True also where that cannot be told.
    bool MayStand() const {
        if (!vorn::FileInfo(m_statusPath).Exists())
            return false;
        StoreFrame status(m_site);
        long count = 0;
        return !status.Open(m_statusPath, m_definitionPath, StoreAccess::Read) || !status->getNmbOfRecs(count) ||
               count > 0;
    }

    const CallSite& m_site;
    wstring m_statusPath;
    const wstring& m_definitionPath;
    bool m_stoodThen;
};

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
    LocalDataset(StoreFrame& store, const wstring& definitionPath, const wstring& filePath)
        : m_store(store), m_definitionPath(definitionPath), m_filePath(filePath),
          m_existed(vorn::FileInfo(filePath).Exists()) {}

    /// Opens the file for the download, which it needs unless it holds the cloud's version. A file that was not
    /// there comes into being, and whether that succeeds is not looked at here.
    bool Open(int cloudVersion) {
        const bool opened = m_store->openDatabase(m_definitionPath, m_filePath, true) && NoteContent();
        if (m_existed && (!opened || !ReadVersion()))
            return FailToOpen();
        if (m_hasHeader && m_base.version == cloudVersion)
            return UpToDate();
        if (m_base.version == 0 && !Empty() && m_existed)
            return FailToOpen();
        return true;
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

    bool FailToOpen() {
        m_store->closeDatabase();
        return Fail(L"本地配置打开失败！");
    }

    bool UpToDate() {
        m_store->closeDatabase();
        Notify(vorn::NotificationTypes::Success, L"配置载入成功！");
        return false;
    }

    /// For a full load; in a transaction of its own, so that no lock is held during the download.
    bool Empty() {
        return m_store->beginTransaction() && MepQbaseUtil::GetInstance()->ResetQbase(m_store.get()) &&
               m_store.Close() && m_store->openDatabase(m_definitionPath, m_filePath, false) && NoteContent();
    }

    StoreFrame& m_store;
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

/// Stamps the version, last of all, and closes. True when everything is on disk.
bool StampAndClose(const CallSite& site, StoreFrame& store, int version, bool writeTimePoint) {
    const bool stamped = StampVersion(*store, version) && (!writeTimePoint || !StampTimePoint(*store).empty());
    if (!store.Close())
        return false;
    if (!stamped)
        site.Warn(L"saveRec 失败");
    return stamped;
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
    const NotedChanges changes(site, place.dataset, place.definition);
    for (int attempt = 0; attempt < kMostAttempts && !changes.HaveCome(); ++attempt) {
        const auto done = RefreshOnce(site, place, writeTimePoint, progress, recoverInfo);
        if (done.has_value())
            return *done;
    }
    return Fail(L"载入失败了！");
}

/// Nothing, and the store as it was, where somebody else changed it meanwhile.
std::optional<bool> MepQbaseUtil::RefreshOnce(const CallSite& site, const RefreshPlace& place, bool writeTimePoint,
                                              vorn::IProgressReporter* progress, RecoverDataInfo* recoverInfo) {
    const auto& settings = *CollaborationProjectSettingForPS::Instance();
    const wstring projectId = settings.GetWorkingProjectId();
    const wstring workunitId = settings.GetWorkingDatasetId();
    const NotedChanges changes(site, place.dataset, place.definition);
    const int versionBefore = StandingVersion(place.definition, place.dataset);
    int cloudVersion = 0;
    if (!QueryVersion(projectId, 0, cloudVersion))
        return false;
    MakeFolderOf(place.dataset);
    StoreFrame store(site);
    LocalDataset local(store, place.definition, place.dataset);
    web::json::value root;
    if (!store.IsMade() || !local.Open(cloudVersion))
        return false;
    if (changes.HaveCome()) {
        store->closeDatabase();
        return Fail(L"载入失败了！");
    }
    if (local.Base().version > cloudVersion && local.Base().version != versionBefore)
        return std::nullopt; // the cloud was asked too early: its answer would take the version back
    if (!Download(projectId, local.Base().version, store, root))
        return false;
    CloudRefresh refresh(site, store.get(), progress, {place.definition, place.combinedProducts, place.binaryFolder},
                         recoverInfo);
    // What did not reach the disk was not recovered: neither the host nor the next upload may count on it.
    const bool recoveredBefore = recoverInfo != nullptr && recoverInfo->recovered;
    const auto forgetRecovered = [&] {
        m_recoveredSystemTypeIds.clear();
        if (recoverInfo != nullptr)
            recoverInfo->recovered = recoveredBefore;
    };
    try {
        FetchSystemChanges(workunitId);
        if (const auto applied = refresh.Apply(root, local.Base()); applied != CloudRefresh::Applied::Yes)
            return applied == CloudRefresh::Applied::Changed ? std::nullopt : std::optional(false);
        if (!StampAndClose(site, store, cloudVersion, writeTimePoint)) {
            forgetRecovered();
            return false;
        }
        refresh.Report(80);
        Notify(vorn::NotificationTypes::Success, L"载入成功！");
        return true;
    } catch (...) {
        LogCurrentException();
        if (!store.Close())
            forgetRecovered();
        return Fail(L"载入失败了！");
    }
}

int MepQbaseUtil::GetCloudVersion(wstring projectId) {
    int version = 0;
    if (QueryVersion(projectId, 1, version))
        return version;
    return version == -1 ? -1 : -2;
}

} // namespace tolm
