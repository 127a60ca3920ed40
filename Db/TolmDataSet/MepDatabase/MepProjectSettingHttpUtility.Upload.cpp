#include "MepDatabase/MepProjectSettingHttpUtility.h"

#include "MepDatabase/CloudFrame.h"
#include "MepDatabase/WireText.h"
#include "Vorn/DebugMessage.h"

namespace tolm {
namespace {

web::json::value UpdateSettingBody(const wstring& projectId, const wstring& workunitId,
                                   const std::vector<wstring>& dataIds, int dataStatus) {
    auto body = web::json::value::object();
    body["projectId"] = JsonText(projectId);
    body["workunitId"] = JsonText(workunitId);
    body["dataIds"] = JsonTexts(dataIds);
    body["dataStatus"] = web::json::value::number(dataStatus);
    return body;
}

} // namespace

bool TolmProjectSettingHttpUtility::SendUpdateSettingDataInfo(wstring projectId, wstring workunitId,
                                                              std::vector<wstring> dataIds, int dataStatus) {
    if (projectId.empty() || workunitId.empty() || dataIds.empty())
        return false;
    constexpr const auto& endpoint = CloudEndpoints::WorkunitUploadData;
    const auto body = UpdateSettingBody(projectId, workunitId, dataIds, dataStatus);
    const CloudCall call{endpoint, GetProjectSettingAPIHost(), endpoint.PathOf({}), &body};
    const auto outcome = RunCloudCall(*this, call, [](const CloudAnswer& answer) { return answer.IsSuccess(); });
    if (outcome.IsException())
        VORN_DEBUG_WARN(call.path + L" 失败");
    return bool(outcome);
}

} // namespace tolm
