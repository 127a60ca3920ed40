#include "MepDataSetInterface/TolmProject.h"
#include "Host/Definitions.h"
#include "Host/Session.h"
#include "MepDataSetInterface/AvailableLater.h"
#include "MepDatabase/MepProjectSettingHttpUtility.h"
#include "MepDatabase/MepQbaseUtil.h"
#include "Vorn/DebugMessage.h"

#include <utility>

namespace tolm {
namespace {

constexpr int kCloudNotInitialised = -1;

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

bool TolmDataset::SendModifiedDataToCloud(bool, vorn::IProgressReporter*) {
    VORN_DEBUG_WARN(kAvailableLater);
    return false;
}

bool TolmDataset::MergeDataAndSendModifiedData(wstring, vorn::IProgressReporter*, int&, int&) {
    VORN_DEBUG_WARN(kAvailableLater);
    return false;
}

} // namespace tolm
