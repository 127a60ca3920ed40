#include "MepDataSetInterface/TolmProject.h"
#include "Host/Definitions.h"
#include "Host/Session.h"
#include "MepDatabase/MepProjectSettingHttpUtility.h"
#include "MepDatabase/MepQbaseUtil.h"
#include "Vorn/DebugMessage.h"

#include <tuple>
#include <utility>

namespace tolm {
namespace {

constexpr int kCloudNotInitialised = -1;

/// What a query of the cloud's version gives when it fails is none.
constexpr bool IsVersion(int version) {
    return version >= 1;
}

CompareVersionResult CompareVersions(int cloudVersion, int localVersion, bool localChanged) {
    if (cloudVersion < localVersion)
        return CompareVersionResult::NotComparable;
    if (cloudVersion == localVersion)
        return localChanged ? CompareVersionResult::LocalChanges : CompareVersionResult::Same;
    return localChanged ? CompareVersionResult::BothChanged : CompareVersionResult::CloudAhead;
}

} // namespace

int TolmDataset::GetCloudVersion(wstring projectId) {
    return MepQbaseUtil::GetInstance()->GetCloudVersion(std::move(projectId));
}

CompareVersionResult TolmDataset::CompareCloudVersion(wstring& projectId, int& cloudVersion, int& localVersion,
                                                      wstring& timePoint) {
    timePoint.clear();
    const auto* const pSettings = CollaborationProjectSettingForPS::Instance();
    if (pSettings == nullptr) {
        VORN_DEBUG_WARN(L"pSettings为空");
        return CompareVersionResult::NotComparable;
    }
    projectId = pSettings->GetWorkingProjectId();
    if (projectId.empty())
        return CompareVersionResult::Same;
    cloudVersion = GetCloudVersion(projectId);
    bool localChanged = false;
    localVersion =
        MepQbaseUtil::GetInstance()->GetLocalVersion(m_datasetFilePath, DataSetFilePath::TOLMDDQFilePath, localChanged);
    if (cloudVersion >= 1 && localVersion <= 0)
        return CompareVersionResult::CloudAhead;
    if (cloudVersion == kCloudNotInitialised)
        return CompareVersionResult::CloudNotInitialised;
    if (localVersion <= 0)
        return CompareVersionResult::NotComparable;
    timePoint = GetLastUpdateTimePointString();
    return CompareVersions(cloudVersion, localVersion, localChanged);
}

bool TolmDataset::SyncDataFromCloud(bool flag, vorn::IProgressReporter* reporter, RecoverDataInfo* recoverInfo) {
    return MepQbaseUtil::GetInstance()->SyncDataFromCloud(flag, reporter, m_datasetFilePath,
                                                          DataSetFilePath::TOLMDDQFilePath, m_combinedProductFilePath,
                                                          m_binaryFileFolder, recoverInfo);
}

bool TolmDataset::ApplyDefaultProjectSettingTemplate(const wstring& projectId) {
    return TolmProjectSettingHttpUtility::GetInstance()->ApplyDefaultProjectSettingTemplate(projectId);
}

bool TolmDataset::SendUpdateSettingDataInfo(const std::vector<wstring>& ids, int kind) {
    const auto* const pSettings = CollaborationProjectSettingForPS::Instance();
    if (pSettings == nullptr) {
        VORN_DEBUG_WARN(L"pSettings为空");
        return false;
    }
    return TolmProjectSettingHttpUtility::GetInstance()->SendUpdateSettingDataInfo(
        pSettings->GetWorkingProjectId(), pSettings->GetWorkingDatasetId(), ids, kind);
}

bool TolmDataset::SendModifiedDataToCloud(bool flag, vorn::IProgressReporter* reporter) {
    return MepQbaseUtil::GetInstance()->SendModifiedDataToCloud(
        flag, reporter, m_datasetFilePath, DataSetFilePath::TOLMDDQFilePath, m_componentFilePath, false);
}

/// Until the cloud stands still during one merge. The versions of before come back where the cloud's cannot be had,
/// since the header says no other. Where nothing was left to send, another process has sent it: of what followed that
/// nothing is here, so the version that was merged is the one to stamp. Where another process has stamped one, its
/// version stands.
bool TolmDataset::MergeDataAndSendModifiedData(wstring projectId, vorn::IProgressReporter* reporter, int& cloudVersion,
                                               int& localVersion) {
    if (reporter == nullptr) {
        VORN_DEBUG_WARN(L"pProgressReporter为空");
        return false;
    }
    const auto failWithVersionsOfBefore = [&, before = std::pair(cloudVersion, localVersion)] {
        std::tie(cloudVersion, localVersion) = before;
        return false;
    };
    MepQbaseUtil& store = *MepQbaseUtil::GetInstance();
    int headerVersion = HeaderVersion();
    bool pendingUpload = true; // the host has refreshed just now
    for (bool stoodStill = false; !stoodStill;) {
        if (!pendingUpload) {
            SyncDataFromCloud(false, nullptr, nullptr);
            headerVersion = HeaderVersion();
        }
        const bool isReadable = headerVersion > 0 || localVersion <= 0; // or nobody could tell whether it still stands
        if (!isReadable ||
            !store.MergeCloudAndLocalDataset(projectId, reporter, cloudVersion, localVersion, m_datasetFilePath,
                                             DataSetFilePath::TOLMDDQFilePath, m_combinedProductFilePath,
                                             m_binaryFileFolder, &pendingUpload)) {
            VORN_DEBUG_WARN(L"mergeSucc 失败");
            return false;
        }
        const int latest = GetCloudVersion(projectId);
        if (!IsVersion(latest))
            return failWithVersionsOfBefore();
        stoodStill = latest == cloudVersion;
        if (!stoodStill)
            localVersion = std::exchange(cloudVersion, latest);
    }
    if (pendingUpload) {
        const auto outcome =
            store.SendModifiedDataToCloud(m_datasetFilePath, DataSetFilePath::TOLMDDQFilePath, m_componentFilePath);
        if (outcome == UploadOutcome::Failed) {
            VORN_DEBUG_WARN(L"bSucc 失败");
            return false;
        }
        const int newVersion = outcome == UploadOutcome::Sent ? GetCloudVersion(projectId) : cloudVersion;
        if (!IsVersion(newVersion))
            return failWithVersionsOfBefore();
        cloudVersion = newVersion;
    }
    localVersion = cloudVersion;
    return store.ReplaceLocalVersion(m_datasetFilePath, DataSetFilePath::TOLMDDQFilePath, headerVersion, localVersion);
}

int TolmDataset::HeaderVersion() const {
    bool hasLocalChanges = false;
    return MepQbaseUtil::GetInstance()->GetLocalVersion(m_datasetFilePath, DataSetFilePath::TOLMDDQFilePath,
                                                        hasLocalChanges);
}

} // namespace tolm
