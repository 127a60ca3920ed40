#include "MepDatabase/CloudUpload.h"

#include "Host/Session.h"
#include "MepDatabase/WireText.h"

namespace tolm {

bool RunUpload(TolmProjectSettingHttpUtility& client, const CloudCall& call, const CallSite& caller) {
    const auto outcome = RunCloudCall(client, call, [](const CloudAnswer& answer) { return answer.IsSuccess(); });
    if (outcome.IsException())
        caller.Warn(call.path + L" 失败");
    else if (!outcome)
        DumpLogLine(L"发送失败!");
    return bool(outcome);
}

bool UploadRows(TolmProjectSettingHttpUtility& client, const CloudEndpoint& endpoint, const wstring& host,
                std::initializer_list<std::wstring_view> identifiers, web::json::value encoded,
                const CallSite& caller) {
    const wstring path = endpoint.PathOf(identifiers);
    if (!encoded.is_object()) {
        caller.Warn(path + L" 失败");
        return false;
    }
    auto body = web::json::value::object();
    body["tolm_version"] = JsonText(TolmVersionUtils::GetProductVersion());
    body["rows"] = std::move(encoded["rows"]);
    return RunUpload(client, {endpoint, host, path, &body}, caller);
}

bool UploadIds(TolmProjectSettingHttpUtility& client, const CloudEndpoint& endpoint,
               std::initializer_list<std::wstring_view> identifiers, const std::vector<wstring>& ids,
               const CallSite& caller) {
    auto body = web::json::value::object();
    body["ids"] = JsonTexts(ids);
    return RunUpload(client, {endpoint, client.GetProjectSettingAPIHost(), endpoint.PathOf(identifiers), &body},
                     caller);
}

} // namespace tolm
