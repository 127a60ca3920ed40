#include "MepDatabase/MepProjectSettingHttpUtility.h"

#include "Host/Session.h"
#include "MepDatabase/CloudUpload.h"
#include "MepDatabase/Encoders.h"

#include <utility>

namespace tolm {
namespace {

/// Empty without a session, which is reported for the caller, and without a project.
wstring WorkingProject(const CallSite& caller) {
    const auto* const pSettings = CollaborationProjectSettingForPS::Instance();
    if (pSettings != nullptr)
        return pSettings->GetWorkingProjectId();
    caller.Warn(L"pSettings为空");
    return {};
}

bool SendCombinations(TolmProjectSettingHttpUtility& client, const CloudEndpoint& endpoint, const wstring& categoryCode,
                      web::json::value encoded, const CallSite& caller) {
    const wstring projectId = WorkingProject(caller);
    return !projectId.empty() && UploadRows(client, endpoint, client.GetProjectSettingAPIHost(),
                                            {projectId, categoryCode}, std::move(encoded), caller);
}

} // namespace

bool TolmProjectSettingHttpUtility::SendCreatedCircuitTemplateList(wstring projectId, CircuitTemplateList list) {
    if (list.empty() || projectId.empty())
        return false;
    return SendCreatedEvent(GetProjectSettingAPIHost(), std::move(projectId), CircuitTemplateTable(),
                            GetCreatedCircuitTemplateListJasonValue(std::move(list)));
}

bool TolmProjectSettingHttpUtility::SendEditedCircuitTemplateList(wstring projectId, CircuitTemplateList list) {
    if (list.empty())
        return false;
    return SendEditedEvent(GetProjectSettingAPIHost(), std::move(projectId), CircuitTemplateTable(),
                           GetEditedCircuitTemplateListJasonValue(std::move(list)));
}

bool TolmProjectSettingHttpUtility::SendCreatedCombinationList(wstring categoryCode,
                                                               std::vector<TolmCombinedProduct> list) {
    if (categoryCode.empty())
        return false;
    return SendCombinations(*this, CloudEndpoints::CreateCombinations, categoryCode,
                            GetCreatedCombinationListJasonValue(categoryCode, std::move(list)), TOLM_CALL_SITE);
}

bool TolmProjectSettingHttpUtility::SendEditedCombinationList(wstring categoryCode,
                                                              std::vector<TolmCombinedProduct> list) {
    if (categoryCode.empty())
        return false;
    return SendCombinations(*this, CloudEndpoints::EditCombinations, categoryCode,
                            GetEditedCombinationListJasonValue(categoryCode, std::move(list)), TOLM_CALL_SITE);
}

bool TolmProjectSettingHttpUtility::SendRemovedCombinationList(wstring categoryCode, std::vector<wstring> ids) {
    if (ids.empty())
        return false;
    const CallSite site = TOLM_CALL_SITE;
    const wstring projectId = WorkingProject(site);
    return !projectId.empty() &&
           UploadIds(*this, CloudEndpoints::RemoveCombinations, {projectId, categoryCode}, ids, site);
}

} // namespace tolm
