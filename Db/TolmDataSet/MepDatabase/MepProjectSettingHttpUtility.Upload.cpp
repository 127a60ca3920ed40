#include "MepDatabase/MepProjectSettingHttpUtility.h"

#include "MepDatabase/CloudUpload.h"
#include "MepDatabase/WireText.h"
#include "Vorn/DebugMessage.h"
#include "Vorn/Notification.h"

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

/// What the user hears when the service does not take a patch, by its code; the last row is for all others.
struct RefusalRow {
    const char* code;
    const wchar_t* words;
};

constexpr RefusalRow kRefusals[] = {
    {"10003", L"提交失败，项目配置中有重名项，需保证命名唯一后再次提交！"},
    {"200100", L"提交失败，当前项目有数据正在提交中，请稍后再次提交！"},
    {nullptr, L"修改专业配置增量上传失败，服务器解析出现问题！"},
};

/// Null for an answer that takes the patch.
const wchar_t* RefusalOf(const CloudAnswer& answer) {
    if (answer.status != 200)
        return L"修改专业配置增量上传时，网络出现问题！";
    const auto& code = answer.Code();
    if (code == "10000")
        return nullptr;
    const auto* row = kRefusals;
    while (row->code != nullptr && row->code != code)
        ++row;
    return row->words;
}

} // namespace

bool TolmProjectSettingHttpUtility::SendCreatedEvent(wstring host, wstring projectId, wstring tableName,
                                                     web::json::value rows) {
    if (rows.is_null() || projectId.empty() || tableName.empty())
        return false;
    return UploadRows(*this, CloudEndpoints::CreateList, host, {projectId, tableName}, std::move(rows), TOLM_CALL_SITE);
}

bool TolmProjectSettingHttpUtility::SendEditedEvent(wstring host, wstring projectId, wstring tableName,
                                                    web::json::value rows) {
    if (rows.is_null() || projectId.empty() || tableName.empty())
        return false;
    return UploadRows(*this, CloudEndpoints::EditList, host, {projectId, tableName}, std::move(rows), TOLM_CALL_SITE);
}

bool TolmProjectSettingHttpUtility::SendRemovedDataList(wstring projectId, std::vector<wstring> ids,
                                                        wstring tableName) {
    if (ids.empty() || projectId.empty() || tableName.empty())
        return false;
    return UploadIds(*this, CloudEndpoints::RemoveList, {projectId, tableName}, ids, TOLM_CALL_SITE);
}

bool TolmProjectSettingHttpUtility::SendPatchDataEvent(wstring projectId, web::json::value patch, int& newVersion) {
    if (patch.is_null() || projectId.empty())
        return false;
    constexpr const auto& endpoint = CloudEndpoints::UpLoad;
    const CloudCall call{endpoint, GetProjectSettingAPIHost(), endpoint.PathOf({projectId}), &patch};
    const wchar_t* words = nullptr;
    const auto outcome = RunCloudCall(*this, call, [&words, &newVersion](const CloudAnswer& answer) {
        words = RefusalOf(answer);
        if (words == nullptr)
            newVersion = WholeNumber(answer.Data().at("version"));
        return words == nullptr;
    });
    if (outcome.IsException()) {
        DumpLogLine(outcome.exceptionText);
        words = L"修改专业配置增量上传时，出现异常！";
    }
    if (!outcome)
        vorn::NotificationUtils::PostNotification(vorn::NotificationTypes::Failure, words);
    return bool(outcome);
}

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
